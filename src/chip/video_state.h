// What is known of the board and its video, for everyone who programs chips.
#pragma once

#include <cstdint>

#include "VexoCtrlSDK.h"
#include "chip/registers.h"

// What hosts name too.
static_assert(kChipsMax == VEXO_MAX_CHIPS && kChannelsMax == VEXO_MAX_CHANNELS);
static_assert(kChipMaster == VEXO_CHIP_MASTER && kChipSlave1 == VEXO_CHIP_SLAVE1 &&
              kChipSlave2 == VEXO_CHIP_SLAVE2 && kChipSlave3 == VEXO_CHIP_SLAVE3 &&
              kChipAll == VEXO_CHIP_ALL);
static_assert(kMotionMaskBytes == VEXO_MOTION_MASK_BYTES);

inline constexpr std::uint8_t kStandardNtsc = VEXO_VIDEO_NTSC;
inline constexpr std::uint8_t kStandardPal = VEXO_VIDEO_PAL;
inline constexpr std::uint8_t kStandardNone = VEXO_VIDEO_NONE;

inline constexpr std::uint8_t kSplitNone = 7;  // no split mode yet

struct VideoStateBlock {
  std::uint8_t chip_count = 0;                  // chips whose identification matched, 0-4
  std::uint8_t chip_present[kChipsMax] = {};    // by position: 1 when it matched
  std::uint8_t max_channel = 0;                 // channel count: 4 times the chip count
  std::uint8_t video_standard = kStandardNone;  // a stored value may be any byte
  std::uint8_t broadcast_select = kChipMaster;  // chip select of table writes
  std::uint8_t default_live_split = kSplitNone;
  std::uint8_t default_play_split = kSplitNone;
  std::uint8_t g_chip_ready = 0;      // 1 once initialized, never cleared
  std::uint32_t g_vid_loss_mask = 0;  // bit n: channel n has no video
  VideoState report = {};             // handed to the host by address
};
extern VideoStateBlock g_video;

// Whether the board shows NTSC. Quirk: everything else, "no video" too, is laid out as PAL.
inline bool IsNtsc() { return g_video.video_standard == kStandardNtsc; }
