#include "script/grammar/pattern_walk.h"

#include <algorithm>
#include <array>

#include "text/back_end_text.h"
#include "text/chip_text.h"

namespace script {
namespace {

constexpr std::string_view kMarks = "$[]";

std::string_view FirstWord(std::string_view words) { return words.substr(0, words.find(' ')); }

std::string_view AfterFirstWord(std::string_view words) {
  const std::size_t blank = words.find(' ');
  return blank == std::string_view::npos ? std::string_view() : words.substr(blank + 1);
}

// Each once, in the order of their first places.
void AddOnce(std::vector<std::string_view>& words, std::string_view word) {
  if (std::find(words.begin(), words.end(), word) == words.end()) words.push_back(word);
}

}  // namespace

std::span<const TextGrammar* const> TextGrammars() {
  static constexpr std::array kGrammars = {&kChipGrammar, &kBackEndGrammar};
  return kGrammars;
}

const TextGrammar* FindGrammar(std::string_view header) {
  for (const TextGrammar* grammar : TextGrammars()) {
    if (grammar->header == header) return grammar;
  }
  return nullptr;
}

std::vector<const TextGrammar*> GrammarsWith(std::string_view keyword) {
  std::vector<const TextGrammar*> found;
  for (const TextGrammar* grammar : TextGrammars()) {
    PatternWalk walk(*grammar);
    if (walk.Take(keyword)) found.push_back(grammar);
  }
  return found;
}

std::vector<std::string_view> Keywords(const TextGrammar& grammar) {
  return PatternWalk(grammar).Next();
}

std::string_view KeywordOf(std::string_view pattern) { return FirstWord(pattern); }

bool IsNumber(std::string_view word) {
  const std::string_view name = NumberName(word);
  return !name.empty() && name.front() >= 'A' && name.front() <= 'Z';
}

bool IsOptional(std::string_view word) { return word.starts_with('['); }

std::string_view NumberName(std::string_view word) {
  const std::size_t begin = word.find_first_not_of(kMarks);
  if (begin == std::string_view::npos) return {};
  return word.substr(begin, word.find_last_not_of(kMarks) - begin + 1);
}

PatternWalk::PatternWalk(const TextGrammar& grammar) {
  for (std::uint8_t i = 0; i < grammar.count; ++i) {
    rows_.push_back({grammar.pattern(i), grammar.pattern(i)});
  }
}

bool PatternWalk::Take(std::string_view token) {
  const auto next = std::find_if(rows_.begin(), rows_.end(), [&](const Row& row) {
    const std::string_view word = FirstWord(row.rest);
    return IsNumber(word) || (!word.empty() && word == token);
  });
  if (next == rows_.end()) return false;
  const std::string_view word = FirstWord(next->rest);
  std::erase_if(rows_, [&](const Row& row) { return FirstWord(row.rest) != word; });
  for (Row& row : rows_) row.rest = AfterFirstWord(row.rest);
  return true;
}

std::vector<std::string_view> PatternWalk::Next() const {
  std::vector<std::string_view> words;
  for (const Row& row : rows_) {
    if (!row.rest.empty()) AddOnce(words, FirstWord(row.rest));
  }
  return words;
}

bool PatternWalk::AtEnd() const {
  return std::any_of(rows_.begin(), rows_.end(), [](const Row& row) {
    return row.rest.empty() || IsOptional(FirstWord(row.rest));
  });
}

std::vector<std::string_view> PatternWalk::Patterns() const {
  std::vector<std::string_view> patterns;
  for (const Row& row : rows_) patterns.push_back(row.pattern);
  return patterns;
}

}  // namespace script
