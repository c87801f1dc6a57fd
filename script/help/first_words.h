// The words that a line in the shell may begin with.
#pragma once

#include <string_view>
#include <vector>

namespace script {

// First words of script lines, each once.
std::vector<std::string_view> ScriptWords();
bool IsScriptWord(std::string_view word);

// Keywords that may stand without their header: those of one family alone that are no script
// words.
std::vector<std::string_view> ShortKeywords();

}  // namespace script
