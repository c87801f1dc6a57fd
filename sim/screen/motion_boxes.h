// The grid of motion cells that a chip draws over a channel's picture.
#pragma once

#include "sim/board/board.h"
#include "sim/screen/screen.h"

namespace sim {

inline constexpr int kMotionColumns = 16;
inline constexpr int kMotionRows = 12;

// Cell sizes are registers in half display units, positions in whole ones: sixteen cells of width
// 0x15 span 168 of the 172 units of a full-screen window, twelve of height 0x13 span 114 of 118.
inline constexpr int kPixelsPerCellUnit = kPixelsPerUnit / 2;

inline constexpr Rgb kCellOutline{224, 224, 224};
inline constexpr Rgb kCellWatched{255, 255, 255};  // mixed into the picture
inline constexpr Rgb kCellMotion{255, 40, 40};     // mixed in while the channel has motion

// Draws the grids that the box registers switch on: a cell that detection watches (its mask bit is
// set) is tinted, and tinted red while the channel reports motion; any other is an outline.
void DrawMotionBoxes(const Board& board, Image& image);

}  // namespace sim
