// The zoom of the live picture.
#pragma once

#include <optional>

#include "sim/board/board.h"
#include "sim/screen/screen.h"

namespace sim {

inline constexpr int kZoomFactor = 2;  // both ways

// The part of the picture that fills the screen: its top left corner, in pixels.
struct ZoomedPart {
  int x = 0;
  int y = 0;
};

// The zoom that the registers ask for on a screen of this height, none while there is none. Zoom
// position registers count display units from the screen's corner to the part's, and reach farther
// than the part can go: a part that would leave the screen ends at its edge instead.
std::optional<ZoomedPart> ReadZoom(const Board& board, int screen_height);

Image Zoomed(const Image& image, ZoomedPart part);

}  // namespace sim
