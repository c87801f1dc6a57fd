#include "display/live_split.h"

#include "chip/register_bus.h"
#include "display/anti_rolling.h"
#include "display/channel_display.h"
#include "display/channel_masks.h"
#include "display/display_state.h"
#include "display/split_layout.h"
#include "report/diagnostics.h"

namespace {

constexpr std::uint8_t kFieldModeFull = 0xFF;
constexpr std::uint8_t kFieldModeSplit = 0xF0;

void PlaceChannel(std::uint8_t channel, std::uint8_t mode, std::uint8_t window) {
  WriteChannelWindow(channel, WindowOf(g_layout.live, mode, window));
}

void HideChannel(std::uint8_t channel) { WriteChannelWindow(channel, kHiddenWindow); }

void ProgramScalers(const BoardVariant& board, std::uint8_t mode, const std::uint8_t* channels) {
  if (!HasLargeWindow(mode)) {
    ScaleEveryChannel(mode);
    if (mode == kSplitFull || mode == kSplit4) WriteLayoutCodesToAll(mode);
    return;
  }
  for (std::uint8_t k = 0; k < kWindowsOfMode[mode]; ++k) {
    if (channels[k] >= board.channels) continue;
    const WindowScale& window = ScaleOfWindow(mode, k);
    TW_SetLiveScaleX(channels[k], window.scale, window.scale);
    WriteLayoutCode(channels[k], window.layout);
  }
}

// 4 channels: the list may be in any order; in mode 1 channels that it leaves out keep their
// rectangles.
void ProgramWindows4Ch(std::uint8_t mode, const std::uint8_t* channels) {
  if (mode == kSplit4) {
    for (std::uint8_t k = 0; k < kWindowsOfMode[mode]; ++k) {
      if (channels[k] < kBoard4Ch.channels) PlaceChannel(channels[k], mode, k);
    }
    return;
  }
  for (std::uint8_t n = 0; n < kBoard4Ch.channels; ++n) {
    if (n == channels[0]) {
      PlaceChannel(n, mode, 0);
    } else {
      HideChannel(n);
    }
  }
  // Quirk: the release sets the front bit of all four anyway; what hides the others is the zero
  // rectangle.
  for (std::uint8_t n = 0; n < kBoard4Ch.channels; ++n) {
    const std::uint8_t front = n == channels[0] ? kDisplayFront.bits : std::uint8_t{0};
    WriteChannelDisplay(kChipAll, n, kDisplayEnable | front);
  }
}

// 8 and 16 channels: one scan with the list as it comes. Quirk: an entry that matches no channel
// any more stops the cursor, and once all windows are filled the rest of the channels keeps its
// rectangles.
void ProgramWindowsByScan(const BoardVariant& board, std::uint8_t mode,
                          const std::uint8_t* channels) {
  const bool codes_by_scan = mode == kSplit9 || mode == kSplit16;
  const std::uint8_t layout = kSplitLayouts[mode].small.layout;
  const bool second_page =
      board.channels == 16 && mode == kSplit9 && channels[0] == kSecondPageFirst;
  std::uint8_t window = 0;
  for (std::uint8_t n = 0; n < board.channels && window < kWindowsOfMode[mode]; ++n) {
    if (n == channels[window]) {
      PlaceChannel(n, mode, window++);
    } else if (second_page && n < kSecondPageWrapped) {  // Quirk: whatever the list says of 0 and 1
      PlaceChannel(n, mode, static_cast<std::uint8_t>(kSecondPageWrapWindow + n));
    } else {
      HideChannel(n);
      continue;
    }
    if (codes_by_scan) WriteLayoutCode(n, layout);
  }
}

}  // namespace

std::int32_t SetLiveSplit(const BoardVariant& board, std::uint8_t mode,
                          const std::uint8_t* channels) {
  if (mode > board.highest_split_mode) return VEXO_ERROR_PARAMETER;
  TW_ApplyAntiRolling();
  ProgramScalers(board, mode, channels);
  if (board.channels == 4) {
    ProgramWindows4Ch(mode, channels);
  } else {
    ProgramWindowsByScan(board, mode, channels);
  }
  TW_ReleaseAntiRolling();
  if (g_video.video_standard == kStandardPal) {
    Write(kChipAll, kVideoFieldMode, mode == kSplitFull ? kFieldModeFull : kFieldModeSplit);
  }
  g_display.live_split = mode;
  return VEXO_OK;
}

std::int32_t TW_SetLiveSplitMode(std::uint8_t mode, const std::uint8_t* channels) {
  if (g_display.view != kViewLive) {
    // Quirk: the text is spelled so; hosts may look for it.
    VexoDbg_Print(u">> ERROR TW_SetLiveSplitMode CURREENT PLAYBACK MODE!!");
    return VEXO_ERROR_FAILED;
  }
  if (mode >= kSplitModes || channels == nullptr) {
    VexoDbg_Print(u">> ERROR TW_SetLiveSplitMode INVALID PARAM!!");
    return VEXO_ERROR_PARAMETER;
  }
  const BoardVariant* board = FindBoardVariant(g_video.max_channel);
  if (board == nullptr || SetLiveSplit(*board, mode, channels) != VEXO_OK) {
    return VEXO_ERROR_FAILED;
  }
  return TW_SetChannelBlankMask(~g_display.live_mask);
}

std::int32_t TW_SetLiveSplit4Ch(std::uint8_t mode, const std::uint8_t* channels) {
  return SetLiveSplit(kBoard4Ch, mode, channels);
}

std::int32_t TW_SetLiveSplit8Ch(std::uint8_t mode, const std::uint8_t* channels) {
  return SetLiveSplit(kBoard8Ch, mode, channels);
}

std::int32_t TW_SetLiveSplit16Ch(std::uint8_t mode, const std::uint8_t* channels) {
  return SetLiveSplit(kBoard16Ch, mode, channels);
}
