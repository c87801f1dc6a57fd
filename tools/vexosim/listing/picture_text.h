// A picture as text.
#pragma once

#include <string>

#include "sim/screen/screen.h"
#include "tools/vexosim/terminal.h"

namespace vexosim {

// In terminal colours or in plain characters, dark to bright: " .:-=+*#%@".
std::string DrawPicture(const sim::Image& image, const PictureStyle& style);

}  // namespace vexosim
