// Test pictures that need no camera.
#pragma once

#include <cstdint>

// The chips' colour bar. Both are announced on the kernel debug output.
void TW_ColorBarOn();
void TW_ColorBarOff();

// A blank test screen drawn by the master's fill engine over a full-screen layout, and away again.
// Clearing brings neither the layout nor the overlay back. Init waits without limit for the chips
// to settle, and both for the fill engine.
void TW_BlueScreenInit();
void TW_BlueScreenClear();

// Fills a rectangle: x and w in units of four columns, y and h in units of ten lines. Waits without
// limit for the fill engine.
void TW_FillRect(std::uint8_t chip, std::uint8_t x, std::uint8_t y, std::uint8_t w, std::uint8_t h);

// Fills the master's whole screen.
void TW_FillFullRect();
