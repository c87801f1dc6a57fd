#include "script/help/first_words.h"

#include <algorithm>
#include <array>

#include "script/grammar/pattern_walk.h"
#include "script/line.h"

namespace script {
namespace {

constexpr std::array kShellCommands = {
    ShellCommand{"help", "[WORD]", "explains a command; help script lists the script language"},
    ShellCommand{"writes", "on|off", "shows the register writes of each line by name (off)"},
    ShellCommand{"history", "", "lists the lines typed so far"},
    ShellCommand{"quit", "", "leaves the shell; so do exit and Ctrl-D"},
    ShellCommand{"exit", "", "leaves the shell"},
};

}  // namespace

std::span<const ShellCommand> ShellCommands() { return kShellCommands; }

const ShellCommand* FindShellCommand(std::string_view word) {
  for (const ShellCommand& command : kShellCommands) {
    if (command.word == word) return &command;
  }
  return nullptr;
}

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
