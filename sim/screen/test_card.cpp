#include "sim/screen/test_card.h"

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

CardLine::CardLine(unsigned channel, int y, int height, std::uint32_t time_ms) {
  // Lighter at the top, darker at the bottom.
  color_ = Shaded(kChannelColors[channel % kChannelColors.size()], 288 - 96 * y / height);
  bar_color_ = Mix(color_, {255, 255, 255}, 110);
  bar_left_ = static_cast<int>((time_ms % kCardBarPeriodMs) * kCardWidth / kCardBarPeriodMs);

  const int bottom = height - kSafeMargin - kBorderInset;
  border_ = y >= kBorderInset && y < bottom;
  border_whole_ =
      border_ && (y < kBorderInset + kBorderThickness || y >= bottom - kBorderThickness);
  const int fine_top = bottom - 20 - kFineHeight;
  fine_ = y >= fine_top && y < fine_top + kFineHeight;

  const int row = y - (height - kSafeMargin - kDigitHeight) / 2;
  if (row < 0 || row >= kDigitHeight) return;
  const auto number = static_cast<int>(channel % 100);
  digit_count_ = number < 10 ? 1 : 2;
  digit_rows_[0] = DigitRow(number < 10 ? number : number / 10, row);
  digit_rows_[1] = DigitRow(number % 10, row);
  digits_left_ = (kSafeWidth - digit_count_ * kDigitPitch + kDigitGap) / 2;
}

Rgb CardLine::At(int x) const {
  const int bar = x - bar_left_;
  const bool in_bar = (bar >= 0 && bar < kBarWidth) || bar + kCardWidth < kBarWidth;
  const Rgb pixel = in_bar ? bar_color_ : color_;

  constexpr int kRight = kSafeWidth - kBorderInset;
  if (border_ && x >= kBorderInset && x < kRight) {
    if (border_whole_ || x < kBorderInset + kBorderThickness || x >= kRight - kBorderThickness) {
      return Mix(pixel, kDigitColor, 190);
    }
  }
  if (fine_ && x >= kFineLeft && x < kFineLeft + kFineWidth) {
    return x % 2 == 0 ? Rgb{240, 240, 240} : Rgb{16, 16, 16};
  }
  const int column = x - digits_left_;
  if (column < 0 || column >= digit_count_ * kDigitPitch) return pixel;
  const int within = column % kDigitPitch;
  if (within >= kDigitWidth) return pixel;
  const unsigned coverage = digit_rows_[column / kDigitPitch][within];
  return coverage == 0 ? pixel : Mix(pixel, kDigitColor, coverage);
}

Rgb TestCardPixel(unsigned channel, int x, int y, int height, std::uint32_t time_ms) {
  return CardLine(channel, y, height, time_ms).At(x);
}

}  // namespace sim
