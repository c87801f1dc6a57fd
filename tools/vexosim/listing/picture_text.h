// A picture as text.
#pragma once

#include <string>

#include "sim/screen/screen.h"
#include "tools/vexosim/terminal.h"

namespace vexosim {

// In terminal colours or in plain characters, dark to bright: " .:-=+*#%@". A character is taken to
// be twice as high as it is wide.
std::string DrawPicture(const sim::Image& image, const PictureStyle& style);

}  // namespace vexosim
