#include "sim/screen/card_scaler.h"

namespace sim {

Axis ScaledAxis(int window_pixels, int picture_pixels, unsigned ratio, unsigned filter) {
  Axis axis;
  const auto scale = static_cast<std::int64_t>(ratio) + 1;
  for (int i = 0; i < window_pixels; ++i) {
    const std::int64_t source = (static_cast<std::int64_t>(i) * 65536 + scale / 2) / scale;
    if (source >= picture_pixels) break;
    axis.push_back({static_cast<int>(source), static_cast<int>(filter) + 1});
  }
  return axis;
}

Axis FittedAxis(int window_pixels, int picture_pixels) {
  Axis axis;
  for (int i = 0; i < window_pixels; ++i) {
    const int first = i * picture_pixels / window_pixels;
    const int end = (i + 1) * picture_pixels / window_pixels;
    axis.push_back({first, std::max(end - first, 1)});
  }
  return axis;
}

Rgb Averages::Of(const ColumnSums& sums, Samples across, int lines) {
  const int count = across.count * lines;
  if (count != count_) {
    count_ = count;
    part_ = (std::uint64_t{1} << kPartBits) / static_cast<unsigned>(count) + 1;
  }
  std::uint64_t red = 0;
  std::uint64_t green = 0;
  std::uint64_t blue = 0;
  for (int column = across.first; column < across.first + across.count; ++column) {
    const auto x = static_cast<std::size_t>(std::min(column, kCardWidth - 1));
    red += sums.red[x];
    green += sums.green[x];
    blue += sums.blue[x];
  }
  const auto average = [this](std::uint64_t sum) {
    return static_cast<std::uint8_t>(sum * part_ >> kPartBits);
  };
  return {average(red), average(green), average(blue)};
}

}  // namespace sim
