#include "sim/screen.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <utility>
#include <vector>

#include "sim/motion_boxes.h"
#include "sim/test_card.h"

namespace sim {
namespace {

// How one axis of a window maps to the camera picture: for each pixel of the window the first
// sample it takes, and how many neighbouring samples the scaler's filter averages.
struct Axis {
  std::vector<int> first;  // ends where the scaled picture ends
  int samples = 1;
};

// ratio is the scaler's 16-bit value: scaled size = size * (ratio + 1) / 65536. Samples are rounded
// to the nearest, for 1/3 and its like are not exact in 16 bits.
Axis MakeAxis(int window_pixels, int picture_pixels, unsigned ratio, unsigned filter) {
  Axis axis;
  axis.samples = static_cast<int>(filter) + 1;
  const auto scale = static_cast<std::int64_t>(ratio) + 1;
  for (int i = 0; i < window_pixels; ++i) {
    const std::int64_t source = (static_cast<std::int64_t>(i) * 65536 + scale / 2) / scale;
    if (source >= picture_pixels) break;
    axis.first.push_back(static_cast<int>(source));
  }
  return axis;
}

struct Rect {
  int left = 0;  // pixels; right and bottom are the first ones outside
  int right = 0;
  int top = 0;
  int bottom = 0;
  bool Empty() const { return right <= left || bottom <= top; }
};

// One enabled display position of a chip, read from its registers.
struct Window {
  unsigned channel = 0;  // 4 * chip + position
  bool front = false;
  bool blank = false;
  bool frozen = false;
  Rect rect;
  unsigned camera = 0;   // channel whose picture it shows
  unsigned control = 0;  // of the scaler that it shows
  unsigned vertical = 0;
  unsigned horizontal = 0;
};

// Registers of one chip.
class Registers {
 public:
  Registers(const Board& board, unsigned chip) : board_(board), chip_(chip) {}
  unsigned operator()(std::uint8_t page, unsigned reg) const {
    return board_.Peek(chip_, page, static_cast<std::uint8_t>(reg));
  }

 private:
  const Board& board_;
  unsigned chip_;
};

// False when the position shows nothing.
bool ReadWindow(const Board& board, unsigned chip, unsigned position, Window& window) {
  const Registers reg(board, chip);
  const unsigned display = reg(kPage1, kChannelDisplay + kDisplayStride * position);
  if ((display & kDisplayEnable) == 0) return false;

  const unsigned corner = kWindow + kWindowStride * position;
  const auto pixels = [&](unsigned i) {
    return static_cast<int>(reg(kPage1, corner + i)) * kPixelsPerUnit;
  };
  window.rect = {pixels(0), pixels(1), pixels(2), pixels(3)};
  if (window.rect.Empty()) return false;

  const unsigned attribute = reg(kPage1, kChannelAttribute + kDisplayStride * position);
  window.channel = kChannelsPerChip * chip + position;
  window.front = (display & kDisplayFront) != 0;
  window.blank = (attribute & kAttributeBlank) != 0;
  window.frozen = (attribute & kAttributeFreeze) != 0;

  const unsigned scaler = kScalerStride * (display & kDisplayPosition);
  window.control = reg(kPage0, kScalerControl + scaler);
  window.camera = kChannelsPerChip * chip + (window.control >> 6);
  window.vertical =
      reg(kPage0, kScalerVertical + scaler) << 8 | reg(kPage0, kScalerVertical + scaler + 1);
  window.horizontal =
      reg(kPage0, kScalerHorizontal + scaler) << 8 | reg(kPage0, kScalerHorizontal + scaler + 1);
  return true;
}

// The windows of the whole cascade, topmost first: the front layer above the others, and within a
// layer the lower channel above the higher.
std::vector<Window> ReadWindows(const Board& board) {
  std::vector<Window> windows;
  for (unsigned chip = 0; chip < kChipsMax; ++chip) {
    if (!board.Fitted(chip)) continue;
    for (unsigned position = 0; position < kChannelsPerChip; ++position) {
      Window window;
      if (ReadWindow(board, chip, position, window)) windows.push_back(window);
    }
  }
  std::stable_sort(windows.begin(), windows.end(),
                   [](const Window& a, const Window& b) { return a.front && !b.front; });
  return windows;
}

using Card = std::vector<CardLine>;

Card MakeCard(unsigned channel, int height, std::uint32_t time_ms) {
  Card card;
  card.reserve(static_cast<std::size_t>(height));
  for (int y = 0; y < height; ++y) card.emplace_back(channel, y, height, time_ms);
  return card;
}

// The average of columns x rows samples; at the edges the last ones count again.
Rgb Filtered(const Card& card, int x, int columns, int y, int rows) {
  unsigned r = 0;
  unsigned g = 0;
  unsigned b = 0;
  for (int row = y; row < y + rows; ++row) {
    const CardLine& line = card[std::min(static_cast<std::size_t>(row), card.size() - 1)];
    for (int column = x; column < x + columns; ++column) {
      const Rgb sample = line.At(std::min(column, kCardWidth - 1));
      r += sample.r;
      g += sample.g;
      b += sample.b;
    }
  }
  const auto count = static_cast<unsigned>(columns * rows);
  return {static_cast<std::uint8_t>(r / count), static_cast<std::uint8_t>(g / count),
          static_cast<std::uint8_t>(b / count)};
}

// Composes windows from the topmost down: a pixel that has been drawn stays.
class Composer {
 public:
  Composer(const Board& board, int height)
      : board_(board),
        image_(FilledImage(kScreenWidth, height, kScreenBackground)),
        drawn_(image_.pixels.size(), false) {}

  void Add(const Window& window) {
    if (window.blank) {
      Draw(window.rect, [](int, int) { return kScreenBlanked; });
      return;
    }
    const Frozen& frozen = board_.FrozenState(window.channel);
    const ChannelInput& input = board_.Input(window.camera);
    const bool picture =
        window.frozen ? frozen.has_picture[window.camera % kChannelsPerChip] : input.HasPicture();
    if (!picture) {
      Draw(window.rect, [](int, int) { return kScreenNoSignal; });
      return;
    }
    // A camera of the other standard has its own number of lines, on whatever screen.
    const int lines = input.pal ? kCardHeightPal : kCardHeightNtsc;
    const Card card = MakeCard(window.camera, lines, window.frozen ? frozen.at_ms : board_.Time());
    const Axis across = MakeAxis(window.rect.right - window.rect.left, kCardWidth,
                                 window.horizontal, window.control & 3);
    const Axis down = MakeAxis(window.rect.bottom - window.rect.top, lines, window.vertical,
                               window.control >> 2 & 3);
    Draw(window.rect, [&](int x, int y) {
      const auto column = static_cast<std::size_t>(x);
      const auto row = static_cast<std::size_t>(y);
      if (column >= across.first.size() || row >= down.first.size()) return kScreenNoPicture;
      return Filtered(card, across.first[column], across.samples, down.first[row], down.samples);
    });
  }

  Image Take() { return std::move(image_); }

 private:
  // color(x, y): of a pixel of the window, from its top left corner.
  template <typename Color>
  void Draw(const Rect& rect, Color color) {
    const int right = std::min(rect.right, image_.width);
    const int bottom = std::min(rect.bottom, image_.height);
    for (int y = rect.top; y < bottom; ++y) {
      for (int x = rect.left; x < right; ++x) {
        const auto index = static_cast<std::size_t>(y * image_.width + x);
        if (drawn_[index]) continue;
        drawn_[index] = true;
        image_.pixels[index] = color(x - rect.left, y - rect.top);
      }
    }
  }

  const Board& board_;
  Image image_;
  std::vector<bool> drawn_;
};

Image ColorBars(int height) {
  constexpr std::array<Rgb, 8> kBars = {{{235, 235, 235},
                                         {235, 235, 16},
                                         {16, 235, 235},
                                         {16, 235, 16},
                                         {235, 16, 235},
                                         {235, 16, 16},
                                         {16, 16, 235},
                                         {16, 16, 16}}};
  Image image = FilledImage(kScreenWidth, height, kScreenBackground);
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < kScreenWidth; ++x) {
      image.At(x, y) = kBars[static_cast<std::size_t>(x) * kBars.size() / kScreenWidth];
    }
  }
  return image;
}

}  // namespace

Image FilledImage(int width, int height, Rgb fill) {
  const auto count = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
  return {width, height, std::vector<Rgb>(count, fill)};
}

Image ComposeScreen(const Board& board) {
  const bool master = board.Fitted(0);  // the master drives the screen
  const bool pal = master && (board.Peek(0, kPage1, kSystemControl) & kSystemPal) != 0;
  const int height = pal ? kScreenHeightPal : kScreenHeightNtsc;
  if (!master) return FilledImage(kScreenWidth, height, kScreenBackground);
  if ((board.Peek(0, kPage1, kStatusFlags) & kColorBar) != 0) return ColorBars(height);

  Composer composer(board, height);
  for (const Window& window : ReadWindows(board)) composer.Add(window);
  Image image = composer.Take();
  DrawMotionBoxes(board, image);
  return image;
}

}  // namespace sim
