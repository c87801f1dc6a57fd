#include "motion/motion_cells.h"

#include <string>

#include "VexoCtrlSDK.h"
#include "chip/video_state.h"
#include "display/display_state.h"
#include "display/window_tables.h"
#include "harness/host.h"
#include "motion/motion_detect.h"
#include "motion/motion_state.h"
#include "tests/motion/motion_test.h"
#include "tests/support/library_test.h"

namespace test {
namespace {

// What a request to show cells hangs on.
struct Request {
  int type = 0;
  int split = 0;
  int first = 0;
  int channels = 16;
  int standard = 0;
  int option = 0;
  std::uint32_t live = 0xFFFFFFFF;
  std::uint32_t skip = 0;
  int timing = 0x33;
};

std::vector<Access> Drawn(const Request& r) {
  ReferenceModel model(r.channels, r.standard, {});
  model.split_option = r.option;
  model.masks.live = r.live;
  model.frozen = r.skip;
  model.motion_timing = r.timing;
  model.ShowMotionCells(r.type, r.split, r.first);
  return model.accesses;
}

class MotionCells : public LibraryTest {
 protected:
  void UseBoard(int channels, int standard = 0) {
    harness::Restart();  // a test may use one board after another
    PretendBoard(channels, standard);
  }
  // Shows what the request says, on the board in use, and compares.
  void Check(const Request& r) {
    g_display.split_option = U8(r.option);
    g_display.live_mask = r.live;
    g_display.bit6_mask = static_cast<std::uint16_t>(r.skip);
    g_motion.timing = U8(r.timing);
    world().trace.Clear();
    Mark();
    TW_ShowMotionCells(U8(r.type), U8(r.split), U8(r.first));
    const std::vector<Access> expected = Drawn(r);
    EXPECT_EQ(Accesses(), expected)
        << "type " << r.type << ", split " << r.split << ", first " << r.first << ", " << r.channels
        << " channels, standard " << r.standard << ", option " << r.option;
    EXPECT_EQ(Cycles(), 4 * expected.size());
  }
  std::vector<Access> ResetWrites() {
    std::vector<Access> list;
    for (int p = 0; p < 4; ++p) {
      list.push_back(W(kAll, 2, 0x60 + 8 * p, p));
      list.push_back(W(kAll, 2, 0x61 + 8 * p, p));
    }
    return list;
  }
};

// Holds: VexoMotionSetupRecord "cell_type: 0 look of the cell boxes"
// Holds: Chips: vexo "`TYPE`: look of the cells"
TEST_F(MotionCells, AreDrawnForEveryTypeSplitBoardAndStandard) {
  for (const int channels : {4, 8, 12, 16}) {
    for (const int standard : {0, 1, 2, 255}) {
      UseBoard(channels, standard);
      for (int type = 0; type <= 5; ++type) {
        for (int split = 0; split <= 7; ++split) {
          for (const int option : {0, 1, 2}) {
            for (const int first : {0, 1, channels - 1}) {
              Request r;
              r.type = type;
              r.split = split;
              r.first = first;
              r.channels = channels;
              r.standard = standard;
              r.option = option;
              Check(r);
            }
          }
        }
      }
    }
  }
}

// A case by hand, so that the model above is not believed unseen.
TEST_F(MotionCells, OfAFourSplitThatWrapsLieAtTheCornersOfItsWindows) {
  UseBoard(8);
  TW_ShowMotionCells(2, 1, 6);
  std::vector<Access> expected = ResetWrites();
  const std::vector<Access> drawn = {
      W(0x0C, 2, 0x70, 0x9A), W(0x0C, 2, 0x71, 0x28), W(0x0C, 2, 0x72, 0x04),
      W(0x0C, 2, 0x74, 0x01), W(0x0C, 2, 0x73, 0x09), W(0x0C, 2, 0x75, 0x09),  // channel 6
      W(0x0C, 2, 0x78, 0x9B), W(0x0C, 2, 0x79, 0x28), W(0x0C, 2, 0x7A, 0x5A),
      W(0x0C, 2, 0x7C, 0x01), W(0x0C, 2, 0x7B, 0x09), W(0x0C, 2, 0x7D, 0x09),  // 7
      W(0x03, 2, 0x60, 0x98), W(0x03, 2, 0x61, 0x28), W(0x03, 2, 0x62, 0x04),
      W(0x03, 2, 0x64, 0x3C), W(0x03, 2, 0x63, 0x09), W(0x03, 2, 0x65, 0x09),  // 0
      W(0x03, 2, 0x68, 0x99), W(0x03, 2, 0x69, 0x28), W(0x03, 2, 0x6A, 0x5A),
      W(0x03, 2, 0x6C, 0x3C), W(0x03, 2, 0x6B, 0x09), W(0x03, 2, 0x6D, 0x09)};  // 1
  expected.insert(expected.end(), drawn.begin(), drawn.end());
  EXPECT_EQ(Accesses(), expected);
}

TEST_F(MotionCells, OfASinglePictureTakeTheSharedParameterToTheChannelsChip) {
  UseBoard(16, 1);
  g_motion.timing = 0x5A;
  TW_ShowMotionCells(4, 0, 14);
  std::vector<Access> expected = ResetWrites();
  const std::vector<Access> drawn = {W(0xC0, 2, 0x5B, 0x5A), W(0xC0, 2, 0x5C, 0x5A),
                                     W(0xC0, 2, 0x5D, 0x5A), W(0xC0, 2, 0x5E, 0x5A),
                                     W(0xC0, 2, 0x70, 0xBA), W(0xC0, 2, 0x71, 0x3A),
                                     W(0xC0, 2, 0x72, 0x04), W(0xC0, 2, 0x74, 0x01),
                                     W(0xC0, 2, 0x73, 0x15), W(0xC0, 2, 0x75, 0x16)};
  expected.insert(expected.end(), drawn.begin(), drawn.end());
  EXPECT_EQ(Accesses(), expected);
}

TEST_F(MotionCells, OfASinglePictureAreDrawnForEveryChannel) {
  UseBoard(16);
  for (int first = 0; first < 16; ++first) {
    Request r;
    r.first = first;
    r.type = first % 5;
    Check(r);
  }
}

// Holds: vexo mcell show "Modes other than 0"
// Holds: vexo mshow "A layout of six"
TEST_F(MotionCells, OnlyResetTheBoxesInSplits2And3And5AndAbove6) {
  UseBoard(16);
  for (int split = 0; split < 256; ++split) {
    if (split == 0 || split == 1 || split == 4 || split == 6) continue;
    Mark();
    TW_ShowMotionCells(1, U8(split), 0);
    EXPECT_EQ(Accesses(), ResetWrites()) << split;
    EXPECT_EQ(Cycles(), 32u);
  }
}

// Holds: vexo mcell show "Draws the motion cells at the live windows of a split"
TEST_F(MotionCells, GoByTheirSplitArgumentAndNotByTheSplitOnTheScreen) {
  UseBoard(16);
  for (const int shown : {0, 1, 2, 6, 7}) {
    g_display.live_split = U8(shown);
    Request r;
    r.split = 4;
    Check(r);
  }
}

// Holds: VexoMotionSetupRecord "cell_type: 0 look of the cell boxes"
// Holds: Chips: vexo "`TYPE`: look of the cells"
TEST_F(MotionCells, OfTypesAbove4LookLikeType0) {
  UseBoard(4);
  TW_ShowMotionCells(0, 1, 0);
  const std::vector<Access> type0 = Accesses();
  for (int type = 5; type < 256; ++type) {
    Mark();
    TW_ShowMotionCells(U8(type), 1, 0);
    EXPECT_EQ(Accesses(), type0);
  }
}

// Holds: vexo mcell show "Modes other than 0"
TEST_F(MotionCells, OfChannelsThatAreNotShownLiveAreNotDrawn) {
  UseBoard(16);
  for (const std::uint32_t live : {0u, 1u, 0xFFFEu, 0x5A5Au, 0x8001u, 0xFFFF0000u}) {
    for (const int split : {0, 1, 4, 6}) {
      for (const int first : {0, 3, 15}) {
        Request r;
        r.live = live;
        r.split = split;
        r.first = first;
        Check(r);
      }
    }
  }
}

// Holds: vexo mcell show "Modes other than 0"
TEST_F(MotionCells, OfSkippedChannelsKeepTheirControlButMove) {
  UseBoard(16, 1);
  for (const std::uint32_t skip : {1u, 0xFFFEu, 0x5A5Au, 0xFFFFu}) {
    for (const int split : {0, 1, 4, 6}) {
      for (const int first : {0, 3, 15}) {
        Request r;
        r.skip = skip;
        r.split = split;
        r.first = first;
        r.standard = 1;
        r.type = 3;
        Check(r);
      }
    }
  }
}

TEST_F(MotionCells, OfANineSplitFillEightWindowsOnABoardOf8Channels) {
  UseBoard(8);
  TW_ShowMotionCells(0, 4, 0);
  EXPECT_EQ(Accesses().size(), 8u + 8 * 6);
  UseBoard(16);
  TW_ShowMotionCells(0, 4, 0);
  EXPECT_EQ(Accesses().size(), 8u + 9 * 6);
}

// The x of each drawn window in order, by channel: what a viewer would read from left to right.
TEST_F(MotionCells, OfTheSecondNineSplitPageJumpAheadAtItsThirdWindow) {
  UseBoard(16);
  g_display.split_option = 1;
  TW_ShowMotionCells(0, 4, 0);
  std::vector<int> channels;
  for (const Access& access : Accesses()) {
    if (access.chip == kAll || (access.reg & 7) != 2) continue;
    for (int c = 0; c < 16; ++c) {
      if (ChipOf(c) == access.chip && 0x62 + 8 * (c % 4) == access.reg) channels.push_back(c);
    }
  }
  EXPECT_EQ(channels, (std::vector<int>{0, 1, 9, 10, 11, 12, 13, 14, 15}));
}

// Holds: vexo mcell show "Draws the motion cells at the live windows of a split"
TEST_F(MotionCells, FollowWindowsThatWereMoved) {
  UseBoard(16);
  SetWindowOffset(g_layout.live, 4, 0, {5, 6, 0, 0});
  SetWindowOffset(g_layout.play, 4, 0, {50, 60, 0, 0});
  TW_ShowMotionCells(0, 4, 0);
  EXPECT_EQ(Register(0, 2, 0x62), 0x04 + 5 + 3);
  EXPECT_EQ(Register(0, 2, 0x64), 0x02 + 6 + 2);
}

TEST_F(MotionCells, OfABoardWithoutChannelsOnlyResetTheBoxes) {
  UseBoard(0);
  for (const int split : {1, 4, 6}) {
    Mark();
    TW_ShowMotionCells(0, U8(split), 0);
    EXPECT_EQ(Accesses(), ResetWrites());
  }
}

TEST_F(MotionCells, OfASingleChannelOf16AndMoreOnlyResetTheBoxes) {
  UseBoard(16);
  for (int first = 16; first < 256; ++first) {
    Mark();
    TW_ShowMotionCells(0, 0, U8(first));
    EXPECT_EQ(Accesses(), ResetWrites());
  }
}

TEST_F(MotionCells, AreHiddenWithAttribute0OnAllChips) {
  UseBoard(16);
  TW_HideMotionCells();
  ReferenceModel model;
  model.HideMotionCells();
  EXPECT_EQ(Accesses(), model.accesses);
  EXPECT_EQ(Cycles(), 32u);
}

// ---- The installer's request --------------------------------------------------------------------

struct DisplayCase {
  int channels;
  int split;
  int selected;
  int first;
};

// Holds: vexo mshow "Draws the motion cells over the current live layout"
// Holds: vexo mshow "A layout of six"
// Holds: Chips: vexo "`REQUEST`: 1 or 2"
TEST_F(MotionCells, AreShownOverTheCurrentSplitFromTheSelectedChannelOn) {
  for (const DisplayCase& c :
       {DisplayCase{4, 0, 2, 2}, DisplayCase{4, 1, 2, 0},  // the 2 x 2 of 4 channels begins at 0
        DisplayCase{4, 4, 2, 2}, DisplayCase{8, 1, 5, 5}, DisplayCase{12, 1, 3, 3},
        DisplayCase{16, 1, 13, 13}, DisplayCase{16, 6, 4, 4}, DisplayCase{16, 3, 4, 4},
        DisplayCase{16, 7, 4, 4}}) {
    for (const int request : {1, 2}) {
      UseBoard(c.channels);
      g_display.live_split = U8(c.split);
      g_display.selected_channel = U8(c.selected);
      TW_SetMotionCellDisplay(U8(request));
      Request r;
      r.type = request - 1;
      r.split = c.split;
      r.first = c.first;
      r.channels = c.channels;
      r.timing = 0;
      EXPECT_EQ(Accesses(), Drawn(r))
          << c.channels << " channels, split " << c.split << ", request " << request;
    }
  }
}

// Holds: vexo mshow "Draws the motion cells over the current live layout"
TEST_F(MotionCells, AreNotTouchedByAnyOtherRequest) {
  UseBoard(4);
  g_display.live_split = 1;
  TW_SetMotionCellDisplay(0);
  for (int request = 3; request < 256; ++request) TW_SetMotionCellDisplay(U8(request));
  EXPECT_EQ(Cycles(), 0u);
}

// ---- Box colour ---------------------------------------------------------------------------------

TEST_F(MotionCells, TakeTheirColourFromTwoHalves) {
  UseBoard(16);
  struct Row {
    int high;
    int low;
    int value;
  };
  for (const Row& row : {Row{0x0, 0x0, 0x00}, Row{0xA, 0x5, 0xA5}, Row{0xF, 0xF, 0xFF},
                         Row{0x12, 0x34, 0x24}, Row{0xFF, 0xFF, 0xFF}, Row{0x10, 0x10, 0x00}}) {
    for (int c = 0; c < 16; ++c) {
      Mark();
      TW_SetMotionBoxAttr(U8(c), U8(row.high), U8(row.low));
      EXPECT_EQ(Accesses(), std::vector<Access>{W(ChipOf(c), 2, 0x67 + 8 * (c % 4), row.value)});
      EXPECT_EQ(Cycles(), 4u);
    }
  }
}

// Holds: VexoMotionRegRecord "channel: 0 channel"
TEST_F(MotionCells, OfChannelsOf16AndMoreHaveNoColour) {
  UseBoard(16);
  for (int c = 16; c < 256; ++c) TW_SetMotionBoxAttr(U8(c), 1, 2);
  EXPECT_EQ(Cycles(), 0u);
}

// ---- The host's commands ------------------------------------------------------------------------

TEST_F(MotionCells, AreSetUpByTheCommandInOrder) {
  StartBoard(16, 1);
  ASSERT_EQ(Command(VEXO_CMD_MOTION_SETUP, {3, 5, 9, 6}), 0);
  EXPECT_EQ(Debug(),
            (std::vector<std::string>{"[VexoCtrlSDK]: ", "==>> VEXO MOTDET CELL TYPE 3 \r\n"}));
  EXPECT_EQ(g_display.live_split, 0);

  ReferenceModel model;
  model.HideMotionCells();
  const std::vector<Access> hide = model.accesses;
  model.accesses.clear();
  model.MotionTiming(0x95);
  std::vector<Access> show = model.accesses;
  Request r;
  r.type = 3;
  r.first = 6;
  r.standard = 1;
  r.timing = 0x95;
  for (const Access& access : Drawn(r)) show.push_back(access);

  const std::vector<Access> actual = Accesses();
  ASSERT_GT(actual.size(), hide.size() + show.size());
  const auto split = static_cast<std::ptrdiff_t>(hide.size());
  const auto tail = static_cast<std::ptrdiff_t>(show.size());
  EXPECT_EQ(std::vector<Access>(actual.begin(), actual.begin() + split), hide);
  EXPECT_EQ(std::vector<Access>(actual.end() - tail, actual.end()), show);
  // In between the full screen of the channel, and nothing of page 2.
  for (auto i = actual.begin() + split; i != actual.end() - tail; ++i) EXPECT_NE(i->page, 2) << *i;
  EXPECT_EQ(Register(1, 1, 0x38), 0x04);  // channel 6
  EXPECT_EQ(Register(1, 1, 0x39), 0xB0);
}

TEST_F(MotionCells, AreSetUpEvenWhenTheSplitIsRefused) {
  StartBoard(16);
  g_display.view = kViewPlayback;
  EXPECT_EQ(Command(VEXO_CMD_MOTION_SETUP, {0, 3, 3, 0}), 0);
  EXPECT_EQ(Register(0, 2, 0x60), 0xA8);
}

TEST_F(MotionCells, FromAChannelThatTheBoardLacksGoOnAtChannel0) {
  UseBoard(4);
  TW_ShowMotionCells(0, 1, 9);
  std::vector<Access> x_starts;
  for (const Access& access : Accesses()) {
    if (access.chip != kAll && access.reg % 8 == 2) x_starts.push_back(access);
  }
  EXPECT_EQ(x_starts, (std::vector<Access>{W(0x30, 2, 0x6A, 0x04), W(0x03, 2, 0x62, 0x5A),
                                           W(0x03, 2, 0x6A, 0x04), W(0x03, 2, 0x72, 0x5A)}));
}

TEST_F(MotionCells, OfASinglePictureGoToTheChipOfTheChannelEvenWhenItIsNotFitted) {
  UseBoard(4);
  Request r;
  r.first = 9;
  r.channels = 4;
  Check(r);
}

TEST_F(MotionCells, AreClearedByTheCommand) {
  StartBoard(4);
  ASSERT_EQ(Command(VEXO_CMD_MOTION_SETUP, {1, 3, 3, 2}), 0);
  ASSERT_EQ(Register(0, 2, 0x70), 0xAA);
  ASSERT_EQ(CommandNull(VEXO_CMD_MOTION_CLEAR), 0);
  EXPECT_EQ(Register(0, 2, 0x70), 0x02);
  EXPECT_EQ(Register(0, 2, 0x71), 0x00);
}

TEST_F(MotionCells, TakeTheirColourFromTheCommand) {
  StartBoard(8);
  ASSERT_EQ(Command(VEXO_CMD_MOTION_REG, {7, 0xC, 0x3}), 0);
  EXPECT_EQ(Accesses(), std::vector<Access>{W(0x0C, 2, 0x7F, 0xC3)});
}

}  // namespace
}  // namespace test
