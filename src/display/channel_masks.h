// Channel masks: which channels are shown, recorded, blanked. Bit n stands for channel n, 0 to 15.
#pragma once

#include <cstdint>

#include "display/board_variant.h"

// Stores and applies a channel masks record (12 bytes, any alignment, read only). 0, or -5 for a
// null record.
std::int32_t TW_SetChannelMaskInfo(const std::uint8_t* record);

// Blanks the channels whose bit is set and shows the others; kept as the applied blank mask of the
// current view. 0, or -1 when the board is not one of 4, 8 or 16 channels.
std::int32_t TW_SetChannelBlankMask(std::uint32_t mask);

// The same for bit 0 of the channel attribute register.
std::int32_t TW_SetChannelBit0Mask(std::uint32_t mask);

// Blanks what the current view's display mask does not show; result of TW_SetChannelBlankMask.
std::int32_t TW_RestoreChannelBlankMask();

// Enables the record channels that the record channel mask names, disables the others.
void ApplyRecordMask();

// Attribute register of channel position i on a chip: new value = (value read & keep) | set.
void UpdateChannelAttribute(std::uint8_t chip, unsigned i, std::uint8_t keep, std::uint8_t set);

// ---- Text path: these work on the playback blank mask, whatever the view is -------------------

// How many chips the text path visits: those of the board, the master alone on a board that has no
// variant.
std::uint8_t TextPathChips();

// Blanks every channel of the board.
void TW_BlankAllChannels();

// Shows channels n and n + 1, when n is on the board and one of the two is still blanked.
void TW_UnblankChannelPair(std::uint16_t channel);

// Shows every channel of the board.
void TW_UnblankAllChannels();

// ---- Text path: 16-bit masks written to the chips as they are ---------------------------------

// Blanks the channels whose bit is set and shows the others; kept nowhere.
void TW_SetBlankMaskByChip(std::uint16_t mask);

// Freezes the channels whose bit is set, lets the others run; kept as the bit-6 mask.
void TW_SetBit6MaskByChip(std::uint16_t mask);
