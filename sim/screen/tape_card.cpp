#include "sim/screen/tape_card.h"

#include <algorithm>
#include <array>
#include <cstdlib>

#include "sim/screen/card_colors.h"
#include "sim/screen/digits.h"

namespace sim {
namespace {

constexpr Rgb kBandColor{20, 18, 16};
constexpr Rgb kHoleColor{206, 198, 180};
constexpr Rgb kInkColor{250, 244, 226};
constexpr Rgb kTapeColor{255, 190, 64};  // triangle and time code: amber

constexpr int kBandHeight = 48;  // at the top and at the bottom
constexpr int kSideWidth = 4;    // dark lines that part neighbours
constexpr int kHolePitch = 60;
constexpr int kHoleWidth = 36;
constexpr int kHoleHeight = 24;

constexpr int kNumberHeight = 250;
constexpr int kNumberGap = 18;  // between two digits
constexpr int kPlayWidth = 180;
constexpr int kPlayHeight = 214;
constexpr int kPlayGap = 46;  // between triangle and number

constexpr int kTimeCodeHeight = 66;
constexpr int kTimeDigitPitch = 46;
constexpr int kColonPitch = 28;
constexpr int kPlateMargin = 10;  // around the time code

// Tops of the number and of the time code, from the middle line.
constexpr int kNumberTop = -176;
constexpr int kTimeCodeTop = 94;

const SmallDigits& NumberDigits() {
  static const SmallDigits digits(kNumberHeight);
  return digits;
}

const SmallDigits& TimeDigits() {
  static const SmallDigits digits(kTimeCodeHeight);
  return digits;
}

// Old film: grey-brown, with a trace of the channel's own colour.
Rgb Faded(Rgb color) {
  const int luma = (77 * color.r + 150 * color.g + 29 * color.b) / 256;
  const auto part = [luma](int percent) {
    return static_cast<std::uint8_t>((luma + 16) * percent / 100);
  };
  return Mix(Rgb{part(108), part(98), part(80)}, color, 56);
}

}  // namespace

// Lighter at the top, darker at the bottom.
TapeLine::TapeLine(unsigned channel, int y, int height, std::uint32_t time_ms)
    : CardPixels(
          Shaded(Faded(kChannelColors[channel % kChannelColors.size()]), 288 - 96 * y / height)) {
  Fill(0, kSideWidth, kBandColor);
  Fill(kCardWidth - kSideWidth, kCardWidth, kBandColor);
  if (y < kBandHeight) LayBand(y);
  if (y >= height - kBandHeight) LayBand(y - (height - kBandHeight));

  const int number_row = y - (height / 2 + kNumberTop);
  if (number_row >= 0 && number_row < kNumberHeight) {
    const int digits = channel % 100 < 10 ? 1 : 2;
    const int width =
        kPlayWidth + kPlayGap + digits * NumberDigits().Width() + (digits - 1) * kNumberGap;
    const int left = (kCardWidth - width) / 2;
    LayTriangle(left, number_row - (kNumberHeight - kPlayHeight) / 2);
    LayNumber(channel % 100, left + kPlayWidth + kPlayGap, number_row);
  }
  LayTimeCode(y - (height / 2 + kTimeCodeTop), height == kCardHeightPal ? 25 : 30, time_ms);
}

void TapeLine::LayBand(int row) {
  Fill(0, kCardWidth, kBandColor);
  const int hole_row = row - (kBandHeight - kHoleHeight) / 2;
  if (hole_row < 0 || hole_row >= kHoleHeight) return;
  // Rounded corners: how far the outermost rows draw back.
  constexpr std::array kInsets = {5, 3, 2, 1, 1};
  const auto edge = static_cast<std::size_t>(std::min(hole_row, kHoleHeight - 1 - hole_row));
  const int inset = edge < kInsets.size() ? kInsets[edge] : 0;
  for (int left = (kHolePitch - kHoleWidth) / 2; left < kCardWidth; left += kHolePitch) {
    Fill(left + inset, left + kHoleWidth - inset, kHoleColor);
  }
}

void TapeLine::LayTriangle(int left, int row) {
  if (row < 0 || row >= kPlayHeight) return;
  // The slanted edge, in 1/256 of a pixel from the left.
  const int edge =
      256 * kPlayWidth * (kPlayHeight - std::abs(2 * row + 1 - kPlayHeight)) / kPlayHeight;
  for (int x = 0; 256 * x < edge; ++x) {
    Lay(left + x, kTapeColor, static_cast<unsigned>(std::min(edge - 256 * x, 255)));
  }
}

void TapeLine::LayNumber(unsigned channel, int left, int row) {
  const SmallDigits& digits = NumberDigits();
  const auto number = static_cast<int>(channel);
  if (number >= 10) {
    LayGlyph(left, digits.Row(number / 10, row), digits.Width(), kInkColor);
    left += digits.Width() + kNumberGap;
  }
  LayGlyph(left, digits.Row(number % 10, row), digits.Width(), kInkColor);
}

void TapeLine::LayTimeCode(int row, int frames_per_second, std::uint32_t time_ms) {
  if (row < -kPlateMargin || row >= kTimeCodeHeight + kPlateMargin) return;
  constexpr int kWidth = 8 * kTimeDigitPitch + 3 * kColonPitch;
  int left = (kCardWidth - kWidth) / 2;
  Fill(left - 2 * kPlateMargin, left + kWidth + 2 * kPlateMargin, kBandColor);
  if (row < 0 || row >= kTimeCodeHeight) return;

  const SmallDigits& digits = TimeDigits();
  const auto seconds = static_cast<int>(time_ms / 1000);
  const std::array<int, 4> pairs = {seconds / 3600 % 24, seconds / 60 % 60, seconds % 60,
                                    static_cast<int>(time_ms % 1000) * frames_per_second / 1000};
  for (std::size_t i = 0; i < pairs.size(); ++i) {
    if (i != 0) {
      // A colon: two square dots.
      constexpr int kDot = 10;
      const int dot_row = row % (kTimeCodeHeight / 2) - kTimeCodeHeight / 4 + kDot / 2;
      const int dot = left + (kColonPitch - kDot) / 2 - 3;
      if (dot_row >= 0 && dot_row < kDot) Fill(dot, dot + kDot, kTapeColor);
      left += kColonPitch;
    }
    for (const int digit : {pairs[i] / 10, pairs[i] % 10}) {
      LayGlyph(left, digits.Row(digit, row), digits.Width(), kTapeColor);
      left += kTimeDigitPitch;
    }
  }
}

Rgb TapeCardPixel(unsigned channel, int x, int y, int height, std::uint32_t time_ms) {
  return TapeLine(channel, y, height, time_ms).At(x);
}

}  // namespace sim
