// Zoom into the live picture. The text path's commands; only boards of 4, 8 and 16 channels have a
// zoom chip, on others each of them prints a refusal and writes nothing.
#pragma once

#include <cstdint>

// Prepares the zoom chip, switches the zoom on, switches it off.
void TW_SetLiveZoomArea();
void TW_SetLiveZoomStart();
void TW_SetLiveZoomStop();

// Moves the enlarged part. x, y in display units, cut to the screen's size; the zoom need not be
// on.
void TW_SetLiveZoomMove(std::uint8_t x, std::uint8_t y);
