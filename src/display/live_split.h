// Live split modes for the binary commands: which channels are shown, where, and how large.
#pragma once

#include <cstdint>

#include "display/board_variant.h"

// Lays out a live split. mode: VEXO_SPLIT_...; channels: one channel a window of the mode, read
// only. Returns 0; -1 in playback view and for a mode or board without this layout; -5 for a mode
// above 6 or a null list.
std::int32_t TW_SetLiveSplitMode(std::uint8_t mode, const std::uint8_t* channels);

// The boards of 4, 8 and 16 channels. 0, or -5 for a mode that the board lacks, with nothing
// written. On 8 and 16 channels the list is matched in ascending order: a channel that is listed
// out of order is hidden, and channels after the last window keep their rectangles.
std::int32_t TW_SetLiveSplit4Ch(std::uint8_t mode, const std::uint8_t* channels);
std::int32_t TW_SetLiveSplit8Ch(std::uint8_t mode, const std::uint8_t* channels);
std::int32_t TW_SetLiveSplit16Ch(std::uint8_t mode, const std::uint8_t* channels);

// The one routine behind the three.
std::int32_t SetLiveSplit(const BoardVariant& board, std::uint8_t mode,
                          const std::uint8_t* channels);
