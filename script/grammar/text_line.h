// A text command as a user types it, and what the library gets.
#pragma once

#include <string>
#include <string_view>

namespace script {

// The first word of a line, up to a blank, a tab or a separator of text commands.
std::string_view FirstWordOf(std::string_view line);

// The line with the separator that must end it.
std::string WithSeparator(std::string_view line);

}  // namespace script
