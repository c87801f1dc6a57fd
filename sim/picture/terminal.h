// Pictures as text.
#pragma once

#include <string>

#include "sim/screen/screen.h"

namespace sim {

// The picture in 24-bit terminal colours, two pixels a character cell (upper half blocks), each
// the average of its area. One line ends with a reset and a line feed.
std::string RenderForTerminal(const Image& image, int columns);

// The picture in plain characters, dark to bright: " .:-=+*#%@". A character is taken to be twice
// as high as it is wide.
std::string RenderInCharacters(const Image& image, int columns);

}  // namespace sim
