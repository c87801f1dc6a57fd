#include "files/input.h"

#include <array>
#include <cerrno>
#include <filesystem>
#include <system_error>
#include <utility>

#include "files/printable.h"

namespace files {
namespace {

[[noreturn]] void Refuse(const std::string& name, const std::string& reason) {
  throw FileError("cannot read " + Printable(name) + ": " + reason);
}

std::string InWords(std::uint64_t bytes) {
  constexpr std::uint64_t kKiB = std::uint64_t{1} << 10;
  if (bytes % (kKiB * kKiB) == 0) return std::to_string(bytes / (kKiB * kKiB)) + " MiB";
  if (bytes % kKiB == 0) return std::to_string(bytes / kKiB) + " KiB";
  return std::to_string(bytes) + " bytes";
}

}  // namespace

std::string SystemText(int error) {
  return std::generic_category().message(error == 0 ? EIO : error);
}

std::ifstream OpenInput(const std::string& path) {
  if (path.empty()) throw FileError("expected the name of a file to read, found ''");
  std::error_code ignored;  // opening it tells the reason
  const std::filesystem::file_status status = std::filesystem::status(path, ignored);
  if (is_directory(status)) Refuse(path, "it is a folder");
  if (is_socket(status)) Refuse(path, "it is a socket");
  errno = 0;
  std::ifstream in(path, std::ios::binary);
  if (!in) Refuse(path, SystemText(errno));
  return in;
}

void CheckStandardInput() {
  std::error_code none;
  if (std::filesystem::is_directory("/dev/stdin", none)) Refuse("standard input", "it is a folder");
}

std::string ReadText(std::istream& in, const std::string& name, std::uint64_t most) {
  std::string text;
  std::array<char, 1 << 16> piece{};
  errno = 0;
  while (in.read(piece.data(), piece.size()) || in.gcount() != 0) {
    text.append(piece.data(), static_cast<std::size_t>(in.gcount()));
    if (text.size() > most) Refuse(name, "it has more than " + InWords(most));
  }
  if (in.bad()) Refuse(name, SystemText(errno));
  return text;
}

std::string ReadText(const std::string& path, std::uint64_t most) {
  std::ifstream in = OpenInput(path);
  return ReadText(in, path, most);
}

std::vector<std::uint8_t> ReadBytes(const std::string& path, std::uint64_t most) {
  const std::string text = ReadText(path, most);
  return {text.begin(), text.end()};
}

LineInput::LineInput(const std::string& path, std::size_t longest)
    : file_(OpenInput(path)), in_(file_), name_(path), buffer_(longest + 2) {}

LineInput::LineInput(std::istream& in, std::string name, std::size_t longest)
    : in_(in), name_(std::move(name)), buffer_(longest + 2) {}

bool LineInput::Next(std::string& line) {
  errno = 0;
  in_.getline(buffer_.data(), static_cast<std::streamsize>(buffer_.size()));
  const auto taken = static_cast<std::size_t>(in_.gcount());
  if (in_.bad()) Refuse(name_, SystemText(errno));
  if (taken == 0) return false;
  ++number_;
  // The last line may lack its end.
  const std::size_t bytes = in_.eof() ? taken : taken - 1;
  if (in_.fail() || bytes > buffer_.size() - 2) {
    Refuse(name_,
           "line " + std::to_string(number_) + " has more than " + InWords(buffer_.size() - 2));
  }
  line.assign(buffer_.data(), bytes);
  return true;
}

}  // namespace files
