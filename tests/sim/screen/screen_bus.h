// A simulated board whose display is programmed by bare bus cycles, and what it should show.
#pragma once

#include <array>
#include <cstdint>

#include "sim/screen/screen.h"
#include "sim/screen/tape_card.h"
#include "sim/screen/test_card.h"
#include "tests/sim/board/board_bus.h"

namespace sim {

struct WindowRect {
  unsigned left, right, top, bottom;  // display units
};

inline constexpr WindowRect kFullNtsc{0x04, 0xB0, 0x01, 0x77};

// Ratios of the scaler.
inline constexpr unsigned kWhole = 0xFFFF;
inline constexpr unsigned kHalf = 0x7FFF;
inline constexpr unsigned kThird = 0x5555;
inline constexpr unsigned kQuarter = 0x3FFF;

struct ScreenOnBus : BoardOnBus {
  using BoardOnBus::BoardOnBus;

  static std::uint8_t ChipOf(unsigned channel) { return kChipByPosition[channel / 4]; }

  // Shows a channel in its normal place.
  void Show(unsigned channel, WindowRect rect, unsigned ratio, unsigned filter = 0,
            unsigned display = 0xC0) {
    const unsigned p = channel % 4;
    Write(ChipOf(channel), 1, 0x30 + 4 * p, {rect.left, rect.right, rect.top, rect.bottom});
    Write(ChipOf(channel), 0, 0x80 + 0x10 * p, p << 6 | filter);
    Scale(channel, ratio, ratio);
    Write(ChipOf(channel), 1, 0x10 + 8 * p, display | p);
  }
  void Scale(unsigned channel, unsigned vertical, unsigned horizontal) {
    Write(ChipOf(channel), 0, 0x81 + 0x10 * (channel % 4),
          {vertical >> 8, vertical & 0xFF, horizontal >> 8, horizontal & 0xFF});
  }
  // Shows a decoded picture in a channel's place. The scaler stays as it is.
  void Play(unsigned channel, WindowRect rect, unsigned path, unsigned display = 0xD4) {
    const unsigned p = channel % 4;
    Write(ChipOf(channel), 1, 0x30 + 4 * p, {rect.left, rect.right, rect.top, rect.bottom});
    Write(ChipOf(channel), 1, 0x10 + 8 * p, display | p);
    Path(channel, path);
  }
  void Path(unsigned channel, unsigned path) {
    Write(ChipOf(channel), 1, 0x16 + 8 * (channel % 4), path);
  }
  void Attribute(unsigned channel, unsigned value) {
    Write(ChipOf(channel), 1, 0x11 + 8 * (channel % 4), value);
  }
  Image Screen() const { return ComposeScreen(board); }
};

// A whole card, of CardLine or TapeLine.
template <typename Line>
Image WholeCard(unsigned channel, int height, std::uint32_t time_ms) {
  Image card = FilledImage(kCardWidth, height, {});
  for (int y = 0; y < height; ++y) {
    const Line line(channel, y, height, time_ms);
    for (int x = 0; x < kCardWidth; ++x) card.At(x, y) = line.At(x);
  }
  return card;
}
inline Image TestCard(unsigned channel, int height = kCardHeightNtsc, std::uint32_t time_ms = 0) {
  return WholeCard<CardLine>(channel, height, time_ms);
}
inline Image TapeCard(unsigned channel, int height = kCardHeightNtsc, std::uint32_t time_ms = 0) {
  return WholeCard<TapeLine>(channel, height, time_ms);
}

// The average of a block of a picture's pixels.
inline Rgb Average(const Image& picture, int x, int y, int width, int height) {
  int r = 0;
  int g = 0;
  int b = 0;
  for (int dy = 0; dy < height; ++dy) {
    for (int dx = 0; dx < width; ++dx) {
      const Rgb pixel = picture.At(x + dx, y + dy);
      r += pixel.r;
      g += pixel.g;
      b += pixel.b;
    }
  }
  const int n = width * height;
  return {static_cast<std::uint8_t>(r / n), static_cast<std::uint8_t>(g / n),
          static_cast<std::uint8_t>(b / n)};
}

// Number of pixels in a window of the image that are not the card scaled down by `scale`, `samples`
// pixels averaged each way.
inline int WrongPixels(const Image& image, WindowRect rect, unsigned channel, int scale,
                       int samples, std::uint32_t time_ms = 0, int card_height = kCardHeightNtsc) {
  const Image card = TestCard(channel, card_height, time_ms);
  int wrong = 0;
  const int left = static_cast<int>(rect.left) * 4;
  const int top = static_cast<int>(rect.top) * 4;
  for (int y = top; y < static_cast<int>(rect.bottom) * 4; ++y) {
    for (int x = left; x < static_cast<int>(rect.right) * 4; ++x) {
      const Rgb expected = Average(card, (x - left) * scale, (y - top) * scale, samples, samples);
      if (image.At(x, y) != expected) ++wrong;
    }
  }
  return wrong;
}

// Number of pixels in a window of the image that are not the tape card. The window's size is a
// whole fraction of the card's.
inline int WrongTapePixels(const Image& image, WindowRect rect, unsigned channel,
                           std::uint32_t time_ms = 0) {
  const Image card = TapeCard(channel, image.height, time_ms);
  const int left = static_cast<int>(rect.left) * 4;
  const int top = static_cast<int>(rect.top) * 4;
  const int width = static_cast<int>(rect.right) * 4 - left;
  const int height = static_cast<int>(rect.bottom) * 4 - top;
  const int across = card.width / width;
  const int down = card.height / height;
  int wrong = 0;
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      const Rgb expected = Average(card, x * across, y * down, across, down);
      if (image.At(left + x, top + y) != expected) ++wrong;
    }
  }
  return wrong;
}

// Number of pixels of a window that are not of one colour.
inline int NotOf(const Image& image, WindowRect rect, Rgb color) {
  int wrong = 0;
  for (int y = static_cast<int>(rect.top) * 4; y < static_cast<int>(rect.bottom) * 4; ++y) {
    for (int x = static_cast<int>(rect.left) * 4; x < static_cast<int>(rect.right) * 4; ++x) {
      if (image.At(x, y) != color) ++wrong;
    }
  }
  return wrong;
}

// Window k of the 4x4 layout.
inline WindowRect Sixteenth(unsigned k) {
  constexpr std::array<unsigned, 5> kX = {0x04, 0x2F, 0x5A, 0x85, 0xB0};
  constexpr std::array<unsigned, 5> kY = {0x02, 0x1F, 0x3C, 0x59, 0x76};
  return {kX[k % 4], kX[k % 4 + 1], kY[k / 4], kY[k / 4 + 1]};
}

inline int PixelsOf(WindowRect rect) {
  return static_cast<int>((rect.right - rect.left) * (rect.bottom - rect.top)) * 16;
}

}  // namespace sim
