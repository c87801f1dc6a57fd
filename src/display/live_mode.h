// Back to live pictures: the live mode switch and the text path's reset.
#pragma once

#include <cstdint>

#include "VexoCtrlSDK.h"

// Switches the display to live pictures, programs it anew and lays out a split, also when it was
// live already. record (read only): byte 4 the split mode, from byte 5 the channel list. Returns
// 0, also when the board lacks the split mode; -5 for a null record.
std::int32_t TW_SetLiveModeInfo(const VexoLiveModeRecord* record);

// The boards of 4, 8 and 16 channels: result of the split, or -5 for a null record.
std::int32_t TW_SetLiveModeInfo4Ch(const VexoLiveModeRecord* record);
std::int32_t TW_SetLiveModeInfo8Ch(const VexoLiveModeRecord* record);
std::int32_t TW_SetLiveModeInfo16Ch(const VexoLiveModeRecord* record);

// Text path: programs the display for live pictures, without a split and without a view change.
void TW_ResetLiveDisplay();
