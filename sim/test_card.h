// The picture of a simulated camera.
#pragma once

#include <cstdint>

#include "sim/screen.h"

namespace sim {

inline constexpr int kCardWidth = 720;

// Colour of a camera's test card at a pixel: the channel number in large digits on the channel's
// own colour, and a bar that moves with time_ms. height is 480 (NTSC) or 576 (PAL).
Rgb TestCardPixel(unsigned channel, int x, int y, int height, std::uint32_t time_ms);

}  // namespace sim
