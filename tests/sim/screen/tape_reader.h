// Reads the digits of a tape card as a viewer would: by their shapes, at any size.
#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "sim/screen/digits.h"
#include "sim/screen/screen.h"

namespace sim {

// Which pixels are ink.
struct Ink {
  int width = 0;
  int height = 0;
  std::vector<bool> pixels;
  bool At(int x, int y) const { return pixels[static_cast<std::size_t>(y * width + x)]; }
  void Set(int x, int y, bool ink) { pixels[static_cast<std::size_t>(y * width + x)] = ink; }
  bool InColumn(int x) const {
    for (int y = 0; y < height; ++y) {
      if (At(x, y)) return true;
    }
    return false;
  }
};

inline Ink NoInk(int width, int height) {
  return {width, height, std::vector<bool>(static_cast<std::size_t>(width * height), false)};
}

template <typename IsInk>
Ink InkOf(const Image& picture, int top, int bottom, IsInk is_ink) {
  Ink ink = NoInk(picture.width, bottom - top);
  for (int y = top; y < bottom; ++y) {
    for (int x = 0; x < picture.width; ++x) ink.Set(x, y - top, is_ink(picture.At(x, y)));
  }
  return ink;
}

// Ink's columns from left to right, without the empty rows above and below.
inline Ink Trimmed(const Ink& ink, int left, int right) {
  int top = ink.height;
  int bottom = 0;
  for (int y = 0; y < ink.height; ++y) {
    for (int x = left; x < right; ++x) {
      if (!ink.At(x, y)) continue;
      top = std::min(top, y);
      bottom = y + 1;
    }
  }
  Ink glyph = NoInk(right - left, std::max(bottom - top, 0));
  for (int y = 0; y < glyph.height; ++y) {
    for (int x = 0; x < glyph.width; ++x) glyph.Set(x, y, ink.At(left + x, top + y));
  }
  return glyph;
}

// The glyphs of a line of text, which empty columns part.
inline std::vector<Ink> GlyphsOf(const Ink& ink) {
  std::vector<Ink> glyphs;
  for (int left = 0; left < ink.width; ++left) {
    if (!ink.InColumn(left)) continue;
    int right = left;
    while (right < ink.width && ink.InColumn(right)) ++right;
    glyphs.push_back(Trimmed(ink, left, right));
    left = right;
  }
  return glyphs;
}

// Points of a grid, stretched over both glyphs, where they differ.
inline int Difference(const Ink& a, const Ink& b) {
  constexpr int kGrid = 24;
  int different = 0;
  for (int y = 0; y < kGrid; ++y) {
    for (int x = 0; x < kGrid; ++x) {
      const auto at = [x, y](const Ink& ink) {
        return ink.At((2 * x + 1) * ink.width / (2 * kGrid),
                      (2 * y + 1) * ink.height / (2 * kGrid));
      };
      if (at(a) != at(b)) ++different;
    }
  }
  return different;
}

inline Ink LargeDigit(int digit) {
  Ink ink = NoInk(kDigitWidth, kDigitHeight);
  for (int y = 0; y < kDigitHeight; ++y) {
    for (int x = 0; x < kDigitWidth; ++x) ink.Set(x, y, DigitRow(digit, y)[x] > 127);
  }
  return GlyphsOf(ink).at(0);
}

inline const std::vector<Ink>& LargeDigits() {
  static const std::vector<Ink> digits = [] {
    std::vector<Ink> inks;
    inks.reserve(10);
    for (int digit = 0; digit < 10; ++digit) inks.push_back(LargeDigit(digit));
    return inks;
  }();
  return digits;
}

// '?' where no digit is like the glyph.
inline char ReadGlyph(const Ink& glyph) {
  if (glyph.height > 3 * glyph.width) return ':';
  int least = 24 * 24 / 6;
  char best = '?';
  for (int digit = 0; digit < 10; ++digit) {
    const int difference = Difference(glyph, LargeDigits().at(static_cast<std::size_t>(digit)));
    if (difference >= least) continue;
    least = difference;
    best = static_cast<char>('0' + digit);
  }
  return best;
}

inline std::string ReadGlyphs(const Ink& ink) {
  std::string text;
  for (const Ink& glyph : GlyphsOf(ink)) text += ReadGlyph(glyph);
  return text;
}

// The time code of a tape card: amber figures in the lower part.
inline std::string ReadTimeCode(const Image& picture) {
  return ReadGlyphs(InkOf(picture, picture.height * 66 / 100, picture.height * 88 / 100,
                          [](Rgb pixel) { return pixel.r - pixel.b > 97; }));
}

// The channel number of a tape card: white figures above the time code.
inline std::string ReadNumber(const Image& picture) {
  return ReadGlyphs(InkOf(picture, picture.height * 12 / 100, picture.height * 66 / 100,
                          [](Rgb pixel) { return pixel.b > 180; }));
}

}  // namespace sim
