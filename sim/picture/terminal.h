// Pictures in a terminal.
#pragma once

#include <string>

#include "sim/screen/screen.h"

namespace sim {

// The picture in 24-bit terminal colours, two pixels a character cell (upper half blocks), each
// the average of its area. One line ends with a reset and a line feed.
std::string RenderForTerminal(const Image& image, int columns);

}  // namespace sim
