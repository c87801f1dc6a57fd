#include "sim/board/fill_engine.h"

#include <algorithm>

namespace sim {

FillOrder ReadFillOrder(const std::array<std::uint8_t, kRegistersPerPage>& page2) {
  FillOrder order;
  std::copy_n(page2.begin() + kFillData.first, order.data.size(), order.data.begin());
  order.left = page2[kFillLeft.first];
  order.right = page2[kFillRight.first];
  // Bits 7:2 are the high bits of the top line and bit 0 that of the bottom line. Bit 1 is part of
  // neither: it is set in every fill, those that end on line 0 included.
  const int high = page2[kFillHigh.first];
  order.top = high >> 2 << 8 | page2[kFillTop.first];
  order.bottom = (high & kFillHighBottom) << 8 | page2[kFillBottom.first];
  return order;
}

void Bitmap::Fill(const FillOrder& order) {
  const int end = std::min(order.right + 1, kBitmapColumns);
  const int last = std::min(order.bottom, kBitmapLines - 1);
  if (order.left >= end || order.top > last) return;
  if (bytes_.empty()) {
    const auto transparent = [](std::uint8_t byte) { return byte == kBitmapTransparent; };
    if (std::all_of(order.data.begin(), order.data.end(), transparent)) return;
    bytes_.assign(Index(0, kBitmapLines), kBitmapTransparent);
  }
  for (int line = order.top; line <= last; ++line) {
    auto pixel =
        bytes_.begin() + static_cast<std::ptrdiff_t>(Index(order.left * kPixelsPerColumn, line));
    for (int column = order.left; column < end; ++column) {
      pixel = std::copy(order.data.begin(), order.data.end(), pixel);
    }
  }
}

}  // namespace sim
