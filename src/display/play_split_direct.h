// The text path's playback: preparation, splits of consecutive channels, window offsets.
#pragma once

#include <cstdint>

// Prepares the chips for decoded pictures; the option is not used. mode: 0 to 2; any other mode,
// and a board that is not one of 4, 8 or 16 channels, stops halfway, after the paths.
void TW_SetPlaySetup(std::uint8_t mode, std::uint8_t option);

// Lays out a playback split of consecutive channels, on a board of any size and whatever the view
// is. mode: VEXO_SPLIT_..., others are printed and refused, mode 0 is the centred picture;
// channel: that of the first window.
void TW_SetPlaySplitDirect(std::uint8_t mode, std::uint8_t channel);

// Sets a window of the playback table to its default plus offsets, in display units; the next
// playback split uses it. A mode or window that does not exist changes nothing.
void TW_SetPlaySplitOffset(std::uint8_t mode, std::uint8_t window, std::int8_t dx_start,
                           std::int8_t dy_start, std::int8_t dx_end, std::int8_t dy_end);
