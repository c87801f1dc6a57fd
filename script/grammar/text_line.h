// A text command as a user types it: what the library gets, and what was wrong with it.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace script {

// The first word of a line, up to a blank, a tab or a separator of text commands.
std::string_view FirstWordOf(std::string_view line);

// The line with the separator that must end it.
std::string WithSeparator(std::string_view line);

// Why a line that begins with a header had this result, in words; none when there is nothing to
// say.
std::optional<std::string> WhyNot(std::string_view line, int result);

}  // namespace script
