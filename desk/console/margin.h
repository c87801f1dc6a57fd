// What a session prints, as an answer.
#pragma once

#include <string>
#include <string_view>

namespace desk {

// Lines of a session without the margin that all of them have.
std::string WithoutMargin(std::string_view text);

// An answer's text of what was said: at most so much of each line, none of it but characters, and
// no line feed at the end.
std::string AnswerText(std::string said);

}  // namespace desk
