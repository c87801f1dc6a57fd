// A board as a console has it: the library attached, a window, the chips initialized.
#pragma once

#include <string>

#include "script/interpreter.h"

namespace script {

struct BringUpOptions {
  unsigned chips = 4;
  bool pal = false;   // cameras and stored standard
  bool bare = false;  // the library is not attached
};

// Brings a fresh board up, which then cannot be undone. Gives what there is, in a sentence.
std::string BringUp(Interpreter& session, const BringUpOptions& options);

}  // namespace script
