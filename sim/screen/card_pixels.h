// What the live and the tape cards are drawn with, a line at a time.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "sim/screen/screen.h"

namespace sim {

inline constexpr int kCardWidth = 720;
inline constexpr int kCardHeightNtsc = 480;
inline constexpr int kCardHeightPal = 576;

// The pixels of one line of a card: red, green and blue apart, as they are averaged.
class CardPixels {
 public:
  using Levels = std::array<std::uint8_t, kCardWidth>;

  explicit CardPixels(Rgb color) { Fill(0, kCardWidth, color); }

  // x is 0 to kCardWidth - 1.
  Rgb At(int x) const {
    const auto i = static_cast<std::size_t>(x);
    return {red_[i], green_[i], blue_[i]};
  }
  const Levels& Red() const { return red_; }
  const Levels& Green() const { return green_; }
  const Levels& Blue() const { return blue_; }

 protected:
  // Columns from left to right, which is the first one outside.
  void Fill(int left, int right, Rgb color);
  // Lays color over one pixel; weight 0 to 255.
  void Lay(int x, Rgb color, unsigned weight);
  // Lays color over width pixels, each by its weight.
  void LayGlyph(int left, const std::uint8_t* coverage, int width, Rgb color);

 private:
  Levels red_;
  Levels green_;
  Levels blue_;
};

}  // namespace sim
