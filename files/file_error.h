// A file that cannot be used as it should.
#pragma once

#include <stdexcept>
#include <string>

namespace files {

// The text is a sentence with the file's name and the reason: "cannot read a.vexo: it is a folder".
struct FileError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// What the system calls an error number.
std::string SystemText(int error);

}  // namespace files
