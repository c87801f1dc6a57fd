#include "device/emulator/open_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace emulator {

std::unique_ptr<OpenFile> OpenFile::Open(const std::filesystem::path& path, Mode mode) {
  int flags = O_CLOEXEC | (mode.read && mode.write ? O_RDWR : mode.write ? O_WRONLY : O_RDONLY);
  if (mode.create) flags |= O_CREAT;
  if (mode.truncate) flags |= O_TRUNC;
  if (mode.fresh) flags |= O_EXCL;
  const int descriptor = open(path.c_str(), flags, 0666);
  if (descriptor < 0) return nullptr;
  return std::unique_ptr<OpenFile>(new OpenFile(descriptor));
}

OpenFile::~OpenFile() { close(descriptor_); }

std::optional<std::uint32_t> OpenFile::Read(std::span<std::uint8_t> bytes) {
  const ssize_t count = read(descriptor_, bytes.data(), bytes.size());
  if (count < 0) return std::nullopt;
  return static_cast<std::uint32_t>(count);
}

std::optional<std::uint32_t> OpenFile::Write(std::span<const std::uint8_t> bytes) {
  const ssize_t count = write(descriptor_, bytes.data(), bytes.size());
  if (count < 0) return std::nullopt;
  return static_cast<std::uint32_t>(count);
}

std::optional<std::uint32_t> OpenFile::Bytes() const {
  struct stat info {};
  if (fstat(descriptor_, &info) != 0) return std::nullopt;
  return static_cast<std::uint32_t>(info.st_size);
}

}  // namespace emulator
