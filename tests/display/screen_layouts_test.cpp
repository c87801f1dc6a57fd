// What a viewer sees after the display operations: the whole road from the commands to the screen.
#include <algorithm>
#include <array>
#include <cmath>
#include <string>
#include <vector>

#include "VexoCtrlSDK.h"
#include "display/display_state.h"
#include "harness/host.h"
#include "sim/screen/screen.h"
#include "sim/screen/test_card.h"
#include "tests/display/display_test.h"

namespace test {
namespace {

// How a window shows its picture: the scaler's 16-bit ratio, and the samples that its filter
// averages across and down.
struct Look {
  int ratio;
  int across;
  int down;
};
constexpr Look kWhole = {0xFFFF, 1, 1};
constexpr Look kThreeQuarters = {0xBFFD, 1, 1};
constexpr Look kTwoThirds = {0xAAAA, 1, 1};
constexpr Look kHalf = {0x7FFF, 2, 1};
constexpr Look kHalfCentre = {0x7FFF, 2, 2};
constexpr Look kThird = {0x5555, 3, 3};
constexpr Look kQuarter = {0x3FFF, 4, 4};

Look LookOf(int mode, std::size_t window) {
  constexpr std::array<Look, 7> kLarge = {kWhole, kHalf,       kTwoThirds, kThreeQuarters,
                                          kThird, kHalfCentre, kQuarter};
  constexpr std::array<Look, 7> kSmall = {kWhole, kHalf,    kThird,  kQuarter,
                                          kThird, kQuarter, kQuarter};
  return (window == 0 ? kLarge : kSmall).at(static_cast<std::size_t>(mode));
}

class ScreenLayouts : public DisplayTest {
 protected:
  void Start(int channels, int standard = VEXO_VIDEO_NTSC) {
    StartBoard(channels, standard);
    pal_ = standard == VEXO_VIDEO_PAL;
    Take();
  }
  void Take() { image_ = sim::ComposeScreen(world().board); }

  void Split(int mode, const Channels& list) {
    std::vector<std::uint8_t> record = {0, 0, 0, 0, static_cast<std::uint8_t>(mode), 0};
    record.insert(record.end(), list.begin(), list.end());
    ASSERT_EQ(Command(VEXO_CMD_LIVE_SPLIT, record), 0);
    Take();
  }

  // Share of a window's pixels that are the card of a channel, shown as `look` says; one pixel in
  // `step` both ways is looked at.
  double Likeness(const Rect& rect, unsigned channel, const Look& look, int step) const {
    const int height = pal_ ? sim::kCardHeightPal : sim::kCardHeightNtsc;
    Card card;
    for (int y = 0; y < height; ++y) {
      card.emplace_back(channel, y, height, sim::TheWorld().kernel.Now());
    }
    int same = 0;
    int all = 0;
    for (int y = 4 * rect[2]; y < 4 * rect[3]; y += step) {
      for (int x = 4 * rect[0]; x < 4 * rect[1]; x += step) {
        const sim::Rgb expected = CardPixel(card, x - 4 * rect[0], y - 4 * rect[2], look);
        const sim::Rgb& shown = image_.At(x, y);
        const int distance = std::abs(shown.r - expected.r) + std::abs(shown.g - expected.g) +
                             std::abs(shown.b - expected.b);
        same += distance <= 6 ? 1 : 0;
        ++all;
      }
    }
    return static_cast<double>(same) / all;
  }

  // The window shows the channel's whole picture, in its place and size, and no other channel's.
  void ExpectShows(const Rect& rect, unsigned channel, const Look& look) const {
    EXPECT_GT(Likeness(rect, channel, look, 3), 0.99) << "channel " << channel;
    for (unsigned other = 0; other < 16; ++other) {
      if (other != channel) {
        EXPECT_LT(Likeness(rect, other, look, 13), 0.4) << "channel " << other;
      }
    }
  }
  void ExpectLayout(int mode, const std::vector<unsigned>& channels) const {
    const std::vector<Rect> rects = DefaultRects(mode, !pal_);
    for (std::size_t k = 0; k < channels.size(); ++k) {
      SCOPED_TRACE("window " + std::to_string(k));
      ExpectShows(rects.at(k), channels[k], LookOf(mode, k));
    }
  }
  // Every pixel of a window is of one colour.
  void ExpectColour(const Rect& rect, sim::Rgb color) const {
    int wrong = 0;
    for (int y = 4 * rect[2]; y < 4 * rect[3]; ++y) {
      for (int x = 4 * rect[0]; x < 4 * rect[1]; ++x) wrong += image_.At(x, y) == color ? 0 : 1;
    }
    EXPECT_EQ(wrong, 0);
  }
  // Outside the area that the layouts use there is nothing.
  void ExpectMarginsEmpty() const {
    const Rect full = DefaultRects(0, !pal_).at(0);
    int wrong = 0;
    for (int y = 0; y < image_.height; ++y) {
      for (int x = 0; x < image_.width; ++x) {
        const bool inside =
            x >= 4 * full[0] && x < 4 * full[1] && y >= 4 * full[2] && y < 4 * full[3];
        wrong += inside || image_.At(x, y) == sim::kScreenBackground ? 0 : 1;
      }
    }
    EXPECT_EQ(wrong, 0);
  }

 private:
  using Card = std::vector<sim::CardLine>;

  static sim::Rgb CardPixel(const Card& card, int x, int y, const Look& look) {
    const auto height = static_cast<int>(card.size());
    const double scale = 65536.0 / (look.ratio + 1);
    const auto left = static_cast<int>(std::lround(x * scale));
    const auto top = static_cast<int>(std::lround(y * scale));
    if (left >= sim::kCardWidth || top >= height) return sim::kScreenNoPicture;
    int r = 0;
    int g = 0;
    int b = 0;
    for (int dy = 0; dy < look.down; ++dy) {
      for (int dx = 0; dx < look.across; ++dx) {
        const auto line = static_cast<std::size_t>(std::min(top + dy, height - 1));
        const sim::Rgb sample = card[line].At(std::min(left + dx, sim::kCardWidth - 1));
        r += sample.r;
        g += sample.g;
        b += sample.b;
      }
    }
    const int count = look.across * look.down;
    return {static_cast<std::uint8_t>(r / count), static_cast<std::uint8_t>(g / count),
            static_cast<std::uint8_t>(b / count)};
  }

  bool pal_ = false;
  sim::Image image_;
};

// ---- After initialization -------------------------------------------------------------------

TEST_F(ScreenLayouts, ASixteenChannelBoardStartsWithSixteenCardsInTheirPlaces) {
  for (const int standard : {VEXO_VIDEO_NTSC, VEXO_VIDEO_PAL}) {
    SCOPED_TRACE(standard);
    Start(16, standard);
    ExpectLayout(6, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15});
    ExpectMarginsEmpty();
    harness::Restart();
  }
}

TEST_F(ScreenLayouts, AnEightChannelBoardStartsWithEightCardsAndAnEmptyNinthWindow) {
  Start(8);
  ExpectLayout(4, {0, 1, 2, 3, 4, 5, 6, 7});
  ExpectColour(DefaultRects(4, true).at(8), sim::kScreenBackground);
  ExpectMarginsEmpty();
}

TEST_F(ScreenLayouts, AFourChannelBoardStartsWithFourCards) {
  Start(4);
  ExpectLayout(1, {0, 1, 2, 3});
  ExpectMarginsEmpty();
}

// ---- The split command ------------------------------------------------------------------------

// Holds: Shared values "VEXO_SPLIT_FULL: one picture"
// Holds: Shared values "VEXO_SPLIT_4: 2 x 2"
// Holds: Shared values "VEXO_SPLIT_6: one large"
// Holds: Shared values "VEXO_SPLIT_8: one large"
// Holds: Shared values "VEXO_SPLIT_9: 3 x 3"
// Holds: Shared values "VEXO_SPLIT_13: one large"
// Holds: Shared values "VEXO_SPLIT_16: 4 x 4"
TEST_F(ScreenLayouts, EverySplitOfASixteenChannelBoardShowsItsChannelsInItsWindows) {
  struct Row {
    int mode;
    Channels list;
  };
  const std::vector<Row> rows = {
      {1, {0, 1, 2, 3}},
      {1, {4, 5, 6, 7}},
      {1, {12, 13, 14, 15}},
      {1, {1, 6, 8, 15}},
      {2, {0, 1, 2, 3, 4, 5}},
      {2, {3, 5, 7, 9, 11, 13}},
      {3, {0, 1, 2, 3, 4, 5, 6, 7}},
      {3, {8, 9, 10, 11, 12, 13, 14, 15}},
      {4, {0, 1, 2, 3, 4, 5, 6, 7, 8}},
      {4, {7, 8, 9, 10, 11, 12, 13, 14, 15}},
      {5, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}},
      {6, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15}},
      {0, {0}},
      {0, {6}},
      {0, {15}},
  };
  for (const int standard : {VEXO_VIDEO_NTSC, VEXO_VIDEO_PAL}) {
    Start(16, standard);
    for (const Row& row : rows) {
      SCOPED_TRACE("standard " + std::to_string(standard) + ", mode " + std::to_string(row.mode) +
                   ", first channel " + std::to_string(row.list.at(0)));
      Split(row.mode, row.list);
      ExpectLayout(row.mode, {row.list.begin(), row.list.end()});
      ExpectMarginsEmpty();
    }
    harness::Restart();
  }
}

TEST_F(ScreenLayouts, TheSecond3x3PageEndsWithChannels0And1) {
  Start(16);
  Split(4, {9, 10, 11, 12, 13, 14, 15, 0, 1});
  ExpectLayout(4, {9, 10, 11, 12, 13, 14, 15, 0, 1});
}

TEST_F(ScreenLayouts, SplitsOfSmallerBoardsShowTheirChannels) {
  Start(8);
  Split(2, {1, 2, 3, 4, 5, 6});
  ExpectLayout(2, {1, 2, 3, 4, 5, 6});
  Split(0, {7});
  ExpectLayout(0, {7});
  Split(1, {4, 5, 6, 7});
  ExpectLayout(1, {4, 5, 6, 7});
  harness::Restart();
  Start(4);
  Split(0, {2});
  ExpectLayout(0, {2});
  Split(1, {3, 2, 1, 0});
  ExpectLayout(1, {3, 2, 1, 0});
}

// ---- What is not shown --------------------------------------------------------------------------

TEST_F(ScreenLayouts, AnEmptyEntryLeavesItsWindowEmpty) {
  Start(4);
  Split(0, {0});  // the others are hidden now
  Split(1, {0, 0xFF, 2, 3});
  const std::vector<Rect> rects = DefaultRects(1, true);
  ExpectShows(rects[0], 0, kHalf);
  ExpectColour(rects[1], sim::kScreenBackground);
  ExpectShows(rects[2], 2, kHalf);
  ExpectShows(rects[3], 3, kHalf);
}

TEST_F(ScreenLayouts, AnEmptyEntryEmptiesTheLaterWindowsOfASixteenChannelBoard) {
  Start(16);
  Split(6, {0, 1, 2, 3, 4, 0xFF, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15});
  ExpectLayout(6, {0, 1, 2, 3, 4});
  for (std::size_t k = 5; k < 16; ++k) {
    ExpectColour(DefaultRects(6, true).at(k), sim::kScreenBackground);
  }
}

TEST_F(ScreenLayouts, ABlankedChannelIsDark) {
  Start(16);
  ASSERT_EQ(Command(VEXO_CMD_BLANK_MASK, {0x20, 0x02, 0, 0}), 0);  // channels 5 and 9
  Take();
  const std::vector<Rect> rects = DefaultRects(6, true);
  for (unsigned n = 0; n < 16; ++n) {
    SCOPED_TRACE(n);
    if (n == 5 || n == 9) {
      ExpectColour(rects.at(n), sim::kScreenBlanked);
    } else {
      ExpectShows(rects.at(n), n, kQuarter);
    }
  }
  ASSERT_EQ(CommandNull(VEXO_CMD_RESTORE_BLANK), 0);
  Take();
  ExpectShows(rects[5], 5, kQuarter);
}

// Holds: VexoChannelMasksRecord "live_display: 0 channels shown in live display"
TEST_F(ScreenLayouts, AChannelThatTheLiveMaskLeavesOutStaysDarkInEverySplit) {
  Start(16);
  ASSERT_EQ(Command(VEXO_CMD_CHANNEL_MASKS, {0xFE, 0xFF, 0, 0, 0xFF, 0xFF, 0, 0, 0xFF, 0xFF, 0, 0}),
            0);
  Split(1, {0, 1, 2, 3});
  ExpectColour(DefaultRects(1, true).at(0), sim::kScreenBlanked);
  ExpectShows(DefaultRects(1, true).at(1), 1, kHalf);
  Split(0, {0});
  ExpectColour(DefaultRects(0, true).at(0), sim::kScreenBlanked);
}

TEST_F(ScreenLayouts, ALostCameraLeavesItsWindowWithoutAPicture) {
  Start(16);
  world().board.SetCamera(6, sim::Camera::Off);
  Take();
  const std::vector<Rect> rects = DefaultRects(6, true);
  ExpectColour(rects[6], sim::kScreenNoSignal);
  ExpectShows(rects[7], 7, kQuarter);
}

TEST_F(ScreenLayouts, ReturningToLiveViewShowsTheRecordsSplit) {
  Start(16);
  Split(0, {3});
  g_display.view = 2;
  ASSERT_EQ(Command(VEXO_CMD_LIVE_MODE, {0, 0, 0, 0, 1, 2, 3, 4, 5}), 0);
  Take();
  ExpectLayout(1, {2, 3, 4, 5});
}

}  // namespace
}  // namespace test
