#include "tools/vexosim/traces/file_lines.h"

#include "files/printable.h"

namespace vexosim {

char FileLines::First() {
  const int c = in_->peek();
  in_->clear();
  return c == std::ifstream::traits_type::eof() ? '\0' : static_cast<char>(c);
}

bool FileLines::Next(std::string& line) {
  if (!lines_.Next(line)) return false;
  if (line.ends_with('\r')) line.pop_back();
  return true;
}

std::string FileLines::Where() const {
  return files::Printable(Path()) + ':' + std::to_string(lines_.Number());
}

void FileLines::Wrong(const std::string& what) const {
  throw files::FileError(Where() + ": " + what);
}

}  // namespace vexosim
