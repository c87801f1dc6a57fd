// A line of text handed to the library.
#pragma once

#include <string>

#include "script/line.h"

namespace script {

// Calls the library with the line as it is, and says what came of it.
Step TextStep(std::string line);

}  // namespace script
