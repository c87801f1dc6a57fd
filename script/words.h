// A script line cut into words, and the words read as arguments.
#pragma once

#include <cstdint>
#include <limits>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "sim/board/board.h"

namespace script {

// A line that is no line of the language; the text says what was expected and what was found.
struct Malformed : std::runtime_error {
  using std::runtime_error::runtime_error;
};

inline constexpr std::string_view kBlanks = " \t\r";

// Where the comment of a line begins; its length when it has none.
std::size_t CommentBegin(std::string_view line);

// Blank-separated words up to a comment; a word in double quotes is unquoted. Throws Malformed.
std::vector<std::string> SplitWords(std::string_view line);

// A word of a line that reads as this text: in quotes, and bare where that can be.
std::string Quoted(std::string_view text);
std::string AsWord(std::string_view text);

// Names of the chips by position, and behind them "all".
std::span<const std::string_view> ChipWords();

// Faults, by number.
std::span<const std::string_view> FaultWords();

// What an argument of a line stands for, such as CHIP; none for numbers and texts.
std::span<const std::string_view> WordsOf(std::string_view argument);

// The chips that CHIP stands for.
struct ChipChoice {
  bool all = false;
  unsigned position = 0;

  // The one position, or every fitted one.
  std::vector<unsigned> Fitted(const sim::Board& board) const;
};

// Reads the arguments of a line from left to right. Each throws Malformed when the next word is
// not what it wants.
class Arguments {
 public:
  explicit Arguments(std::span<const std::string> words) : words_(words) {}

  bool AtEnd() const { return words_.empty(); }
  // The next word, which is left; empty at the end.
  std::string_view Peek() const;
  // The next word begins with a digit.
  bool AtNumber() const;
  // The next word is this one: takes it.
  bool Take(std::string_view word);

  std::string Text(std::string_view what);
  std::uint32_t Number(std::string_view what, std::uint32_t least = 0,
                       std::uint32_t most = std::numeric_limits<std::uint32_t>::max());
  std::int32_t SignedNumber(std::string_view what);
  std::uint8_t Byte(std::string_view what);
  std::uint8_t RecordByte();  // two hexadecimal digits
  std::uint8_t Page(std::string_view what = "a page 0 to 2");
  std::vector<unsigned> Channels();  // 0 to 15, or all
  // One word: numbers and ranges with commas between them, "0-3,6".
  std::vector<std::uint32_t> NumberList(std::string_view what, std::uint32_t most);
  ChipChoice Chips();
  std::vector<ChipChoice> ChipList();  // chips with commas between them, or all
  bool OnOff();
  std::size_t Choice(std::span<const std::string_view> words);  // index of the word
  void End();

  // Throws for the next word, with those of `near` that it may have been meant to be.
  [[noreturn]] void Expected(std::string_view what,
                             std::span<const std::string_view> near = {}) const;

 private:
  std::span<const std::string> words_;
};

}  // namespace script
