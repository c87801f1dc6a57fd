#include "text/color_settings.h"

#include "chip/video_state.h"
#include "display/live_scale.h"

ColorState g_color;

namespace {

void WriteColors(std::uint8_t number, const ColorSettings& colors) {
  TW_SetInputRegs(number, colors.hue, colors.saturation, colors.contrast, colors.brightness);
}

void SetField(std::uint8_t channel, std::uint8_t ColorSettings::*field, std::uint8_t value) {
  g_color.channel[channel].*field = value;
  WriteColors(channel, g_color.channel[channel]);
}

void SetFieldOfOneOrAll(std::uint8_t channel, std::uint8_t ColorSettings::*field,
                        std::uint8_t value) {
  if (channel < g_video.max_channel) return SetField(channel, field, value);
  if (channel > g_video.max_channel) return;
  for (std::uint8_t n = 0; n < g_video.max_channel; ++n) SetField(n, field, value);
}

}  // namespace

// Quirk: no hue of all channels at once.
void SetColorHue(std::uint8_t channel, std::uint8_t hue) {
  if (channel < g_video.max_channel) SetField(channel, &ColorSettings::hue, hue);
}

void SetColorSaturation(std::uint8_t channel, std::uint8_t saturation) {
  SetFieldOfOneOrAll(channel, &ColorSettings::saturation, saturation);
}

void SetColorContrast(std::uint8_t channel, std::uint8_t contrast) {
  SetFieldOfOneOrAll(channel, &ColorSettings::contrast, contrast);
}

void SetColorBrightness(std::uint8_t channel, std::uint8_t brightness) {
  SetFieldOfOneOrAll(channel, &ColorSettings::brightness, brightness);
}

void SetColors(std::uint8_t channel, const ColorSettings& colors) {
  if (channel > g_video.max_channel) return;
  if (channel < g_video.max_channel) {
    g_color.channel[channel] = colors;
  } else {
    for (std::uint8_t n = 0; n < g_video.max_channel; ++n) g_color.channel[n] = colors;
  }
  WriteColors(channel, colors);
}
