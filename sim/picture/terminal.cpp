#include "sim/picture/terminal.h"

#include <algorithm>
#include <string>

namespace sim {
namespace {

constexpr const char* kUpperHalfBlock = "\u2580";

// Average of the pixels of cell (column, row) when the image is cut into columns x rows.
Rgb AverageOf(const Image& image, int column, int row, int columns, int rows) {
  const int left = column * image.width / columns;
  const int right = std::max(left + 1, (column + 1) * image.width / columns);
  const int top = row * image.height / rows;
  const int bottom = std::max(top + 1, (row + 1) * image.height / rows);
  unsigned long r = 0;
  unsigned long g = 0;
  unsigned long b = 0;
  for (int y = top; y < bottom; ++y) {
    for (int x = left; x < right; ++x) {
      const Rgb& pixel = image.At(x, y);
      r += pixel.r;
      g += pixel.g;
      b += pixel.b;
    }
  }
  const auto count = static_cast<unsigned long>((right - left) * (bottom - top));
  return {static_cast<std::uint8_t>(r / count), static_cast<std::uint8_t>(g / count),
          static_cast<std::uint8_t>(b / count)};
}

// layer: 38 for the colour of the upper half, 48 for the lower one.
void AppendColor(std::string& out, int layer, Rgb color) {
  out += "\x1b[" + std::to_string(layer) + ";2;" + std::to_string(color.r) + ';' +
         std::to_string(color.g) + ';' + std::to_string(color.b) + 'm';
}

}  // namespace

std::string RenderForTerminal(const Image& image, int columns) {
  std::string out;
  if (image.width <= 0 || image.height <= 0 || columns <= 0) return out;
  // Half a character cell is about square.
  const int lines = std::max(1, (columns * image.height / image.width + 1) / 2);
  for (int line = 0; line < lines; ++line) {
    Rgb last_upper;
    Rgb last_lower;
    for (int column = 0; column < columns; ++column) {
      const Rgb upper = AverageOf(image, column, 2 * line, columns, 2 * lines);
      const Rgb lower = AverageOf(image, column, 2 * line + 1, columns, 2 * lines);
      if (column == 0 || upper != last_upper) AppendColor(out, 38, upper);
      if (column == 0 || lower != last_lower) AppendColor(out, 48, lower);
      out += kUpperHalfBlock;
      last_upper = upper;
      last_lower = lower;
    }
    out += "\x1b[0m\n";
  }
  return out;
}

}  // namespace sim
