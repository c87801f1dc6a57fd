// Register writes by name.
#pragma once

#include <cstddef>
#include <ostream>

#include "sim/trace.h"

namespace vexosim {

// Prints the register writes since this place in the trace, a line each:
//   w all    page 1  0x10      channel display 0         = 0x94
//   w master page 1  0x30-0x33 window 0                  = 04 b0 01 77
// Neighbouring registers written one after the other share a line when they have one name, and so
// do those of a table with many names; a line has eight values at most. Writes of the worker say
// so.
void PrintWrites(std::ostream& out, const sim::Trace& trace, std::size_t first_event);

}  // namespace vexosim
