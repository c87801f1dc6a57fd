// Playback split modes: which decoded pictures are shown, and where.
#pragma once

#include <cstdint>

#include "display/board_variant.h"

// Lays out a playback split. mode: VEXO_SPLIT_..., but for the modes with a large window, which
// only the switch into playback lays out; option: non-zero shows a single picture full screen, else
// it is a centred window; channels: one channel a window, for a centred picture as many as the
// board has, read only. Blanks all channels meanwhile and takes 50 ms. Returns 0; -1 in live view
// and for a mode or board without this layout; -5 for a mode refused here or a null list.
std::int32_t TW_SetPlaySplitMode(std::uint8_t mode, std::uint8_t option,
                                 const std::uint8_t* channels);

// The boards of 4, 8 and 16 channels, all modes that the board has. 0, or -5 for a mode that it
// lacks. The list is matched in ascending order in modes 0 (centred), 1 and 4: a channel that is
// listed out of order is hidden.
std::int32_t TW_SetPlaySplit4Ch(std::uint8_t mode, std::uint8_t option,
                                const std::uint8_t* channels);
std::int32_t TW_SetPlaySplit8Ch(std::uint8_t mode, std::uint8_t option,
                                const std::uint8_t* channels);
std::int32_t TW_SetPlaySplit16Ch(std::uint8_t mode, std::uint8_t option,
                                 const std::uint8_t* channels);

// The one routine behind the three.
std::int32_t SetPlaySplit(const BoardVariant& board, std::uint8_t mode, std::uint8_t option,
                          const std::uint8_t* channels);

// Puts the overlay and zoom registers as the last single picture, or anything else, needs them.
void TW_ResetPlayOverlay();
