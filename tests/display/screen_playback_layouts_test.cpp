// What a viewer sees after the playback operations: the whole road from the commands to the screen.
#include <algorithm>
#include <array>
#include <cstdlib>
#include <string>
#include <vector>

#include "VexoCtrlSDK.h"
#include "harness/host.h"
#include "sim/screen/screen.h"
#include "sim/screen/tape_card.h"
#include "sim/screen/test_card.h"
#include "tests/display/display_test.h"

namespace test {
namespace {

constexpr std::uint8_t kNone = 0xFF;  // an entry without a channel

bool Similar(const sim::Rgb& a, const sim::Rgb& b) {
  return std::abs(a.r - b.r) + std::abs(a.g - b.g) + std::abs(a.b - b.b) <= 6;
}

class ScreenPlaybackLayouts : public DisplayTest {
 protected:
  void Start(int channels, int standard) {
    StartBoard(channels, standard);
    pal_ = standard == VEXO_VIDEO_PAL;
    all_ = AllChannels(channels);
    Take();
  }
  void Take() {
    image_ = sim::ComposeScreen(world().board);
    for (Card& card : tape_) card.clear();
  }

  // Switches to playback and takes the screen; the channels are dark then.
  void SwitchToPlayback(int mode, const Channels& list) {
    std::vector<std::uint8_t> record = {0, 0, 0, 0, 0, static_cast<std::uint8_t>(mode)};
    record.insert(record.end(), list.begin(), list.end());
    ASSERT_EQ(Command(VEXO_CMD_PLAY_MODE, record), 0);
    Take();
  }
  int Split(int mode, int option, const Channels& list) {
    std::vector<std::uint8_t> record = {
        0, 0, 0, 0, static_cast<std::uint8_t>(mode), static_cast<std::uint8_t>(option)};
    record.insert(record.end(), list.begin(), list.end());
    const int result = Command(VEXO_CMD_PLAY_SPLIT, record);
    Take();
    return result;
  }
  void Unblank() {
    ASSERT_EQ(CommandNull(VEXO_CMD_RESTORE_BLANK), 0);
    Take();
  }
  void BackToLive(const Channels& four) {
    std::vector<std::uint8_t> record = {0, 0, 0, 0, 1};
    record.insert(record.end(), four.begin(), four.end());
    ASSERT_EQ(Command(VEXO_CMD_LIVE_MODE, record), 0);
    Take();
  }

  Rect FullPicture() const { return FullPictureRect(!pal_); }
  Rect CentredPicture() const { return CentredPictureRect(!pal_); }
  std::vector<Rect> Rects(int mode) const { return DefaultRects(mode, !pal_); }

  // The window is filled with the channel's whole decoded picture, and it is no other's.
  void ExpectTape(const Rect& rect, unsigned channel) {
    EXPECT_GT(TapeLikeness(rect, channel, 3), 0.99) << "channel " << channel;
    for (unsigned other = 0; other < 16; ++other) {
      if (other != channel) {
        EXPECT_LT(TapeLikeness(rect, other, 17), 0.5) << "channel " << other;
      }
    }
  }
  // Window k shows channels[k], or nothing where that is kNone, and so does the rest of the screen.
  void ExpectLayout(int mode, const Channels& channels) {
    const std::vector<Rect> rects = Rects(mode);
    std::vector<Rect> shown;
    for (std::size_t k = 0; k < channels.size(); ++k) {
      if (channels[k] == kNone) continue;
      SCOPED_TRACE("window " + std::to_string(k));
      ExpectTape(rects.at(k), channels[k]);
      shown.push_back(rects[k]);
    }
    ExpectNothingBeside(shown);
  }
  void ExpectOnly(const Rect& rect, unsigned channel) {
    ExpectTape(rect, channel);
    ExpectNothingBeside({rect});
  }
  // Nothing but dark windows: no picture, neither decoded nor live.
  void ExpectAllDark(const std::vector<Rect>& windows) {
    for (const Rect& rect : windows) EXPECT_EQ(NotOf(rect, sim::kScreenBlanked), 0) << rect[0];
    ExpectNothingBeside(windows);
  }
  void ExpectColour(const Rect& rect, sim::Rgb color) { EXPECT_EQ(NotOf(rect, color), 0); }
  void ExpectNothingBeside(const std::vector<Rect>& windows) const {
    sim::Image beside = image_;
    for (const Rect& rect : windows) {
      for (int y = 4 * rect[2]; y < 4 * rect[3]; ++y) {
        for (int x = 4 * rect[0]; x < 4 * rect[1]; ++x) beside.At(x, y) = sim::kScreenBackground;
      }
    }
    EXPECT_TRUE(beside == sim::FilledImage(image_.width, image_.height, sim::kScreenBackground));
  }
  // Four cameras in a live 2 x 2, and nothing else.
  void ExpectLive2x2(const Channels& channels) {
    const std::vector<Rect> rects = Rects(1);
    for (std::size_t k = 0; k < 4; ++k) {
      SCOPED_TRACE("window " + std::to_string(k));
      EXPECT_GT(CameraLikeness(rects[k], channels.at(k)), 0.99);
      EXPECT_LT(TapeLikeness(rects[k], channels[k], 13), 0.4);
    }
    ExpectNothingBeside(rects);
  }

  std::uint32_t all_ = 0;  // mask of the board's channels
  sim::Image image_;

 private:
  using Card = std::vector<sim::TapeLine>;

  const Card& TapeOf(unsigned channel) {
    Card& card = tape_.at(channel);
    for (int y = static_cast<int>(card.size()); y < image_.height; ++y) {
      card.emplace_back(channel, y, image_.height, sim::TheWorld().kernel.Now());
    }
    return card;
  }
  // The average of the card's part that a window's pixel stands for.
  static sim::Rgb Shrunk(const Card& card, const Rect& rect, int x, int y) {
    const int width = 4 * (rect[1] - rect[0]);
    const int height = 4 * (rect[3] - rect[2]);
    const auto lines = static_cast<int>(card.size());
    const int left = x * sim::kCardWidth / width;
    const int right = std::max((x + 1) * sim::kCardWidth / width, left + 1);
    const int top = y * lines / height;
    const int bottom = std::max((y + 1) * lines / height, top + 1);
    int r = 0;
    int g = 0;
    int b = 0;
    for (int row = top; row < bottom; ++row) {
      for (int column = left; column < right; ++column) {
        const sim::Rgb sample = card[static_cast<std::size_t>(row)].At(column);
        r += sample.r;
        g += sample.g;
        b += sample.b;
      }
    }
    const int count = (right - left) * (bottom - top);
    return {static_cast<std::uint8_t>(r / count), static_cast<std::uint8_t>(g / count),
            static_cast<std::uint8_t>(b / count)};
  }

  // Share of a window's pixels that pass; one pixel in `step` both ways is looked at.
  template <typename Passes>
  static double Share(const Rect& rect, int step, Passes passes) {
    int same = 0;
    int all = 0;
    for (int y = 0; y < 4 * (rect[3] - rect[2]); y += step) {
      for (int x = 0; x < 4 * (rect[1] - rect[0]); x += step) {
        same += passes(x, y) ? 1 : 0;
        ++all;
      }
    }
    return static_cast<double>(same) / all;
  }
  const sim::Rgb& Shown(const Rect& rect, int x, int y) const {
    return image_.At(4 * rect[0] + x, 4 * rect[2] + y);
  }
  double TapeLikeness(const Rect& rect, unsigned channel, int step) {
    const Card& card = TapeOf(channel);
    return Share(rect, step, [&](int x, int y) {
      return Similar(Shown(rect, x, y), Shrunk(card, rect, x, y));
    });
  }
  // To the camera's picture at half size, whose scaler averages two neighbours across.
  double CameraLikeness(const Rect& rect, unsigned channel) const {
    const std::uint32_t now = sim::TheWorld().kernel.Now();
    return Share(rect, 3, [&](int x, int y) {
      const sim::Rgb a = sim::TestCardPixel(channel, 2 * x, 2 * y, image_.height, now);
      const sim::Rgb b = sim::TestCardPixel(channel, 2 * x + 1, 2 * y, image_.height, now);
      const auto mean = [](int p, int q) { return static_cast<std::uint8_t>((p + q) / 2); };
      return Similar(Shown(rect, x, y), {mean(a.r, b.r), mean(a.g, b.g), mean(a.b, b.b)});
    });
  }
  int NotOf(const Rect& rect, sim::Rgb color) const {
    int wrong = 0;
    for (int y = 0; y < 4 * (rect[3] - rect[2]); ++y) {
      for (int x = 0; x < 4 * (rect[1] - rect[0]); ++x) {
        wrong += Shown(rect, x, y) == color ? 0 : 1;
      }
    }
    return wrong;
  }

  bool pal_ = false;
  std::array<Card, 16> tape_;  // made when first asked for
};

// What each board can show, on both standards.
class OnEveryBoard : public ScreenPlaybackLayouts, public ::testing::WithParamInterface<BoardCase> {
 protected:
  void StartHere() { Start(GetParam().channels, GetParam().standard); }
  std::uint8_t Last() const { return static_cast<std::uint8_t>(GetParam().channels - 1); }
  // Consecutive channels, as far as the board has them.
  Channels From(int first, int count) const {
    Channels list;
    for (int c = first; c < first + count; ++c) {
      list.push_back(c < GetParam().channels ? static_cast<std::uint8_t>(c) : kNone);
    }
    return list;
  }
};
INSTANTIATE_TEST_SUITE_P(
    Boards, OnEveryBoard,
    ::testing::Values(BoardCase{4, VEXO_VIDEO_NTSC}, BoardCase{4, VEXO_VIDEO_PAL},
                      BoardCase{8, VEXO_VIDEO_NTSC}, BoardCase{8, VEXO_VIDEO_PAL},
                      BoardCase{16, VEXO_VIDEO_NTSC}, BoardCase{16, VEXO_VIDEO_PAL}),
    NameOf);

// ---- The switch ---------------------------------------------------------------------------------

// Holds: VexoPlayModeRecord "Otherwise all channels are blank afterwards"
TEST_P(OnEveryBoard, IsDarkRightAfterTheSwitchToPlayback) {
  StartHere();
  SwitchToPlayback(1, From(0, 4));
  ExpectAllDark(Rects(1));
  SwitchToPlayback(0, {Last()});
  ExpectAllDark({CentredPicture()});
  if (Last() >= 7) {
    SwitchToPlayback(4, From(0, 9));
    std::vector<Rect> windows = Rects(4);
    if (Last() == 7) windows.pop_back();
    ExpectAllDark(windows);
  }
  if (Last() == 15) {
    SwitchToPlayback(6, From(0, 16));
    ExpectAllDark(Rects(6));
  }
}

// Holds: VexoPlayModeRecord "Otherwise all channels are blank afterwards"
TEST_P(OnEveryBoard, ShowsTheLayoutOfTheSwitchOnceItIsUnblanked) {
  StartHere();
  SwitchToPlayback(1, From(Last() - 3, 4));
  Unblank();
  ExpectLayout(1, From(Last() - 3, 4));
  SwitchToPlayback(0, {1});
  Unblank();
  ExpectOnly(CentredPicture(), 1);
}

// ---- The split command --------------------------------------------------------------------------

TEST_P(OnEveryBoard, ShowsTheDecodedChannelsOfEverySplitInItsWindows) {
  StartHere();
  SwitchToPlayback(1, From(0, 4));
  ASSERT_EQ(Split(1, 0, From(0, 4)), 0);
  ExpectLayout(1, From(0, 4));
  ASSERT_EQ(Split(1, 0, From(Last() - 3, 4)), 0);
  ExpectLayout(1, From(Last() - 3, 4));
  if (Last() < 7) return;
  ASSERT_EQ(Split(4, 0, From(0, 9)), 0);
  ExpectLayout(4, From(0, 9));
  ASSERT_EQ(Split(1, 0, {0, 3, 5, 7}), 0);
  ExpectLayout(1, {0, 3, 5, 7});
  if (Last() < 15) return;
  ASSERT_EQ(Split(6, 0, From(0, 16)), 0);
  ExpectLayout(6, From(0, 16));
  ASSERT_EQ(Split(4, 0, From(7, 9)), 0);
  ExpectLayout(4, From(7, 9));
}

TEST_P(OnEveryBoard, ShowsOnePictureOverTheWholeScreen) {
  StartHere();
  SwitchToPlayback(1, From(0, 4));
  for (const std::uint8_t channel : {std::uint8_t{0}, std::uint8_t{2}, Last()}) {
    ASSERT_EQ(Split(0, 1, {channel}), 0);
    ExpectOnly(FullPicture(), channel);
  }
  ASSERT_EQ(Split(1, 0, From(0, 4)), 0);
  ExpectLayout(1, From(0, 4));
}

TEST_P(OnEveryBoard, ShowsOnePictureInTheCentre) {
  StartHere();
  SwitchToPlayback(1, From(0, 4));
  for (const std::uint8_t channel : {std::uint8_t{0}, Last()}) {
    ASSERT_EQ(Split(0, 0, {channel}), 0);
    ExpectOnly(CentredPicture(), channel);
  }
  ASSERT_EQ(Split(0, 1, {1}), 0);
  ASSERT_EQ(Split(0, 0, {2}), 0);
  ExpectOnly(CentredPicture(), 2);
}

TEST_P(OnEveryBoard, ShowsTheFirstOfSeveralCentredPictures) {
  StartHere();
  SwitchToPlayback(1, From(0, 4));
  ASSERT_EQ(Split(0, 0, {1, 2, 3}), 0);
  ExpectOnly(CentredPicture(), 1);
}

// Holds: VexoSplitRecord "List channels in ascending order"
// Holds: VexoPlayModeRecord "Otherwise all channels are blank afterwards"
TEST_P(OnEveryBoard, LeavesTheWindowsOfEmptyAndLateEntriesEmpty) {
  StartHere();
  SwitchToPlayback(1, From(0, 4));
  ASSERT_EQ(Split(1, 0, {0, 2, kNone, kNone}), 0);
  ExpectLayout(1, {0, 2, kNone, kNone});
  ASSERT_EQ(Split(1, 0, {1, 0, 2, 3}), 0);
  ExpectLayout(1, {1, kNone, kNone, kNone});
  ASSERT_EQ(Split(1, 0, {kNone, kNone, kNone, kNone}), 0);
  ExpectNothingBeside({});
}

// Holds: VexoChannelMasksRecord "play_display: 8 channels shown in playback"
TEST_P(OnEveryBoard, KeepsChannelsDarkThatThePlaybackMaskLeavesOut) {
  StartHere();
  ASSERT_EQ(Command(VEXO_CMD_CHANNEL_MASKS, {0xFF, 0xFF, 0, 0, 0xFF, 0xFF, 0, 0, 0xFD, 0xFF, 0, 0}),
            0);
  SwitchToPlayback(1, From(0, 4));
  ASSERT_EQ(Split(1, 0, From(0, 4)), 0);
  const std::vector<Rect> rects = Rects(1);
  ExpectTape(rects[0], 0);
  ExpectColour(rects[1], sim::kScreenBlanked);
  ExpectTape(rects[2], 2);
  ExpectTape(rects[3], 3);
  ASSERT_EQ(Split(0, 1, {1}), 0);
  ExpectAllDark({FullPicture()});
}

TEST_P(OnEveryBoard, ShowsTheSamePictureAfterARefusedSplit) {
  StartHere();
  SwitchToPlayback(1, From(0, 4));
  ASSERT_EQ(Split(1, 0, From(0, 4)), 0);
  ASSERT_EQ(Command(VEXO_CMD_BLANK_MASK, {0x04, 0, 0, 0}), 0);
  Take();
  ExpectColour(Rects(1)[2], sim::kScreenBlanked);
  const sim::Image before = image_;
  for (const int mode : {2, 3, 5, 7}) {
    EXPECT_EQ(Split(mode, 0, {3, 2, 1, 0}), -5) << mode;
    EXPECT_EQ(image_, before) << mode;
  }
  if (Last() == 15) return;  // knows the other modes
  EXPECT_EQ(Split(6, 0, {3, 2, 1, 0}), -1) << "and the blank bits are put back";
  EXPECT_EQ(image_, before);
}

// ---- And back -----------------------------------------------------------------------------------

TEST_P(OnEveryBoard, ShowsTheCamerasAgainBackInLiveView) {
  StartHere();
  const Channels four = From(Last() - 3, 4);
  for (const int option : {0, 1}) {
    SwitchToPlayback(1, From(0, 4));
    ASSERT_EQ(Split(0, option, {1}), 0);
    BackToLive(four);
    ExpectLive2x2(four);
  }
  SwitchToPlayback(1, From(0, 4));
  BackToLive(four);  // straight out of the dark
  ExpectLive2x2(four);
  SwitchToPlayback(1, From(0, 4));
  ASSERT_EQ(Split(1, 0, From(0, 4)), 0);
  ExpectLayout(1, From(0, 4));
}

// ---- Second page and large windows --------------------------------------------------------------

// Holds: VexoSplitRecord "In playback, here and in VEXO_CMD_PLAY_MODE"
TEST_F(ScreenPlaybackLayouts, TheSecond3x3PageShowsChannel1OnlyWhereItsWindowAsksFor0) {
  for (const int standard : {VEXO_VIDEO_NTSC, VEXO_VIDEO_PAL}) {
    SCOPED_TRACE(standard);
    Start(16, standard);
    SwitchToPlayback(1, {0, 1, 2, 3});
    ASSERT_EQ(Split(4, 0, {9, 10, 11, 12, 13, 14, 15, 0, 1}), 0);
    ExpectLayout(4, {9, 10, 11, 12, 13, 14, 15, 0, kNone});
    ASSERT_EQ(Split(4, 0, {9, 10, 11, 12, 13, 14, 15, 0, 0}), 0);
    ExpectLayout(4, {9, 10, 11, 12, 13, 14, 15, 0, 1});
    harness::Restart();
  }
}

TEST_F(ScreenPlaybackLayouts, A4x4ShowsItsChannelsInAnyOrder) {
  Start(16, VEXO_VIDEO_NTSC);
  const Channels list = {15, 3, 7, 11, 0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14};
  SwitchToPlayback(6, list);
  ASSERT_EQ(Split(6, 0, list), 0);
  ExpectLayout(6, list);
}

TEST_F(ScreenPlaybackLayouts, TheSwitchShowsLargeWindowsOnceTheyAreUnblanked) {
  struct Row {
    int channels;
    int mode;
    Channels list;
  };
  const std::vector<Row> rows = {
      {8, 2, {0, 1, 2, 3, 4, 5}},
      {8, 2, {7, 0, 5, 2, 6, 1}},
      {8, 3, {0, 1, 2, 3, 4, 5, 6, 7}},
      {8, 3, {7, 6, 5, 4, 3, 2, 1, 0}},
      {16, 2, {10, 3, 15, 0, 6, 9}},
      {16, 3, {8, 9, 10, 11, 12, 13, 14, 15}},
      {16, 5, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}},
      {16, 5, {15, 3, 14, 4, 13, 5, 12, 6, 11, 7, 10, 8, 9}},
      {16, 5, {6, 1, kNone, 3, 16, 5, 7, 8, 9, 10, 11, 12, 13}},
  };
  for (const int standard : {VEXO_VIDEO_NTSC, VEXO_VIDEO_PAL}) {
    for (const Row& row : rows) {
      SCOPED_TRACE("standard " + std::to_string(standard) + ", " + std::to_string(row.channels) +
                   " channels, mode " + std::to_string(row.mode) + ", first channel " +
                   std::to_string(row.list[0]));
      Start(row.channels, standard);
      // These layouts leave other windows as they are, so those are emptied first.
      SwitchToPlayback(1, {kNone, kNone, kNone, kNone});
      SwitchToPlayback(row.mode, row.list);
      Channels shown = row.list;
      std::replace(shown.begin(), shown.end(), std::uint8_t{16}, kNone);
      std::vector<Rect> windows;
      for (std::size_t k = 0; k < shown.size(); ++k) {
        if (shown[k] != kNone) windows.push_back(Rects(row.mode).at(k));
      }
      ExpectAllDark(windows);
      Unblank();
      ExpectLayout(row.mode, shown);
      harness::Restart();
    }
  }
}

TEST_F(ScreenPlaybackLayouts, LargeWindowsCoverTheLiveLayoutThatWasThere) {
  Start(16, VEXO_VIDEO_NTSC);
  for (const int mode : {2, 3, 5}) {
    SCOPED_TRACE(mode);
    BackToLive({0, 1, 2, 3});
    Channels list;
    for (int c = 0; c < kWindows.at(static_cast<std::size_t>(mode)); ++c) {
      list.push_back(static_cast<std::uint8_t>(c));
    }
    SwitchToPlayback(mode, list);
    Unblank();
    ExpectLayout(mode, list);
  }
}

TEST_F(ScreenPlaybackLayouts, RefusedLargeWindowsOfASmallBoardKeepTheLastLayout) {
  Start(8, VEXO_VIDEO_NTSC);
  SwitchToPlayback(4, {0, 1, 2, 3, 4, 5, 6, 7, kNone});
  ASSERT_EQ(Split(4, 0, {0, 1, 2, 3, 4, 5, 6, 7, kNone}), 0);
  SwitchToPlayback(5, {7, 6, 5, 4, 3, 2, 1, 0});  // not on eight channels
  ExpectLayout(4, {0, 1, 2, 3, 4, 5, 6, 7, kNone});
}

TEST_F(ScreenPlaybackLayouts, TheTapeRuns) {
  Start(4, VEXO_VIDEO_NTSC);
  SwitchToPlayback(1, {0, 1, 2, 3});
  ASSERT_EQ(Split(0, 1, {3}), 0);
  const sim::Image first = image_;
  ASSERT_EQ(Split(0, 1, {3}), 0);  // 50 ms later
  EXPECT_FALSE(image_ == first);
  ExpectOnly(FullPicture(), 3);
}

}  // namespace
}  // namespace test
