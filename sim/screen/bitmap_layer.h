// What the chips' fill engines have drawn, as the screen shows it.
#pragma once

#include <cstdint>

#include "sim/board/board.h"
#include "sim/screen/screen.h"

namespace sim {

// The palette: three bits of red, three of green and two of blue, none of them so dark that it
// could be taken for a blanked window.
constexpr Rgb BitmapColor(std::uint8_t index) {
  constexpr unsigned kDarkest = 45;
  const auto level = [](unsigned step, unsigned steps) {
    return static_cast<std::uint8_t>(kDarkest + step * (255 - kDarkest) / steps);
  };
  return {level(index >> 5, 7), level(index >> 2 & 7, 7), level(index & 3, 3)};
}

// Draws the bitmaps of the cascade over the picture. Each chip lays its own over what it gets from
// the chip behind it, so the master's is the topmost.
void DrawBitmaps(const Board& board, Image& image);

}  // namespace sim
