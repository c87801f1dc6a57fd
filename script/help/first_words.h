// The words that a line in the shell may begin with.
#pragma once

#include <span>
#include <string_view>
#include <vector>

namespace script {

// A command of the shell itself.
struct ShellCommand {
  std::string_view word;
  std::string_view arguments;
  std::string_view help;
};
std::span<const ShellCommand> ShellCommands();
const ShellCommand* FindShellCommand(std::string_view word);

// First words of script lines, each once.
std::vector<std::string_view> ScriptWords();
bool IsScriptWord(std::string_view word);

// Keywords that may stand without their header: those of one family alone that are no script
// words.
std::vector<std::string_view> ShortKeywords();

}  // namespace script
