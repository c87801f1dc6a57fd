// Motion detection: cell masks, sensitivity levels, shared parameters.
//
// Channels of 16 and more (but see TW_SetMotionLevel) and rows of 12 and more write and store
// nothing. A level of 4 and more is kept but not written.
#pragma once

#include <cstdint>

#include "VexoCtrlSDK.h"

// Programs every channel from the tables and the shared parameters; marks motion detection ready.
void TW_InitMotionDetect();

// Programs one channel below the channel count from the tables.
void TW_ApplyMotionInfo(std::uint8_t channel);

// Keeps a channel's level and mask (24 bytes, read only) and programs them.
void StoreMotionInfo(std::uint8_t channel, std::uint8_t level, const std::uint8_t* mask);

// Programs a channel's sensitivity, 0-3; the level table stays. A channel of 16 and more is not
// refused here: it goes where its number maps to.
void TW_SetMotionLevel(std::uint8_t channel, std::uint8_t level);

// Turns one cell over, in the table and on the chip.
void TW_ToggleMotionCell(std::uint8_t channel, std::uint8_t column, std::uint8_t row);

// Sets all cells of a channel, or clears them when clear is not 0.
void TW_SetMotionMaskAll(std::uint8_t channel, std::uint8_t clear);

// Sets the shared parameter: low 0-11, otherwise 3; high 0-11, otherwise 9.
void TW_SetMotionTiming(std::uint8_t low, std::uint8_t high);

// Motion mask record of 26 bytes: channel, level, mask. The mask is transformed in the record: the
// bits of each byte reversed, then the two bytes of each row exchanged; so it goes to the chip,
// with the level. TW_SetMotionMask keeps both, TW_PreviewMotionMask does not. Returns 0, or -5
// with nothing changed when the channel is not on the board.
std::int32_t TW_SetMotionMask(VexoMotionMaskRecord* record);
std::int32_t TW_PreviewMotionMask(VexoMotionMaskRecord* record);
