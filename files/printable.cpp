#include "files/printable.h"

#include <algorithm>

namespace files {
namespace {

unsigned char ByteAt(std::string_view text, std::size_t at) {
  return at < text.size() ? static_cast<unsigned char>(text[at]) : 0;
}

// Bytes of the character that the text begins with; 0 when it is none that can be shown.
std::size_t ShownBytes(std::string_view text) {
  const unsigned char lead = ByteAt(text, 0);
  if (lead < 0x80) return (lead < 0x20 && lead != '\t') || lead == 0x7F ? 0 : 1;
  const std::size_t bytes = lead >= 0xC2 && lead < 0xE0   ? 2
                            : lead >= 0xE0 && lead < 0xF0 ? 3
                            : lead >= 0xF0 && lead < 0xF5 ? 4
                                                          : 0;
  for (std::size_t i = 1; i < bytes; ++i) {
    if ((ByteAt(text, i) & 0xC0) != 0x80) return 0;
  }
  const unsigned char second = ByteAt(text, 1);
  const bool control = lead == 0xC2 && second < 0xA0;  // a terminal obeys these too
  const bool overlong = (lead == 0xE0 && second < 0xA0) || (lead == 0xF0 && second < 0x90);
  const bool surrogate = lead == 0xED && second >= 0xA0;
  const bool beyond = lead == 0xF4 && second >= 0x90;
  return control || overlong || surrogate || beyond ? 0 : bytes;
}

}  // namespace

std::string Printable(std::string_view text, std::size_t most) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string shown;
  while (!text.empty()) {
    const std::size_t bytes = ShownBytes(text);
    const auto byte = static_cast<unsigned char>(text.front());
    const std::string next = bytes != 0
                                 ? std::string(text.substr(0, bytes))
                                 : std::string{'\\', 'x', kDigits[byte >> 4], kDigits[byte & 0xF]};
    if (shown.size() + next.size() > most) return shown + "...";
    shown += next;
    text.remove_prefix(bytes != 0 ? bytes : 1);
  }
  return shown;
}

std::string PrintableLines(std::string_view text, std::size_t most) {
  std::string shown;
  for (;;) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    shown += Printable(text.substr(0, end), most);
    if (end == text.size()) return shown;
    shown += '\n';
    text.remove_prefix(end + 1);
  }
}

}  // namespace files
