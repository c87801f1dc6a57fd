#include "display/live_pip.h"

#include "chip/register_bus.h"
#include "chip/video_state.h"
#include "display/channel_display.h"
#include "display/live_scale.h"
#include "display/window_tables.h"

namespace {

struct PipWindows {
  WindowRect main;
  WindowRect inset;
};
constexpr PipWindows kPipNtsc = {{0x04, 0xB0, 0x01, 0x77}, {0x78, 0xA2, 0x4B, 0x69}};
constexpr PipWindows kPipPal = {{0x04, 0xB0, 0x01, 0x8E}, {0x78, 0xA2, 0x59, 0x7C}};

void PlaceOnTop(std::uint8_t channel, const WindowRect& rect) {
  WriteChannelWindow(channel, rect);
  WriteChannelDisplay(TW_GetChipSelect(channel), ChannelPosition(channel),
                      kDisplayEnable | kDisplayFront);
}

void ShowAllBehind() { WriteChannelDisplayToAll(kDisplayEnable); }
void ShowAllInFront() { WriteChannelDisplayToAll(kDisplayEnable | kDisplayFront); }

}  // namespace

void TW_SetLivePip(std::uint8_t main, std::uint8_t inset) {
  const PipWindows& windows = IsNtsc() ? kPipNtsc : kPipPal;
  ShowAllBehind();
  // Quirk: the channels above the main one are not hidden.
  for (std::uint8_t n = 0; n < main; ++n) WriteChannelWindow(n, kHiddenWindow);
  TW_SetLiveScaleX(main, kScaleFull, kScaleFull);
  WriteChannelWindow(main, windows.main);
  TW_SetLiveScaleX(inset, kScaleQuarter, kScaleQuarter);
  PlaceOnTop(inset, windows.inset);
}

void TW_StopLivePip() { ShowAllInFront(); }

void TW_SetLiveMultiPip(std::uint8_t channel, std::uint8_t size, std::uint8_t x_start,
                        std::uint8_t x_end, std::uint8_t y_start, std::uint8_t y_end) {
  ShowAllBehind();
  if (size == 0) TW_SetLiveScaleX(channel, kScaleQuarter, kScaleQuarter);
  if (size == 1) TW_SetLiveScaleX(channel, kScaleThird, kScaleThird);
  // Quirk: this overwrites the sizes above, a third included.
  const std::uint8_t scale = size == 2 ? kScaleHalf : kScaleQuarter;
  TW_SetLiveScaleX(channel, scale, scale);
  PlaceOnTop(channel, {x_start, x_end, y_start, y_end});
}

void TW_MoveLiveMultiPip(std::uint8_t channel, std::uint8_t x_start, std::uint8_t x_end,
                         std::uint8_t y_start, std::uint8_t y_end) {
  ShowAllBehind();
  PlaceOnTop(channel, {x_start, x_end, y_start, y_end});
}

void TW_StopLiveMultiPip() { ShowAllInFront(); }
