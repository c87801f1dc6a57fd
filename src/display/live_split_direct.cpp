#include "display/live_split_direct.h"

#include <algorithm>

#include "chip/register_bus.h"
#include "display/anti_rolling.h"
#include "display/channel_display.h"
#include "display/display_state.h"
#include "display/split_layout.h"
#include "report/diagnostics.h"

namespace {

constexpr std::uint8_t kShown = kDisplayEnable | kDisplayFront;

// Shows a channel in a window of the mode; scales and layout codes are the caller's.
void ShowInWindow(std::uint8_t channel, std::uint8_t mode, std::uint8_t window) {
  const std::uint8_t chip = TW_GetChipSelect(channel);
  const std::uint8_t position = ChannelPosition(channel);
  WriteWindow(chip, position, WindowOf(g_layout.live, mode, window));
  WriteChannelDisplay(chip, position, kShown);
}

void ShowScaledInWindow(std::uint8_t channel, std::uint8_t mode, std::uint8_t window) {
  const WindowScale& scale = ScaleOfWindow(mode, window);
  TW_SetLiveScaleX(channel, scale.scale, scale.scale);
  WriteLayoutCode(channel, scale.layout);
  ShowInWindow(channel, mode, window);
}

void ShowFullScreen(std::uint8_t first) {
  ScaleEveryChannel(kSplitFull);
  for (std::uint8_t i = 0; i < kChannelsPerChip; ++i) {
    WriteWindow(kChipAll, i, WindowOf(g_layout.live, kSplitFull, 0));
  }
  g_display.selected_channel = first;
  if (g_video.max_channel == 4) {
    for (std::uint8_t i = 0; i < kChannelsPerChip; ++i) {
      WriteChannelDisplay(kChipAll, i, i == first ? kShown : kDisplayEnable);
    }
  } else {
    WriteChannelDisplayToAll(kDisplayEnable);
    WriteChannelDisplay(TW_GetChipSelect(first), ChannelPosition(first), kShown);
  }
  WriteLayoutCodesToAll(kSplitFull);
}

void Show2x2(std::uint8_t first) {
  ScaleEveryChannel(kSplit4);
  for (std::uint8_t k = 0; k < kWindowsOfMode[kSplit4]; ++k) {
    ShowInWindow(ChannelAfter(first, k), kSplit4, k);
  }
  WriteLayoutCodesToAll(kSplit4);
}

// One large window and small ones with consecutive channels from first + small_offset.
void ShowLargeAndSmall(std::uint8_t mode, std::uint8_t large, unsigned small_offset) {
  ShowScaledInWindow(large, mode, 0);
  for (std::uint8_t k = 1; k < kWindowsOfMode[mode]; ++k) {
    ShowScaledInWindow(ChannelAfter(large, small_offset + k - 1u), mode, k);
  }
}

// How far after the large channel the five small windows of mode 2 begin.
unsigned SmallOffsetOf6Split(std::uint8_t option) {
  if (g_video.max_channel == 8 && option != 0) return 3u * option;
  if (g_video.max_channel == 16 && option == 1) return 6;
  if (g_video.max_channel == 16 && option == 2) return 11;
  return 1;
}

void Show3x3(std::uint8_t first, bool second_page) {
  ScaleEveryChannel(kSplit9);
  if (g_video.max_channel == 4) return;  // four channels do not fill a 3 x 3
  const std::uint8_t windows = g_video.max_channel == 8 ? std::uint8_t{8} : kWindowsOfMode[kSplit9];
  for (std::uint8_t k = 0; k < windows; ++k) {
    const unsigned skip = second_page && k >= kPageSkipWindow ? kPageSkip : 0u;
    const std::uint8_t channel = ChannelAfter(first, k + skip);
    WriteLayoutCode(channel, kSplitLayouts[kSplit9].small.layout);
    ShowInWindow(channel, kSplit9, k);
  }
}

void Show4x4(std::uint8_t first) {
  ScaleEveryChannel(kSplit16);
  // Each channel once: on a smaller board the later windows stay empty.
  const std::uint8_t windows = std::min(kWindowsOfMode[kSplit16], g_video.max_channel);
  for (std::uint8_t k = 0; k < windows; ++k) {
    const std::uint8_t channel = ChannelAfter(first, k);
    WriteLayoutCode(channel, kSplitLayouts[kSplit16].small.layout);
    ShowInWindow(channel, kSplit16, k);
  }
}

void ShowSplit(std::uint8_t mode, std::uint8_t first, std::uint8_t option) {
  const bool second_page = g_video.max_channel == 16 && option != 0;
  switch (mode) {
    case kSplitFull:
      return ShowFullScreen(first);
    case kSplit4:
      return Show2x2(first);
    case kSplit6:
      return ShowLargeAndSmall(mode, first, SmallOffsetOf6Split(option));
    case kSplit8:
      return ShowLargeAndSmall(mode, second_page ? ChannelAfter(first, 8) : first, 1);
    case kSplit9:
      return Show3x3(first, second_page);
    case kSplit13:
      return ShowLargeAndSmall(mode, first, second_page ? 4 : 1);
    default:
      return Show4x4(first);
  }
}

// Switches off every channel that is still held: those that no window took.
void ReleaseHeld(std::uint8_t mode) {
  for (std::uint8_t p = 0; p < g_video.chip_count; ++p) {
    for (std::uint8_t i = 0; i < kChannelsPerChip; ++i) {
      const std::uint8_t chip = kChipByPosition[p];
      if ((Read(chip, kChannelDisplay, i) & kDisplayHold) == 0) continue;
      Write(chip, kChannelDisplay, i, mode == kSplit4 ? i : std::uint8_t{0});
    }
  }
}

}  // namespace

void TW_SetLiveSplitDirect(std::uint8_t mode, std::uint8_t first_channel, std::uint8_t option) {
  if (mode >= kSplitModes) {
    // Quirk: the text is spelled so; hosts may look for it.
    VexoDbg_Print(u">> Invlaid Live Split Mode !!");
    return;
  }
  g_display.live_split = mode;
  g_display.split_option = option;

  WriteChannelDisplayToAll(kDisplayEnable | kDisplayHold);
  // Quirk: waits without a limit, where the binary command gives up after a second.
  WaitUntilSettled(kPollWithoutLimit);
  // A board without channels has none to count around; the full screen asks for no counting.
  if (g_video.max_channel != 0 || mode == kSplitFull) ShowSplit(mode, first_channel, option);
  ReleaseHeld(mode);
}

void VexoProc_SetLiveSplitOffset(std::uint8_t mode, std::uint8_t window, std::int8_t dx_start,
                                 std::int8_t dy_start, std::int8_t dx_end, std::int8_t dy_end) {
  SetWindowOffset(g_layout.live, mode, window, {dx_start, dy_start, dx_end, dy_end});
}
