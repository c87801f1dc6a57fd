#include "display/split_layout.h"

#include "chip/register_bus.h"
#include "chip/video_state.h"

std::uint8_t ChannelAfter(unsigned first, unsigned offset) {
  if (g_video.max_channel == 0) return 0;
  return static_cast<std::uint8_t>((first + offset) % g_video.max_channel);
}

void WriteScalerControl(std::uint8_t chip, std::uint8_t position, std::uint8_t layout) {
  Write(chip, kScalerControl, position, static_cast<std::uint8_t>((position << 6) | layout));
}

void ScaleEveryChannel(std::uint8_t mode) {
  const std::uint8_t scale = kSplitLayouts[mode].small.scale;
  for (std::uint8_t n = 0; n < g_video.max_channel; ++n) TW_SetLiveScaleX(n, scale, scale);
}

void WriteLayoutCodesToAll(std::uint8_t mode) {
  for (std::uint8_t i = 0; i < kChannelsPerChip; ++i) {
    WriteScalerControl(kChipAll, i, kSplitLayouts[mode].small.layout);
  }
}

void WriteLayoutCode(std::uint8_t channel, std::uint8_t layout) {
  WriteScalerControl(TW_GetChipSelect(channel), ChannelPosition(channel), layout);
}
