#include "sim/text.h"

#include <algorithm>

namespace sim {
namespace {

constexpr std::string_view kLower = "0123456789abcdef";
constexpr std::string_view kUpper = "0123456789ABCDEF";

constexpr char32_t kReplacement = 0xFFFD;

void AppendUtf8(std::string& out, char32_t c) {
  const auto byte = [&out](char32_t value) { out.push_back(static_cast<char>(value)); };
  if (c < 0x80) {
    byte(c);
  } else if (c < 0x800) {
    byte(0xC0 | c >> 6);
    byte(0x80 | (c & 0x3F));
  } else if (c < 0x10000) {
    byte(0xE0 | c >> 12);
    byte(0x80 | (c >> 6 & 0x3F));
    byte(0x80 | (c & 0x3F));
  } else {
    byte(0xF0 | c >> 18);
    byte(0x80 | (c >> 12 & 0x3F));
    byte(0x80 | (c >> 6 & 0x3F));
    byte(0x80 | (c & 0x3F));
  }
}

bool IsHigh(char32_t c) { return c >= 0xD800 && c < 0xDC00; }
bool IsLow(char32_t c) { return c >= 0xDC00 && c < 0xE000; }

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

std::vector<std::string> TextLines(std::string_view text) {
  std::vector<std::string> lines;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find_first_of("\r\n"), text.size());
    const std::string_view line = text.substr(0, end);
    if (line.find_first_not_of(' ') != std::string_view::npos) lines.emplace_back(line);
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return lines;
}

std::string ToUtf8(const char16_t* text) {
  std::string out;
  if (text == nullptr) return out;
  while (*text != 0) {
    char32_t c = *text++;
    if (IsHigh(c) && IsLow(*text)) {
      c = 0x10000 + ((c - 0xD800) << 10) + (static_cast<char32_t>(*text++) - 0xDC00);
    } else if (IsHigh(c) || IsLow(c)) {
      c = kReplacement;
    }
    AppendUtf8(out, c);
  }
  return out;
}

std::u16string ToUtf16(const std::string& text) {
  std::u16string out;
  for (std::size_t i = 0; i < text.size();) {
    const auto lead = static_cast<unsigned char>(text[i++]);
    const unsigned more = lead < 0x80 ? 0 : lead >> 5 == 6 ? 1 : lead >> 4 == 14 ? 2 : 3;
    char32_t c = more == 0 ? lead : lead & (0x3Fu >> more);
    bool good = lead < 0x80 || (lead >= 0xC2 && lead < 0xF5);
    for (unsigned k = 0; good && k < more; ++k) {
      good = i < text.size() && (static_cast<unsigned char>(text[i]) & 0xC0) == 0x80;
      if (good) c = c << 6 | (static_cast<unsigned char>(text[i++]) & 0x3F);
    }
    constexpr char32_t kSmallest[] = {0, 0x80, 0x800, 0x10000};
    if (!good || c < kSmallest[more] || c > 0x10FFFF || IsHigh(c) || IsLow(c)) c = kReplacement;
    if (c < 0x10000) {
      out.push_back(static_cast<char16_t>(c));
    } else {
      out.push_back(static_cast<char16_t>(0xD800 + ((c - 0x10000) >> 10)));
      out.push_back(static_cast<char16_t>(0xDC00 + (c & 0x3FF)));
    }
  }
  return out;
}

std::string ToLower(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  });
  return text;
}

}  // namespace sim
