#include "sim/screen/zoom.h"

#include <algorithm>

namespace sim {
namespace {

// With bit 6 beside it, bit 7 stands for a decoded picture in full size, which is no zoom.
constexpr unsigned kZoomSwitch = kZoomOn | kZoomDecoded;

}  // namespace

std::optional<ZoomedPart> ReadZoom(const Board& board, int screen_height) {
  if (!board.Fitted(0) || (board.Peek(0, kDisplayMode) & kDisplayModeZoom) == 0) return {};
  // One chip zooms for the whole cascade; of several that would, the last one does.
  for (unsigned chip = kChipsMax; chip-- > 0;) {
    if (!board.Fitted(chip)) continue;
    if ((board.Peek(chip, kZoomControl) & kZoomSwitch) != kZoomOn) continue;
    const auto corner = [&](RegisterAddress reg, int pixels) {
      return std::min(board.Peek(chip, reg) * kPixelsPerUnit, pixels - pixels / kZoomFactor);
    };
    return ZoomedPart{corner(kZoomX, kScreenWidth), corner(kZoomY, screen_height)};
  }
  return {};
}

Image Zoomed(const Image& image, ZoomedPart part) {
  Image zoomed = FilledImage(image.width, image.height, kScreenBackground);
  for (int y = 0; y < image.height; ++y) {
    for (int x = 0; x < image.width; ++x) {
      zoomed.At(x, y) = image.At(part.x + x / kZoomFactor, part.y + y / kZoomFactor);
    }
  }
  return zoomed;
}

}  // namespace sim
