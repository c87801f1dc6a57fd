// What each text command does, for the shell's help and for the manual page.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "text/command_pattern.h"

namespace script {

struct TextHelp {
  std::string_view pattern;  // as in the grammar
  std::string_view effect;   // what it does, whole sentences
  std::string_view example;  // numbers and words after the pattern's own words; a whole line
};

// A kind of number and what it may be.
struct PlaceholderHelp {
  std::string_view name;  // as in the patterns, without marks
  std::string_view range;
};

// One entry for each pattern, in the order of the grammar.
std::span<const TextHelp> ChipTextHelp();
std::span<const TextHelp> BackEndTextHelp();

// Every placeholder that the patterns of a grammar use.
std::span<const PlaceholderHelp> ChipPlaceholders();
std::span<const PlaceholderHelp> BackEndPlaceholders();

// What stands for a number in a pattern of a grammar, by its name or as the pattern has it; null
// for an unknown name. B to J are described with A.
const PlaceholderHelp* FindPlaceholder(const TextGrammar& grammar, std::string_view word);

// Help on the commands that begin with a keyword, of both grammars; empty for an unknown one.
std::string HelpOnKeyword(std::string_view keyword);

// The manual page on all text commands, Markdown.
std::string TextCommandManual();

}  // namespace script
