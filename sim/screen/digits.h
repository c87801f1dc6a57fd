// Ten large digits for the test cards, drawn from round strokes.
#pragma once

#include <cstdint>
#include <vector>

namespace sim {

inline constexpr int kDigitWidth = 200;
inline constexpr int kDigitHeight = 330;

// One row of a digit's cell: for each of its kDigitWidth pixels how much the strokes cover, 0 to
// 255. digit is 0 to 9, y 0 to kDigitHeight - 1.
const std::uint8_t* DigitRow(int digit, int y);

// The same digits in another size, below the one above.
class SmallDigits {
 public:
  // height in pixels; the width keeps the digits' shape.
  explicit SmallDigits(int height);
  int Width() const { return width_; }
  int Height() const { return height_; }
  // As DigitRow: Width() pixels, y is 0 to Height() - 1.
  const std::uint8_t* Row(int digit, int y) const;

 private:
  int width_;
  int height_;
  std::vector<std::uint8_t> coverage_;  // digit by digit, row by row
};

}  // namespace sim
