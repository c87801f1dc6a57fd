#include "display/channel_display.h"

#include "chip/register_bus.h"

void WriteChannelDisplay(std::uint8_t chip, std::uint8_t position, std::uint8_t bits) {
  Write(chip, kChannelDisplay, position, static_cast<std::uint8_t>(bits | position));
}

void WriteChannelDisplayToAll(std::uint8_t bits) {
  for (std::uint8_t i = 0; i < kChannelsPerChip; ++i) WriteChannelDisplay(kChipAll, i, bits);
}
