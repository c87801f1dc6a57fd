#include "sim/screen/motion_boxes.h"

namespace sim {
namespace {

constexpr Rgb Tinted(Rgb pixel, Rgb tint, unsigned quarters) {
  const auto mix = [quarters](unsigned from, unsigned to) {
    return static_cast<std::uint8_t>((from * (4 - quarters) + to * quarters) / 4);
  };
  return {mix(pixel.r, tint.r), mix(pixel.g, tint.g), mix(pixel.b, tint.b)};
}

// Two mask bytes a row: first columns 8 to 15, then columns 0 to 7.
bool Watched(const Board& board, unsigned chip, unsigned position, int column, int row) {
  const unsigned index = static_cast<unsigned>(2 * row) + (column < 8 ? 1 : 0);
  return (board.Peek(chip, kMotionMask.At(position, index)) >> (column % 8) & 1) != 0;
}

void DrawCell(Image& image, int left, int top, int width, int height, bool watched, bool motion) {
  for (int y = top; y < top + height && y < image.height; ++y) {
    for (int x = left; x < left + width && x < image.width; ++x) {
      Rgb& pixel = image.At(x, y);
      if (x == left || y == top) {
        pixel = Tinted(pixel, kCellOutline, 2);
      } else if (watched) {
        pixel = motion ? Tinted(pixel, kCellMotion, 2) : Tinted(pixel, kCellWatched, 1);
      }
    }
  }
}

}  // namespace

void DrawMotionBoxes(const Board& board, Image& image) {
  for (unsigned channel = 0; channel < kChannelsMax; ++channel) {
    const unsigned chip = channel / kChannelsPerChip;
    const unsigned position = channel % kChannelsPerChip;
    if (!board.Fitted(chip)) continue;
    const auto box = [&](const ChannelRegister<1>& of) {
      return board.Peek(chip, of.At(position));
    };
    if ((box(kBoxControl) & kBoxEnable) == 0) continue;
    const int width = box(kBoxWidth) * kPixelsPerCellUnit;
    const int height = box(kBoxHeight) * kPixelsPerCellUnit;
    for (int row = 0; row < kMotionRows; ++row) {
      for (int column = 0; column < kMotionColumns; ++column) {
        DrawCell(image, box(kBoxX) * kPixelsPerUnit + column * width,
                 box(kBoxY) * kPixelsPerUnit + row * height, width, height,
                 Watched(board, chip, position, column, row), board.Input(channel).motion);
      }
    }
  }
}

}  // namespace sim
