// Files that are read. What cannot be read, has no end, or is no file at all is told in a sentence.
#pragma once

#include <cstddef>
#include <cstdint>
#include <fstream>
#include <istream>
#include <string>
#include <vector>

#include "files/file_error.h"

namespace files {

// Opens a file; refuses an empty name, a folder, a socket, and what the system does not open.
// Throws FileError, as all of these do.
std::ifstream OpenInput(const std::string& path);

// Refuses a standard input that is a folder, which would pass for an empty file.
void CheckStandardInput();

// The whole file; refuses more than `most` bytes.
std::string ReadText(const std::string& path, std::uint64_t most);
std::vector<std::uint8_t> ReadBytes(const std::string& path, std::uint64_t most);
// What a stream that goes by this name still has.
std::string ReadText(std::istream& in, const std::string& name, std::uint64_t most);

// A text read line by line: it may have any length, its lines may not.
class LineInput {
 public:
  static constexpr std::size_t kLongest = std::size_t{1} << 20;

  explicit LineInput(const std::string& path, std::size_t longest = kLongest);
  // A stream that is open, and the name that it goes by; it must outlive this.
  LineInput(std::istream& in, std::string name, std::size_t longest = kLongest);

  // The next line without its end; false when there is none.
  bool Next(std::string& line);
  std::uint64_t Number() const { return number_; }  // of the last line, from 1
  const std::string& Name() const { return name_; }

 private:
  std::ifstream file_;
  std::istream& in_;
  std::string name_;
  std::vector<char> buffer_;
  std::uint64_t number_ = 0;
};

}  // namespace files
