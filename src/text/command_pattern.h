// Matches command lines against the patterns of a grammar.
//
// A pattern is the words of a command as a user types them after the header, separated by single
// blanks: words in small letters stand for themselves, WORDS in capitals are decimal numbers,
// $WORDS hexadecimal ones, and [WORDS] in brackets, at the end, may be missing. Patterns that begin
// alike stand together and spell what they share alike; among them a word stands before a number.
#pragma once

#include <cstddef>
#include <cstdint>

inline constexpr std::size_t kNumbersMax = 10;

// Numbers of a line, in the order typed; those that are missing are 0. Operations take the low
// bytes.
struct TextNumbers {
  std::uint32_t value[kNumbersMax] = {};
  std::uint8_t count = 0;

  std::uint8_t U8(std::size_t i) const { return static_cast<std::uint8_t>(value[i] & 0xFFu); }
  std::uint16_t U16(std::size_t i) const { return static_cast<std::uint16_t>(value[i] & 0xFFFFu); }
  std::int8_t S8(std::size_t i) const { return static_cast<std::int8_t>(value[i] & 0xFFu); }
};

// A list of patterns; pattern(i) for i below count.
struct TextGrammar {
  const char* header;
  std::uint8_t count;
  const char* (*pattern)(std::uint8_t i);
};

// A line on its way through a grammar.
struct TextMatch {
  std::uint8_t row = 0;  // first of the patterns that the line may still be, the pattern in the end
  std::uint8_t rows_end = 0;
  std::uint8_t offset = 0;  // into the patterns: what has been matched
  std::uint8_t tokens = 0;  // read after the header
  TextNumbers numbers;
};

enum class TextResult : std::uint8_t {
  kMatched,
  kWrongHeader,
  kRejected,     // a token is missing, or the first word is unknown
  kUnknownWord,  // a later word is unknown; what follows it has not been read
};

// Reads the header and the first word.
TextResult ReadKeyword(const TextGrammar& grammar, const char* line, TextMatch& match);

// Reads the rest, after ReadKeyword has matched.
TextResult ReadArguments(const TextGrammar& grammar, TextMatch& match);
