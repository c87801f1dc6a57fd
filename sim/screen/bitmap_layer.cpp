#include "sim/screen/bitmap_layer.h"

#include "sim/board/fill_engine.h"

namespace sim {
namespace {

static_assert(kBitmapWidth == kScreenWidth);
static_assert(kBitmapLines * kScreenLinesPerBitmapLine >= kScreenHeightPal);

void DrawBitmap(const Bitmap& bitmap, Image& image) {
  for (int y = 0; y < image.height; ++y) {
    for (int x = 0; x < image.width; ++x) {
      const std::uint8_t byte = bitmap.At(x, y / kScreenLinesPerBitmapLine);
      if (byte != kBitmapTransparent) image.At(x, y) = BitmapColor(byte);
    }
  }
}

}  // namespace

void DrawBitmaps(const Board& board, Image& image) {
  for (unsigned position = kChipsMax; position-- > 0;) {
    const Bitmap& bitmap = board.BitmapOf(position);
    if (board.Fitted(position) && bitmap.Drawn()) DrawBitmap(bitmap, image);
  }
}

}  // namespace sim
