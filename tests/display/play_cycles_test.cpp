// What each playback layout costs on the bus. A read or a write takes four cycles (select, address,
// data, release). The numbers are sums over the steps of each layout.
#include <cstdint>
#include <string>

#include "display/display_state.h"
#include "display/play_layout.h"
#include "display/play_split.h"
#include "tests/display/play_test.h"

namespace test {
namespace {

class PlayCycles : public PlayTest {};

// Accesses of the steps that several layouts share.
constexpr unsigned kRect = 4;                // a rectangle
constexpr unsigned kPattern = 4;             // of a channel
constexpr unsigned kPatterns = 4 * 4;        // of all positions, on all chips at once
constexpr unsigned kShown = 4;               // the display controls, likewise
constexpr unsigned kBegin = 1 + 4 + kShown;  // display mode, a path for each chip code
constexpr unsigned kKinds = 4;               // window kinds, on all chips at once
constexpr unsigned kKindsAndCodes = 8;
constexpr unsigned kZoom = 3;
constexpr unsigned kOverlays = 4;
constexpr unsigned kFinish = kOverlays + 4;  // and the paths once more
constexpr unsigned Mask(unsigned channels) { return channels * 2; }

// A large window and `small` others: pattern, rectangle, kind.
constexpr unsigned Large(unsigned small) {
  return kOverlays + kShown + (1 + small) * (kPattern + kRect + 1);
}

struct Row {
  int channels;
  int mode;
  int option;
  Channels list;
  unsigned accesses;  // by the variant
  unsigned cycles;
};

const Channels kAscending = Ascending();
const Channels kNobody(16, 0xFF);
const Channels kReversed = {15, 14, 13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0};
const Channels kSecondPage = {9, 10, 11, 12, 13, 14, 15, 0, 1};

std::vector<Row> Rows() {
  return {
      // 4 channels. Full picture: the rectangles go to all chips at once, one channel is in front.
      {4, 0, 1, kAscending, kBegin + kPatterns + 4 * kRect + 1 + kZoom + kKindsAndCodes + kFinish,
       4 * 61},
      {4, 0, 1, kNobody, kBegin + kPatterns + 4 * kRect + kZoom + kKindsAndCodes + kFinish, 4 * 60},
      {4, 0, 0, kAscending, kBegin + kPatterns + 4 * kRect + 1 + kKindsAndCodes + kFinish, 4 * 58},
      {4, 1, 0, kAscending, kBegin + kPatterns + 4 * kRect + 4 + kKindsAndCodes + kFinish, 4 * 61},
      {4, 1, 0, kNobody, kBegin + kPatterns + 4 * kRect + kKindsAndCodes + kFinish, 4 * 57},
      {4,
       1,
       0,
       {0, 0xFF, 2, 4},
       kBegin + kPatterns + 4 * kRect + 2 + kKindsAndCodes + kFinish,
       4 * 59},

      // 8 channels. Full picture: without window kinds.
      {8, 0, 1, kAscending, kBegin + kPatterns + 4 * kRect + 1 + kZoom + kFinish, 4 * 53},
      {8, 0, 0, kAscending, kBegin + kPatterns + 8 * kRect + 1 + kKindsAndCodes + kFinish, 4 * 74},
      {8, 1, 0, kAscending, kBegin + kPatterns + 8 * kRect + 4 + kKindsAndCodes + kFinish, 4 * 77},
      {8, 1, 0, kNobody, kBegin + kPatterns + 8 * kRect + kKindsAndCodes + kFinish, 4 * 73},
      {8, 2, 0, kAscending, Large(5), 4 * 62},
      {8, 2, 0, kNobody, kOverlays + kShown, 4 * 8},
      {8, 2, 0, {0xFF, 1, 8, 7, 0xFF, 0xFF}, Large(1), 4 * 26},  // two small ones, no large
      {8, 3, 0, kAscending, Large(7), 4 * 80},
      // Eight of the nine windows have a channel.
      {8, 4, 0, kAscending, kBegin + kPatterns + 8 * kRect + 8 + kFinish, 4 * 73},
      {8, 4, 0, kNobody, kBegin + kPatterns + 8 * kRect + kFinish, 4 * 65},

      // 16 channels.
      {16, 0, 1, kAscending, kBegin + kPatterns + 4 * kRect + 1 + kZoom + kKindsAndCodes + kFinish,
       4 * 61},
      {16, 0, 0, kAscending, kBegin + kPatterns + 16 * kRect + 1 + kKindsAndCodes + kFinish,
       4 * 106},
      {16, 1, 0, kAscending, kBegin + kPatterns + 16 * kRect + 4 + kKindsAndCodes + kFinish,
       4 * 109},
      {16, 2, 0, kAscending, Large(5), 4 * 62},
      {16, 3, 0, kAscending, Large(7), 4 * 80},
      {16, 4, 0, kAscending, kBegin + kPatterns + 16 * kRect + 9 + kFinish, 4 * 106},
      {16, 4, 0, kSecondPage, kBegin + kPatterns + 16 * kRect + 9 + kFinish, 4 * 106},
      {16, 4, 0, kReversed, kBegin + kPatterns + 16 * kRect + 9 + kFinish, 4 * 106},
      {16, 5, 0, kAscending, Large(12), 4 * 125},
      // Channels that are not listed are left where they are.
      {16, 6, 0, kAscending, kBegin + 1 + kPatterns + 16 * kRect + kKinds + kFinish, 4 * 102},
      {16, 6, 0, kReversed, kBegin + 1 + kPatterns + 16 * kRect + kKinds + kFinish, 4 * 102},
      {16, 6, 0, kNobody, kBegin + 1 + kPatterns + kKinds + kFinish, 4 * 38},
  };
}

TEST_F(PlayCycles, OfEveryLayoutOfEveryBoard) {
  for (const Row& row : Rows()) {
    SCOPED_TRACE(std::to_string(row.channels) + " channels, mode " + std::to_string(row.mode) +
                 ", option " + std::to_string(row.option) + ", first " +
                 std::to_string(row.list.at(0)));
    EXPECT_EQ(4 * row.accesses, row.cycles);
    const auto channels = static_cast<unsigned>(row.channels);
    for (const int standard : {0, 1}) {
      UsePlayback(row.channels, standard);
      Begin();
      EXPECT_EQ(CallPlaySplit(row.channels, row.mode, row.option, row.list), 0);
      EXPECT_EQ(Cycles(), row.cycles);
      // After a full picture one write more: its zoom goes.
      g_playback.full_picture = 1;
      Begin();
      EXPECT_EQ(CallPlaySplit(row.channels, row.mode, row.option, row.list), 0);
      EXPECT_EQ(Cycles(), row.cycles + 4);
      // The entry blanks all channels before, and shows what is to be shown afterwards.
      if (row.mode == 2 || row.mode == 3 || row.mode == 5) continue;
      g_playback.full_picture = 0;
      Begin();
      EXPECT_EQ(TW_SetPlaySplitMode(static_cast<std::uint8_t>(row.mode),
                                    static_cast<std::uint8_t>(row.option), row.list.data()),
                0);
      EXPECT_EQ(Cycles(), row.cycles + 4 * 2 * Mask(channels));
    }
  }
}

TEST_F(PlayCycles, CoverEveryModeOfEveryVariant) {
  for (const int channels : {4, 8, 16}) {
    for (int mode = 0; mode <= HighestMode(channels); ++mode) {
      bool covered = false;
      for (const Row& row : Rows()) covered |= row.channels == channels && row.mode == mode;
      EXPECT_TRUE(covered) << channels << " channels, mode " << mode;
    }
  }
}

TEST_F(PlayCycles, OfAModeThatTheBoardLacksAreTheTwoMasks) {
  struct Refused {
    int channels;
    int mode;
    unsigned cycles;
  };
  for (const Refused& row : {Refused{4, 4, 4 * 16}, Refused{4, 6, 4 * 16}, Refused{8, 6, 4 * 32}}) {
    SCOPED_TRACE(std::to_string(row.channels) + " channels, mode " + std::to_string(row.mode));
    EXPECT_EQ(4 * 2 * Mask(static_cast<unsigned>(row.channels)), row.cycles);
    UsePlayback(row.channels);
    Begin();
    EXPECT_EQ(TW_SetPlaySplitMode(static_cast<std::uint8_t>(row.mode), 0, kAscending.data()), -1);
    EXPECT_EQ(Cycles(), row.cycles);
    g_playback.full_picture = 1;
    Begin();
    EXPECT_EQ(TW_SetPlaySplitMode(static_cast<std::uint8_t>(row.mode), 0, kAscending.data()), -1);
    EXPECT_EQ(Cycles(), row.cycles + 4);
  }
}

TEST_F(PlayCycles, OfARefusedRequestAreNone) {
  for (const int channels : {0, 4, 8, 12, 16}) {
    UsePlayback(channels);
    g_playback.full_picture = 1;
    Begin();
    for (const std::uint8_t mode : Channels{2, 3, 5, 7, 8, 255}) {
      EXPECT_EQ(TW_SetPlaySplitMode(mode, 0, kAscending.data()), -5);
      EXPECT_EQ(TW_SetPlaySplitMode(mode, 1, nullptr), -5);
    }
    if (HighestMode(channels) < 0) {
      EXPECT_EQ(TW_SetPlaySplitMode(1, 0, kAscending.data()), -1);
    }
    g_display.view = kLive;
    EXPECT_EQ(TW_SetPlaySplitMode(1, 0, kAscending.data()), -1);
    EXPECT_EQ(Cycles(), 0u) << channels;
  }
}

TEST_F(PlayCycles, OfTheOverlayResetAreThoseOfThreeOrNineWrites) {
  for (const int channels : {4, 8, 16}) {
    UsePlayback(channels);
    Begin();
    TW_ResetPlayOverlay();
    EXPECT_EQ(Cycles(), 4u * 3);
    g_playback.full_picture = 1;
    Begin();
    TW_ResetPlayOverlay();
    EXPECT_EQ(Cycles(), 4u * 9);
  }
}

}  // namespace
}  // namespace test
