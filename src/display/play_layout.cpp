#include "display/play_layout.h"

#include "chip/register_bus.h"
#include "chip/video_state.h"
#include "display/channel_display.h"
#include "display/split_layout.h"

PlaybackState g_playback;

namespace {

// How long windows take to settle, before a viewer may see them.
constexpr std::uint32_t kSettleMs = 50;

constexpr std::uint8_t kDecodedShown = kDisplayEnable | kDisplayHold | kDisplayDecoded;

// Registers of a decoded picture's window.
struct PlayWindow {
  PlayPattern pattern;
  std::uint8_t kind;
};

struct PlayWindows {
  PlayWindow large;  // window 0 of the modes that have a large one
  PlayWindow small;  // the other windows
};

// By mode.
constexpr std::array<PlayWindows, kSplitModes> kPlayWindows = {{
    {{}, {{0xFF, 0xFF, 0xFF, 0xFF}, 0x00}},
    {{}, {{0xFE, 0xFF, 0xFF, 0xFF}, 0x00}},
    {{{0xAA, 0xAA, 0xAA, 0xAA}, 0x00}, {{0x55, 0x55, 0x55, 0x55}, 0x05}},
    {{{0xFF, 0xFF, 0xFF, 0xFF}, 0x00}, {{0x7F, 0xFF, 0x7F, 0xFF}, 0x09}},
    {{}, {{0xAA, 0xAA, 0xAA, 0xAA}, 0x05}},
    {{{0xFF, 0xFF, 0xFF, 0xFF}, 0x08}, {{0x7F, 0xFF, 0x7F, 0xFF}, 0x09}},
    {{}, {{0x7F, 0xFF, 0x7F, 0xFF}, 0x09}},
}};

void WritePattern(std::uint8_t chip, unsigned position, const PlayPattern& pattern) {
  for (std::uint8_t i = 0; i < kPatternRegisters; ++i) {
    Write(chip, kPlayPattern.At(position, i), pattern[i]);
  }
}

void WriteKind(std::uint8_t chip, unsigned position, std::uint8_t kind) {
  Write(chip, kPlayWindowKind, position, kind);
}

void WriteFirstPath(std::uint8_t chip, std::uint8_t first_channel, std::uint8_t bits) {
  Write(chip, kChannelPath, 0, static_cast<std::uint8_t>(bits | first_channel));
}

// Chip whose window kinds the 2 x 2 sets. Quirk: boards of more than four channels set a single
// one, that of the last listed channel, hidden or not.
std::uint8_t ChipOf2x2(std::uint8_t channels, const std::uint8_t* list) {
  if (channels == 4) return kChipAll;
  const std::uint8_t windows = g_playback.centred_picture != 0 ? 1 : kWindowsOfMode[kSplit4];
  for (std::uint8_t k = windows; k > 0; --k) {
    if (list[k - 1] < channels) return TW_GetChipSelect(list[k - 1]);
  }
  return TW_GetChipSelect(static_cast<std::uint8_t>(channels - 1));
}

}  // namespace

WindowRect FullPicture() {
  return IsNtsc() ? WindowRect{0x00, 0xB4, 0x00, 0x78} : WindowRect{0x00, 0xB4, 0x00, 0x90};
}

WindowRect CentredPicture() {
  return IsNtsc() ? WindowRect{0x2C, 0x82, 0x1E, 0x58} : WindowRect{0x2C, 0x82, 0x1E, 0x64};
}

// ---- Single steps -----------------------------------------------------------------------------

void ShowDecodedChannels() { WriteChannelDisplayToAll(kDecodedShown); }

void BringToFront(std::uint8_t channels, std::uint8_t channel) {
  if (channel >= channels) return;
  WriteChannelDisplay(TW_GetChipSelect(channel), ChannelPosition(channel),
                      kDecodedShown | kDisplayFront);
}

void BeginPlayLayout(std::uint8_t mode) {
  Write(kChipAll, kDisplayMode, mode == kSplitFull ? kModeSingle : kModeSplit);
  // Quirk: all four chip codes, whatever the board has.
  for (std::uint8_t p = 0; p < kChipsMax; ++p) {
    WriteFirstPath(kChipByPosition[p], FirstChannelOf(p), kPathDecoded);
  }
  ShowDecodedChannels();
}

void FinishPlayLayout(std::uint8_t mode) {
  Plat_Sleep(kSettleMs);
  WriteOverlays(mode == kSplitFull ? kOverlaySingle : kOverlaySplit);
  for (std::uint8_t p = 0; p < kChipsMax; ++p) {
    OpenDecodedInput(kChipByPosition[p], FirstChannelOf(p));
  }
}

void WriteDecodedPaths(std::uint8_t chip, std::uint8_t first_channel) {
  for (unsigned i = 1; i < kChannelsPerChip; ++i) {
    Write(chip, kChannelPath, i, static_cast<std::uint8_t>(kPathDecoded | (first_channel + i)));
  }
}

void OpenDecodedInput(std::uint8_t chip, std::uint8_t first_channel) {
  WriteFirstPath(chip, first_channel, kPathOpen | kPathDecoded);
}

void WriteOverlays(std::uint8_t value) {
  for (unsigned i = 0; i < kChannelsPerChip; ++i) {
    Write(kChipAll, kChannelOverlay, i, value);
  }
}

void WritePatternToAll(const PlayPattern& pattern) {
  for (unsigned i = 0; i < kChannelsPerChip; ++i) WritePattern(kChipAll, i, pattern);
}

void WritePatternToAll(std::uint8_t mode) { WritePatternToAll(kPlayWindows[mode].small.pattern); }

void WriteWindowKindToAll(std::uint8_t mode) {
  for (unsigned i = 0; i < kChannelsPerChip; ++i) {
    WriteKind(kChipAll, i, kPlayWindows[mode].small.kind);
  }
}

void WriteWindowKind(std::uint8_t channel, std::uint8_t mode) {
  WriteKind(TW_GetChipSelect(channel), ChannelPosition(channel), kPlayWindows[mode].small.kind);
}

void ResetFirstWindowKind() { WriteKind(kChipAll, 0, 0x00); }

void WriteWindowKindAndScaler(std::uint8_t chip, std::uint8_t mode) {
  for (std::uint8_t i = 0; i < kChannelsPerChip; ++i) {
    WriteKind(chip, i, kPlayWindows[mode].small.kind);
    WriteScalerControl(chip, i, kSplitLayouts[mode].small.layout);
  }
}

void PlacePlayChannel(std::uint8_t channel, std::uint8_t mode, std::uint8_t window) {
  WriteChannelWindow(channel, WindowOf(g_layout.play, mode, window));
}

// ---- Whole layouts ------------------------------------------------------------------------------

void PlaceChannels(std::uint8_t channels, std::uint8_t mode, const WindowOfChannel& window_of) {
  for (std::uint8_t n = 0; n < channels; ++n) {
    if (window_of[n] == kNoWindow) {
      WriteChannelWindow(n, kHiddenWindow);
    } else if (g_playback.centred_picture != 0) {
      WriteChannelWindow(n, CentredPicture());
    } else {
      PlacePlayChannel(n, mode, window_of[n]);
    }
  }
}

void ShowPlay2x2(std::uint8_t channels, const std::uint8_t* list,
                 const WindowOfChannel& window_of) {
  BeginPlayLayout(kSplit4);
  WritePatternToAll(kSplit4);
  PlaceChannels(channels, kSplit4, window_of);
  const std::uint8_t in_front = g_playback.centred_picture != 0 ? 1 : kWindowsOfMode[kSplit4];
  for (std::uint8_t k = 0; k < in_front; ++k) BringToFront(channels, list[k]);
  WriteWindowKindAndScaler(ChipOf2x2(channels, list), kSplit4);
  FinishPlayLayout(kSplit4);
}

void ShowPlayLargeAndSmall(std::uint8_t channels, std::uint8_t mode, const std::uint8_t* list) {
  const PlayWindow& large = kPlayWindows[mode].large;
  const PlayWindow& small = kPlayWindows[mode].small;
  WriteOverlays(mode == kSplit6 ? kOverlaySingle : kOverlaySplit);
  ShowDecodedChannels();

  if (list[0] < channels) {
    const std::uint8_t chip = TW_GetChipSelect(list[0]);
    const std::uint8_t position = ChannelPosition(list[0]);
    WritePattern(chip, position, large.pattern);
    PlacePlayChannel(list[0], mode, 0);
    WriteKind(chip, position, large.kind);
  }
  const auto for_small_windows = [&](auto write) {
    for (std::uint8_t k = 1; k < kWindowsOfMode[mode]; ++k) {
      if (list[k] < channels) write(k, list[k]);
    }
  };
  for_small_windows([&](std::uint8_t, std::uint8_t channel) {
    WritePattern(TW_GetChipSelect(channel), ChannelPosition(channel), small.pattern);
  });
  for_small_windows(
      [&](std::uint8_t k, std::uint8_t channel) { PlacePlayChannel(channel, mode, k); });
  for_small_windows([&](std::uint8_t, std::uint8_t channel) { WriteWindowKind(channel, mode); });
}
