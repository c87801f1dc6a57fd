// The picture of a simulated camera.
#pragma once

#include <cstdint>

#include "sim/screen/card_pixels.h"
#include "sim/screen/screen.h"

namespace sim {

// The bar crosses the card once in this time.
inline constexpr std::uint32_t kCardBarPeriodMs = 4000;

// Colour of a camera's test card at a pixel: the channel number in large digits on the channel's
// own colour, and a bar that moves with time_ms. height is 480 (NTSC) or 576 (PAL).
Rgb TestCardPixel(unsigned channel, int x, int y, int height, std::uint32_t time_ms);

// One line of a card, for many pixels.
class CardLine : public CardPixels {
 public:
  // y is 0 to height - 1.
  CardLine(unsigned channel, int y, int height, std::uint32_t time_ms);

 private:
  void LayBar(std::uint32_t time_ms);
  void LayBorder(int y, int bottom);
  void LayFineLines();
  void LayNumber(unsigned number, int row);
};

}  // namespace sim
