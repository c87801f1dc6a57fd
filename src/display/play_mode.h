// From live pictures to decoded ones: the playback mode switch.
#pragma once

#include <cstdint>

#include "VexoCtrlSDK.h"

// Switches the display to playback and lays out a first split with all channels blanked, also when
// it showed playback already; takes 50 to 100 ms. record (read only): byte 5 the split mode, from
// byte 6 the channel list. Returns 0, also when the board lacks the split mode; -5 for a null
// record; -8 on a board that is not one of 4, 8 or 16 channels.
std::int32_t TW_SetPlaybackModeInfo(const VexoPlayModeRecord* record);

// The boards of 4, 8 and 16 channels: result of the split, or -5 for a null record.
std::int32_t TW_SetPlaybackModeInfo4Ch(const VexoPlayModeRecord* record);
std::int32_t TW_SetPlaybackModeInfo8Ch(const VexoPlayModeRecord* record);
std::int32_t TW_SetPlaybackModeInfo16Ch(const VexoPlayModeRecord* record);
