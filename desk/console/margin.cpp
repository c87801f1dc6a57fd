#include "desk/console/margin.h"

#include <algorithm>
#include <vector>

#include "files/printable.h"

namespace desk {

std::string WithoutMargin(std::string_view text) {
  constexpr std::string_view kMargin = "      ";
  std::vector<std::string_view> lines;
  for (std::size_t begin = 0; begin < text.size();) {
    const std::size_t end = std::min(text.find('\n', begin), text.size());
    lines.push_back(text.substr(begin, end - begin));
    begin = end + 1;
  }
  const bool margin = std::all_of(lines.begin(), lines.end(), [=](std::string_view line) {
    return line.empty() || line.starts_with(kMargin);
  });
  std::string result;
  for (std::string_view line : lines) {
    if (margin) line.remove_prefix(std::min(kMargin.size(), line.size()));
    result.append(line).append("\n");
  }
  return result;
}

std::string AnswerText(std::string said) {
  constexpr std::size_t kMostShown = 2000;  // of a line
  said.erase(said.find_last_not_of('\n') + 1);
  return files::PrintableLines(said, kMostShown);
}

}  // namespace desk
