// What every live split mode has in common, whichever path asks for it: layout codes and scales.
#pragma once

#include <array>
#include <cstdint>

#include "VexoCtrlSDK.h"
#include "display/live_scale.h"
#include "display/window_tables.h"

inline constexpr std::uint8_t kSplitFull = VEXO_SPLIT_FULL;
inline constexpr std::uint8_t kSplit4 = VEXO_SPLIT_4;
inline constexpr std::uint8_t kSplit6 = VEXO_SPLIT_6;
inline constexpr std::uint8_t kSplit8 = VEXO_SPLIT_8;
inline constexpr std::uint8_t kSplit9 = VEXO_SPLIT_9;
inline constexpr std::uint8_t kSplit13 = VEXO_SPLIT_13;
inline constexpr std::uint8_t kSplit16 = VEXO_SPLIT_16;
static_assert(kSplitModes == kSplit16 + 1, "the tables by mode have a row for each");

// Layout code (of the scaler control register) and scale code of a window.
struct WindowScale {
  std::uint8_t layout;
  std::uint8_t scale;
};

struct SplitLayout {
  WindowScale large;  // window 0 of the modes that have a large one
  WindowScale small;  // the other windows
};

// By mode.
inline constexpr std::array<SplitLayout, kSplitModes> kSplitLayouts = {{
    {{}, {0x0, kScaleFull}},
    {{}, {0x1, kScaleHalf}},
    {{0x0, kScaleTwoThirds}, {0xA, kScaleThird}},
    {{0x0, kScaleThreeQuarters}, {0xF, kScaleQuarter}},
    {{}, {0xA, kScaleThird}},
    {{0x5, kScaleHalf}, {0xF, kScaleQuarter}},
    {{}, {0xF, kScaleQuarter}},
}};

// Whether window 0 of a mode is larger than the others; its windows are then scaled one by one.
constexpr bool HasLargeWindow(std::uint8_t mode) {
  return mode == kSplit6 || mode == kSplit8 || mode == kSplit13;
}

// The second 3 x 3 page of a 16-channel board begins at channel 9 and wraps around: its windows 7
// and 8 are those of channels 0 and 1.
inline constexpr std::uint8_t kSecondPageFirst = 9;
inline constexpr std::uint8_t kSecondPageWrapped = 2;
inline constexpr std::uint8_t kSecondPageWrapWindow = 7;

// The text path's second page keeps the first windows and skips channels before the others.
inline constexpr std::uint8_t kPageSkipWindow = 2;
inline constexpr unsigned kPageSkip = 7;

// Channel number `offset` places after `first`, counted around the board; 0 where there is none.
std::uint8_t ChannelAfter(unsigned first, unsigned offset);

constexpr const WindowScale& ScaleOfWindow(std::uint8_t mode, std::uint8_t window) {
  const SplitLayout& layout = kSplitLayouts[mode];
  return window == 0 && HasLargeWindow(mode) ? layout.large : layout.small;
}

// Writes a layout code to the scaler of a position on a chip (or on all).
void WriteScalerControl(std::uint8_t chip, std::uint8_t position, std::uint8_t layout);

// Sets the scale of every channel of the board to that of a mode's small windows.
void ScaleEveryChannel(std::uint8_t mode);

// Writes the layout code of a mode without a large window to all channels of all chips.
void WriteLayoutCodesToAll(std::uint8_t mode);

// Writes the layout code of one channel.
void WriteLayoutCode(std::uint8_t channel, std::uint8_t layout);
