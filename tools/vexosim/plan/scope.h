// Which scripts can be played on a board: what a bench and a program beside the library can do.
#pragma once

#include <stdexcept>

#include "script/parse.h"

namespace vexosim {

// A script that cannot be planned; the text is "FILE:LINE: WHAT STANDS THERE: REASON".
struct NoPlan : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// Throws NoPlan for the first line that cannot be played.
void CheckScope(const script::Script& script);

}  // namespace vexosim
