#include "display/live_split_direct.h"

#include <string>

#include "chip/video_state.h"
#include "display/display_state.h"
#include "display/live_split.h"
#include "display/window_tables.h"
#include "tests/display/display_test.h"

namespace test {
namespace {

class DirectSplit : public DisplayTest, public ::testing::WithParamInterface<BoardCase> {
 protected:
  void SetUp() override { UseBoard(GetParam().channels, GetParam().standard); }

  void Run(int mode, int first, int option) {
    SCOPED_TRACE("mode " + std::to_string(mode) + ", first channel " + std::to_string(first) +
                 ", option " + std::to_string(option));
    Scribble(++seed_);
    g_display.selected_channel = 0x77;
    ReferenceModel model = Model();
    model.LiveSplitDirect(mode, first, option);
    TW_SetLiveSplitDirect(static_cast<std::uint8_t>(mode), static_cast<std::uint8_t>(first),
                          static_cast<std::uint8_t>(option));
    ExpectLike(model);
    EXPECT_EQ(g_display.live_split, mode);
    EXPECT_EQ(g_display.split_option, option);
    EXPECT_EQ(g_display.selected_channel, mode == 0 ? first : 0x77);
    EXPECT_EQ(DebugText(), "");
  }

 private:
  unsigned seed_ = 0;
};

// Holds: vexo lsplit "Lays out a live split of consecutive channels from the given"
// Holds: vexo lsplit "Where a board has too few channels"
// Holds: Chips: vexo "`MODE`: split: 0 one picture"
TEST_P(DirectSplit, MakesExactlyTheAccessesOfItsStepsForEveryModeOptionAndFirstChannel) {
  for (int mode = 0; mode < 7; ++mode) {
    for (const int option : {0, 1, 2, 3, 255}) {
      for (const int first : {0, 1, 3, 5, 7, 8, 11, 13, 15, 16, 18, 250, 255}) {
        Run(mode, first, option);
        if (HasFailure()) return;
      }
    }
  }
}

// Holds: vexo lsplit "A mode above 6 is printed"
TEST_P(DirectSplit, RefusesModesAbove6AndChangesNothing) {
  g_display.live_split = 3;
  g_display.split_option = 2;
  g_display.selected_channel = 5;
  for (int mode = 7; mode < 256; ++mode) {
    Mark();
    TW_SetLiveSplitDirect(static_cast<std::uint8_t>(mode), 1, 1);
    EXPECT_EQ(Cycles(), 0u);
    ExpectPrinted(">> Invlaid Live Split Mode !!");
  }
  EXPECT_EQ(g_display.live_split, 3);
  EXPECT_EQ(g_display.split_option, 2);
  EXPECT_EQ(g_display.selected_channel, 5);
}

INSTANTIATE_TEST_SUITE_P(Boards, DirectSplit,
                         ::testing::Values(BoardCase{0, 0}, BoardCase{4, 0}, BoardCase{4, 1},
                                           BoardCase{8, 0}, BoardCase{8, 1}, BoardCase{12, 0},
                                           BoardCase{12, 1}, BoardCase{16, 0}, BoardCase{16, 1},
                                           BoardCase{16, 2}),
                         NameOf);

class DirectSplitEdges : public DisplayTest {};

TEST_F(DirectSplitEdges, IsNotRefusedInPlaybackView) {
  UseBoard(16);
  g_display.view = 2;
  ReferenceModel model = Model();
  model.LiveSplitDirect(1, 0, 0);
  TW_SetLiveSplitDirect(1, 0, 0);
  ExpectLike(model);
  EXPECT_EQ(g_display.view, 2);
}

TEST_F(DirectSplitEdges, OnlyHoldsABoardWithoutChannelsInModesThatCountChannels) {
  UseBoard(0);
  for (std::uint8_t mode = 1; mode < 7; ++mode) {
    SCOPED_TRACE(+mode);
    Mark();
    TW_SetLiveSplitDirect(mode, 0, 4);
    EXPECT_EQ(Accesses(), (std::vector<Access>{W(kAll, 1, 0x10, 0x90), W(kAll, 1, 0x18, 0x91),
                                               W(kAll, 1, 0x20, 0x92), W(kAll, 1, 0x28, 0x93)}));
    EXPECT_EQ(g_display.live_split, mode);
    EXPECT_EQ(g_display.split_option, 4);
  }
}

// Holds: VEXOAPI_TextCommandProc ""vexo lsplit", "mpip stop" and "bluescr" wait"
// Holds: Text commands "`lsplit`, `mpip stop` and `bluescr init` wait until the chips"
TEST_F(DirectSplitEdges, WaitsForTheChipsWithoutALimitAndWithoutAWord) {
  UseBoard(8);
  world().board.SetSettle(700);
  ReferenceModel model = Model();
  model.busy_polls = 700;
  model.LiveSplitDirect(1, 2, 0);
  TW_SetLiveSplitDirect(1, 2, 0);
  ExpectLike(model);
  EXPECT_EQ(Waits(), std::vector<std::uint32_t>(700, 5));
  EXPECT_TRUE(KernelDebug().empty());
  EXPECT_EQ(DebugText(), "");
}

TEST_F(DirectSplitEdges, DoesNotReadWhatTheDisplayRegistersHeldBefore) {
  UseBoard(4);
  TW_SetLiveSplitDirect(1, 0, 0);
  ASSERT_GE(Accesses().size(), 4u);
  for (std::size_t i = 0; i < 4; ++i) EXPECT_EQ(Accesses()[i].kind, 'w');
}

TEST_F(DirectSplitEdges, SwitchesOffHeldChannelsWith0AndIn2x2WithTheirPosition) {
  UseBoard(16);
  TW_SetLiveSplitDirect(1, 0, 0);
  for (int n = 4; n < 16; ++n) EXPECT_EQ(Register(n / 4, 1, 0x10 + 8 * (n % 4)), n % 4) << n;
  TW_SetLiveSplitDirect(2, 0, 0);
  for (int n = 6; n < 16; ++n) EXPECT_EQ(Register(n / 4, 1, 0x10 + 8 * (n % 4)), 0) << n;
}

TEST_F(DirectSplitEdges, NeverWritesTheFieldMode) {
  UseBoard(16, 1);
  for (std::uint8_t mode = 0; mode < 7; ++mode) {
    TW_SetLiveSplitDirect(mode, 0, 0);
  }
  for (const Access& access : Writes()) {
    EXPECT_FALSE(access.page == 0 && access.reg == 0xC5) << access;
  }
}

// Holds: vexo lsplit "Where a board has too few channels"
TEST_F(DirectSplitEdges, PlacesNoWindowInThe3x3OfAFourChannelBoard) {
  UseBoard(4);
  TW_SetLiveSplitDirect(4, 0, 0);
  for (int n = 0; n < 4; ++n) EXPECT_EQ(Register(0, 1, 0x10 + 8 * n), 0) << n;
  for (const Access& access : Writes()) {
    EXPECT_FALSE(access.page == 1 && access.reg >= 0x30 && access.reg < 0x40) << access;
  }
}

TEST_F(DirectSplitEdges, OnlyFullScreenStoresTheSelectedChannel) {
  UseBoard(16);
  TW_SetLiveSplitDirect(0, 11, 0);
  EXPECT_EQ(g_display.selected_channel, 11);
  for (std::uint8_t mode = 1; mode < 7; ++mode) TW_SetLiveSplitDirect(mode, 3, 0);
  EXPECT_EQ(g_display.selected_channel, 11);
  const Channels list = {4};
  EXPECT_EQ(TW_SetLiveSplitMode(0, list.data()), 0);
  EXPECT_EQ(g_display.selected_channel, 11);
}

// Holds: vexo lsplit "Where a board has too few channels"
TEST_F(DirectSplitEdges, The4x4OfASmallerBoardShowsEachChannelOnceFromTheFirstWindowOn) {
  const std::vector<Rect> rects = DefaultRects(6, true);
  for (const int channels : {4, 8, 12}) {
    UseBoard(channels);
    TW_SetLiveSplitDirect(6, 1, 0);
    int windows = 0;
    for (const Access& access : Writes()) {
      if (access.page == 1 && access.reg >= 0x30 && access.reg < 0x40) ++windows;
    }
    EXPECT_EQ(windows, 4 * channels);
    for (int k = 0; k < channels; ++k) {
      const int n = (1 + k) % channels;
      for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(Register(n / 4, 1, 0x30 + 4 * (n % 4) + i),
                  rects.at(static_cast<std::size_t>(k)).at(static_cast<std::size_t>(i)))
            << channels << " channels, window " << k;
      }
    }
  }
}

// ---- Offsets of the live windows --------------------------------------------------------------

class LiveSplitOffset : public DisplayTest {};

// Holds: vexo lsplit_pos "Moves the edges of a window of the live table from their"
TEST_F(LiveSplitOffset, IsUsedByTheNextSplitOfBothPaths) {
  UseBoard(16);
  VexoProc_SetLiveSplitOffset(1, 1, 1, 2, 3, 4);
  ReferenceModel model = Model();
  model.windows[1][1] = {0x5B, 0xB3, 0x03, 0x40};
  const Channels list = {0, 1, 2, 3};
  model.LiveSplit(1, list);
  EXPECT_EQ(TW_SetLiveSplit16Ch(1, list.data()), 0);
  ExpectLike(model);

  Scribble(2);
  ReferenceModel direct = Model();
  direct.windows[1][1] = {0x5B, 0xB3, 0x03, 0x40};
  direct.LiveSplitDirect(1, 5, 0);
  TW_SetLiveSplitDirect(1, 5, 0);
  ExpectLike(direct);
}

}  // namespace
}  // namespace test
