// What the library asks of the system, stood in for.
#pragma once

#include <cstdint>
#include <span>

#include "image.h"

namespace kit {

// On the system itself: its threads, objects, clock and messages. What the recorder has and a PC
// lacks is the board's, and what the trace tells is noted.
std::span<const Import> RealImports();

// On the simulated kernel, and nothing of the system.
std::span<const Import> VirtualImports();

}  // namespace kit
