#include "motion/motion_detect.h"

#include <array>
#include <cstring>

#include "VexoCtrlSDK.h"
#include "chip/register_bus.h"
#include "chip/video_state.h"
#include "motion/motion_state.h"

MotionState g_motion;

namespace {

// The three level registers of a channel, by sensitivity.
constexpr std::array<std::array<std::uint8_t, 3>, 4> kLevels = {{
    {0xCF, 0x07, 0x51},
    {0x4C, 0x08, 0x41},
    {0x08, 0x09, 0x21},
    {0x04, 0x0A, 0x01},
}};

constexpr std::uint8_t kTimingDefault = 3;
constexpr std::uint8_t kTimingEnable = 0xAA;

void WriteMask(std::uint8_t channel, const std::uint8_t* mask) {
  WriteRun(TW_GetChipSelect(channel), kMotionMask.At(ChannelPosition(channel), 0), mask,
           kMotionMaskBytes);
}

void WriteMaskByte(std::uint8_t channel, unsigned index) {
  Write(TW_GetChipSelect(channel), kMotionMask.At(ChannelPosition(channel), index),
        g_motion.mask[channel][index]);
}

constexpr std::uint8_t ReverseBits(std::uint8_t value) {
  unsigned reversed = 0;
  for (unsigned bit = 0; bit < 8; ++bit) {
    if ((value & (1u << bit)) != 0) reversed |= 0x80u >> bit;
  }
  return static_cast<std::uint8_t>(reversed);
}

// Hosts count cells from the left, the chip from the right.
void TransformMask(std::uint8_t* mask) {
  for (unsigned row = 0; row < kMotionRows; ++row) {
    std::uint8_t* pair = mask + 2 * row;
    const std::uint8_t left = ReverseBits(pair[0]);
    pair[0] = ReverseBits(pair[1]);
    pair[1] = left;
  }
}

// Transforms the record's mask and programs it with the level. Quirk: the host gets it back so.
std::int32_t ProgramMotionRecord(VexoMotionMaskRecord* record) {
  const std::uint8_t channel = record->channel;
  if (channel >= g_video.max_channel) return VEXO_ERROR_PARAMETER;
  TransformMask(record->mask);
  WriteMask(channel, record->mask);
  TW_SetMotionLevel(channel, record->level);
  return VEXO_OK;
}

void KeepMotionInfo(std::uint8_t channel, std::uint8_t level, const std::uint8_t* mask) {
  g_motion.level[channel] = level;
  std::memcpy(g_motion.mask[channel], mask, kMotionMaskBytes);
}

}  // namespace

void TW_InitMotionDetect() {
  for (std::uint8_t c = 0; c < g_video.max_channel; ++c) WriteMask(c, g_motion.mask[c]);
  for (std::uint8_t c = 0; c < g_video.max_channel; ++c) TW_SetMotionLevel(c, g_motion.level[c]);
  TW_SetMotionTiming(kTimingDefault, kTimingDefault);
  g_motion.ready = 1;
}

void TW_ApplyMotionInfo(std::uint8_t channel) {
  if (channel >= g_video.max_channel) return;
  WriteMask(channel, g_motion.mask[channel]);
  TW_SetMotionLevel(channel, g_motion.level[channel]);
}

void StoreMotionInfo(std::uint8_t channel, std::uint8_t level, const std::uint8_t* mask) {
  if (channel >= kChannelsMax) return;
  KeepMotionInfo(channel, level, mask);
  TW_ApplyMotionInfo(channel);
}

// Quirk: the level table stays. A preview goes through here and must not be kept.
void TW_SetMotionLevel(std::uint8_t channel, std::uint8_t level) {
  if (level >= kLevels.size()) return;
  for (unsigned i = 0; i < kLevels[level].size(); ++i) {
    Write(TW_GetChipSelect(channel), kMotionLevel.At(ChannelPosition(channel), i),
          kLevels[level][i]);
  }
}

void TW_ToggleMotionCell(std::uint8_t channel, std::uint8_t column, std::uint8_t row) {
  if (channel >= kChannelsMax || row >= kMotionRows) return;
  const unsigned index = 2u * row + (column < 8 ? 1u : 0u);
  std::uint8_t& cells = g_motion.mask[channel][index];
  cells = static_cast<std::uint8_t>(cells ^ (1u << (column % 8)));
  WriteMaskByte(channel, index);
}

void TW_SetMotionMaskAll(std::uint8_t channel, std::uint8_t clear) {
  if (channel >= kChannelsMax) return;
  for (unsigned i = 0; i < kMotionMaskBytes; ++i) {
    g_motion.mask[channel][i] = clear == 0 ? 0xFF : 0x00;
    WriteMaskByte(channel, i);
  }
}

void TW_SetMotionTiming(std::uint8_t low, std::uint8_t high) {
  if (low > 11) low = kTimingDefault;
  if (high > 11) high = 9;
  g_motion.timing = static_cast<std::uint8_t>((high << 4) | low);
  for (unsigned i = 0; i < kMotionTiming.length; ++i) {
    Write(kChipAll, kMotionTiming.At(i), g_motion.timing);
  }
  Write(kChipAll, kMotionTimingEnable, kTimingEnable);
}

std::int32_t TW_SetMotionMask(VexoMotionMaskRecord* record) {
  const std::int32_t result = ProgramMotionRecord(record);
  if (result == VEXO_OK) {
    KeepMotionInfo(record->channel, record->level, record->mask);
  }
  return result;
}

std::int32_t TW_PreviewMotionMask(VexoMotionMaskRecord* record) {
  return ProgramMotionRecord(record);
}
