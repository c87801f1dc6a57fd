#include "display/play_split_direct.h"

#include <algorithm>
#include <string>

#include "chip/video_state.h"
#include "display/display_state.h"
#include "display/live_split.h"
#include "display/play_layout.h"
#include "display/play_split.h"
#include "display/window_tables.h"
#include "tests/display/play_test.h"

namespace test {
namespace {

void Split(int mode, int channel) {
  TW_SetPlaySplitDirect(static_cast<std::uint8_t>(mode), static_cast<std::uint8_t>(channel));
}

class PlayDirect : public PlayTest, public ::testing::WithParamInterface<BoardCase> {
 protected:
  void SetUp() override { UsePlayback(GetParam().channels, GetParam().standard); }
};

// Holds: vexo psplit "Lays out a playback split of consecutive channels"
// Holds: vexo psplit "Mode 0 is a centred picture"
// Holds: vexo psplit "Mode 4 leaves the windows empty that a board has no channels"
TEST_P(PlayDirect, MakesExactlyTheWritesOfItsStepsForEveryModeAndFirstChannel) {
  const int count = GetParam().channels;
  for (int mode = 0; mode < 7; ++mode) {
    for (const int first : {0, 1, 3, count / 2, count - 3, count - 1, count, count + 2, 20, 255}) {
      SCOPED_TRACE("mode " + std::to_string(mode) + ", first channel " + std::to_string(first));
      g_display.play_split = 0x77;
      ReferenceModel model = Begin();
      model.PlaySplitDirect(mode, first);
      Split(mode, first);
      ExpectPlayed(model);
      if (HasFailure()) return;
    }
  }
}

TEST_P(PlayDirect, IsTheSameInBothViewsAndLeavesTheOtherStateAlone) {
  for (int mode = 0; mode < 7; ++mode) {
    for (const std::uint8_t view : Channels{kLive, kPlayback}) {
      SCOPED_TRACE("mode " + std::to_string(mode) + ", view " + std::to_string(view));
      g_display.view = view;
      g_display.live_split = 5;
      g_display.g_view_mode = 9;
      ReferenceModel model = Begin();
      model.PlaySplitDirect(mode, 2);
      Split(mode, 2);
      ExpectPlayed(model);
      EXPECT_EQ(g_display.live_split, 5);
      EXPECT_EQ(g_display.g_view_mode, 9u);
    }
  }
}

TEST_P(PlayDirect, NeitherReadsNorChangesTheFullPictureFlag) {
  for (int mode = 0; mode < 7; ++mode) {
    SCOPED_TRACE(mode);
    g_playback.full_picture = 1;
    ReferenceModel model = Begin();
    model.PlaySplitDirect(mode, 1);
    Split(mode, 1);
    ExpectPlayed(model);
    EXPECT_EQ(g_playback.full_picture, 1);
  }
}

TEST_P(PlayDirect, RefusesModesAbove6AndChangesNothing) {
  g_display.play_split = 3;
  g_playback = {1, 1};
  for (int mode = 7; mode < 256; ++mode) {
    Mark();
    Split(mode, 1);
    EXPECT_EQ(Cycles(), 0u);
    EXPECT_EQ(Elapsed(), 0u);
    ExpectPrinted(">> Invlaid Play Split Mode !!");
  }
  EXPECT_EQ(g_display.play_split, 3);
  EXPECT_EQ(g_display.live_split, 7);
  EXPECT_EQ(g_playback.full_picture, 1);
  EXPECT_EQ(g_playback.centred_picture, 1);
}

INSTANTIATE_TEST_SUITE_P(Boards, PlayDirect,
                         ::testing::Values(BoardCase{4, 0}, BoardCase{4, 1}, BoardCase{8, 0},
                                           BoardCase{8, 1}, BoardCase{12, 0}, BoardCase{12, 1},
                                           BoardCase{16, 0}, BoardCase{16, 1}, BoardCase{16, 2}),
                         NameOf);

class PlayDirectEdges : public PlayTest {};

TEST_F(PlayDirectEdges, CostsFourCyclesAWriteOnEveryBoardInEveryMode) {
  struct Row {
    int channels;
    std::array<unsigned, 7> writes;  // by mode
  };
  // The fourth channel count has no variant of its own and takes the road of the larger boards.
  for (const Row& row :
       {Row{4, {58, 62, 63, 81, 63, 126, 79}}, Row{8, {74, 77, 62, 80, 82, 125, 78}},
        Row{12, {90, 93, 62, 80, 87, 125, 78}}, Row{16, {106, 109, 62, 80, 87, 125, 110}}}) {
    for (int mode = 0; mode < 7; ++mode) {
      UsePlayback(row.channels);
      Split(mode, 0);
      EXPECT_EQ(Cycles(), 4 * row.writes.at(static_cast<std::size_t>(mode)))
          << row.channels << " channels, mode " << mode;
    }
  }
}

TEST_F(PlayDirectEdges, WritesA2x2ThatWrapsAtTheLastChannelRegisterByRegister) {
  UsePlayback(8);
  Split(1, 6);
  std::vector<Access> expected = {
      W(0xFF, 1, 0x06, 0x04), W(0x03, 1, 0x16, 0x10), W(0x0C, 1, 0x16, 0x14),
      W(0x30, 1, 0x16, 0x18), W(0xC0, 1, 0x16, 0x1C), W(0xFF, 1, 0x10, 0x94),
      W(0xFF, 1, 0x18, 0x95), W(0xFF, 1, 0x20, 0x96), W(0xFF, 1, 0x28, 0x97)};
  for (const int reg : {0x86, 0x96, 0xA6, 0xB6}) {
    expected.push_back(W(0xFF, 0, reg, 0xFE));
    for (int i = 1; i < 4; ++i) expected.push_back(W(0xFF, 0, reg + i, 0xFF));
  }
  const std::vector<Access> rest = {
      // Channels 0 and 1 are the two lower windows.
      W(0x03, 1, 0x30, 0x04), W(0x03, 1, 0x31, 0x5A), W(0x03, 1, 0x32, 0x3C),
      W(0x03, 1, 0x33, 0x77), W(0x03, 1, 0x34, 0x5A), W(0x03, 1, 0x35, 0xB0),
      W(0x03, 1, 0x36, 0x3C), W(0x03, 1, 0x37, 0x77),
      // Channels 2 to 5 are hidden.
      W(0x03, 1, 0x38, 0), W(0x03, 1, 0x39, 0), W(0x03, 1, 0x3A, 0), W(0x03, 1, 0x3B, 0),
      W(0x03, 1, 0x3C, 0), W(0x03, 1, 0x3D, 0), W(0x03, 1, 0x3E, 0), W(0x03, 1, 0x3F, 0),
      W(0x0C, 1, 0x30, 0), W(0x0C, 1, 0x31, 0), W(0x0C, 1, 0x32, 0), W(0x0C, 1, 0x33, 0),
      W(0x0C, 1, 0x34, 0), W(0x0C, 1, 0x35, 0), W(0x0C, 1, 0x36, 0), W(0x0C, 1, 0x37, 0),
      // Channels 6 and 7 are the two upper ones.
      W(0x0C, 1, 0x38, 0x04), W(0x0C, 1, 0x39, 0x5A), W(0x0C, 1, 0x3A, 0x01),
      W(0x0C, 1, 0x3B, 0x3C), W(0x0C, 1, 0x3C, 0x5A), W(0x0C, 1, 0x3D, 0xB0),
      W(0x0C, 1, 0x3E, 0x01), W(0x0C, 1, 0x3F, 0x3C),
      // In front, in window order.
      W(0x0C, 1, 0x20, 0xD6), W(0x0C, 1, 0x28, 0xD7), W(0x03, 1, 0x10, 0xD4),
      W(0x03, 1, 0x18, 0xD5),
      // The chip of the last window, channel 1.
      W(0x03, 0, 0x85, 0x00), W(0x03, 0, 0x80, 0x01), W(0x03, 0, 0x95, 0x00),
      W(0x03, 0, 0x90, 0x41), W(0x03, 0, 0xA5, 0x00), W(0x03, 0, 0xA0, 0x81),
      W(0x03, 0, 0xB5, 0x00), W(0x03, 0, 0xB0, 0xC1), W(0xFF, 1, 0x12, 0x20),
      W(0xFF, 1, 0x1A, 0x20), W(0xFF, 1, 0x22, 0x20), W(0xFF, 1, 0x2A, 0x20),
      W(0x03, 1, 0x16, 0x90), W(0x0C, 1, 0x16, 0x94), W(0x30, 1, 0x16, 0x98),
      W(0xC0, 1, 0x16, 0x9C)};
  expected.insert(expected.end(), rest.begin(), rest.end());
  EXPECT_EQ(Accesses(), expected);
}

// Holds: vexo psplit "Mode 0 is a centred picture"
TEST_F(PlayDirectEdges, PutsTheCentredRectangleOnEveryChannelFromTheGivenOneOnward) {
  for (const int channels : {4, 8, 16}) {
    for (int first = 0; first < channels; ++first) {
      UsePlayback(channels, first % 2);
      Split(0, first);
      for (int c = 0; c < channels; ++c) {
        EXPECT_EQ(RectOf(c), c < first ? kHidden : CentredPictureRect(first % 2 == 0))
            << channels << ", first " << first << ", channel " << c;
        EXPECT_EQ(Register(c / 4, 1, 0x10 + 8 * (c % 4)), (c == first ? 0xD4 : 0x94) + c % 4);
      }
    }
  }
}

TEST_F(PlayDirectEdges, ShowsNoCentredPictureFromAChannelThatTheBoardLacks) {
  UsePlayback(8);
  Split(0, 8);
  for (int c = 0; c < 8; ++c) {
    EXPECT_EQ(RectOf(c), kHidden);
    EXPECT_EQ(Register(c / 4, 1, 0x10 + 8 * (c % 4)), 0x94 + c % 4);
  }
  EXPECT_EQ(g_display.play_split, 1);
}

TEST_F(PlayDirectEdges, SwitchesTheZoomOffOnlyOnFourChannelsAndOnlyInAModeGivenAsNonZero) {
  for (const int channels : {4, 8, 12, 16}) {
    for (int mode = 0; mode < 7; ++mode) {
      UsePlayback(channels);
      Split(mode, 0);
      const std::vector<Access> accesses = Accesses();
      const auto zoom = [](const Access& access) { return access.page == 1 && access.reg == 0x0C; };
      const bool expected = channels == 4 && mode != 0;
      EXPECT_EQ(std::count_if(accesses.begin(), accesses.end(), zoom), expected ? 1 : 0)
          << channels << " channels, mode " << mode;
      if (expected) {
        EXPECT_EQ(accesses.at(0), W(kAll, 1, 0x0C, 0x00)) << mode;
      }
    }
  }
}

// Holds: vexo psplit "Mode 0 is a centred picture"
TEST_F(PlayDirectEdges, PlacesEightChannelsIn16WindowsAlsoWhereTheBoardHasFourOrTwelve) {
  for (const int channels : {4, 8, 12}) {
    UsePlayback(channels);
    Split(6, 3);
    const std::vector<Access> accesses = Accesses();
    std::vector<Access> placed;
    for (const Access& access : accesses) {
      if (access.chip != kAll) placed.push_back(access);
    }
    ASSERT_EQ(placed.size(), 32u) << channels;
    // The last of them is channel 7, in the window at the right of the second row.
    EXPECT_EQ(placed.at(28), W(kSlave1, 1, 0x3C, 0x85));
    EXPECT_EQ(placed.at(29), W(kSlave1, 1, 0x3D, 0xB0));
    EXPECT_EQ(placed.at(30), W(kSlave1, 1, 0x3E, 0x1F));
    EXPECT_EQ(placed.at(31), W(kSlave1, 1, 0x3F, 0x3C));
  }
}

TEST_F(PlayDirectEdges, ForgetsTheCentredPictureInTheNextModeThatIsNotASinglePicture) {
  UsePlayback(16);
  for (int mode = 1; mode < 7; ++mode) {
    Split(0, 0);
    EXPECT_EQ(g_playback.centred_picture, 1);
    Split(mode, 0);
    EXPECT_EQ(g_playback.centred_picture, 0) << mode;
  }
}

TEST_F(PlayDirectEdges, StoresTheModeBeforeAnythingIsLaidOut) {
  for (const int channels : {8, 16}) {
    for (int mode = 0; mode < 7; ++mode) {
      SCOPED_TRACE(std::to_string(channels) + " channels, mode " + std::to_string(mode));
      UsePlayback(channels);
      // Another thread looks at the first bus cycle.
      int stored = -1;
      std::uint64_t cycles = 99;
      const unsigned observer = world().kernel.StartHostThread([&] {
        stored = g_display.play_split;
        cycles = Cycles();
      });
      world().kernel.SetPreemption(1);
      Split(mode, 0);
      world().kernel.SetPreemption(0);
      ASSERT_TRUE(world().kernel.HostThreadDone(observer));
      EXPECT_LE(cycles, 1u);
      EXPECT_EQ(stored, mode == 0 ? 1 : mode);
    }
  }
}

TEST_F(PlayDirectEdges, OnABoardWithoutChannelsWriteOnlyWhatNeedsNoCounting) {
  UsePlayback(0);
  for (int mode = 0; mode < 7; ++mode) {
    SCOPED_TRACE(mode);
    ReferenceModel model = Begin();
    if (mode == 4 || mode == 6) {
      model.PlaySplitDirect(mode, 3);
    } else {
      model.play_split = mode == 0 ? 1 : mode;
      model.centred_picture = mode == 0;
    }
    Split(mode, 3);
    ExpectPlayed(model);
  }
}

// ---- Offsets of the playback windows ------------------------------------------------------------

class PlaySplitOffset : public PlayTest {};

// Holds: vexo psplit_pos "Moves the edges of a window of the playback table from their"
TEST_F(PlaySplitOffset, IsUsedByTheNextSplitOfBothPathsInEveryMode) {
  UsePlayback(16);
  const Channels list = Ascending();
  for (int mode = 1; mode < 7; ++mode) {
    SCOPED_TRACE(mode);
    const auto m = static_cast<std::size_t>(mode);
    const std::size_t last = static_cast<std::size_t>(kWindows.at(m)) - 1;
    TW_SetPlaySplitOffset(static_cast<std::uint8_t>(mode), static_cast<std::uint8_t>(last), 1, 2, 3,
                          4);
    const Rect base = DefaultRects(mode, true).at(last);
    const Rect moved = {base[0] + 1, base[1] + 3, base[2] + 2, base[3] + 4};
    ReferenceModel variant = Begin();
    variant.windows.at(m).at(last) = moved;
    EXPECT_EQ(variant.PlayVariant(mode, 0, list), 0);
    EXPECT_EQ(TW_SetPlaySplit16Ch(static_cast<std::uint8_t>(mode), 0, list.data()), 0);
    ExpectPlayed(variant);

    ReferenceModel direct = Begin();
    direct.windows.at(m).at(last) = moved;
    direct.PlaySplitDirect(mode, 0);
    Split(mode, 0);
    ExpectPlayed(direct);
  }
}

TEST_F(PlaySplitOffset, DoesNotMoveALiveWindow) {
  UseBoard(16);
  TW_SetPlaySplitOffset(1, 1, 1, 2, 3, 4);
  const Channels list = {0, 1, 2, 3};
  ReferenceModel model = Model();
  model.LiveSplit(1, list);
  EXPECT_EQ(TW_SetLiveSplit16Ch(1, list.data()), 0);
  ExpectLike(model);
}

}  // namespace
}  // namespace test
