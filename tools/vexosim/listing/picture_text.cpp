#include "tools/vexosim/listing/picture_text.h"

#include <algorithm>

#include "sim/picture/terminal.h"

namespace vexosim {

std::string DrawPicture(const sim::Image& image, const PictureStyle& style) {
  if (image.width <= 0 || image.height <= 0) return {};
  const PictureRoom room = RoomFor(style);
  int columns = room.columns;
  if (room.rows != 0) columns = std::min(columns, 2 * room.rows * image.width / image.height);
  columns = std::max(1, columns);
  return style.colour ? sim::RenderForTerminal(image, columns)
                      : sim::RenderInCharacters(image, columns);
}

}  // namespace vexosim
