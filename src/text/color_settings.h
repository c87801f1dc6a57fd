// Picture colours of each channel, as set from the text line.
#pragma once

#include <cstdint>

#include "chip/registers.h"

struct ColorSettings {
  std::uint8_t brightness = 0;
  std::uint8_t contrast = 0;
  std::uint8_t hue = 0;
  std::uint8_t saturation = 0;
};

struct ColorState {
  ColorSettings channel[kChannelsMax];
};
extern ColorState g_color;

// Set one field of a channel and write all of its colours. The channel count as channel means every
// channel, but for the hue; channels above it do nothing.
void SetColorHue(std::uint8_t channel, std::uint8_t hue);
void SetColorSaturation(std::uint8_t channel, std::uint8_t saturation);
void SetColorContrast(std::uint8_t channel, std::uint8_t contrast);
void SetColorBrightness(std::uint8_t channel, std::uint8_t brightness);

// The same for all fields.
void SetColors(std::uint8_t channel, const ColorSettings& colors);
