#include "script/grammar/text_line.h"

namespace script {
namespace {

constexpr std::string_view kSeparators = " ,\n";

}  // namespace

std::string_view FirstWordOf(std::string_view line) {
  return line.substr(0, line.find_first_of(" ,\t\n"));
}

std::string WithSeparator(std::string_view line) {
  std::string text(line);
  if (text.empty() || kSeparators.find(text.back()) == std::string_view::npos) text += ' ';
  return text;
}

}  // namespace script
