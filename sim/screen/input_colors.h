// What the picture controls of an input do to its colours.
#pragma once

#include <array>
#include <cstdint>

#include "sim/board/chip.h"
#include "sim/screen/screen.h"

namespace sim {

// Works on luminance and colour difference, as a decoder does: contrast and saturation multiply
// the one and the other, 0x80 by one; brightness adds to luminance, a step a level; hue turns the
// colour difference, 256 steps once round. kNeutralColors changes nothing.
class ColorTable {
 public:
  explicit ColorTable(const InputColors& colors);
  Rgb operator()(Rgb pixel) const;

 private:
  // What a level of red, green or blue adds to each of the three, in parts of a level.
  using Sum = std::array<std::int32_t, 3>;
  std::array<std::array<Sum, 256>, 3> of_;
};

}  // namespace sim
