// The text path's live split: consecutive channels from a first one, on a board of any size.
#pragma once

#include <cstdint>

// Lays out a live split. mode: VEXO_SPLIT_..., others are printed and refused; first_channel: the
// channel of the first window; option: which page of channels the other windows show. Waits
// without limit for the chips to settle.
void TW_SetLiveSplitDirect(std::uint8_t mode, std::uint8_t first_channel, std::uint8_t option);

// Sets a window of the live table to its default plus offsets, in display units; the next split
// change uses it. A mode or window that does not exist changes nothing.
void VexoProc_SetLiveSplitOffset(std::uint8_t mode, std::uint8_t window, std::int8_t dx_start,
                                 std::int8_t dy_start, std::int8_t dx_end, std::int8_t dy_end);
