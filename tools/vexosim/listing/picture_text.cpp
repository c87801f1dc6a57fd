#include "tools/vexosim/listing/picture_text.h"

#include <algorithm>
#include <string_view>

#include "sim/picture/terminal.h"

namespace vexosim {
namespace {

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

std::string DrawPlain(const sim::Image& image, int columns) {
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

}  // namespace

std::string DrawPicture(const sim::Image& image, const PictureStyle& style) {
  if (image.width <= 0 || image.height <= 0) return {};
  const PictureRoom room = RoomFor(style);
  int columns = room.columns;
  if (room.rows != 0) columns = std::min(columns, 2 * room.rows * image.width / image.height);
  columns = std::max(1, columns);
  return style.colour ? sim::RenderForTerminal(image, columns) : DrawPlain(image, columns);
}

}  // namespace vexosim
