// A text line followed through the patterns of a grammar, word by word, as the library does it.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "text/command_pattern.h"

namespace script {

// Both families of text commands.
std::span<const TextGrammar* const> TextGrammars();
// The family with this header, null when there is none.
const TextGrammar* FindGrammar(std::string_view header);
// The families that have this keyword.
std::vector<const TextGrammar*> GrammarsWith(std::string_view keyword);
// The keywords of a family, each once, in its order.
std::vector<std::string_view> Keywords(const TextGrammar& grammar);

// The first word of a pattern.
std::string_view KeywordOf(std::string_view pattern);
// A pattern's word that stands for a number.
bool IsNumber(std::string_view word);
// It may be missing.
bool IsOptional(std::string_view word);
// The name of a number, without its marks.
std::string_view NumberName(std::string_view word);

class PatternWalk {
 public:
  explicit PatternWalk(const TextGrammar& grammar);

  // Goes on with a word of the line; false, and nothing changes, when no pattern does. A word of
  // the patterns goes before a number.
  bool Take(std::string_view token);

  // What may stand next, as the patterns have it, each once.
  std::vector<std::string_view> Next() const;
  // No number or word has to follow.
  bool AtEnd() const;
  // The patterns that the line may still be.
  std::vector<std::string_view> Patterns() const;

 private:
  struct Row {
    std::string_view pattern;
    std::string_view rest;
  };
  std::vector<Row> rows_;
};

}  // namespace script
