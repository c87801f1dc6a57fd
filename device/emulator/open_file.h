// A file of the card that a program has open.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>

namespace emulator {

class OpenFile {
 public:
  struct Mode {
    bool read = false;
    bool write = false;
    bool create = false;    // when it is not there
    bool truncate = false;  // when it is
    bool fresh = false;     // fails when it is there
  };
  // None when that cannot be.
  static std::unique_ptr<OpenFile> Open(const std::filesystem::path& path, Mode mode);
  ~OpenFile();
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;

  // How many bytes, none on failure. What was written is in the file at once.
  std::optional<std::uint32_t> Read(std::span<std::uint8_t> bytes);
  std::optional<std::uint32_t> Write(std::span<const std::uint8_t> bytes);
  std::optional<std::uint32_t> Bytes() const;

 private:
  explicit OpenFile(int descriptor) : descriptor_(descriptor) {}
  int descriptor_;
};

}  // namespace emulator
