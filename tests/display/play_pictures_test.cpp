// The single pictures of playback, centred and full, the flags that they leave, and the 2 x 2 that
// the centred one shares its steps with.
#include <string>

#include "display/display_state.h"
#include "display/play_layout.h"
#include "display/play_split.h"
#include "tests/display/play_test.h"

namespace test {
namespace {

const Channels kAscending = Ascending();

std::int32_t Split(int mode, int option, const Channels& list = kAscending) {
  return TW_SetPlaySplitMode(static_cast<std::uint8_t>(mode), static_cast<std::uint8_t>(option),
                             list.data());
}

class PlayPictures : public PlayTest {
 protected:
  bool InFront(int channel) {
    return Register(channel / 4, 1, 0x10 + 8 * (channel % 4)) == 0xD4 + channel % 4;
  }
  // Writes of page 0 window kinds and path codes, to any chip.
  std::vector<Access> KindsAndCodes() {
    std::vector<Access> found;
    for (const Access& access : Writes()) {
      const int reg = access.reg & 0xCF;
      if (access.page == 0 && (reg == 0x80 || reg == 0x85)) found.push_back(access);
    }
    return found;
  }
  std::vector<Access> KindsAndCodesTo(int chip, int code) {
    std::vector<Access> expected;
    for (int p = 0; p < 4; ++p) {
      expected.push_back(W(chip, 0, 0x85 + 0x10 * p, 0x00));
      expected.push_back(W(chip, 0, 0x80 + 0x10 * p, 0x40 * p + code));
    }
    return expected;
  }
  // Writes of the zoom control register.
  std::vector<Access> ZoomControls() {
    std::vector<Access> found;
    for (const Access& access : Writes()) {
      if (access.page == 1 && access.reg == 0x0C) found.push_back(access);
    }
    return found;
  }
};

// ---- Centred picture ----------------------------------------------------------------------------

// Holds: VexoSplitRecord "List channels in ascending order"
TEST_F(PlayPictures, CentresEveryListedChannelThatTheWalkMeetsAndStoresTheMode1) {
  struct Row {
    int channels;
    Channels list;
    Channels shown;
  };
  const Channels eight = {0, 1, 2, 3, 4, 5, 6, 7};
  const std::vector<Row> rows = {
      {4, {0, 1, 2, 3}, {0, 1, 2, 3}},
      {4, {2, 3, 0, 1}, {2, 3}},
      {4, {3, 0xFF, 0xFF, 0xFF}, {3}},
      {8, eight, eight},  // more than the four windows of the 2 x 2
      {8, {1, 2, 3, 4, 5, 7, 6, 0}, {1, 2, 3, 4, 5, 7}},
      {8, {5, 8, 6, 7, 0, 0, 0, 0}, {5}},
      {16, kAscending, kAscending},
      {16, {9, 10, 11, 12, 13, 14, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}, {9, 10, 11, 12, 13, 14}},
      {16, {15, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}, {15}},
  };
  for (const Row& row : rows) {
    for (const int standard : {0, 1}) {
      SCOPED_TRACE(std::to_string(row.channels) + " channels, first " +
                   std::to_string(row.list[0]));
      UsePlayback(row.channels, standard);
      Begin();
      EXPECT_EQ(Split(0, 0, row.list), 0);
      const Rect centred = CentredPictureRect(standard == 0);
      std::size_t at = 0;
      for (int n = 0; n < row.channels; ++n) {
        const bool shown = at < row.shown.size() && row.shown[at] == n;
        if (shown) ++at;
        EXPECT_EQ(RectOf(n), shown ? centred : kHidden) << n;
        EXPECT_EQ(InFront(n), n == row.list[0]) << n;
      }
      EXPECT_EQ(at, row.shown.size());
      EXPECT_EQ(g_display.play_split, 1);
      EXPECT_EQ(g_playback.centred_picture, 1);
      EXPECT_EQ(g_playback.full_picture, 0);
      EXPECT_EQ(Register(0, 0, 0x86), 0xFE);  // the 2 x 2's pattern
      EXPECT_EQ(Register(0, 1, 0x06), 0x04);
    }
  }
}

TEST_F(PlayPictures, BringsNobodyToTheFrontWhenTheCentredListStartsWithNoChannel) {
  UsePlayback(8);
  Begin();
  EXPECT_EQ(Split(0, 0, {8, 0, 1, 2, 3, 4, 5, 6}), 0);
  for (int n = 0; n < 8; ++n) {
    EXPECT_EQ(Register(n / 4, 1, 0x10 + 8 * (n % 4)), 0x94 + n % 4) << n;
    EXPECT_EQ(RectOf(n), kHidden) << n;
  }
}

TEST_F(PlayPictures, BoundsThe2x2ByItsFourWindows) {
  UsePlayback(16);
  Begin();
  EXPECT_EQ(Split(1, 0), 0);
  for (int n = 0; n < 4; ++n) {
    EXPECT_EQ(RectOf(n), DefaultRects(1, true).at(static_cast<std::size_t>(n))) << n;
    EXPECT_TRUE(InFront(n)) << n;
  }
  for (int n = 4; n < 16; ++n) {
    EXPECT_EQ(RectOf(n), kHidden) << n;
    EXPECT_FALSE(InFront(n)) << n;
  }
}

// ---- Full picture -------------------------------------------------------------------------------

// Holds: VexoSplitRecord "option: 5 playback only"
TEST_F(PlayPictures, ShowsAFullPictureForEveryOptionButZero) {
  for (const int channels : {4, 8, 16}) {
    for (const int option : {1, 2, 0x80, 255}) {
      SCOPED_TRACE(std::to_string(channels) + " channels, option " + std::to_string(option));
      UsePlayback(channels, 1);
      Begin();
      EXPECT_EQ(Split(0, option, {static_cast<std::uint8_t>(channels - 1)}), 0);
      for (int n = 0; n < channels; ++n) {
        EXPECT_EQ(RectOf(n), FullPictureRect(false)) << n;
        EXPECT_EQ(InFront(n), n == channels - 1) << n;
      }
      for (int p = 0; p < channels / 4; ++p) {
        EXPECT_EQ(Register(p, 1, 0x0C), 0xC0);
        EXPECT_EQ(Register(p, 1, 0x0D), 0x00);
        EXPECT_EQ(Register(p, 1, 0x0E), 0x00);
        EXPECT_EQ(Register(p, 1, 0x06), 0x00);
        EXPECT_EQ(Register(p, 1, 0x16), 0x90 + 4 * p);
      }
      EXPECT_EQ(g_display.play_split, 0);
      EXPECT_EQ(g_playback.full_picture, 1);
      EXPECT_EQ(g_playback.centred_picture, 0);
    }
  }
}

TEST_F(PlayPictures, ClearsTheZoomOfAFullPictureWithTheNextRequestAndNotWithOneMore) {
  for (const int channels : {4, 8, 16}) {
    SCOPED_TRACE(channels);
    UsePlayback(channels);
    EXPECT_EQ(Split(0, 1), 0);
    Next();
    EXPECT_EQ(Split(1, 0), 0);
    EXPECT_EQ(ZoomControls(), (std::vector<Access>{W(kAll, 1, 0x0C, 0x00)}));
    Next();
    EXPECT_EQ(Split(1, 0), 0);
    EXPECT_TRUE(ZoomControls().empty());
    // From one full picture to the next: off, then on again.
    EXPECT_EQ(Split(0, 1), 0);
    Next();
    EXPECT_EQ(Split(0, 1), 0);
    EXPECT_EQ(ZoomControls(),
              (std::vector<Access>{W(kAll, 1, 0x0C, 0x00), W(kAll, 1, 0x0C, 0xC0)}));
  }
}

TEST_F(PlayPictures, ClearsTheZoomOfAFullPictureEvenForAModeThatTheVariantLacks) {
  struct Row {
    int channels;
    int mode;
  };
  for (const Row& row : {Row{4, 2}, Row{4, 6}, Row{8, 5}, Row{8, 6}, Row{16, 7}}) {
    SCOPED_TRACE(std::to_string(row.channels) + " channels, mode " + std::to_string(row.mode));
    UsePlaybackAfter(row.channels, 1, 0);
    Begin();
    EXPECT_EQ(CallPlaySplit(row.channels, row.mode, 0, kAscending), -5);
    EXPECT_EQ(Accesses(), (std::vector<Access>{W(kAll, 1, 0x0C, 0x00)}));
    EXPECT_EQ(g_display.play_split, 7);
    // The flags have changed already, so that a second refusal writes nothing.
    EXPECT_EQ(g_playback.full_picture, 0);
    EXPECT_EQ(g_playback.centred_picture, 0);
    Next();
    EXPECT_EQ(CallPlaySplit(row.channels, row.mode, 0, kAscending), -5);
    EXPECT_EQ(Cycles(), 0u);
  }
}

// ---- Flags --------------------------------------------------------------------------------------

TEST_F(PlayPictures, LeavesTheFlagsOfTheRequestWhateverTheLastOneLeft) {
  struct Row {
    int mode;
    int option;
    int full;
    int centred;
  };
  for (const int channels : {4, 8, 16}) {
    for (const int before : {0, 1, 2, 3}) {
      for (const Row& row : {Row{0, 0, 0, 1}, Row{0, 1, 1, 0}, Row{1, 0, 0, 0}, Row{1, 1, 0, 0},
                             Row{4, 1, 0, 0}, Row{6, 1, 0, 0}}) {
        SCOPED_TRACE(std::to_string(channels) + " channels, mode " + std::to_string(row.mode));
        UsePlaybackAfter(channels, before & 1, before >> 1);
        Begin();
        Split(row.mode, row.option);  // fails where the board lacks it
        EXPECT_EQ(g_playback.full_picture, row.full);
        EXPECT_EQ(g_playback.centred_picture, row.centred);
      }
    }
  }
}

TEST_F(PlayPictures, StartsWithBothFlagsClear) {
  const PlaybackState fresh;
  EXPECT_EQ(fresh.full_picture, 0);
  EXPECT_EQ(fresh.centred_picture, 0);
}

// ---- One chip's window kinds in mode 1 ----------------------------------------------------------

TEST_F(PlayPictures, WritesTheWindowKindsOfThe2x2ToASingleChipOnLargerBoards) {
  struct Row {
    int channels;
    int mode;  // 0: centred
    Channels list;
    int chip;
  };
  const std::vector<Row> rows = {
      {4, 1, {0, 1, 2, 3}, kAll},
      {4, 1, {0xFF, 0xFF, 0xFF, 0xFF}, kAll},
      {4, 0, {2, 0xFF, 0xFF, 0xFF}, kAll},
      // Without the flag, the last channel of the first four entries counts.
      {8, 1, {0, 1, 2, 3}, kMaster},
      {8, 1, {0, 1, 2, 7}, kSlave1},
      {8, 1, {7, 6, 5, 0}, kMaster},
      {8, 1, {0, 4, 0xFF, 8}, kSlave1},
      {8, 1, {0, 0xFF, 0xFF, 0xFF}, kMaster},
      {8, 1, {8, 9, 0xFF, 0xFF, 0}, kSlave1},  // none: the last one walked
      {16, 1, {0, 4, 8, 12}, kSlave3},
      {16, 1, {12, 8, 4, 0}, kMaster},
      {16, 1, {0, 1, 9, 16}, kSlave2},
      {16, 1, {5, 0xFF, 0xFF, 16}, kSlave1},
      {16, 1, {16, 0xFF, 16, 0xFF, 0}, kSlave3},
      // With it, the first entry alone does.
      {8, 0, {0, 7, 7, 7, 7, 7, 7, 7}, kMaster},
      {8, 0, {4, 0, 0, 0, 0, 0, 0, 0}, kSlave1},
      {8, 0, {8, 0, 1, 2, 3, 4, 5, 6}, kSlave1},
      {16, 0, {0, 1, 2, 15, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15}, kMaster},
      {16, 0, {8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}, kSlave2},
      {16, 0, {16, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}, kSlave3},
      {16, 0, {0xFF, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}, kSlave3},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(std::to_string(row.channels) + " channels, mode " + std::to_string(row.mode) +
                 ", first " + std::to_string(row.list[0]));
    UsePlayback(row.channels);
    Begin();
    EXPECT_EQ(CallPlaySplit(row.channels, row.mode, 0, row.list), 0);
    EXPECT_EQ(KindsAndCodes(), KindsAndCodesTo(row.chip, 1));
  }
}

TEST_F(PlayPictures, LeavesTheWindowKindsOfAFullPictureAloneOnEightChannels) {
  UsePlayback(8);
  Begin();
  EXPECT_EQ(CallPlaySplit(8, 0, 1, kAscending), 0);
  EXPECT_TRUE(KindsAndCodes().empty());
  for (const int channels : {4, 16}) {
    UsePlayback(channels);
    Begin();
    EXPECT_EQ(CallPlaySplit(channels, 0, 1, kAscending), 0);
    EXPECT_EQ(KindsAndCodes(), KindsAndCodesTo(kAll, 0));
  }
}

}  // namespace
}  // namespace test
