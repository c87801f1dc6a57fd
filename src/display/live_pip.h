// Picture in picture on the live display. Keeps no state and checks no channel number: a number of
// 16 and more goes where it maps to.
#pragma once

#include <cstdint>

// Shows `main` full size and `inset` as a quarter over it. Channels below `main` are hidden; those
// above keep their rectangles.
void TW_SetLivePip(std::uint8_t main, std::uint8_t inset);

// Brings all channels to the front again; rectangles and scalers stay.
void TW_StopLivePip();

// Shows a channel as an inset over the current layout. size: 2 half size, any other quarter size;
// the rest is its rectangle, display units.
void TW_SetLiveMultiPip(std::uint8_t channel, std::uint8_t size, std::uint8_t x_start,
                        std::uint8_t x_end, std::uint8_t y_start, std::uint8_t y_end);

// Moves it, at the size that it has.
void TW_MoveLiveMultiPip(std::uint8_t channel, std::uint8_t x_start, std::uint8_t x_end,
                         std::uint8_t y_start, std::uint8_t y_end);

void TW_StopLiveMultiPip();
