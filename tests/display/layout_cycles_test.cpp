// What each layout change costs on the bus. A read or a write takes four cycles (select, address,
// data, release), a table of n bytes n + 3. The numbers are sums over the steps of each operation.
#include <cstdint>
#include <string>

#include "display/channel_masks.h"
#include "display/live_mode.h"
#include "display/live_scale.h"
#include "display/live_split.h"
#include "display/live_split_direct.h"
#include "display/record_path.h"
#include "tests/display/display_test.h"

namespace test {
namespace {

class LayoutCycles : public DisplayTest {};

// Accesses of the steps that several operations share.
constexpr unsigned kRect = 4;   // a rectangle
constexpr unsigned kScale = 4;  // both ratios of a channel
constexpr unsigned kCodes = 4;  // layout codes on all chips at once
constexpr unsigned Hold(unsigned chips) { return 4 * 2 + chips; }  // read, write; one poll
constexpr unsigned Release(unsigned chips) { return chips * 4 * 2; }
constexpr unsigned Mask(unsigned channels) { return channels * 2; }

struct SplitRow {
  int channels;
  int mode;
  Channels list;
  unsigned accesses;  // NTSC, by the variant
  unsigned cycles;
};

TEST_F(LayoutCycles, OfEverySplitOfTheBinaryCommands) {
  const Channels all = Ascending();
  const Channels reversed = {15, 14, 13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0};
  const Channels second_page = {9, 10, 11, 12, 13, 14, 15, 0, 1};
  const std::vector<SplitRow> rows = {
      // 4 channels. Full screen: every rectangle is written, and the four display controls.
      {4, 0, all, Hold(1) + 4 * kScale + kCodes + 4 * kRect + 4 + Release(1), 4 * 57},
      {4, 1, all, Hold(1) + 4 * kScale + kCodes + 4 * kRect + Release(1), 4 * 53},
      {4, 1, {0, 0xFF, 2, 0xFF}, Hold(1) + 4 * kScale + kCodes + 2 * kRect + Release(1), 4 * 45},
      // 8 channels. The scan ends with the last window: full screen of channel 0 writes one
      // rectangle, of channel 7 eight.
      {8, 0, {0}, Hold(2) + 8 * kScale + kCodes + 1 * kRect + Release(2), 4 * 66},
      {8, 0, {7}, Hold(2) + 8 * kScale + kCodes + 8 * kRect + Release(2), 4 * 94},
      {8, 1, all, Hold(2) + 8 * kScale + kCodes + 4 * kRect + Release(2), 4 * 78},
      {8, 2, all, Hold(2) + 6 * (kScale + 1) + 6 * kRect + Release(2), 4 * 80},
      {8, 3, all, Hold(2) + 8 * (kScale + 1) + 8 * kRect + Release(2), 4 * 98},
      {8, 4, all, Hold(2) + 8 * kScale + 8 * (kRect + 1) + Release(2), 4 * 98},
      // 16 channels.
      {16, 0, {0}, Hold(4) + 16 * kScale + kCodes + 1 * kRect + Release(4), 4 * 116},
      {16, 0, {15}, Hold(4) + 16 * kScale + kCodes + 16 * kRect + Release(4), 4 * 176},
      {16, 1, all, Hold(4) + 16 * kScale + kCodes + 4 * kRect + Release(4), 4 * 128},
      {16, 2, all, Hold(4) + 6 * (kScale + 1) + 6 * kRect + Release(4), 4 * 98},
      {16, 3, all, Hold(4) + 8 * (kScale + 1) + 8 * kRect + Release(4), 4 * 116},
      {16, 4, all, Hold(4) + 16 * kScale + 9 * (kRect + 1) + Release(4), 4 * 153},
      // 0, 1 and 9 to 15 are placed, 2 to 8 hidden.
      {16, 4, second_page, Hold(4) + 16 * kScale + 9 * (kRect + 1) + 7 * kRect + Release(4),
       4 * 181},
      {16, 5, all, Hold(4) + 13 * (kScale + 1) + 13 * kRect + Release(4), 4 * 161},
      {16, 6, all, Hold(4) + 16 * kScale + 16 * (kRect + 1) + Release(4), 4 * 188},
      // Out of order: channel 15 alone is placed.
      {16, 6, reversed, Hold(4) + 16 * kScale + 16 * kRect + 1 + Release(4), 4 * 173},
  };
  for (const SplitRow& row : rows) {
    SCOPED_TRACE(std::to_string(row.channels) + " channels, mode " + std::to_string(row.mode) +
                 ", first " + std::to_string(row.list.at(0)));
    EXPECT_EQ(4 * row.accesses, row.cycles);
    const auto mode = static_cast<std::uint8_t>(row.mode);
    const auto channels = static_cast<unsigned>(row.channels);
    for (const int standard : {0, 1}) {
      UseBoard(row.channels, standard);
      const std::uint64_t pal = standard == 1 ? 4 : 0;  // the field mode
      const std::int32_t result = row.channels == 4   ? TW_SetLiveSplit4Ch(mode, row.list.data())
                                  : row.channels == 8 ? TW_SetLiveSplit8Ch(mode, row.list.data())
                                                      : TW_SetLiveSplit16Ch(mode, row.list.data());
      EXPECT_EQ(result, 0);
      EXPECT_EQ(Cycles(), row.cycles + pal);
      Mark();
      EXPECT_EQ(TW_SetLiveSplitMode(mode, row.list.data()), 0);
      EXPECT_EQ(Cycles(), row.cycles + pal + 4 * Mask(channels));
    }
  }
}

TEST_F(LayoutCycles, OfARefusedSplitAreNone) {
  const Channels list(16, 0);
  for (const int channels : {0, 4, 8, 12, 16}) {
    UseBoard(channels);
    for (int mode = HighestMode(channels) + 1; mode < 9; ++mode) {
      EXPECT_NE(TW_SetLiveSplitMode(static_cast<std::uint8_t>(mode), list.data()), 0);
    }
    EXPECT_EQ(Cycles(), 0u) << channels;
  }
}

// Holds: VEXOAPI_CommandProc "VEXO_CMD_INIT makes 1776"
TEST_F(LayoutCycles, OfEachFurtherPollOfTheHoldAreFourAChip) {
  const Channels list = {0, 1, 2, 3};
  UseBoard(16);
  world().board.SetSettle(3);
  EXPECT_EQ(TW_SetLiveSplit16Ch(1, list.data()), 0);
  EXPECT_EQ(Cycles(), 4u * 128 + 3 * 4 * 4);
  world().board.SetSettle(kNever);
  Mark();
  EXPECT_EQ(TW_SetLiveSplit16Ch(1, list.data()), 0);
  EXPECT_EQ(Cycles(), 4u * 128 + 199 * 4 * 4);
}

TEST_F(LayoutCycles, OfEverySplitOfTheTextPath) {
  // First channel 0, option 0. Each has 4 + chips accesses of the hold, 4 * chips reads of the
  // release and a write of the release for each channel that no window took.
  struct Row {
    int channels;
    int mode;
    unsigned accesses;
    unsigned cycles;
  };
  constexpr unsigned kShown = kRect + 1;             // rectangle, display control
  constexpr unsigned kPlaced = kScale + 1 + kShown;  // ratios, layout code as well
  const std::vector<Row> rows = {
      {4, 0, 5 + 4 * kScale + 4 * kRect + 4 + kCodes + 4, 4 * 49},
      {4, 1, 5 + 4 * kScale + 4 * kShown + kCodes + 4, 4 * 49},
      {4, 2, 5 + 6 * kPlaced + 4, 4 * 69},
      {4, 3, 5 + 8 * kPlaced + 4, 4 * 89},
      {4, 4, 5 + 4 * kScale + 4 + 4, 4 * 29},  // no window: all four are switched off
      {4, 5, 5 + 13 * kPlaced + 4, 4 * 139},
      {4, 6, 5 + 4 * kScale + 4 * (1 + kShown) + 4, 4 * 49},

      {8, 0, 6 + 8 * kScale + 4 * kRect + 5 + kCodes + 8, 4 * 71},
      {8, 1, 6 + 8 * kScale + 4 * kShown + kCodes + 8 + 4, 4 * 74},
      {8, 2, 6 + 6 * kPlaced + 8 + 2, 4 * 76},
      {8, 3, 6 + 8 * kPlaced + 8, 4 * 94},
      {8, 4, 6 + 8 * kScale + 8 * (1 + kShown) + 8, 4 * 94},
      {8, 5, 6 + 13 * kPlaced + 8, 4 * 144},
      {8, 6, 6 + 8 * kScale + 8 * (1 + kShown) + 8, 4 * 94},

      {12, 0, 7 + 12 * kScale + 4 * kRect + 5 + kCodes + 12, 4 * 92},
      {12, 1, 7 + 12 * kScale + 4 * kShown + kCodes + 12 + 8, 4 * 99},
      {12, 2, 7 + 6 * kPlaced + 12 + 6, 4 * 85},
      {12, 3, 7 + 8 * kPlaced + 12 + 4, 4 * 103},
      {12, 4, 7 + 12 * kScale + 9 * (1 + kShown) + 12 + 3, 4 * 124},
      {12, 5, 7 + 13 * kPlaced + 12, 4 * 149},
      {12, 6, 7 + 12 * kScale + 12 * (1 + kShown) + 12, 4 * 139},

      {16, 0, 8 + 16 * kScale + 4 * kRect + 5 + kCodes + 16, 4 * 113},
      {16, 1, 8 + 16 * kScale + 4 * kShown + kCodes + 16 + 12, 4 * 124},
      {16, 2, 8 + 6 * kPlaced + 16 + 10, 4 * 94},
      {16, 3, 8 + 8 * kPlaced + 16 + 8, 4 * 112},
      {16, 4, 8 + 16 * kScale + 9 * (1 + kShown) + 16 + 7, 4 * 149},
      {16, 5, 8 + 13 * kPlaced + 16 + 3, 4 * 157},
      {16, 6, 8 + 16 * kScale + 16 * (1 + kShown) + 16, 4 * 184},

      {0, 0, 4 + 4 * kRect + 5 + kCodes, 4 * 29},
      {0, 6, 4, 4 * 4},  // the hold, for nobody
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(std::to_string(row.channels) + " channels, mode " + std::to_string(row.mode));
    EXPECT_EQ(4 * row.accesses, row.cycles);
    for (const int standard : {0, 1}) {
      UseBoard(row.channels, standard);
      TW_SetLiveSplitDirect(static_cast<std::uint8_t>(row.mode), 0, 0);
      EXPECT_EQ(Cycles(), row.cycles);
    }
  }
}

TEST_F(LayoutCycles, OfTheLiveModeSwitchWithEachBoardsDefaultSplit) {
  // 6 writes; then the variant: 8 writes, a table of 21, 4 writes, a read and a write, a read and a
  // write for each channel, the split; then the blank mask, and a record write for each channel.
  struct Row {
    int channels;
    int mode;
    unsigned cycles;  // NTSC
  };
  const std::vector<Row> rows = {
      {4, 1, 4 * (6 + 8 + 4 + 2 + 8) + 24 + 4 * 53 + 4 * (8 + 4)},       // 396
      {8, 4, 4 * (6 + 8 + 4 + 2 + 16) + 24 + 4 * 98 + 4 * (16 + 8)},     // 656
      {16, 6, 4 * (6 + 8 + 4 + 2 + 32) + 24 + 4 * 188 + 4 * (32 + 16)},  // 1176
      {8, 5, 4 * (6 + 8 + 4 + 2 + 16) + 24 + 4 * (16 + 8)},              // no such split: 264
      {12, 6, 4 * (6 + 12)},                                             // no variant: 72
      {0, 6, 4 * 6},
  };
  const std::vector<unsigned> sums = {396, 656, 1176, 264, 72, 24};
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const Row& row = rows[i];
    SCOPED_TRACE(std::to_string(row.channels) + " channels, mode " + std::to_string(row.mode));
    EXPECT_EQ(row.cycles, sums[i]);
    Channels record = {0, 0, 0, 0, static_cast<std::uint8_t>(row.mode)};
    for (std::uint8_t n = 0; n < 16; ++n) record.push_back(n);
    UseBoard(row.channels, 0);
    EXPECT_EQ(TW_SetLiveModeInfo(reinterpret_cast<const VexoLiveModeRecord*>(record.data())), 0);
    EXPECT_EQ(Cycles(), row.cycles);
  }
}

TEST_F(LayoutCycles, OfTheTextPathsReset) {
  struct Row {
    int channels;
    unsigned cycles;  // with a display mode of 0
  };
  // 12 writes, a table of 21, a read, a read and a write for each channel.
  for (const Row& row : {Row{4, 4 * 12 + 24 + 4 + 4 * 8}, Row{8, 4 * 12 + 24 + 4 + 4 * 16},
                         Row{16, 4 * 12 + 24 + 4 + 4 * 32}}) {
    SCOPED_TRACE(row.channels);
    UseBoard(row.channels);
    world().board.Poke(0, 1, 0x06, 0x00);
    TW_ResetLiveDisplay();
    EXPECT_EQ(Cycles(), row.cycles);
    world().board.Poke(0, 1, 0x06, 0x04);
    Mark();
    TW_ResetLiveDisplay();
    EXPECT_EQ(Cycles(), row.cycles + 4);
  }
}

TEST_F(LayoutCycles, OfTheMaskWriters) {
  struct Row {
    int channels;
    unsigned mask;       // a read and a write for each channel
    unsigned info;       // the same and a record write for each channel
    unsigned blank_all;  // a read and two writes for each channel
  };
  for (const Row& row : {Row{4, 32, 48, 48}, Row{8, 64, 96, 96}, Row{16, 128, 192, 192}}) {
    SCOPED_TRACE(row.channels);
    const Channels record(12, 0);
    UseBoard(row.channels);
    TW_SetChannelBlankMask(5);
    EXPECT_EQ(Cycles(), row.mask);
    Mark();
    TW_SetChannelBit0Mask(5);
    EXPECT_EQ(Cycles(), row.mask);
    Mark();
    TW_RestoreChannelBlankMask();
    EXPECT_EQ(Cycles(), row.mask);
    Mark();
    TW_SetChannelMaskInfo(record.data());
    EXPECT_EQ(Cycles(), row.info);
    Mark();
    TW_BlankAllChannels();
    EXPECT_EQ(Cycles(), row.blank_all);
    Mark();
    TW_UnblankChannelPair(0);
    EXPECT_EQ(Cycles(), 16u);
    Mark();
    TW_UnblankAllChannels();
    EXPECT_EQ(Cycles(), row.mask);
  }
}

// Holds: VEXOAPI_CommandProc "It comes back although a part was not done"
TEST_F(LayoutCycles, OfTheMaskWritersOnATwelveChannelBoardAreTheRecordWritesAlone) {
  const Channels record(12, 0);
  UseBoard(12);
  TW_SetChannelBlankMask(5);
  TW_SetChannelBit0Mask(5);
  TW_RestoreChannelBlankMask();
  EXPECT_EQ(Cycles(), 0u);
  EXPECT_EQ(TW_SetChannelMaskInfo(record.data()), 0);
  EXPECT_EQ(Cycles(), 4u * 12);
}

TEST_F(LayoutCycles, OfTheRecordSetup) {
  // 1 + channels, the mode's own step, 4 + 3, channels.
  struct Row {
    int channels;
    unsigned mode0;  // five writes for each chip; none on a board without a variant
    unsigned mode1;  // 4 + 4 writes
    unsigned mode2;
  };
  for (const Row& row :
       {Row{0, 4 * 8, 4 * 16, 4 * 8}, Row{4, 4 * (16 + 5), 4 * (16 + 8), 4 * 16},
        Row{8, 4 * (24 + 10), 4 * (24 + 8), 4 * 24}, Row{12, 4 * 32, 4 * (32 + 8), 4 * 32},
        Row{16, 4 * (40 + 20), 4 * (40 + 8), 4 * 40}}) {
    SCOPED_TRACE(row.channels);
    UseBoard(row.channels);
    for (const std::uint8_t switching : Channels{0, 4}) {
      Mark();
      TW_SetRecordSetup(0, switching);
      EXPECT_EQ(Cycles(), row.mode0);
      Mark();
      TW_SetRecordSetup(1, switching);
      EXPECT_EQ(Cycles(), row.mode1);
      Mark();
      TW_SetRecordSetup(2, switching);
      EXPECT_EQ(Cycles(), row.mode2);
      Mark();
      TW_SetRecordSetupDefault(switching);
      EXPECT_EQ(Cycles(), row.mode1);
    }
  }
}

TEST_F(LayoutCycles, OfScalesOffsetsAndInputs) {
  UseBoard(16);
  TW_SetLiveScaleX(3, 1, 1);
  EXPECT_EQ(Cycles(), 16u);
  Mark();
  TW_SetLiveScaleY(3, 1);
  EXPECT_EQ(Cycles(), 4u);
  Mark();
  TW_SetInputRegs(16, 1, 2, 3, 4);
  EXPECT_EQ(Cycles(), 4u * 4 * 16);
  Mark();
  VexoProc_SetLiveSplitOffset(6, 3, 1, 1, 1, 1);
  EXPECT_EQ(Cycles(), 0u);
}

}  // namespace
}  // namespace test
