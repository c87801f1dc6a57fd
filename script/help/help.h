// What the shell's help says.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace script {

// Everything that may be typed, on one page.
std::string HelpOverview();

// All about a header, a keyword, the first word of a script line or a command of the shell; empty
// when it is none of them.
std::string HelpOnWord(std::string_view word);

// What `help WORD...` says. Throws std::runtime_error for a word that it cannot explain.
std::string Help(std::span<const std::string> words);

// What `help` can explain, for a mistyped word.
std::string HelpSuggestion(std::string_view word);

}  // namespace script
