// What motion detection keeps in memory: masks, levels, shared parameter.
#pragma once

#include <cstdint>

#include "chip/registers.h"

inline constexpr std::uint8_t kMotionRows = 12;
inline constexpr std::uint8_t kMotionColumns = 16;
static_assert(kMotionMaskBytes == kMotionRows * kMotionColumns / 8);

struct MotionState {
  // Two bytes a row: columns 8 to 15, then columns 0 to 7; bit n is column 8 + n, or n.
  std::uint8_t mask[kChannelsMax][kMotionMaskBytes] = {};
  std::uint8_t level[kChannelsMax] = {};  // sensitivity, 0-3
  std::uint8_t ready = 0;                 // 1 once motion detection is set up
  std::uint8_t timing = 0;                // last value of the shared parameter registers
};
extern MotionState g_motion;
