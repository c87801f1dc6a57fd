// How a card becomes the picture of a window: which of its pixels are sampled, and their averages.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "sim/screen/card_pixels.h"
#include "sim/screen/screen.h"

namespace sim {

// Neighbouring samples of a picture's line or column whose average makes one pixel.
struct Samples {
  int first = 0;
  int count = 1;
};

// How one axis of a window maps to its picture, pixel by pixel; ends where the picture ends.
using Axis = std::vector<Samples>;

// Through a scaler: ratio is its 16-bit value, scaled size = size * (ratio + 1) / 65536. Samples
// are rounded to the nearest, for 1/3 and its like are not exact in 16 bits.
Axis ScaledAxis(int window_pixels, int picture_pixels, unsigned ratio, unsigned filter);

// A picture that fills its window, whatever the size of both.
Axis FittedAxis(int window_pixels, int picture_pixels);

// Sums of neighbouring samples of each column, by colour. Windows are whole display units, so that
// no pixel takes more lines than fit.
struct ColumnSums {
  using Sums = std::array<std::uint16_t, kCardWidth>;
  Sums red{};
  Sums green{};
  Sums blue{};
};
static_assert((kCardHeightPal / kPixelsPerUnit + 1) * 255 <= 0xFFFF);

// Adds the levels of a line.
inline void Add(ColumnSums::Sums& sums, const CardPixels::Levels& levels) {
  for (std::size_t x = 0; x < kCardWidth; ++x) {
    sums[x] = static_cast<std::uint16_t>(sums[x] + levels[x]);
  }
}

// The lines of a card, CardLine or TapeLine, each made when it is sampled; the last ones are kept,
// for neighbouring pixels that share them.
template <typename Line>
class Card {
 public:
  Card(unsigned channel, int height, std::uint32_t time_ms)
      : channel_(channel), height_(height), time_ms_(time_ms) {}

  // At the edge the last line counts again.
  ColumnSums Sums(Samples down) {
    ColumnSums sums;
    for (int y = down.first; y < down.first + down.count; ++y) {
      const Line& line = At(std::min(y, height_ - 1));
      Add(sums.red, line.Red());
      Add(sums.green, line.Green());
      Add(sums.blue, line.Blue());
    }
    return sums;
  }

 private:
  const Line& At(int y) {
    Kept& kept = kept_[static_cast<std::size_t>(y) % kept_.size()];
    if (kept.y != y) {
      kept.line.emplace(channel_, y, height_, time_ms_);
      kept.y = y;
    }
    return *kept.line;
  }

  struct Kept {
    int y = -1;
    std::optional<Line> line;
  };

  unsigned channel_;
  int height_;
  std::uint32_t time_ms_;
  std::array<Kept, 4> kept_;
};

// Averages of sums: divides by multiplying, as there are a million divisions in a picture.
class Averages {
 public:
  // The average of the samples that lie in these columns of as many lines; at the edge the last
  // column counts again.
  Rgb Of(const ColumnSums& sums, Samples across, int lines);

 private:
  // Exact while 255 times the square of the count is below this power of two.
  static constexpr int kPartBits = 40;
  static_assert(kCardWidth * kCardHeightPal / (kPixelsPerUnit * kPixelsPerUnit) < 1 << 16);

  int count_ = 0;
  std::uint64_t part_ = 0;
};

}  // namespace sim
