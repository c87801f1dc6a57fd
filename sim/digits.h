// Ten large digits for the test cards, drawn from round strokes.
#pragma once

#include <cstdint>

namespace sim {

inline constexpr int kDigitWidth = 200;
inline constexpr int kDigitHeight = 330;

// One row of a digit's cell: for each of its kDigitWidth pixels how much the strokes cover, 0 to
// 255. digit is 0 to 9, y 0 to kDigitHeight - 1.
const std::uint8_t* DigitRow(int digit, int y);

}  // namespace sim
