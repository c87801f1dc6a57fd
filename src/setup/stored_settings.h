// The settings record in battery-backed memory: NVRAM block 1, offset 0.
#pragma once

#include <cstdint>

// Six bytes: the magic "MDVR", which another program of the board writes, then these two.
struct StoredSettings {
  std::uint8_t video_standard;
  std::uint8_t max_channel;
};

// Reads the settings. A record that cannot be read gives "no video" and no channels; one without
// the magic gives `detected`. Both are printed.
StoredSettings ReadStoredSettings(const StoredSettings& detected);

// Stores a video standard for the next initialization: 0 NTSC, 1 PAL; any other byte is taken as it
// stands and programmed like PAL.
void TW_StoreVideoStandard(std::uint8_t standard);
