#include "device/plan/words.h"

#include <algorithm>
#include <charconv>

#include "files/printable.h"
#include "sim/text.h"

namespace plan {

Bytes ReadHex(script::Arguments& words, std::size_t most) {
  const std::string_view word = words.Peek();
  Bytes bytes(word.size() / 2);
  bool whole = !bytes.empty() && word.size() % 2 == 0 && bytes.size() <= most;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    const std::string_view digits = word.substr(2 * i, 2);
    const auto [end, error] = std::from_chars(digits.begin(), digits.end(), bytes[i], 16);
    whole = whole && error == std::errc{} && end == digits.end();
  }
  if (!whole) {
    words.Expected("1 to " + std::to_string(most) + " bytes of two hexadecimal digits each");
  }
  words.Text("bytes");
  return bytes;
}

std::string HexWord(std::span<const std::uint8_t> bytes) {
  std::string word = sim::HexBytes(bytes);
  std::transform(word.begin(), word.end(), word.begin(), [](char c) {
    return 'a' <= c && c <= 'f' ? static_cast<char>(c - 'a' + 'A') : c;
  });
  return word;
}

std::string HexNumber(std::uint32_t value) { return sim::Hex(value, 1); }

void ReadLines(std::string_view text, const std::string& name,
               const std::function<void(unsigned line, std::span<const std::string> words)>& read) {
  unsigned number = 0;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    ++number;
    try {
      if (line.size() > kLongestLine) {
        throw script::Malformed("expected a line of " + std::to_string(kLongestLine) +
                                " characters at most, found " + std::to_string(line.size()));
      }
      const bool ascii = std::all_of(line.begin(), line.end(), [](char c) {
        return (' ' <= c && c <= '~') || c == '\t' || c == '\r';
      });
      if (!ascii) throw script::Malformed("expected ASCII text, found another byte");
      read(number, script::SplitWords(line));
    } catch (const script::Malformed& error) {
      throw FormatError(files::Printable(name) + ':' + std::to_string(number) + ": " +
                        files::Printable(error.what(), kLongestLine));
    }
  }
}

}  // namespace plan
