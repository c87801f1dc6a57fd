#include "files/output.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cerrno>
#include <filesystem>
#include <iostream>
#include <random>
#include <system_error>

#include "files/printable.h"

namespace files {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void Refuse(const std::string& path, const std::string& reason) {
  throw FileError("cannot write " + Printable(path) + ": " + reason);
}

// Whether two names are of one file, under whatever links. What has no content of its own, as
// /dev/null, may be read and written.
bool Same(const std::string& a, const std::string& b) {
  std::error_code error;
  if (fs::is_character_file(a, error)) return false;
  if (fs::equivalent(a, b, error)) return true;
  const fs::path one = fs::weakly_canonical(a, error);
  return !error && one == fs::weakly_canonical(b, error) && !error;
}

void CheckName(const std::string& path, const std::vector<std::string>& others) {
  if (path.empty()) throw FileError("expected the name of a file to write, found ''");
  std::error_code ignored;  // opening it tells the reason
  const fs::file_status status = fs::status(path, ignored);
  if (is_directory(status)) Refuse(path, "it is a folder");
  if (is_socket(status)) Refuse(path, "it is a socket");
  for (const std::string& other : others) {
    if (!other.empty() && Same(path, other)) {
      Refuse(path, other == path ? "it is used for something else too"
                                 : Printable(other) + " is the same file");
    }
  }
}

// Names of what the process has open, and of what is no file.
bool InSystemFolder(const std::string& path) {
  const std::string name = fs::path(path).lexically_normal().string();
  return name.starts_with("/dev/") || name.starts_with("/proc/");
}

using File = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

File Open(const std::string& path, const char* mode) {
  errno = 0;
  return {std::fopen(path.c_str(), mode), std::fclose};
}

// A new file beside another; leaves its name.
File OpenBeside(const fs::path& target, std::string& name) {
  std::random_device random;
  for (int tries = 0; tries < 100; ++tries) {
    fs::path path = target.parent_path();
    path /= '.' + target.filename().string() + '.' + std::to_string(random() % 1000000);
    File file = Open(path.string(), "wbx");
    if (file != nullptr) name = path.string();
    if (file != nullptr || errno != EEXIST) return file;
  }
  return {nullptr, std::fclose};
}

}  // namespace

bool HasEnding(const std::string& path, std::string_view ending) {
  std::error_code none;
  if (is_other(fs::status(path, none))) return true;
  return path.size() > ending.size() &&
         std::equal(ending.rbegin(), ending.rend(), path.rbegin(), [](char a, char b) {
           return std::tolower(static_cast<unsigned char>(a)) ==
                  std::tolower(static_cast<unsigned char>(b));
         });
}

// Remembers why a write failed.
class OutputFile::Buffer : public std::streambuf {
 public:
  explicit Buffer(File file) : file_(std::move(file)) {
    std::setvbuf(file_.get(), nullptr, _IONBF, 0);  // this is the buffer
    Empty();
  }

  int Error() const { return error_; }
  // Begins again at the start of the file.
  void Rewind() {
    Empty();
    std::rewind(file_.get());
    error_ = 0;
  }
  // False when the last of it could not be written.
  bool Close() {
    sync();
    errno = 0;
    if (std::fclose(file_.release()) != 0) Fail();
    return error_ == 0;
  }

 protected:
  int_type overflow(int_type c) override {
    if (sync() != 0) return traits_type::eof();
    if (!traits_type::eq_int_type(c, traits_type::eof())) sputc(traits_type::to_char_type(c));
    return traits_type::not_eof(c);
  }

  int sync() override {
    const auto bytes = static_cast<std::size_t>(pptr() - pbase());
    errno = 0;
    if (file_ != nullptr && std::fwrite(pbase(), 1, bytes, file_.get()) != bytes) Fail();
    Empty();
    return error_ == 0 ? 0 : -1;
  }

 private:
  void Empty() { setp(bytes_.data(), bytes_.data() + bytes_.size()); }
  void Fail() {
    if (error_ == 0) error_ = errno == 0 ? EIO : errno;
  }

  File file_;
  int error_ = 0;
  std::array<char, 1 << 16> bytes_{};
};

OutputFile::OutputFile(const std::string& path, const std::vector<std::string>& others,
                       Appears appears)
    : path_(path), target_(path), stream_(nullptr) {
  CheckName(path, others);
  if (path == "/dev/stdout") {
    stream_.rdbuf(std::cout.rdbuf());
    return;
  }
  std::error_code none;
  const bool exists = fs::exists(path, none);
  const bool regular = !InSystemFolder(path) && (!exists || fs::is_regular_file(path, none));
  // One that is write-protected is not replaced, wherever it lies.
  if (regular && exists && Open(path, "r+b") == nullptr) Refuse(path, SystemText(errno));
  if (regular && exists) target_ = fs::canonical(path).string();
  File file{nullptr, std::fclose};
  if (regular && appears == Appears::WhenWhole) {
    file = OpenBeside(target_, written_);
    remove_ = true;
  } else {
    file = Open(target_, "wb");
    if (regular) written_ = target_;
    remove_ = regular && !exists;
  }
  if (file == nullptr) Refuse(path, SystemText(errno));
  buffer_ = std::make_unique<Buffer>(std::move(file));
  stream_.rdbuf(buffer_.get());
}

OutputFile::~OutputFile() { Discard(); }

void OutputFile::Discard() {
  buffer_.reset();
  std::error_code ignored;  // there is nobody to tell
  if (remove_) fs::remove(written_, ignored);
  remove_ = false;
}

bool OutputFile::Restart() {
  if (buffer_ == nullptr || written_.empty()) return false;
  std::error_code error;
  fs::resize_file(written_, 0, error);
  if (error) return false;
  buffer_->Rewind();
  stream_.clear();
  return true;
}

void OutputFile::Commit() {
  if (buffer_ == nullptr) {
    errno = 0;
    if (!stream_.flush()) Refuse(path_, SystemText(errno));
    return;
  }
  if (!buffer_->Close()) {
    const int error = buffer_->Error();
    Discard();
    Refuse(path_, SystemText(error));
  }
  if (written_ != target_ && !written_.empty()) {
    std::error_code error;
    const fs::file_status old = fs::status(target_, error);
    if (exists(old)) fs::permissions(written_, old.permissions(), error);
    error.clear();
    fs::rename(written_, target_, error);
    if (error) {
      Discard();
      Refuse(path_, error.message());
    }
  }
  remove_ = false;
}

void OutputFile::Check(const std::string& path, const std::vector<std::string>& others) {
  std::error_code none;
  const fs::file_status status = fs::status(path, none);
  // A pipe's reader would take a check for the whole of it.
  if (path.empty() || !exists(status) || is_regular_file(status) || is_directory(status)) {
    OutputFile(path, others);
  } else {
    CheckName(path, others);
  }
}

}  // namespace files
