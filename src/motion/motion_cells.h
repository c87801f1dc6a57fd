// Drawing the motion cells over the live picture, so that an installer sees the grid.
#pragma once

#include <cstdint>

// Draws the cells of the channels that a split mode shows. cell_type: look, 0-4, others as 0;
// split_mode: VEXO_SPLIT_..., of which 2, 3 and 5 only clear the boxes; first_channel: channel of
// the first window, 0-15.
void TW_ShowMotionCells(std::uint8_t cell_type, std::uint8_t split_mode,
                        std::uint8_t first_channel);

// Takes all boxes away.
void TW_HideMotionCells();

// Draws the cells over the current live split: request 1 with cell type 0, 2 with cell type 1.
void TW_SetMotionCellDisplay(std::uint8_t request);

// Sets the box colour register of a channel (0-15) to high and low half.
void TW_SetMotionBoxAttr(std::uint8_t channel, std::uint8_t high, std::uint8_t low);
