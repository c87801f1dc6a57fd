// Lines of a file that may be anything, with their places.
#pragma once

#include <fstream>
#include <memory>
#include <string>

#include "files/input.h"

namespace vexosim {

class FileLines {
 public:
  // Throws files::FileError when the path cannot be read.
  explicit FileLines(const std::string& path)
      : in_(std::make_unique<std::ifstream>(files::OpenInput(path))), lines_(*in_, path) {}

  // The next line without its end; false behind the last. Throws files::FileError for one that is
  // too long, and when reading fails.
  bool Next(std::string& line);
  // The first character of the file, which is left; '\0' when it is empty.
  char First();
  // The last line ended with the file, without a line end.
  bool Cut() const { return in_->eof(); }
  // "FILE:LINE".
  std::string Where() const;
  const std::string& Path() const { return lines_.Name(); }
  // Throws files::FileError for the line that was read last.
  [[noreturn]] void Wrong(const std::string& what) const;

 private:
  std::unique_ptr<std::ifstream> in_;
  files::LineInput lines_;
};

}  // namespace vexosim
