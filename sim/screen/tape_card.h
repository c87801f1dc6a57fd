// The picture that the decoder plays back for a channel.
#pragma once

#include <cstdint>

#include "sim/screen/card_pixels.h"
#include "sim/screen/screen.h"

namespace sim {

// Colour of a channel's tape card at a pixel: film in the faded colour of the channel between two
// dark perforated bands, a triangle, the channel number, and the time code HH:MM:SS:FF of time_ms
// (30 frames a second at height 480, 25 at 576; 24 hours come round). The card is kCardWidth wide.
Rgb TapeCardPixel(unsigned channel, int x, int y, int height, std::uint32_t time_ms);

// One line of a card, for many pixels.
class TapeLine : public CardPixels {
 public:
  // y is 0 to height - 1.
  TapeLine(unsigned channel, int y, int height, std::uint32_t time_ms);

 private:
  void LayBand(int row);  // of the band's rows
  void LayTriangle(int left, int row);
  void LayNumber(unsigned channel, int left, int row);
  void LayTimeCode(int row, int frames_per_second, std::uint32_t time_ms);
};

}  // namespace sim
