#include "tools/vexosim/text.h"

#include <algorithm>

namespace vexosim {
namespace {

constexpr std::string_view kLower = "0123456789abcdef";
constexpr std::string_view kUpper = "0123456789ABCDEF";

}  // namespace

std::string Hex(std::uint64_t value, unsigned digits) {
  std::string text;
  while (value != 0 || text.size() < digits) {
    text.insert(text.begin(), kUpper[value & 0xF]);
    value >>= 4;
  }
  return "0x" + text;
}

std::string HexBytes(std::span<const std::uint8_t> bytes, std::string_view separator) {
  std::string text;
  for (const std::uint8_t byte : bytes) {
    if (!text.empty()) text += separator;
    text += kLower[byte >> 4];
    text += kLower[byte & 0xF];
  }
  return text;
}

std::string BitList(std::uint32_t mask, unsigned count) {
  const auto is_set = [&](unsigned bit) { return bit < count && ((mask >> bit) & 1U) != 0; };
  std::string text;
  for (unsigned first = 0; first < count; ++first) {
    if (!is_set(first)) continue;
    unsigned last = first;
    while (is_set(last + 1)) ++last;
    if (!text.empty()) text += ',';
    text += std::to_string(first);
    if (last != first) text += '-' + std::to_string(last);
    first = last;
  }
  return text;
}

std::string OneOf(std::span<const std::string_view> words) {
  std::string text;
  for (std::size_t i = 0; i < words.size(); ++i) {
    if (i != 0) text += i + 1 == words.size() ? " or " : ", ";
    text += words[i];
  }
  return text;
}

std::vector<std::string> Lines(std::string_view text) {
  std::vector<std::string> lines;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find_first_of("\r\n"), text.size());
    const std::string_view line = text.substr(0, end);
    if (line.find_first_not_of(' ') != std::string_view::npos) lines.emplace_back(line);
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return lines;
}

}  // namespace vexosim
