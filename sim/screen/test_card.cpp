#include "sim/screen/test_card.h"

#include <algorithm>

#include "sim/screen/card_colors.h"
#include "sim/screen/digits.h"

namespace sim {
namespace {

// Every split layout shows at least this much of a picture, from its top left corner: what is
// drawn lies within it, so that no window cuts it.
constexpr int kSafeWidth = 684;
constexpr int kSafeMargin = 24;  // lines below the safe area

constexpr int kBorderInset = 10;
constexpr int kBorderThickness = 4;
constexpr int kBarWidth = 30;
constexpr int kDigitGap = 24;
constexpr int kDigitPitch = kDigitWidth + kDigitGap;

// Lines one pixel wide: they turn grey when the scaler filters them and lose their pattern when it
// does not, which tells one layout code from another.
constexpr int kFineLeft = 30;
constexpr int kFineWidth = 96;
constexpr int kFineHeight = 32;

constexpr Rgb kDigitColor{250, 250, 246};

}  // namespace

// Lighter at the top, darker at the bottom.
CardLine::CardLine(unsigned channel, int y, int height, std::uint32_t time_ms)
    : CardPixels(Shaded(kChannelColors[channel % kChannelColors.size()], 288 - 96 * y / height)) {
  LayBar(time_ms);
  const int bottom = height - kSafeMargin - kBorderInset;
  if (y >= kBorderInset && y < bottom) LayBorder(y, bottom);
  const int fine_row = y - (bottom - 20 - kFineHeight);
  if (fine_row >= 0 && fine_row < kFineHeight) LayFineLines();
  const int digit_row = y - (height - kSafeMargin - kDigitHeight) / 2;
  if (digit_row >= 0 && digit_row < kDigitHeight) LayNumber(channel % 100, digit_row);
}

void CardLine::LayBar(std::uint32_t time_ms) {
  const auto left = static_cast<int>((time_ms % kCardBarPeriodMs) * kCardWidth / kCardBarPeriodMs);
  const int right = left + kBarWidth;
  const Rgb color = Mix(At(0), {255, 255, 255}, 110);
  Fill(left, std::min(right, kCardWidth), color);
  if (right > kCardWidth) Fill(0, right - kCardWidth, color);
}

void CardLine::LayBorder(int y, int bottom) {
  constexpr int kRight = kSafeWidth - kBorderInset;
  const bool edge = y < kBorderInset + kBorderThickness || y >= bottom - kBorderThickness;
  const int left_end = edge ? kRight : kBorderInset + kBorderThickness;
  for (int x = kBorderInset; x < left_end; ++x) Lay(x, kDigitColor, 190);
  const int right_begin = edge ? kRight : kRight - kBorderThickness;
  for (int x = right_begin; x < kRight; ++x) Lay(x, kDigitColor, 190);
}

void CardLine::LayFineLines() {
  for (int x = kFineLeft; x < kFineLeft + kFineWidth; x += 2) {
    Fill(x, x + 1, {240, 240, 240});
    Fill(x + 1, x + 2, {16, 16, 16});
  }
}

void CardLine::LayNumber(unsigned number, int row) {
  const int digits = number < 10 ? 1 : 2;
  int left = (kSafeWidth - digits * kDigitPitch + kDigitGap) / 2;
  if (digits == 2) {
    LayGlyph(left, DigitRow(static_cast<int>(number / 10), row), kDigitWidth, kDigitColor);
    left += kDigitPitch;
  }
  LayGlyph(left, DigitRow(static_cast<int>(number % 10), row), kDigitWidth, kDigitColor);
}

Rgb TestCardPixel(unsigned channel, int x, int y, int height, std::uint32_t time_ms) {
  return CardLine(channel, y, height, time_ms).At(x);
}

}  // namespace sim
