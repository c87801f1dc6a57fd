#include "display/live_pip.h"

#include <string>

#include "chip/video_state.h"
#include "display/display_state.h"
#include "tests/display/display_test.h"

namespace test {
namespace {

void StartMulti(int channel, int size, const Rect& r) {
  TW_SetLiveMultiPip(static_cast<std::uint8_t>(channel), static_cast<std::uint8_t>(size),
                     static_cast<std::uint8_t>(r[0]), static_cast<std::uint8_t>(r[1]),
                     static_cast<std::uint8_t>(r[2]), static_cast<std::uint8_t>(r[3]));
}

void MoveMulti(int channel, const Rect& r) {
  TW_MoveLiveMultiPip(static_cast<std::uint8_t>(channel), static_cast<std::uint8_t>(r[0]),
                      static_cast<std::uint8_t>(r[1]), static_cast<std::uint8_t>(r[2]),
                      static_cast<std::uint8_t>(r[3]));
}

const std::vector<int> kManyChannels = {0,  1,  2,  3,  4,  5,  6,  7,   8,   9,
                                        11, 12, 14, 15, 16, 17, 31, 100, 254, 255};
const std::vector<Rect> kManyRects = {
    {0, 0, 0, 0}, {1, 2, 3, 4}, {0xFF, 0xFE, 0xFD, 0xFC}, {0x78, 0xA2, 0x4B, 0x69}};

class LivePip : public DisplayTest, public ::testing::WithParamInterface<BoardCase> {
 protected:
  void SetUp() override { UseBoard(GetParam().channels, GetParam().standard); }
  void ScribbleAnew() {
    world().trace.Clear();
    Scribble(++seed_);
  }

 private:
  unsigned seed_ = 0;
};

// Holds: vexo pip start "Shows one channel full size and another as an inset over it."
// Holds: Chips: vexo "`MAIN`: channel, 0 to 15"
// Holds: Chips: vexo "`INSET`: channel, 0 to 15"
TEST_P(LivePip, MakesExactlyTheAccessesOfItsStepsForEveryPairOfChannels) {
  for (const int main : kManyChannels) {
    for (const int inset : {0, 1, 6, 15, 16, 255, main}) {
      SCOPED_TRACE("main " + std::to_string(main) + ", inset " + std::to_string(inset));
      ScribbleAnew();
      ReferenceModel model = Model();
      model.PipStart(main, inset);
      TW_SetLivePip(static_cast<std::uint8_t>(main), static_cast<std::uint8_t>(inset));
      ExpectLike(model);
      EXPECT_EQ(DebugText(), "");
      if (HasFailure()) return;
    }
  }
}

// Holds: vexo mpip start "Shows a channel as an inset over the current layout"
// Holds: Chips: vexo "`X_START`: 0 to 180 display units"
// Holds: Chips: vexo "`X_END`: 0 to 180 display units"
// Holds: Chips: vexo "`Y_START`: 0 to 120 (NTSC)"
// Holds: Chips: vexo "`Y_END`: 0 to 120 (NTSC)"
TEST_P(LivePip, MultiMakesExactlyTheAccessesOfItsStepsForEverySize) {
  for (const int size : {0, 1, 2, 3, 4, 5, 6, 7, 127, 128, 255}) {
    for (const int channel : {0, 5, 10, 15, 16, 255}) {
      SCOPED_TRACE("channel " + std::to_string(channel) + ", size " + std::to_string(size));
      const Rect& rect = kManyRects.at(static_cast<std::size_t>(size) % kManyRects.size());
      ScribbleAnew();
      ReferenceModel model = Model();
      model.MultiPipStart(channel, size, rect);
      StartMulti(channel, size, rect);
      ExpectLike(model);
      EXPECT_EQ(DebugText(), "");
      if (HasFailure()) return;
    }
  }
}

// Holds: vexo mpip move "Moves the inset"
TEST_P(LivePip, MultiMovesTheInsetAndLeavesTheScaler) {
  for (const int channel : kManyChannels) {
    for (const Rect& rect : kManyRects) {
      SCOPED_TRACE(channel);
      ScribbleAnew();
      ReferenceModel model = Model();
      model.MultiPipMove(channel, rect);
      MoveMulti(channel, rect);
      ExpectLike(model);
      for (const Access& access : Accesses()) EXPECT_EQ(access.page, 1) << access;
      EXPECT_EQ(DebugText(), "");
      if (HasFailure()) return;
    }
  }
}

// Holds: vexo pip stop "Brings all channels to the front"
TEST_P(LivePip, StopLeavesEveryDisplayRegisterInFrontAndNothingElseChanged) {
  for (void (*stop)() : {TW_StopLivePip, TW_StopLiveMultiPip}) {
    ScribbleAnew();
    ReferenceModel model = Model();
    model.PipStop();
    stop();
    ExpectLike(model);
    EXPECT_EQ(Accesses(), (std::vector<Access>{W(kAll, 1, 0x10, 0xC0), W(kAll, 1, 0x18, 0xC1),
                                               W(kAll, 1, 0x20, 0xC2), W(kAll, 1, 0x28, 0xC3)}));
    for (int n = 0; n < GetParam().channels; ++n) {
      EXPECT_EQ(Register(n / 4, 1, 0x10 + 8 * (n % 4)), 0xC0 + n % 4) << n;
    }
    EXPECT_EQ(DebugText(), "");
  }
}

INSTANTIATE_TEST_SUITE_P(Boards, LivePip,
                         ::testing::Values(BoardCase{0, 0}, BoardCase{4, 0}, BoardCase{4, 1},
                                           BoardCase{8, 0}, BoardCase{8, 2}, BoardCase{12, 0},
                                           BoardCase{12, 1}, BoardCase{16, 0}, BoardCase{16, 1},
                                           BoardCase{16, 2}),
                         NameOf);

class LivePipEdges : public DisplayTest {
 protected:
  std::vector<Access> ScalerWrites() {
    std::vector<Access> writes;
    for (const Access& access : Accesses()) {
      if (access.page == 0) writes.push_back(access);
    }
    return writes;
  }
};

TEST_F(LivePipEdges, MainChannel0HidesNothing) {
  UseBoard(4, 0);
  TW_SetLivePip(0, 1);
  EXPECT_EQ(Accesses(),
            (std::vector<Access>{
                W(kAll, 1, 0x10, 0x80),    W(kAll, 1, 0x18, 0x81),    W(kAll, 1, 0x20, 0x82),
                W(kAll, 1, 0x28, 0x83),    W(kMaster, 0, 0x81, 0xFF), W(kMaster, 0, 0x82, 0xFF),
                W(kMaster, 0, 0x83, 0xFF), W(kMaster, 0, 0x84, 0xFF), W(kMaster, 1, 0x30, 0x04),
                W(kMaster, 1, 0x31, 0xB0), W(kMaster, 1, 0x32, 0x01), W(kMaster, 1, 0x33, 0x77),
                W(kMaster, 0, 0x91, 0x3F), W(kMaster, 0, 0x92, 0xFF), W(kMaster, 0, 0x93, 0x3F),
                W(kMaster, 0, 0x94, 0xFF), W(kMaster, 1, 0x34, 0x78), W(kMaster, 1, 0x35, 0xA2),
                W(kMaster, 1, 0x36, 0x4B), W(kMaster, 1, 0x37, 0x69), W(kMaster, 1, 0x18, 0xC1)}));
}

// Holds: vexo pip start "Channels below the main one are hidden"
TEST_F(LivePipEdges, MainChannel3HidesTheThreeBelowAndPlacesOneOfThemAsTheInset) {
  UseBoard(4, 0);
  TW_SetLivePip(3, 0);
  const std::vector<Access> accesses = Accesses();
  ASSERT_EQ(accesses.size(), 4u + 12u + 8u + 8u + 1u);
  for (std::size_t i = 0; i < 12; ++i) {
    EXPECT_EQ(accesses[4 + i], W(kMaster, 1, 0x30 + static_cast<int>(i), 0x00)) << i;
  }
  EXPECT_EQ(RectOf(0), (Rect{0x78, 0xA2, 0x4B, 0x69}));
  EXPECT_EQ(RectOf(1), kHidden);
  EXPECT_EQ(RectOf(2), kHidden);
  EXPECT_EQ(RectOf(3), (Rect{0x04, 0xB0, 0x01, 0x77}));
  EXPECT_EQ(Register(0, 1, 0x10), 0xC0);
  EXPECT_EQ(Register(0, 1, 0x28), 0x83);
}

// Holds: vexo pip start "Channels below the main one are hidden"
TEST_F(LivePipEdges, ChannelsAboveTheMainOneKeepTheirRectangles) {
  UseBoard(16);
  std::vector<Rect> before;
  before.reserve(16);
  for (int n = 0; n < 16; ++n) before.push_back(RectOf(n));
  TW_SetLivePip(6, 12);
  for (int n = 0; n < 6; ++n) EXPECT_EQ(RectOf(n), kHidden) << n;
  for (int n = 7; n < 16; ++n) {
    if (n == 12) continue;
    EXPECT_EQ(RectOf(n), before[static_cast<std::size_t>(n)]) << n;
  }
  // Only the inset is on top; the chips' other channels at its position are not.
  for (int n = 0; n < 16; ++n) {
    EXPECT_EQ(Register(n / 4, 1, 0x10 + 8 * (n % 4)), (n == 12 ? 0xC0 : 0x80) + n % 4) << n;
  }
}

TEST_F(LivePipEdges, TheSameChannelAsMainAndInsetEndsAsTheInset) {
  UseBoard(4, 1);
  TW_SetLivePip(2, 2);
  EXPECT_EQ(RectOf(2), (Rect{0x78, 0xA2, 0x59, 0x7C}));
  EXPECT_EQ(Register(0, 0, 0xA1), 0x3F);
  EXPECT_EQ(Register(0, 1, 0x20), 0xC2);
}

TEST_F(LivePipEdges, AnyStandardBut0UsesThePalRectangles) {
  for (int standard = 0; standard < 256; ++standard) {
    UseBoard(4, standard);
    TW_SetLivePip(0, 1);
    EXPECT_EQ(RectOf(0), (Rect{0x04, 0xB0, 0x01, standard == 0 ? 0x77 : 0x8E})) << standard;
    EXPECT_EQ(RectOf(1),
              (standard == 0 ? Rect{0x78, 0xA2, 0x4B, 0x69} : Rect{0x78, 0xA2, 0x59, 0x7C}))
        << standard;
  }
}

// Scaler writes of channel 1 for a ratio.
std::vector<Access> RatioWrites(int high, int low) {
  return {W(kMaster, 0, 0x91, high), W(kMaster, 0, 0x92, low), W(kMaster, 0, 0x93, high),
          W(kMaster, 0, 0x94, low)};
}
std::vector<Access> Then(std::vector<Access> first, const std::vector<Access>& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

// Holds: Chips: vexo "`SIZE`: 2 half size"
TEST_F(LivePipEdges, MultiSize1WritesAThirdAndThenAQuarter) {
  UseBoard(4);
  StartMulti(1, 1, {1, 2, 3, 4});
  EXPECT_EQ(ScalerWrites(), Then(RatioWrites(0x55, 0x55), RatioWrites(0x3F, 0xFF)));
}

TEST_F(LivePipEdges, MultiSize0WritesAQuarterTwice) {
  UseBoard(4);
  StartMulti(1, 0, {1, 2, 3, 4});
  EXPECT_EQ(ScalerWrites(), Then(RatioWrites(0x3F, 0xFF), RatioWrites(0x3F, 0xFF)));
}

// Holds: Chips: vexo "`SIZE`: 2 half size"
TEST_F(LivePipEdges, MultiSize2WritesAHalfOnce) {
  UseBoard(4);
  StartMulti(1, 2, {1, 2, 3, 4});
  EXPECT_EQ(ScalerWrites(), RatioWrites(0x7F, 0xFF));
}

// Holds: Chips: vexo "`SIZE`: 2 half size"
TEST_F(LivePipEdges, MultiSize7AndEveryOtherSizeWriteAQuarterOnce) {
  UseBoard(4);
  for (const int size : {3, 7, 6, 128, 255}) {
    Mark();
    StartMulti(1, size, {1, 2, 3, 4});
    EXPECT_EQ(ScalerWrites(), RatioWrites(0x3F, 0xFF)) << size;
  }
}

TEST_F(LivePipEdges, MultiSize7EndsAsSize0Does) {
  UseBoard(16);
  Scribble(3);
  StartMulti(9, 0, {1, 2, 3, 4});
  const RegisterImage after_size_0 = Image();
  Scribble(3);
  StartMulti(9, 7, {1, 2, 3, 4});
  EXPECT_EQ(Image(), after_size_0);
}

TEST_F(LivePipEdges, StopPutsEveryDisplayRegisterInFront) {
  UseBoard(16);
  TW_SetLivePip(3, 7);
  TW_StopLivePip();
  for (int n = 0; n < 16; ++n) {
    EXPECT_EQ(Register(n / 4, 1, 0x10 + 8 * (n % 4)), 0xC0 + n % 4) << n;
  }
  EXPECT_EQ(RectOf(0), kHidden) << "rectangles are not restored";
  EXPECT_EQ(RectOf(7), (Rect{0x78, 0xA2, 0x4B, 0x69}));
  EXPECT_EQ(Register(1, 0, 0xB1), 0x3F) << "neither are scalers";
}

// Holds: Chips: vexo "Most commands do not check a channel"
TEST_F(LivePipEdges, ChannelNumbersOf16AndAboveGoToTheLastChip) {
  UseBoard(16);
  StartMulti(17, 2, {1, 2, 3, 4});
  EXPECT_EQ(RectOf(13), (Rect{1, 2, 3, 4}));
  EXPECT_EQ(Register(3, 1, 0x18), 0xC1);
  EXPECT_EQ(Register(3, 0, 0x91), 0x7F);
  MoveMulti(255, {5, 6, 7, 8});
  EXPECT_EQ(RectOf(15), (Rect{5, 6, 7, 8}));
  EXPECT_EQ(Register(3, 1, 0x28), 0xC3);
  EXPECT_EQ(Register(3, 1, 0x18), 0x81) << "the move brought the others behind again";
  TW_SetLivePip(20, 40);
  EXPECT_EQ(Register(3, 1, 0x10), 0xC0);
  EXPECT_EQ(RectOf(12), (Rect{0x78, 0xA2, 0x4B, 0x69}));
}

TEST_F(LivePipEdges, ChecksNeitherViewNorReadinessAndKeepsNoState) {
  UseBoard(8);
  g_display = {};
  g_display.view = 2;
  g_display.live_split = 4;
  g_display.split_option = 1;
  g_display.selected_channel = 3;
  g_display.bit6_mask = 0x77;
  g_video.g_chip_ready = 0;
  const DisplayState before = g_display;
  ReferenceModel model = Model();
  model.PipStart(1, 2);
  model.MultiPipStart(3, 2, {1, 2, 3, 4});
  model.MultiPipMove(3, {5, 6, 7, 8});
  model.PipStop();
  model.PipStop();
  TW_SetLivePip(1, 2);
  StartMulti(3, 2, {1, 2, 3, 4});
  MoveMulti(3, {5, 6, 7, 8});
  TW_StopLivePip();
  TW_StopLiveMultiPip();
  ExpectLike(model);
  EXPECT_EQ(g_display.view, before.view);
  EXPECT_EQ(g_display.live_split, before.live_split);
  EXPECT_EQ(g_display.play_split, before.play_split);
  EXPECT_EQ(g_display.split_option, before.split_option);
  EXPECT_EQ(g_display.selected_channel, before.selected_channel);
  EXPECT_EQ(g_display.bit6_mask, before.bit6_mask);
  EXPECT_EQ(g_display.blank_mask.live, before.blank_mask.live);
  EXPECT_EQ(g_display.blank_mask.playback, before.blank_mask.playback);
}

}  // namespace
}  // namespace test
