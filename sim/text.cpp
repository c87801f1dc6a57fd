// Conversions between the platform's texts and the trace's.
#include <algorithm>

#include "sim/world.h"

namespace sim {
namespace {

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
