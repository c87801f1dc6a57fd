// Register writes by name.
#pragma once

#include <cstddef>
#include <ostream>
#include <span>

#include "sim/trace.h"

namespace script {

// Prints the register writes since this place in the trace, a line each:
//   w all    page 1  0x10      channel display 0         = 0x94 (enable, hold, decoded)
//   w master page 1  0x30-0x33 window 0                  = 04 b0 01 77
// Neighbouring registers written one after the other share a line when they have one name, and so
// do those of a table with many names; a line has eight values at most. Writes of the worker say
// so.
void PrintWrites(std::ostream& out, const sim::Trace& trace, std::size_t first_event);

// The same for accesses of either kind.
void PrintAccesses(std::ostream& out, std::span<const sim::RegisterAccess> accesses);

// The same for a run of accesses to neighbouring registers, all reads (r) or all writes.
void PrintRun(std::ostream& out, std::span<const sim::RegisterAccess> run);
// Whether an access goes on with the run that ends in `last`.
bool Continues(const sim::RegisterAccess& last, const sim::RegisterAccess& next);

}  // namespace script
