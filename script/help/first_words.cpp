#include "script/help/first_words.h"

#include <algorithm>

#include "script/grammar/pattern_walk.h"
#include "script/line.h"

namespace script {
std::vector<std::string_view> ScriptWords() {
  std::vector<std::string_view> words;
  for (const LineKind* kind : AllLines()) {
    const std::string_view word = kind->words.substr(0, kind->words.find(' '));
    if (std::find(words.begin(), words.end(), word) == words.end()) words.push_back(word);
  }
  return words;
}

bool IsScriptWord(std::string_view word) {
  const std::vector<std::string_view> words = ScriptWords();
  return std::find(words.begin(), words.end(), word) != words.end();
}

std::vector<std::string_view> ShortKeywords() {
  std::vector<std::string_view> words;
  for (const TextGrammar* grammar : TextGrammars()) {
    for (const std::string_view keyword : Keywords(*grammar)) {
      if (GrammarsWith(keyword).size() == 1 && !IsScriptWord(keyword)) words.push_back(keyword);
    }
  }
  return words;
}

}  // namespace script
