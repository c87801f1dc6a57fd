#include "script/outcome/typed_line.h"

#include <algorithm>
#include <cstdlib>
#include <optional>

#include "script/grammar/did_you_mean.h"
#include "script/grammar/pattern_walk.h"
#include "sim/text.h"
#include "text/back_end_text.h"
#include "text/chip_text.h"
#include "text/tokenizer.h"

namespace script {
namespace {

constexpr std::string_view kSeparators = " ,\n";

// A line may come from a file: what is no character of a text shows as a question mark.
std::string Quoted(std::string_view word) {
  std::string text(word);
  std::replace_if(
      text.begin(), text.end(),
      [](char c) { return static_cast<unsigned char>(c) < ' ' || c == '\x7F'; }, '?');
  return '\'' + text + '\'';
}

// Cuts a line as the library does: a token counts only when a separator follows it, and an empty
// one ends the line.
class Tokens {
 public:
  explicit Tokens(std::string_view line) : rest_(line) {}

  std::optional<std::string_view> Next() {
    const std::size_t end = rest_.find_first_of(kSeparators);
    if (end == 0 || end == std::string_view::npos) return std::nullopt;
    const std::string_view token = rest_.substr(0, end);
    rest_.remove_prefix(end + 1);
    return token;
  }

  // What has not been read, without the separators around it.
  std::string_view Rest() const {
    const std::size_t begin = rest_.find_first_not_of(kSeparators);
    if (begin == std::string_view::npos) return {};
    return rest_.substr(begin, rest_.find_last_not_of(kSeparators) - begin + 1);
  }

  // Why there is no further token though something is left; empty when nothing is.
  std::string WhyEnded() const {
    if (Rest().empty()) return {};
    if (kSeparators.find(rest_.front()) != std::string_view::npos) {
      return "two separators in a row end the line: " + Quoted(Rest()) + " is not read";
    }
    return "no separator after " + Quoted(Rest()) + ", so it is not read";
  }

 private:
  std::string_view rest_;
};

// ---- Numbers ------------------------------------------------------------------------------------

enum class Width { Byte, SignedByte, Half, Whole };

Width WidthOf(const TextGrammar& grammar, std::string_view pattern, std::string_view name) {
  const bool letter = name.size() == 1 && name.front() != 'X' && name.front() != 'Y';
  const std::string_view keyword = KeywordOf(pattern);
  if (&grammar == &kBackEndGrammar) {
    const bool bytes = keyword == "set_bmpcfg" || keyword == "set_curcfg" ||
                       (keyword == "set_wndcfg" && name == "A");
    return letter && !bytes ? Width::Whole : Width::Byte;
  }
  // What is not used is not cut either.
  const bool unused = name == "OPTION" || pattern.ends_with("MODE default");
  if (letter || unused) return Width::Whole;
  if (name.starts_with("DX_") || name.starts_with("DY_")) return Width::SignedByte;
  const bool half = name == "NUMBER" || name.ends_with("_MASK") || keyword == "pbank";
  return half ? Width::Half : Width::Byte;
}

std::int64_t Cut(std::uint32_t value, Width width) {
  switch (width) {
    case Width::Byte:
      return value & 0xFFu;
    case Width::SignedByte:
      return static_cast<std::int8_t>(value & 0xFFu);
    case Width::Half:
      return value & 0xFFFFu;
    case Width::Whole:
      break;
  }
  return value;
}

// What an operation gets where an optional number is missing.
std::int64_t Missing(std::string_view name) { return name == "NUMBER" ? 0xFFFF : 0; }

std::uint32_t HexValue(const std::string& typed) {
  constexpr std::size_t kDigitsMax = 8;
  const bool digits = typed.find_first_not_of("0123456789abcdefABCDEF") == std::string::npos;
  if (!digits || typed.size() > kDigitsMax) return 0;
  return static_cast<std::uint32_t>(std::strtoul(typed.c_str(), nullptr, 16));
}

// Whether what is typed is this value and nothing else.
bool Says(const std::string& typed, bool hexadecimal, std::int64_t value, Width width) {
  char* end = nullptr;
  const long long said = std::strtoll(typed.c_str(), &end, hexadecimal ? 16 : 10);
  if (*end != '\0') return false;
  // A whole number may be typed with or without its sign.
  return said == value ||
         (width == Width::Whole && said == static_cast<std::int32_t>(value) && !hexadecimal);
}

void AddNumber(std::string_view word, std::string_view token, TypedLine& line) {
  const bool hexadecimal = word.starts_with('$');
  const std::string typed(token);
  const std::uint32_t whole =
      hexadecimal ? HexValue(typed) : static_cast<std::uint32_t>(std::atoi(typed.c_str()));
  line.numbers.push_back({NumberName(word), token, whole});
}

// Of a whole command: its numbers get their width.
void CutNumbers(TypedLine& line) {
  for (TypedNumber& number : line.numbers) {
    if (number.typed.empty()) continue;
    const Width width = WidthOf(*line.grammar, line.pattern, number.name);
    number.value = Cut(static_cast<std::uint32_t>(number.value), width);
    const bool hexadecimal =
        line.pattern.find('$' + std::string(number.name)) != std::string_view::npos;
    if (Says(std::string(number.typed), hexadecimal, number.value, width)) continue;
    const std::string value = hexadecimal ? sim::Hex(static_cast<std::uint64_t>(number.value))
                                          : std::to_string(number.value);
    line.notes.push_back(std::string(number.name) + ' ' + Quoted(number.typed) + " is read as " +
                         value);
  }
}

// ---- Lines that are no whole command -----------------------------------------------------------

std::string WithEnd(std::string text, const Tokens& tokens) {
  const std::string ended = tokens.WhyEnded();
  if (!ended.empty()) text += (text.empty() ? "" : "; ") + ended;
  return text;
}

// The header is looked for anywhere in the line, and must then come first.
const TextGrammar* GrammarOf(std::string_view line) {
  for (const TextGrammar* grammar : TextGrammars()) {
    if (line.find(grammar->header) != std::string_view::npos) return grammar;
  }
  return nullptr;
}

std::string NoHeader() {
  std::vector<std::string_view> headers;
  for (const TextGrammar* grammar : TextGrammars()) headers.emplace_back(grammar->header);
  return "a text line begins with " + sim::OneOf(headers);
}

std::string WrongFirstWord(const TextGrammar& grammar, std::string_view line,
                           const std::optional<std::string_view>& word, const Tokens& tokens) {
  const std::string text = "the first word must be " + std::string(grammar.header);
  if (word) return text + ", found " + Quoted(*word);
  const bool separator = kSeparators.find(line.front()) != std::string_view::npos;
  return separator ? text + ", found a separator" : WithEnd(text, tokens);
}

std::string MissingWord(const TextGrammar& grammar, const PatternWalk& walk, const Tokens& tokens) {
  // A missing keyword would be a list of them all.
  const bool keyword = walk.Patterns().size() == grammar.count;
  if (keyword) return WithEnd(tokens.Rest().empty() ? "no keyword" : "", tokens);
  std::string text = WithEnd("missing: " + sim::OneOf(walk.Next()), tokens);
  for (const std::string_view pattern : walk.Patterns()) {
    text += "\n" + std::string(grammar.header) + ' ' + std::string(pattern);
  }
  return text;
}

std::string UnknownWord(const TextGrammar& grammar, const PatternWalk& walk,
                        std::string_view token) {
  if (walk.Patterns().size() == grammar.count) {
    return "unknown keyword " + Quoted(token) + DidYouMean(token, walk.Next());
  }
  return "unknown word " + Quoted(token) + ", expected " + sim::OneOf(walk.Next());
}

}  // namespace

TypedLine ReadTypedLine(std::string_view text) {
  TypedLine line;
  if (text.size() > kLineMax) {
    line.fault = "a line has " + std::to_string(kLineMax) + " characters at most";
    return line;
  }
  line.grammar = GrammarOf(text);
  if (line.grammar == nullptr) {
    line.fault = NoHeader();
    return line;
  }
  const TextGrammar& grammar = *line.grammar;
  Tokens tokens(text);
  if (const auto header = tokens.Next(); header != grammar.header) {
    line.fault = WrongFirstWord(grammar, text, header, tokens);
    return line;
  }
  PatternWalk walk(grammar);
  while (!walk.Next().empty()) {
    const std::vector<std::string_view> next = walk.Next();
    const auto token = tokens.Next();
    if (!token && !walk.AtEnd()) {
      line.fault = MissingWord(grammar, walk, tokens);
      return line;
    }
    if (!token) {
      line.numbers.push_back({NumberName(next.front()), {}, Missing(NumberName(next.front()))});
      if (const std::string ended = tokens.WhyEnded(); !ended.empty()) {
        line.notes.push_back(ended + "; " + std::string(line.numbers.back().name) + " is " +
                             std::to_string(line.numbers.back().value));
      }
      line.pattern = walk.Patterns().front();
      CutNumbers(line);
      return line;
    }
    const bool word = std::find(next.begin(), next.end(), *token) != next.end();
    if (!walk.Take(*token)) {
      line.fault = UnknownWord(grammar, walk, *token);
      return line;
    }
    const auto number = std::find_if(next.begin(), next.end(), IsNumber);
    if (!word && number != next.end()) AddNumber(*number, *token, line);
  }
  line.pattern = walk.Patterns().front();
  CutNumbers(line);
  if (!tokens.Rest().empty()) {
    line.notes.push_back(Quoted(tokens.Rest()) + " is too much: it is not read");
  }
  return line;
}

}  // namespace script
