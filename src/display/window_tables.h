// The window rectangles of every split mode, for live display and for playback.
#pragma once

#include <array>
#include <cstdint>

// In the chip's display units.
struct WindowRect {
  std::uint8_t x_start;
  std::uint8_t x_end;
  std::uint8_t y_start;
  std::uint8_t y_end;
};

inline constexpr std::uint8_t kSplitModes = 7;
inline constexpr std::array<std::uint8_t, kSplitModes> kWindowsOfMode = {1, 4, 6, 8, 9, 13, 16};
inline constexpr std::array<std::uint8_t, kSplitModes> kFirstWindowOfMode = {0,  1,  5, 11,
                                                                             19, 28, 41};
inline constexpr std::uint8_t kWindowsTotal = 57;

using WindowTable = std::array<WindowRect, kWindowsTotal>;

struct LayoutState {
  WindowTable live = {};
  WindowTable play = {};
};
extern LayoutState g_layout;

// Fill a table with the defaults of the current video standard.
void TW_BuildLiveLayout();
void TW_BuildPlayLayout();

// Rectangle of a window; mode below kSplitModes, window below kWindowsOfMode[mode].
inline const WindowRect& WindowOf(const WindowTable& table, std::uint8_t mode,
                                  std::uint8_t window) {
  return table[static_cast<std::uint8_t>(kFirstWindowOfMode[mode] + window)];
}

// What moves a window from its default place, display units.
struct WindowOffset {
  std::int8_t dx_start;
  std::int8_t dy_start;
  std::int8_t dx_end;
  std::int8_t dy_end;
};

// Sets a window to its default plus offsets, each byte wrapping at 8 bits. A mode or window that
// does not exist changes nothing.
void SetWindowOffset(WindowTable& table, std::uint8_t mode, std::uint8_t window,
                     const WindowOffset& offset);

// Writes a rectangle to the window registers of a channel's position on a chip (or on all).
void WriteWindow(std::uint8_t chip, std::uint8_t position, const WindowRect& rect);

// The same for a channel, on the chip that carries it.
void WriteChannelWindow(std::uint8_t channel, const WindowRect& rect);

// Four zeros hide a channel.
inline constexpr WindowRect kHiddenWindow = {0, 0, 0, 0};
