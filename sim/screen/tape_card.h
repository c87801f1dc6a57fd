// The picture that the decoder plays back for a channel.
#pragma once

#include <array>
#include <cstdint>

#include "sim/screen/screen.h"
#include "sim/screen/test_card.h"

namespace sim {

// Colour of a channel's tape card at a pixel: film in the faded colour of the channel between two
// dark perforated bands, a triangle, the channel number, and the time code HH:MM:SS:FF of time_ms
// (30 frames a second at height 480, 25 at 576; 24 hours come round). The card is kCardWidth wide.
Rgb TapeCardPixel(unsigned channel, int x, int y, int height, std::uint32_t time_ms);

// One line of a card, for many pixels.
class TapeLine {
 public:
  // y is 0 to height - 1.
  TapeLine(unsigned channel, int y, int height, std::uint32_t time_ms);
  // x is 0 to kCardWidth - 1.
  Rgb At(int x) const { return pixels_[static_cast<std::size_t>(x)]; }

 private:
  void Fill(int left, int right, Rgb color);
  // Lays color over one pixel; weight 0 to 255.
  void Lay(int x, Rgb color, unsigned weight);
  void LayGlyph(int left, const std::uint8_t* coverage, int width, Rgb color);
  void LayBand(int row);  // of the band's rows
  void LayTriangle(int left, int row);
  void LayNumber(unsigned channel, int left, int row);
  void LayTimeCode(int row, int frames_per_second, std::uint32_t time_ms);

  std::array<Rgb, kCardWidth> pixels_;
};

}  // namespace sim
