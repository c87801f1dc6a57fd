// What the page knows of the board before it has seen it: registers, commands, lines, names.
#pragma once

#include <string>
#include <string_view>

namespace desk {

// JSON. bench: the board is the page's own, else a program's, for which not all lines are.
std::string LanguageJson(std::string_view title, bool bench);

}  // namespace desk
