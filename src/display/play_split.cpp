#include "display/play_split.h"

#include "chip/register_bus.h"
#include "display/channel_masks.h"
#include "display/display_state.h"
#include "display/play_layout.h"
#include "display/split_layout.h"
#include "report/diagnostics.h"

namespace {

constexpr std::uint8_t kZoomOff = 0x00;
constexpr std::uint8_t kZoomFullPicture = kZoomOn | kZoomDecoded;

// Gives windows to the channels, lowest channel first, with the list as it comes. Quirk: an entry
// that matches no channel any more stops the cursor.
WindowOfChannel MatchAscending(std::uint8_t channels, const std::uint8_t* list,
                               std::uint8_t windows) {
  WindowOfChannel window_of;
  window_of.fill(kNoWindow);
  std::uint8_t window = 0;
  for (std::uint8_t n = 0; n < channels && window < windows; ++n) {
    if (n == list[window]) window_of[n] = window++;
  }
  return window_of;
}

void ShowFullPicture(const BoardVariant& board, const std::uint8_t* channels) {
  BeginPlayLayout(kSplitFull);
  WritePatternToAll(kSplitFull);
  for (std::uint8_t i = 0; i < kChannelsPerChip; ++i) {
    WriteWindow(kChipAll, i, FullPicture());
  }
  BringToFront(board.channels, channels[0]);
  Write(kChipAll, kZoomX, 0x00);
  Write(kChipAll, kZoomY, 0x00);
  Write(kChipAll, kZoomControl, kZoomFullPicture);
  // Quirk: 8 channels leave these registers alone.
  if (board.channels != 8) WriteWindowKindAndScaler(kChipAll, kSplitFull);
  FinishPlayLayout(kSplitFull);
}

void Show2x2(const BoardVariant& board, const std::uint8_t* channels) {
  // Quirk: every channel that the list meets may share the one centred window.
  const std::uint8_t windows =
      g_playback.centred_picture != 0 ? board.channels : kWindowsOfMode[kSplit4];
  ShowPlay2x2(board.channels, channels, MatchAscending(board.channels, channels, windows));
}

void Show3x3(const BoardVariant& board, const std::uint8_t* channels) {
  BeginPlayLayout(kSplit9);
  WritePatternToAll(kSplit9);
  WindowOfChannel window_of = MatchAscending(board.channels, channels, kWindowsOfMode[kSplit9]);
  if (board.channels == 16 && channels[0] == kSecondPageFirst) {
    // Quirk: both entries are compared with 0, so that a list that ends in 0, 1 hides channel 1.
    for (std::uint8_t n = 0; n < kSecondPageWrapped; ++n) {
      const auto window = static_cast<std::uint8_t>(kSecondPageWrapWindow + n);
      if (channels[window] == 0) window_of[n] = window;
    }
  }
  PlaceChannels(board.channels, kSplit9, window_of);
  for (std::uint8_t k = 0; k < kWindowsOfMode[kSplit9]; ++k) {
    if (channels[k] < board.channels) WriteWindowKind(channels[k], kSplit9);
  }
  FinishPlayLayout(kSplit9);
}

void Show4x4(const BoardVariant& board, const std::uint8_t* channels) {
  BeginPlayLayout(kSplit16);
  ResetFirstWindowKind();
  WritePatternToAll(kSplit16);
  for (std::uint8_t k = 0; k < kWindowsOfMode[kSplit16]; ++k) {
    if (channels[k] < board.channels) PlacePlayChannel(channels[k], kSplit16, k);
  }
  WriteWindowKindToAll(kSplit16);
  FinishPlayLayout(kSplit16);
}

}  // namespace

std::int32_t SetPlaySplit(const BoardVariant& board, std::uint8_t mode, std::uint8_t option,
                          const std::uint8_t* channels) {
  if (g_playback.full_picture != 0) Write(kChipAll, kZoomControl, kZoomOff);

  const bool single = mode == kSplitFull;
  g_playback.full_picture = single && option != 0 ? 1 : 0;
  g_playback.centred_picture = single && option == 0 ? 1 : 0;
  // Quirk: a single picture without the option is one centred window of the 2 x 2.
  if (g_playback.centred_picture != 0) mode = kSplit4;
  if (mode > board.highest_split_mode) return VEXO_ERROR_PARAMETER;

  switch (mode) {
    case kSplitFull:
      ShowFullPicture(board, channels);
      break;
    case kSplit4:
      Show2x2(board, channels);
      break;
    case kSplit9:
      Show3x3(board, channels);
      break;
    case kSplit16:
      Show4x4(board, channels);
      break;
    default:
      ShowPlayLargeAndSmall(board.channels, mode, channels);
      break;
  }
  g_display.play_split = mode;
  return VEXO_OK;
}

std::int32_t TW_SetPlaySplitMode(std::uint8_t mode, std::uint8_t option,
                                 const std::uint8_t* channels) {
  if (g_display.view != kViewPlayback) {
    // Quirk: the text is spelled so; hosts may look for it.
    VexoDbg_Print(u">> ERROR TW_SetPlaySplitMode CURREENT LIVE MODE!!");
    return VEXO_ERROR_FAILED;
  }
  if (mode >= kSplitModes || channels == nullptr) {
    VexoDbg_Print(u">> ERROR TW_SetPlaySplitMode INVALID PARAM!!");
    return VEXO_ERROR_PARAMETER;
  }
  // Quirk: only the switch into playback lays these out.
  if (HasLargeWindow(mode)) {
    VexoDbg_Print(u">> ERROR TW_SetPlaySplitMode NOT SUPPORT SPLIT MODE(%d)!!", mode);
    return VEXO_ERROR_PARAMETER;
  }
  const BoardVariant* board = FindBoardVariant(g_video.max_channel);
  if (board == nullptr) return VEXO_ERROR_FAILED;

  // No half-built picture is seen: all channels are blank until the layout stands.
  const std::uint32_t applied = g_display.blank_mask.playback;
  TW_SetChannelBlankMask(kBoard16Ch.all_channels);
  const std::int32_t result = SetPlaySplit(*board, mode, option, channels);
  g_display.blank_mask.playback = applied;
  if (result != VEXO_OK) {
    TW_SetChannelBlankMask(applied);
    return VEXO_ERROR_FAILED;
  }
  return TW_SetChannelBlankMask(~g_display.play_mask);
}

std::int32_t TW_SetPlaySplit4Ch(std::uint8_t mode, std::uint8_t option,
                                const std::uint8_t* channels) {
  return SetPlaySplit(kBoard4Ch, mode, option, channels);
}

std::int32_t TW_SetPlaySplit8Ch(std::uint8_t mode, std::uint8_t option,
                                const std::uint8_t* channels) {
  return SetPlaySplit(kBoard8Ch, mode, option, channels);
}

std::int32_t TW_SetPlaySplit16Ch(std::uint8_t mode, std::uint8_t option,
                                 const std::uint8_t* channels) {
  return SetPlaySplit(kBoard16Ch, mode, option, channels);
}

void TW_ResetPlayOverlay() {
  if (g_playback.full_picture != 0) {
    WriteOverlays(kOverlaySingle);
    Write(kChipAll, kZoomX, 0x00);
    Write(kChipAll, kZoomY, 0x00);
    Write(kChipAll, kChannelOverlay, 2, kOverlaySingle);
    Write(kChipAll, kChannelOverlay, 3, kOverlaySingle);
    Write(kChipAll, kDisplayMode, kModeSingle);
    return;
  }
  Write(kChipAll, kChannelOverlay, 2, kOverlayReset);
  Write(kChipAll, kChannelOverlay, 3, kOverlayReset);
  Write(kChipAll, kDisplayMode, kModeSplit);
}
