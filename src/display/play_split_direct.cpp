#include "display/play_split_direct.h"

#include <algorithm>

#include "chip/register_bus.h"
#include "display/board_variant.h"
#include "display/display_state.h"
#include "display/play_layout.h"
#include "display/split_layout.h"
#include "report/diagnostics.h"

namespace {

// ---- Preparation ------------------------------------------------------------------------------

// What a mode of TW_SetPlaySetup writes after the paths.
struct PlaySetup {
  bool path;             // overlay and display mode registers
  std::uint8_t overlay;  // of the former
  PlayPattern pattern;
  std::uint8_t source;
};

constexpr std::uint8_t kSetupModes = 3;
using PlaySetups = std::array<PlaySetup, kSetupModes>;

constexpr PlaySetups kSetups4Ch = {{
    {true, kOverlaySplit, {0xFF, 0xFF, 0x7F, 0xFF}, kSourceDefault},
    {true, kOverlaySplit, {0xFF, 0xFF, 0xFF, 0xFF}, kSourceDefault},
    {false, {}, {0xF7, 0xFF, 0xF7, 0xFF}, 0x03},
}};
constexpr PlaySetups kSetups8Ch = {{
    {true, kOverlaySplit, {0xAA, 0xAA, 0x55, 0x55}, kSourceDefault},
    {true, kOverlaySplit, {0xAA, 0xAA, 0xAA, 0xAA}, kSourceDefault},
    {true, kOverlaySingle, {0xAA, 0xAA, 0xAA, 0xAA}, 0x03},
}};
constexpr PlaySetups kSetups16Ch = {{
    {true, kOverlaySplit, {0x7F, 0xFF, 0x3F, 0xFF}, kSourceDefault},
    {true, kOverlaySplit, {0x7F, 0xFF, 0x7F, 0xFF}, kSourceDefault},
    {true, kOverlaySplit, {0xFF, 0xFF, 0x7F, 0xFF}, kSourceDefault},
}};

constexpr const PlaySetups& SetupsOf(const BoardVariant& board) {
  return board.channels == 4 ? kSetups4Ch : board.channels == 8 ? kSetups8Ch : kSetups16Ch;
}

void OpenPaths(const BoardVariant& board) {
  for (std::uint8_t p = 0; p < board.chips; ++p) {
    const std::uint8_t chip = board.channels == 4 ? kChipAll : kChipByPosition[p];
    OpenDecodedInput(chip, FirstChannelOf(p));
    WriteDecodedPaths(chip, FirstChannelOf(p));
  }
}

// ---- Splits -------------------------------------------------------------------------------------

using ChannelList = std::array<std::uint8_t, kChannelsMax>;

ChannelList ConsecutiveFrom(std::uint8_t first) {
  ChannelList list;
  for (std::uint8_t k = 0; k < kChannelsMax; ++k) list[k] = ChannelAfter(first, k);
  return list;
}

void ShowCentred(std::uint8_t channel) {
  WindowOfChannel window_of;
  for (std::uint8_t n = 0; n < kChannelsMax; ++n) window_of[n] = n < channel ? kNoWindow : 0;
  ShowPlay2x2(g_video.max_channel, &channel, window_of);
}

void Show2x2(const ChannelList& list) {
  WindowOfChannel window_of;
  window_of.fill(kNoWindow);
  for (std::uint8_t k = 0; k < kWindowsOfMode[kSplit4]; ++k) window_of[list[k]] = k;
  ShowPlay2x2(g_video.max_channel, list.data(), window_of);
}

// How the 3 x 3 and the 4 x 4 begin.
void ClearPath() {
  WriteOverlays(kOverlaySplit);
  Write(kChipAll, kDisplayMode, kModeSingle);
  ShowDecodedChannels();
}

void HideAllChannels() {
  for (std::uint8_t i = 0; i < kChannelsPerChip; ++i) WriteWindow(kChipAll, i, kHiddenWindow);
}

void Show3x3(const ChannelList& list) {
  ClearPath();
  HideAllChannels();
  ResetFirstWindowKind();
  WritePatternToAll(kSplit9);
  const std::uint8_t windows = std::min(kWindowsOfMode[kSplit9], g_video.max_channel);
  for (std::uint8_t k = 0; k < windows; ++k) PlacePlayChannel(list[k], kSplit9, k);
  for (std::uint8_t k = 0; k < windows; ++k) WriteWindowKind(list[k], kSplit9);
}

// Every channel in the window of its own number.
void Show4x4() {
  ClearPath();
  ResetFirstWindowKind();
  WritePatternToAll(kSplit16);
  HideAllChannels();
  // Quirk: eight channels also where the board has four.
  const std::uint8_t windows = g_video.max_channel == 16 ? 16 : 8;
  for (std::uint8_t n = 0; n < windows; ++n) PlacePlayChannel(n, kSplit16, n);
  WriteWindowKindToAll(kSplit16);
}

void ShowSplit(std::uint8_t mode, std::uint8_t channel) {
  const ChannelList list = ConsecutiveFrom(channel);
  switch (mode) {
    case kSplitFull:
      return ShowCentred(channel);
    case kSplit4:
      return Show2x2(list);
    case kSplit9:
      return Show3x3(list);
    case kSplit16:
      return Show4x4();
    default:
      return ShowPlayLargeAndSmall(g_video.max_channel, mode, list.data());
  }
}

}  // namespace

void TW_SetPlaySetup(std::uint8_t mode, std::uint8_t /*option*/) {
  ShowDecodedChannels();
  const BoardVariant* board = FindBoardVariant(g_video.max_channel);
  if (board != nullptr) OpenPaths(*board);
  Write(kChipAll, kDisplaySource, kSourceDefault);
  if (board == nullptr || mode >= kSetupModes) return;

  const PlaySetup& setup = SetupsOf(*board)[mode];
  if (setup.path) {
    WriteOverlays(setup.overlay);
    Write(kChipAll, kDisplayMode, kModeSingle);
  }
  WritePatternToAll(setup.pattern);
  if (setup.source != kSourceDefault) Write(kChipAll, kDisplaySource, setup.source);
}

void TW_SetPlaySplitDirect(std::uint8_t mode, std::uint8_t channel) {
  if (mode >= kSplitModes) {
    // Quirk: the text is spelled so; hosts may look for it.
    VexoDbg_Print(u">> Invlaid Play Split Mode !!");
    return;
  }
  const bool single = mode == kSplitFull;
  g_playback.centred_picture = single ? 1 : 0;
  if (!single && g_video.max_channel == 4) Write(kChipAll, kZoomControl, 0x00);
  // A centred picture is one window of the 2 x 2.
  g_display.play_split = single ? kSplit4 : mode;
  // A board without channels has none to count around; these two begin or do without counting.
  const bool counts = mode != kSplit9 && mode != kSplit16;
  if (g_video.max_channel != 0 || !counts) ShowSplit(mode, channel);
}

void TW_SetPlaySplitOffset(std::uint8_t mode, std::uint8_t window, std::int8_t dx_start,
                           std::int8_t dy_start, std::int8_t dx_end, std::int8_t dy_end) {
  SetWindowOffset(g_layout.play, mode, window, {dx_start, dy_start, dx_end, dy_end});
}
