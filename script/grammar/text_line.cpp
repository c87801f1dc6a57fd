#include "script/grammar/text_line.h"

#include "VexoCtrlSDK.h"
#include "script/grammar/did_you_mean.h"
#include "script/grammar/pattern_walk.h"
#include "sim/text.h"
#include "text/tokenizer.h"

namespace script {
namespace {

constexpr std::string_view kSeparators = " ,\n";

bool IsSeparator(char c) { return kSeparators.find(c) != std::string_view::npos; }

// Cuts a line as the library does. Nothing is left when a separator is missing or doubled.
class Tokens {
 public:
  explicit Tokens(std::string_view line) : rest_(line) {}

  std::optional<std::string_view> Next() {
    const std::size_t end = rest_.find_first_of(kSeparators);
    if (end == 0) doubled_ = true;
    if (end == 0 || end == std::string_view::npos) return std::nullopt;
    const std::string_view token = rest_.substr(0, end);
    rest_.remove_prefix(end + 1);
    return token;
  }
  bool Doubled() const { return doubled_; }

 private:
  std::string_view rest_;
  bool doubled_ = false;
};

std::string Quoted(std::string_view word) { return '\'' + std::string(word) + '\''; }

std::string Missing(const TextGrammar& grammar, const PatternWalk& walk, bool doubled) {
  std::string text = "missing: " + sim::OneOf(walk.Next());
  if (doubled) text += "; two separators in a row end a line";
  if (walk.Patterns().size() == grammar.count) return text;
  for (const std::string_view pattern : walk.Patterns()) {
    text += "\n" + std::string(grammar.header) + ' ' + std::string(pattern);
  }
  return text;
}

std::optional<std::string> WrongWord(const TextGrammar& grammar, std::string_view line) {
  Tokens tokens(line);
  tokens.Next();  // the header
  PatternWalk walk(grammar);
  bool keyword = true;
  while (!walk.Next().empty()) {
    const auto token = tokens.Next();
    if (!token) {
      // A missing keyword would be a list of them all.
      if (keyword) return tokens.Doubled() ? "two separators in a row end a line" : "no keyword";
      if (walk.AtEnd() && !tokens.Doubled()) return std::nullopt;
      if (walk.AtEnd()) return "two separators in a row: the rest of the line is not read";
      return Missing(grammar, walk, tokens.Doubled());
    }
    if (!walk.Take(*token)) {
      if (keyword) return "unknown keyword " + Quoted(*token) + DidYouMean(*token, walk.Next());
      return "unknown word " + Quoted(*token) + ", expected " + sim::OneOf(walk.Next());
    }
    keyword = false;
  }
  return std::nullopt;
}

}  // namespace

std::string_view FirstWordOf(std::string_view line) {
  return line.substr(0, line.find_first_of(" ,\t\n"));
}

std::string WithSeparator(std::string_view line) {
  std::string text(line);
  if (text.empty() || !IsSeparator(text.back())) text += ' ';
  return text;
}

std::optional<std::string> WhyNot(std::string_view line, int result) {
  if (result == VEXO_ERROR_UNINITIALIZED) {
    return "the library is not initialized: attach and window come first";
  }
  const TextGrammar* const grammar = FindGrammar(FirstWordOf(line));
  if (grammar == nullptr) return std::nullopt;
  if (line.size() > kLineMax)
    return "a line has " + std::to_string(kLineMax) + " characters at most";
  auto wrong = WrongWord(*grammar, line);
  if (wrong && result == VEXO_OK) return *wrong + ": accepted without effect";
  return wrong;
}

}  // namespace script
