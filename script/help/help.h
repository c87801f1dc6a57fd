// What the shell's help says.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace script {

// Everything that may be typed, on one page.
std::string HelpOverview();

// All about a header, a keyword, the first word of a script line, a binary command, a command of
// the shell or a topic; empty when it is none of them.
std::string HelpOnWord(std::string_view word);

// What `help WORD...` says. Throws std::runtime_error for a word that it cannot explain.
std::string Help(std::span<const std::string> words);

// What it explains that is no word of a line.
std::span<const std::string_view> HelpTopics();

// What `help` can explain, for a mistyped word.
std::string HelpSuggestion(std::string_view word);

}  // namespace script
