// A chip's bitmap memory and the engine that fills rectangles of it.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "chip/registers.h"

namespace sim {

// A column of the engine is one data access of four bytes, one a pixel. Lines are those of a field,
// so that each is two lines of the screen: 310 hold the longest picture, with its blanking.
inline constexpr int kBitmapColumns = 180;
inline constexpr int kPixelsPerColumn = 4;
inline constexpr int kBitmapWidth = kBitmapColumns * kPixelsPerColumn;
inline constexpr int kBitmapLines = 310;
inline constexpr int kScreenLinesPerBitmapLine = 2;

inline constexpr std::uint8_t kBitmapTransparent = 0xFF;

// A rectangle as the registers name it: columns and lines, the last ones included.
struct FillOrder {
  std::array<std::uint8_t, kPixelsPerColumn> data{};
  int left = 0;
  int right = 0;
  int top = 0;
  int bottom = 0;
};

// The order that a chip's page 2 holds.
FillOrder ReadFillOrder(const std::array<std::uint8_t, kRegistersPerPage>& page2);

// One byte a pixel; transparent at power-up.
class Bitmap {
 public:
  // What lies outside of the memory is left out; nothing is drawn from right to left or upwards.
  void Fill(const FillOrder& order);
  std::uint8_t At(int x, int line) const {
    return bytes_.empty() ? kBitmapTransparent : bytes_[Index(x, line)];
  }
  // False means that all of it is transparent.
  bool Drawn() const { return !bytes_.empty(); }

 private:
  static std::size_t Index(int x, int line) {
    return static_cast<std::size_t>(line) * kBitmapWidth + static_cast<std::size_t>(x);
  }

  std::vector<std::uint8_t> bytes_;  // line by line; empty until something is to be seen
};

}  // namespace sim
