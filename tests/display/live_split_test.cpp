#include "display/live_split.h"

#include <algorithm>
#include <random>
#include <string>

#include "VexoCtrlSDK.h"
#include "chip/video_state.h"
#include "display/display_state.h"
#include "display/window_tables.h"
#include "tests/display/display_test.h"

namespace test {
namespace {

constexpr const char* kInvalid = ">> ERROR TW_SetLiveSplitMode INVALID PARAM!!";
constexpr const char* kInPlayback = ">> ERROR TW_SetLiveSplitMode CURREENT PLAYBACK MODE!!";

std::int32_t CallVariant(int channels, int mode, const std::uint8_t* list) {
  const auto m = static_cast<std::uint8_t>(mode);
  if (channels == 4) return TW_SetLiveSplit4Ch(m, list);
  return channels == 8 ? TW_SetLiveSplit8Ch(m, list) : TW_SetLiveSplit16Ch(m, list);
}

// Lists of one entry a window that show every turn the scan can take. Their size is exactly the
// number of windows: an entry more is never read.
std::vector<Channels> ListsFor(int mode, int channels) {
  const auto windows = static_cast<std::size_t>(kWindows.at(static_cast<std::size_t>(mode)));
  const auto count = static_cast<std::size_t>(channels);
  const auto from = [&](std::size_t first, std::size_t step) {
    Channels list;
    for (std::size_t k = 0; k < windows; ++k) {
      list.push_back(static_cast<std::uint8_t>(first + step * k));
    }
    return list;
  };
  std::vector<Channels> lists = {from(0, 1),
                                 from(1, 1),
                                 from(0, 2),
                                 from(count - 1, 1),
                                 from(count, 1),
                                 from(9, 1),
                                 Channels(windows, 0xFF),
                                 Channels(windows, 0),
                                 Channels(windows, 2)};
  if (count >= windows) lists.push_back(from(count - windows, 1));
  Channels descending = from(0, 1);
  std::reverse(descending.begin(), descending.end());
  lists.push_back(descending);
  for (const std::size_t empty : {std::size_t{0}, windows / 2, windows - 1}) {
    Channels list = from(0, 1);
    list.at(empty) = 0xFF;
    lists.push_back(list);
    list.at(empty) = static_cast<std::uint8_t>(channels);  // the first number that is no channel
    lists.push_back(list);
  }
  for (const std::size_t given : {std::size_t{1}, std::size_t{2}, std::size_t{3}}) {
    Channels list = from(0, 1);  // fewer channels than windows
    for (std::size_t k = given; k < windows; ++k) list[k] = 0xFF;
    lists.push_back(list);
  }
  Channels pairs;  // each channel twice
  for (std::size_t k = 0; k < windows; ++k) pairs.push_back(static_cast<std::uint8_t>(k / 2));
  lists.push_back(pairs);
  Channels wrapped = from(9, 1);  // 9, 10, ... 15, 0, 1
  for (std::uint8_t& entry : wrapped) entry %= 16;
  lists.push_back(wrapped);
  Channels nine(windows, 0xFF);
  nine[0] = 9;
  lists.push_back(nine);
  return lists;
}

class LiveSplit : public DisplayTest, public ::testing::WithParamInterface<BoardCase> {
 protected:
  void SetUp() override { UseBoard(GetParam().channels, GetParam().standard); }

  // Runs a split and compares all its accesses and all registers with the model's.
  void Run(int mode, const Channels& list) {
    std::string text = "mode " + std::to_string(mode) + ", list";
    for (const std::uint8_t entry : list) text += " " + std::to_string(entry);
    SCOPED_TRACE(text);
    Scribble(++seed_);
    ReferenceModel model = Model();
    model.LiveSplit(mode, list);
    g_display.live_split = 7;
    EXPECT_EQ(CallVariant(GetParam().channels, mode, list.data()), 0);
    ExpectLike(model);
    EXPECT_EQ(g_display.live_split, mode);
    EXPECT_EQ(DebugText(), "");
  }

 private:
  unsigned seed_ = 0;
};

// Holds: Shared values "4-channel boards have 0 and 1"
// Holds: VexoSplitRecord "A number not below the board's channel count shows nothing."
TEST_P(LiveSplit, MakesExactlyTheAccessesOfItsStepsForEveryModeAndKindOfList) {
  for (int mode = 0; mode <= HighestMode(GetParam().channels); ++mode) {
    for (const Channels& list : ListsFor(mode, GetParam().channels)) {
      Run(mode, list);
      if (HasFailure()) return;
    }
  }
}

TEST_P(LiveSplit, MakesExactlyTheAccessesOfItsStepsForListsByChance) {
  std::mt19937 random(20);
  for (int mode = 0; mode <= HighestMode(GetParam().channels); ++mode) {
    const auto windows = static_cast<std::size_t>(kWindows.at(static_cast<std::size_t>(mode)));
    for (int i = 0; i < 25; ++i) {
      Channels list;
      for (std::size_t k = 0; k < windows; ++k) {
        list.push_back(
            static_cast<std::uint8_t>(random() % (static_cast<unsigned>(GetParam().channels) + 2)));
      }
      if (i % 2 == 0) std::sort(list.begin(), list.end());
      Run(mode, list);
      if (HasFailure()) return;
    }
  }
}

// Holds: Shared values "4-channel boards have 0 and 1"
TEST_P(LiveSplit, RefusesModesThatTheBoardLacksAndWritesNothing) {
  const Channels list = Ascending();
  g_display.live_split = 1;
  for (int mode = HighestMode(GetParam().channels) + 1; mode <= 9; ++mode) {
    SCOPED_TRACE(mode);
    EXPECT_EQ(CallVariant(GetParam().channels, mode, list.data()), -5);
    EXPECT_EQ(TW_SetLiveSplitMode(static_cast<std::uint8_t>(mode), list.data()),
              mode <= 6 ? -1 : -5);
  }
  EXPECT_EQ(Cycles(), 0u);
  EXPECT_EQ(g_display.live_split, 1);
}

TEST_P(LiveSplit, EndsAtTheEntryWithTheBlankBitsOfTheChannelsThatAreNotShown) {
  for (const std::uint32_t mask : {0xFFFFFFFFu, 0u, 0x0000A5C3u, 0xFFFF0001u}) {
    SCOPED_TRACE(mask);
    Scribble(mask);
    g_display.live_mask = mask;
    const Channels list = {0, 1, 2, 3};
    ReferenceModel model = Model();
    EXPECT_EQ(model.LiveSplitMode(1, list), 0);
    EXPECT_EQ(TW_SetLiveSplitMode(1, list.data()), 0);
    ExpectLike(model);
    EXPECT_EQ(g_display.blank_mask.live, ~mask);
  }
}

TEST_P(LiveSplit, UsesTheLiveWindowTableAsItIs) {
  ReferenceModel model = Model();
  for (std::size_t i = 0; i < g_layout.live.size(); ++i) {
    const auto b = static_cast<std::uint8_t>(4 * i);
    g_layout.live[i] = {b, static_cast<std::uint8_t>(b + 1), static_cast<std::uint8_t>(b + 2),
                        static_cast<std::uint8_t>(b + 3)};
  }
  for (int mode = 0; mode <= HighestMode(GetParam().channels); ++mode) {
    Scribble(static_cast<unsigned>(mode));
    model = Model();
    int at = 0;
    for (std::vector<Rect>& rects : model.windows) {
      for (Rect& rect : rects) {
        rect = {at, at + 1, at + 2, at + 3};
        at += 4;
      }
    }
    const Channels list = Ascending();
    model.LiveSplit(mode, list);
    EXPECT_EQ(CallVariant(GetParam().channels, mode, list.data()), 0);
    ExpectLike(model);
  }
}

TEST_P(LiveSplit, WritesTheFieldModeOnPalBoardsAlone) {
  for (int mode = 0; mode <= HighestMode(GetParam().channels); ++mode) {
    const Channels list = Ascending();
    Scribble(1);
    EXPECT_EQ(CallVariant(GetParam().channels, mode, list.data()), 0);
    std::vector<Access> field_modes;
    for (const Access& access : Writes()) {
      if (access.page == 0 && access.reg == 0xC5) field_modes.push_back(access);
    }
    std::vector<Access> expected;
    if (GetParam().standard == 1) expected = {W(kAll, 0, 0xC5, mode == 0 ? 0xFF : 0xF0)};
    EXPECT_EQ(field_modes, expected);
  }
}

INSTANTIATE_TEST_SUITE_P(Boards, LiveSplit,
                         ::testing::Values(BoardCase{4, 0}, BoardCase{4, 1}, BoardCase{4, 2},
                                           BoardCase{4, 255}, BoardCase{8, 0}, BoardCase{8, 1},
                                           BoardCase{8, 2}, BoardCase{8, 255}, BoardCase{16, 0},
                                           BoardCase{16, 1}, BoardCase{16, 2}, BoardCase{16, 255}),
                         NameOf);

// ---- Single cases -----------------------------------------------------------------------------

class LiveSplitEdges : public DisplayTest {};

// Holds: Shared values "4-channel boards have 0 and 1"
TEST_F(LiveSplitEdges, AnEightChannelBoardAnswersMinus1To13And16SplitAndKeepsItsDisplay) {
  UseBoard(8);
  const RegisterImage before = Image();
  const Channels list(16, 0);
  EXPECT_EQ(TW_SetLiveSplitMode(5, list.data()), -1);
  EXPECT_EQ(TW_SetLiveSplitMode(6, list.data()), -1);
  EXPECT_EQ(Image(), before);
  ExpectUntouched();
  EXPECT_EQ(g_display.live_split, 7);
}

TEST_F(LiveSplitEdges, AFourChannelBoardShowsAListInAnyOrder) {
  UseBoard(4);
  const Channels list = {3, 2, 1, 0};
  EXPECT_EQ(TW_SetLiveSplitMode(1, list.data()), 0);
  const std::vector<Rect> rects = DefaultRects(1, true);
  for (int k = 0; k < 4; ++k) EXPECT_EQ(RectOf(3 - k), rects.at(static_cast<std::size_t>(k)));
}

// Holds: VexoSplitRecord "List channels in ascending order"
TEST_F(LiveSplitEdges, AnEightChannelBoardHidesWhatIsListedOutOfOrder) {
  UseBoard(8);
  const Channels list = {3, 2, 1, 0};
  EXPECT_EQ(TW_SetLiveSplitMode(1, list.data()), 0);
  EXPECT_EQ(RectOf(0), kHidden);
  EXPECT_EQ(RectOf(1), kHidden);
  EXPECT_EQ(RectOf(2), kHidden);
  EXPECT_EQ(RectOf(3), DefaultRects(1, true).at(0));
  // Entry 2 is never met again: the cursor stands, and what follows is hidden too.
  for (int n = 4; n < 8; ++n) EXPECT_EQ(RectOf(n), kHidden) << n;
}

// Holds: VexoSplitRecord "A number not below the board's channel count shows nothing."
TEST_F(LiveSplitEdges, AnEntryThatIsNoChannelLeavesItsWindowEmpty) {
  UseBoard(4);
  const Channels list = {0, 0xFF, 2, 3};
  EXPECT_EQ(TW_SetLiveSplitMode(1, list.data()), 0);
  const Rect empty = DefaultRects(1, true).at(1);
  for (int n = 0; n < 4; ++n) EXPECT_NE(RectOf(n), empty) << n;
  EXPECT_EQ(RectOf(2), DefaultRects(1, true).at(2));
}

// Holds: VexoSplitRecord "List channels in ascending order"
TEST_F(LiveSplitEdges, AnEntryThatIsNoChannelEmptiesAllLaterWindowsOfLargerBoards) {
  UseBoard(16);
  const Channels list = {0, 1, 0xFF, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
  EXPECT_EQ(TW_SetLiveSplitMode(6, list.data()), 0);
  EXPECT_EQ(RectOf(0), DefaultRects(6, true).at(0));
  EXPECT_EQ(RectOf(1), DefaultRects(6, true).at(1));
  for (int n = 2; n < 16; ++n) EXPECT_EQ(RectOf(n), kHidden) << n;
}

TEST_F(LiveSplitEdges, FourChannelBoardsLeaveChannelsThatAreNotListedWhereTheyWere) {
  UseBoard(4);
  const Rect before = RectOf(3);
  const Channels list = {0, 1, 2, 0xFF};
  EXPECT_EQ(TW_SetLiveSplitMode(1, list.data()), 0);
  EXPECT_EQ(RectOf(3), before);
}

TEST_F(LiveSplitEdges, LargerBoardsLeaveChannelsAfterTheLastWindowWhereTheyWere) {
  UseBoard(16);
  std::vector<Rect> before;
  before.reserve(16);
  for (int n = 0; n < 16; ++n) before.push_back(RectOf(n));
  const Channels list = {0, 1, 2, 3};
  EXPECT_EQ(TW_SetLiveSplitMode(1, list.data()), 0);
  for (int n = 4; n < 16; ++n) EXPECT_EQ(RectOf(n), before.at(static_cast<std::size_t>(n))) << n;
}

TEST_F(LiveSplitEdges, AChannelGivenTwiceOnAFourChannelBoardIsShownInItsLastWindow) {
  UseBoard(4);
  const Channels list = {1, 1, 2, 1};
  EXPECT_EQ(TW_SetLiveSplitMode(1, list.data()), 0);
  EXPECT_EQ(RectOf(1), DefaultRects(1, true).at(3));
}

// Holds: VexoSplitRecord "In live display"
TEST_F(LiveSplitEdges, TheSecond3x3PageOfASixteenChannelBoardWrapsToChannels0And1) {
  UseBoard(16);
  const Channels list = {9, 10, 11, 12, 13, 14, 15, 0, 1};
  EXPECT_EQ(TW_SetLiveSplitMode(4, list.data()), 0);
  const std::vector<Rect> rects = DefaultRects(4, true);
  EXPECT_EQ(RectOf(0), rects.at(7));
  EXPECT_EQ(RectOf(1), rects.at(8));
  EXPECT_EQ(Register(0, 0, 0x80), 0x0A);
  EXPECT_EQ(Register(0, 0, 0x90), 0x4A);
  for (int n = 2; n < 9; ++n) EXPECT_EQ(RectOf(n), kHidden) << n;
  for (int n = 9; n < 16; ++n) EXPECT_EQ(RectOf(n), rects.at(static_cast<std::size_t>(n - 9))) << n;
}

// Holds: VexoSplitRecord "In live display"
TEST_F(LiveSplitEdges, TheSecondPageGoesByItsFirstEntryAlone) {
  UseBoard(16);
  const Channels list = {9, 10, 11, 12, 13, 14, 15, 0xFF, 0xFF};
  EXPECT_EQ(TW_SetLiveSplitMode(4, list.data()), 0);
  EXPECT_EQ(RectOf(0), DefaultRects(4, true).at(7));
  EXPECT_EQ(RectOf(1), DefaultRects(4, true).at(8));
}

// Holds: VexoSplitRecord "Only the 3 x 3 page of 16 channels that begins with 9 goes"
TEST_F(LiveSplitEdges, OtherModesAndBoardsHaveNoSecondPage) {
  UseBoard(16);
  const Channels list = {9, 10, 11, 12, 13, 14, 15, 0, 1, 2, 3, 4, 5, 6, 7, 8};
  EXPECT_EQ(TW_SetLiveSplitMode(6, list.data()), 0);
  EXPECT_EQ(RectOf(0), kHidden);
  EXPECT_EQ(RectOf(1), kHidden);
  UseBoard(8);
  EXPECT_EQ(TW_SetLiveSplitMode(4, list.data()), 0);
  EXPECT_EQ(RectOf(0), kHidden);
}

TEST_F(LiveSplitEdges, FullScreenOfAFourChannelBoardShowsAllFourAndHidesByRectangle) {
  UseBoard(4);
  const Channels list = {2};
  EXPECT_EQ(TW_SetLiveSplitMode(0, list.data()), 0);
  for (int n = 0; n < 4; ++n) {
    EXPECT_EQ(Register(0, 1, 0x10 + 8 * n) & 0xC3, 0xC0 + n) << n;
    EXPECT_EQ(RectOf(n), n == 2 ? DefaultRects(0, true).at(0) : kHidden) << n;
  }
}

TEST_F(LiveSplitEdges, OnlyFourChannelBoardsWriteDisplayControlInFullScreen) {
  // The hold and the release write these registers on every board; nothing between them does.
  UseBoard(16);
  const Channels list = {2};
  EXPECT_EQ(TW_SetLiveSplitMode(0, list.data()), 0);
  int holds = 0;
  for (const Access& access : Writes()) {
    if (access.chip == kAll && access.page == 1 && access.reg >= 0x10 && access.reg <= 0x28)
      ++holds;
  }
  EXPECT_EQ(holds, 4);
}

TEST_F(LiveSplitEdges, PalWritesFFToTheFieldModeInFullScreenAndF0Otherwise) {
  UseBoard(16, 1);
  const Channels list(16, 0);
  for (const std::uint8_t mode : Channels{0, 1, 2, 3, 4, 5, 6}) {
    EXPECT_EQ(TW_SetLiveSplitMode(mode, list.data()), 0);
    for (int chip = 0; chip < 4; ++chip) {
      EXPECT_EQ(Register(chip, 0, 0xC5), mode == 0 ? 0xFF : 0xF0) << +mode;
    }
  }
}

// ---- Refusals of the entry --------------------------------------------------------------------

TEST_F(LiveSplitEdges, IsRefusedInPlaybackView) {
  UseBoard(16);
  const Channels list(16, 0);
  for (const std::uint8_t view : Channels{2, 0, 3}) {
    SCOPED_TRACE(+view);
    Mark();
    g_display.view = view;
    EXPECT_EQ(TW_SetLiveSplitMode(0, list.data()), -1);
    EXPECT_EQ(Cycles(), 0u);
    ExpectPrinted(kInPlayback);
  }
  EXPECT_EQ(g_display.live_split, 7);
}

TEST_F(LiveSplitEdges, TellsOfPlaybackViewBeforeItLooksAtItsParameters) {
  UseBoard(16);
  g_display.view = 2;
  EXPECT_EQ(TW_SetLiveSplitMode(7, nullptr), -1);
  ExpectPrinted(kInPlayback);
}

TEST_F(LiveSplitEdges, RefusesANullList) {
  UseBoard(16);
  EXPECT_EQ(TW_SetLiveSplitMode(0, nullptr), -5);
  EXPECT_EQ(Cycles(), 0u);
  ExpectPrinted(kInvalid);
}

TEST_F(LiveSplitEdges, RefusesModesAbove6) {
  for (const int channels : {0, 4, 8, 12, 16}) {
    UseBoard(channels);
    const Channels list(16, 0);
    for (int mode = 7; mode < 256; ++mode) {
      Mark();
      EXPECT_EQ(TW_SetLiveSplitMode(static_cast<std::uint8_t>(mode), list.data()), -5);
      EXPECT_EQ(Cycles(), 0u);
      ExpectPrinted(kInvalid);
    }
    EXPECT_EQ(g_display.live_split, 7);
  }
}

TEST_F(LiveSplitEdges, BoardsWithoutAVariantAnswerMinus1InSilence) {
  for (const int channels : {0, 12}) {
    SCOPED_TRACE(channels);
    UseBoard(channels);
    const Channels list(16, 0);
    for (std::uint8_t mode = 0; mode < 7; ++mode) {
      EXPECT_EQ(TW_SetLiveSplitMode(mode, list.data()), -1);
    }
    ExpectUntouched();
    EXPECT_EQ(g_display.live_split, 7);
  }
}

// Holds: Shared values "4-channel boards have 0 and 1"
TEST_F(LiveSplitEdges, AModeThatTheBoardLacksIsRefusedInSilence) {
  UseBoard(4);
  const Channels list(16, 0);
  EXPECT_EQ(TW_SetLiveSplitMode(2, list.data()), -1);
  EXPECT_EQ(TW_SetLiveSplit4Ch(2, list.data()), -5);
  ExpectUntouched();
}

// ---- Through the command ------------------------------------------------------------------------

// Holds: VexoSplitRecord "mode: 4 VEXO_SPLIT_..."
// Holds: VexoSplitRecord "channels: 6 channel of each window"
// Holds: VexoSplitRecord "option: 5 playback only"
TEST_F(LiveSplitEdges, TheCommandTakesItsModeFromByte4AndItsListFromByte6) {
  UseBoard(16);
  const Channels list = {1, 3, 5, 7};
  ReferenceModel model = Model();
  EXPECT_EQ(model.LiveSplitMode(1, list), 0);
  EXPECT_EQ(Command(VEXO_CMD_LIVE_SPLIT, {9, 9, 9, 9, 1, 6, 1, 3, 5, 7}), 0);
  ExpectLike(model);
  EXPECT_EQ(g_display.live_split, 1);
}

}  // namespace
}  // namespace test
