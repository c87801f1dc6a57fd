// The picture of a simulated camera.
#pragma once

#include <cstdint>

#include "sim/screen/screen.h"

namespace sim {

inline constexpr int kCardWidth = 720;
inline constexpr int kCardHeightNtsc = 480;
inline constexpr int kCardHeightPal = 576;

// The bar crosses the card once in this time.
inline constexpr std::uint32_t kCardBarPeriodMs = 4000;

// Colour of a camera's test card at a pixel: the channel number in large digits on the channel's
// own colour, and a bar that moves with time_ms. height is 480 (NTSC) or 576 (PAL).
Rgb TestCardPixel(unsigned channel, int x, int y, int height, std::uint32_t time_ms);

// One line of a card, for many pixels: what does not change along it is worked out once.
class CardLine {
 public:
  // y is 0 to height - 1.
  CardLine(unsigned channel, int y, int height, std::uint32_t time_ms);
  // x is 0 to kCardWidth - 1.
  Rgb At(int x) const;

 private:
  Rgb color_;
  Rgb bar_color_;
  int bar_left_;
  bool border_ = false;        // the line is within the border's height
  bool border_whole_ = false;  // and is its upper or lower edge
  bool fine_ = false;          // the line crosses the fine lines
  int digits_left_ = 0;
  int digit_count_ = 0;  // 0: the line is above or below the digits
  const std::uint8_t* digit_rows_[2] = {};
};

}  // namespace sim
