// The split modes: their windows, and what the scalers do in each.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace test {

using Rect = std::array<int, 4>;  // x start, x end, y start, y end
inline constexpr Rect kHidden = {0, 0, 0, 0};

// Windows of a split mode, in window order.
std::vector<Rect> DefaultRects(int mode, bool ntsc);
inline constexpr std::array<int, 7> kWindows = {1, 4, 6, 8, 9, 13, 16};

// One large window, window 0, among small ones.
constexpr bool IsLargeAndSmall(int mode) { return mode == 2 || mode == 3 || mode == 5; }

// Both bytes of a scale code's ratio, vertical and horizontal alike; none where there is no such
// code.
struct Ratio {
  int high;
  int low;
};
std::optional<Ratio> RatioOf(int code);

// How a window of a mode shows a camera: scale code and layout code.
struct Scaling {
  int scale;
  int code;
};
Scaling ScalingOf(int mode, int window);

// How it shows a decoded picture: the registers of the pattern, and the window kind.
struct DecodedWindow {
  std::array<int, 4> pattern;
  int kind;
};
DecodedWindow DecodedWindowOf(int mode, int window);

// The single pictures of playback and the inset of live display, which are in no table.
Rect FullPictureRect(bool ntsc);
Rect CentredPictureRect(bool ntsc);
Rect PipInsetRect(bool ntsc);

}  // namespace test
