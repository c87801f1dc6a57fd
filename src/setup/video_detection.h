// Video loss, video standard and motion status, read from the chips. Nothing here writes one.
#pragma once

#include <cstdint>

#include "VexoCtrlSDK.h"
#include "chip/registers.h"

struct VideoDetectState {
  std::uint32_t previous_loss_mask = 0;  // before the last TW_ReadVideoDetect
  std::uint32_t first_read = 1;          // no TW_ReadVideoDetect yet
  std::uint8_t ntsc_count = 0;           // channels, at initialization
  std::uint8_t pal_count = 0;
  std::uint8_t channel_standard[kChannelsMax] = {};  // at initialization: VEXO_VIDEO_...
};
extern VideoDetectState g_video_detect;

// Decides the standard of every channel and of the board; adds to the loss mask. For
// initialization.
void TW_DetectVideoStandard();

// Reads the loss mask and the standard of every channel; prints a changed mask. Entries of chips
// that the board lacks stay as the caller set them.
void TW_ReadVideoDetect(VideoDetectRecord* record);

// Bit n set: motion on channel n. 0 before motion detection is set up.
std::uint32_t TW_ReadMotionStatus();

// The master's status flags, high nibble.
std::uint8_t TW_ReadStatusFlags();

// Which edge of the sync flag counts: 0x08 rising, 0 falling.
std::uint8_t TW_ReadStatusRef();

// TW_ReadVideoDetect and TW_ReadMotionStatus for callers that may come before initialization:
// nothing, and 0, while the chips are not ready.
void VexoProc_ReadVideoDetect(VideoDetectRecord* record);
std::uint32_t VexoProc_ReadMotionStatus();
