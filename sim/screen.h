// What a viewer would see, composed from the chips' registers and the cameras alone.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "sim/board.h"

namespace sim {

struct Rgb {
  std::uint8_t r = 0;
  std::uint8_t g = 0;
  std::uint8_t b = 0;
  bool operator==(const Rgb&) const = default;
};

struct Image {
  int width = 0;
  int height = 0;
  std::vector<Rgb> pixels;  // row by row
  Rgb& At(int x, int y) { return pixels[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x)]; }
  const Rgb& At(int x, int y) const { return pixels[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x)]; }
};

// The screen at the board's current time: 720 x 480 pixels on NTSC, 720 x 576 on PAL; one display
// unit is 4 x 4 pixels.
Image ComposeScreen(const Board& board);

// Writes a PNG file. Throws std::runtime_error with the reason.
void WritePng(const Image& image, const std::string& path);

// The picture in 24-bit terminal colours, two pixels a character cell (upper half blocks).
std::string RenderForTerminal(const Image& image, int columns);

}  // namespace sim
