#include "text/command_pattern.h"

#include <cstdlib>
#include <cstring>

#include "text/tokenizer.h"

namespace {

constexpr const char* kSeparators = " ,\n";

constexpr char kOptional = '[';
constexpr char kHexadecimal = '$';

// Words that are typed as they stand begin with a small letter; all others stand for a number.
bool IsNumber(const char* word) { return *word < 'a'; }

std::size_t LengthOf(const char* word) {
  std::size_t length = 0;
  while (word[length] != ' ' && word[length] != '\0') ++length;
  return length;
}

bool IsWord(const char* word, const char* token) {
  const std::size_t length = LengthOf(word);
  return std::strncmp(word, token, length) == 0 && token[length] == '\0';
}

// Where the next word of a pattern begins; an empty text at its end.
const char* NextWord(const TextGrammar& grammar, const TextMatch& match, std::uint8_t row) {
  return grammar.pattern(row) + match.offset;
}

void StepOver(const char* word, TextMatch& match) {
  const std::size_t length = LengthOf(word);
  const std::size_t step = word[length] == ' ' ? length + 1 : length;
  match.offset = static_cast<std::uint8_t>(match.offset + step);
  ++match.tokens;
}

// Leaves the candidates from `row` on that share its next word.
void Narrow(const TextGrammar& grammar, TextMatch& match, std::uint8_t row) {
  const char* word = NextWord(grammar, match, row);
  const std::size_t length = LengthOf(word);
  const std::uint8_t end = match.rows_end;
  match.row = row;
  for (match.rows_end = row; match.rows_end < end; ++match.rows_end) {
    const char* other = NextWord(grammar, match, match.rows_end);
    if (LengthOf(other) != length || std::strncmp(word, other, length) != 0) break;
  }
  StepOver(word, match);
}

void ReadNumber(const char* word, const char* token, TextNumbers& numbers) {
  numbers.value[numbers.count++] =
      *word == kHexadecimal ? string_to_hex(token) : static_cast<std::uint32_t>(std::atoi(token));
}

// Takes a token; false when no candidate goes on with it.
bool Take(const TextGrammar& grammar, TextMatch& match, const char* token) {
  for (std::uint8_t row = match.row; row < match.rows_end; ++row) {
    const char* word = NextWord(grammar, match, row);
    if (!IsNumber(word) && !IsWord(word, token)) continue;
    if (IsNumber(word)) ReadNumber(word, token, match.numbers);
    Narrow(grammar, match, row);
    return true;
  }
  return false;
}

}  // namespace

TextResult ReadKeyword(const TextGrammar& grammar, const char* line, TextMatch& match) {
  const char* token = VexoTok_Next(line, kSeparators);
  if (token == nullptr || std::strcmp(token, grammar.header) != 0) return TextResult::kWrongHeader;
  token = VexoTok_Next(nullptr, kSeparators);
  match.rows_end = grammar.count;
  return token != nullptr && Take(grammar, match, token) ? TextResult::kMatched
                                                         : TextResult::kRejected;
}

TextResult ReadArguments(const TextGrammar& grammar, TextMatch& match) {
  for (;;) {
    const char* word = NextWord(grammar, match, match.row);
    if (*word == '\0') return TextResult::kMatched;
    const char* token = VexoTok_Next(nullptr, kSeparators);
    if (token == nullptr) {
      return *word == kOptional ? TextResult::kMatched : TextResult::kRejected;
    }
    if (!Take(grammar, match, token)) return TextResult::kUnknownWord;
  }
}
