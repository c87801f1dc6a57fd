#include "sim/screen/card_pixels.h"

#include <algorithm>

#include "sim/screen/card_colors.h"

namespace sim {

void CardPixels::Fill(int left, int right, Rgb color) {
  std::fill(red_.begin() + left, red_.begin() + right, color.r);
  std::fill(green_.begin() + left, green_.begin() + right, color.g);
  std::fill(blue_.begin() + left, blue_.begin() + right, color.b);
}

void CardPixels::Lay(int x, Rgb color, unsigned weight) {
  const auto i = static_cast<std::size_t>(x);
  red_[i] = Mix(red_[i], color.r, weight);
  green_[i] = Mix(green_[i], color.g, weight);
  blue_[i] = Mix(blue_[i], color.b, weight);
}

void CardPixels::LayGlyph(int left, const std::uint8_t* coverage, int width, Rgb color) {
  for (int x = 0; x < width;) {
    const std::uint8_t weight = coverage[x];
    const int begin = x++;
    if (weight == 255) {
      // Most of a stroke is such a run.
      while (x < width && coverage[x] == weight) ++x;
      Fill(left + begin, left + x, color);
    } else if (weight != 0) {
      Lay(left + begin, color, weight);
    }
  }
}

}  // namespace sim
