#include "sim/screen/screen.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

#include "sim/screen/bitmap_layer.h"
#include "sim/screen/card_scaler.h"
#include "sim/screen/input_colors.h"
#include "sim/screen/motion_boxes.h"
#include "sim/screen/tape_card.h"
#include "sim/screen/test_card.h"
#include "sim/screen/zoom.h"

namespace sim {
namespace {

struct Rect {
  int left = 0;  // pixels; right and bottom are the first ones outside
  int right = 0;
  int top = 0;
  int bottom = 0;
  int Width() const { return right - left; }
  int Height() const { return bottom - top; }
  bool Empty() const { return right <= left || bottom <= top; }
};

enum class Source { Camera, Decoder, DecoderOff };

// One enabled display position of a chip, read from its registers.
struct Window {
  unsigned channel = 0;  // 4 * chip + position
  bool front = false;
  bool blank = false;
  bool frozen = false;
  Rect rect;
  Source source = Source::Camera;
  unsigned picture = 0;  // channel whose camera or decoded picture it shows
  unsigned control = 0;  // of the scaler that it shows; decoded pictures pass by it
  unsigned vertical = 0;
  unsigned horizontal = 0;
};

// Registers of one chip.
class Registers {
 public:
  Registers(const Board& board, unsigned chip) : board_(board), chip_(chip) {}
  unsigned operator()(RegisterAddress at) const { return board_.Peek(chip_, at); }

 private:
  const Board& board_;
  unsigned chip_;
};

// The decoder delivers pictures of any size: what a position shows of it is a matter of the path
// registers alone.
void ReadDecodedPath(const Registers& reg, unsigned position, Window& window) {
  const unsigned path = reg(kChannelPath.At(position));
  const unsigned chip_path = reg(kChannelPath.At(0));  // position 0 switches for the whole chip
  const bool off = (chip_path & kPathDecoded) != 0 && (chip_path & kPathOpen) == 0;
  window.source = off ? Source::DecoderOff : Source::Decoder;
  window.picture = (path & kPathDecoded) != 0 ? path & kPathChannel : window.channel;
}

// False when the position shows nothing.
bool ReadWindow(const Board& board, unsigned chip, unsigned position, Window& window) {
  const Registers reg(board, chip);
  const unsigned display = reg(kChannelDisplay.At(position));
  if ((display & kDisplayEnable) == 0) return false;

  const auto pixels = [&](unsigned i) {
    return static_cast<int>(reg(kWindow.At(position, i))) * kPixelsPerUnit;
  };
  window.rect = {pixels(0), pixels(1), pixels(2), pixels(3)};
  if (window.rect.Empty()) return false;

  const unsigned attribute = reg(kChannelAttribute.At(position));
  window.channel = kChannelsPerChip * chip + position;
  window.front = (display & kDisplayFront) != 0;
  window.blank = (attribute & kAttributeBlank) != 0;
  window.frozen = (attribute & kAttributeFreeze) != 0;

  if ((display & kDisplayDecoded) != 0) {
    ReadDecodedPath(reg, position, window);
    return true;
  }
  const unsigned scaler = display & kDisplayPosition;
  window.control = reg(kScalerControl.At(scaler));
  window.picture = kChannelsPerChip * chip + (window.control >> 6);
  window.vertical = reg(kScalerVertical.At(scaler, 0)) << 8 | reg(kScalerVertical.At(scaler, 1));
  window.horizontal =
      reg(kScalerHorizontal.At(scaler, 0)) << 8 | reg(kScalerHorizontal.At(scaler, 1));
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

// Composes windows from the topmost down: a pixel that has been drawn stays.
class Composer {
 public:
  Composer(const Board& board, int height)
      : board_(board),
        image_(FilledImage(kScreenWidth, height, kScreenBackground)),
        drawn_(image_.pixels.size(), 0) {}

  void Add(const Window& window) {
    if (window.blank) {
      Fill(window.rect, kScreenBlanked);
    } else if (window.source == Source::Camera) {
      AddCamera(window);
    } else if (window.source == Source::Decoder) {
      AddDecoded(window);
    } else {
      Fill(window.rect, kScreenNoPicture);
    }
  }

  Image Take() { return std::move(image_); }

 private:
  void AddCamera(const Window& window) {
    const Frozen& frozen = board_.FrozenState(window.channel);
    const ChannelInput& input = board_.Input(window.picture);
    const unsigned of_chip = window.picture % kChannelsPerChip;
    const bool picture = window.frozen ? frozen.has_picture[of_chip] : input.HasPicture();
    if (!picture) {
      Fill(window.rect, kScreenNoSignal);
      return;
    }
    // A camera of the other standard has its own number of lines, on whatever screen.
    const bool pal = window.frozen ? frozen.pal[of_chip] : input.pal;
    const int lines = pal ? kCardHeightPal : kCardHeightNtsc;
    const InputColors colors =
        window.frozen ? frozen.colors[of_chip] : board_.Colors(window.picture);
    std::optional<ColorTable> table;
    if (colors != kNeutralColors) table.emplace(colors);
    DrawCard(window.rect, Card<CardLine>(window.picture, lines, TimeOf(window)),
             ScaledAxis(window.rect.Width(), kCardWidth, window.horizontal,
                        window.control & kScalerFilterX),
             ScaledAxis(window.rect.Height(), lines, window.vertical, window.control >> 2 & 3),
             table ? &*table : nullptr);
  }

  // The tape plays in the board's standard, whatever the cameras do.
  void AddDecoded(const Window& window) {
    DrawCard(window.rect, Card<TapeLine>(window.picture, image_.height, TimeOf(window)),
             FittedAxis(window.rect.Width(), kCardWidth),
             FittedAxis(window.rect.Height(), image_.height));
  }

  std::uint32_t TimeOf(const Window& window) const {
    return window.frozen ? board_.FrozenAt(window.channel) : board_.Time();
  }

  // colors: what an input makes of the picture's, null where nothing. It comes behind the scaler,
  // once a pixel; on the board it comes before, which differs where colours are clipped alone.
  template <typename Line>
  void DrawCard(const Rect& rect, Card<Line> card, const Axis& across, const Axis& down,
                const ColorTable* colors = nullptr) {
    ColumnSums sums;
    int summed = -1;
    Averages averages;
    Draw(rect, [&](int x, int y) {
      const auto column = static_cast<std::size_t>(x);
      const auto row = static_cast<std::size_t>(y);
      if (column >= across.size() || row >= down.size()) return kScreenNoPicture;
      if (summed != y) {
        sums = card.Sums(down[row]);
        summed = y;
      }
      const int lines = down[row].count;
      if (colors == nullptr) return averages.Of(sums, across[column], lines);
      return (*colors)(averages.Of(sums, across[column], lines));
    });
  }

  void Fill(const Rect& rect, Rgb color) {
    Draw(rect, [color](int, int) { return color; });
  }

  // color(x, y): of a pixel of the window, from its top left corner.
  template <typename Color>
  void Draw(const Rect& rect, Color color) {
    const int right = std::min(rect.right, image_.width);
    const int bottom = std::min(rect.bottom, image_.height);
    for (int y = rect.top; y < bottom; ++y) {
      for (int x = rect.left; x < right; ++x) {
        const auto index = static_cast<std::size_t>(y * image_.width + x);
        if (drawn_[index] != 0) continue;
        drawn_[index] = 1;
        image_.pixels[index] = color(x - rect.left, y - rect.top);
      }
    }
  }

  const Board& board_;
  Image image_;
  std::vector<std::uint8_t> drawn_;  // not bits: asked for each pixel
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

// The master drives the screen.
int ScreenHeight(const Board& board) {
  const bool pal = board.Fitted(0) && (board.Peek(0, kSystemControl) & kSystemPal) != 0;
  return pal ? kScreenHeightPal : kScreenHeightNtsc;
}

bool ShowsColorBar(const Board& board) { return (board.Peek(0, kStatusFlags) & kColorBar) != 0; }

ShownWindow Shown(const Window& window, const Board& board) {
  using Shows = ShownWindow::Shows;
  const unsigned of_chip = window.picture % kChannelsPerChip;
  ShownWindow shown{.channel = window.channel,
                    .left = window.rect.left,
                    .right = window.rect.right,
                    .top = window.rect.top,
                    .bottom = window.rect.bottom,
                    .front = window.front,
                    .frozen = window.frozen,
                    .picture = window.picture};
  if (window.source == Source::Camera) {
    shown.signal = window.frozen ? board.FrozenState(window.channel).has_picture[of_chip]
                                 : board.Input(window.picture).HasPicture();
  } else {
    shown.shows = window.source == Source::Decoder ? Shows::Tape : Shows::Nothing;
  }
  if (window.blank) shown.shows = Shows::Blank;
  return shown;
}

}  // namespace

Image FilledImage(int width, int height, Rgb fill) {
  const auto count = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
  return {width, height, std::vector<Rgb>(count, fill)};
}

Image ComposeScreen(const Board& board) {
  const int height = ScreenHeight(board);
  if (!board.Fitted(0)) return FilledImage(kScreenWidth, height, kScreenBackground);
  if (ShowsColorBar(board)) return ColorBars(height);

  Composer composer(board, height);
  for (const Window& window : ReadWindows(board)) composer.Add(window);
  Image image = composer.Take();
  DrawMotionBoxes(board, image);
  if (const auto part = ReadZoom(board, height)) image = Zoomed(image, *part);
  DrawBitmaps(board, image);
  return image;
}

std::vector<ShownWindow> ShownWindows(const Board& board) {
  std::vector<ShownWindow> windows;
  if (!board.Fitted(0) || ShowsColorBar(board)) return windows;
  const int height = ScreenHeight(board);
  const std::optional<ZoomedPart> part = ReadZoom(board, height);
  const auto place = [&](int from, int corner, int pixels) {
    return std::clamp(part ? (from - corner) * kZoomFactor : from, 0, pixels);
  };
  const ZoomedPart at = part.value_or(ZoomedPart{});
  for (const Window& window : ReadWindows(board)) {
    ShownWindow shown = Shown(window, board);
    shown.left = place(shown.left, at.x, kScreenWidth);
    shown.right = place(shown.right, at.x, kScreenWidth);
    shown.top = place(shown.top, at.y, height);
    shown.bottom = place(shown.bottom, at.y, height);
    if (shown.left < shown.right && shown.top < shown.bottom) windows.push_back(shown);
  }
  return windows;
}

}  // namespace sim
