// Colours that the live and the tape cards share, and how they are mixed.
#pragma once

#include <array>
#include <cstdint>

#include "sim/screen/screen.h"

namespace sim {

// By channel. Neighbours on the screen (n, n + 1 and n + 4) are far apart in hue and differ in
// lightness.
inline constexpr std::array<Rgb, 16> kChannelColors = {{{168, 44, 44},
                                                        {34, 112, 150},
                                                        {150, 118, 20},
                                                        {104, 50, 150},
                                                        {28, 128, 84},
                                                        {176, 62, 116},
                                                        {56, 80, 176},
                                                        {110, 128, 24},
                                                        {172, 88, 26},
                                                        {20, 126, 128},
                                                        {140, 40, 132},
                                                        {62, 120, 40},
                                                        {44, 50, 108},
                                                        {196, 100, 82},
                                                        {86, 98, 116},
                                                        {140, 96, 44}}};

constexpr std::uint8_t Mix(unsigned from, unsigned to, unsigned weight) {
  return static_cast<std::uint8_t>((from * (255 - weight) + to * weight) / 255);
}

// weight: of `to`, 0 to 255.
constexpr Rgb Mix(Rgb from, Rgb to, unsigned weight) {
  return {Mix(from.r, to.r, weight), Mix(from.g, to.g, weight), Mix(from.b, to.b, weight)};
}

// shade: 256 leaves the colour as it is.
constexpr Rgb Shaded(Rgb color, int shade) {
  const auto part = [shade](int value) {
    return static_cast<std::uint8_t>(value * shade / 256 > 255 ? 255 : value * shade / 256);
  };
  return {part(color.r), part(color.g), part(color.b)};
}

}  // namespace sim
