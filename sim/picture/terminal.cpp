#include "sim/picture/terminal.h"

#include <algorithm>
#include <string>
#include <string_view>

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

constexpr std::string_view kRamp = " .:-=+*#%@";

// Brightness 0 to 255, averaged over a rectangle.
int Brightness(const sim::Image& image, int x0, int y0, int x1, int y1) {
  int sum = 0;
  for (int y = y0; y < y1; ++y) {
    for (int x = x0; x < x1; ++x) {
      const sim::Rgb& pixel = image.At(x, y);
      sum += (77 * pixel.r + 151 * pixel.g + 28 * pixel.b) / 256;
    }
  }
  return sum / std::max(1, (x1 - x0) * (y1 - y0));
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

std::string RenderInCharacters(const sim::Image& image, int columns) {
  if (image.width <= 0 || image.height <= 0 || columns <= 0) return {};
  columns = std::min(columns, image.width);
  // A character is about twice as high as it is wide.
  const int rows = std::max(1, image.height * columns / image.width / 2);
  std::string text;
  for (int row = 0; row < rows; ++row) {
    const int y0 = image.height * row / rows;
    const int y1 = image.height * (row + 1) / rows;
    std::string line;
    for (int column = 0; column < columns; ++column) {
      const int x0 = image.width * column / columns;
      const int x1 = image.width * (column + 1) / columns;
      const int level = Brightness(image, x0, y0, x1, y1) * static_cast<int>(kRamp.size()) / 256;
      line += kRamp[static_cast<std::size_t>(level)];
    }
    line.erase(line.find_last_not_of(' ') + 1);
    text += line + '\n';
  }
  return text;
}

}  // namespace sim
