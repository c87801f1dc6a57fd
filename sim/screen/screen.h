// What a viewer would see, composed from the chips' registers and the cameras alone.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "sim/board/board.h"

namespace sim {

struct Rgb {
  std::uint8_t r = 0;
  std::uint8_t g = 0;
  std::uint8_t b = 0;
  bool operator==(const Rgb&) const = default;
};

struct Image {
  int width = 0;
  int height = 0;
  std::vector<Rgb> pixels;  // row by row

  Rgb& At(int x, int y) { return pixels[Index(x, y)]; }
  const Rgb& At(int x, int y) const { return pixels[Index(x, y)]; }
  bool operator==(const Image&) const = default;

 private:
  std::size_t Index(int x, int y) const {
    return static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
           static_cast<std::size_t>(x);
  }
};

// An image of one colour.
Image FilledImage(int width, int height, Rgb fill);

inline constexpr int kScreenWidth = 720;
inline constexpr int kScreenHeightNtsc = 480;
inline constexpr int kScreenHeightPal = 576;
inline constexpr int kPixelsPerUnit = 4;  // of a display unit, both ways

// What the screen shows where neither a camera picture nor a decoded one is.
inline constexpr Rgb kScreenBackground{14, 14, 16};  // no window
inline constexpr Rgb kScreenBlanked{0, 0, 0};        // a window with its blank bit set
inline constexpr Rgb kScreenNoSignal{16, 28, 140};   // a window whose camera is lost
inline constexpr Rgb kScreenNoPicture{44, 18, 52};   // part of a window that its picture misses,
                                                     // or all of it: the decoded input is off

// The screen at the board's current time: 720 x 480 pixels on NTSC, 720 x 576 on PAL; one display
// unit is 4 x 4 pixels. A window shows its camera's test card through its scaler, in the colours
// that the picture controls of its input make of it, or fills itself with the tape card of the
// channel that its path takes from the decoder. Motion grids lie on the windows and are zoomed with
// them; bitmaps lie on the screen, above the zoom. A colour bar, which the master puts out instead
// of its picture, hides all of that.
Image ComposeScreen(const Board& board);

// A window as it lies on that screen, zoom and all: whose registers make it, and what it shows.
struct ShownWindow {
  enum class Shows : std::uint8_t { Camera, Tape, Nothing, Blank };
  unsigned channel = 0;  // 4 * chip + position
  int left = 0;          // pixels; right and bottom are the first ones outside
  int right = 0;
  int top = 0;
  int bottom = 0;
  bool front = false;
  bool frozen = false;
  Shows shows = Shows::Camera;
  unsigned picture = 0;  // channel whose camera or tape it shows
  bool signal = false;   // of that camera, when it was frozen if it is
};

// All of which some part is on the screen, topmost first; none under a colour bar.
std::vector<ShownWindow> ShownWindows(const Board& board);

}  // namespace sim
