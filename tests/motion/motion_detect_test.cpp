#include "motion/motion_detect.h"

#include <algorithm>
#include <numeric>

#include "chip/video_state.h"
#include "harness/host.h"
#include "motion/motion_state.h"
#include "tests/motion/motion_test.h"
#include "tests/support/at_events.h"
#include "tests/support/library_test.h"

namespace test {
namespace {

// Before any test has put it back.
const MotionState g_motion_at_load = g_motion;

class MotionDetect : public LibraryTest {
 protected:
  void UseBoard(int channels) {
    harness::Restart();  // a test may use one board after another
    PretendBoard(channels);
    // Masks and levels that tell every byte from every other.
    for (int c = 0; c < 16; ++c) {
      for (int i = 0; i < 24; ++i) g_motion.mask[c][i] = MaskByte(c, i);
      g_motion.level[c] = U8(c % 4);
    }
  }
  static std::uint8_t MaskByte(int channel, int index) { return U8(31 * channel + 7 * index + 1); }

  static std::vector<std::uint8_t> MaskOf(int channel) {
    std::vector<std::uint8_t> mask(24);
    for (int i = 0; i < 24; ++i) mask[static_cast<std::size_t>(i)] = MaskByte(channel, i);
    return mask;
  }
  static std::vector<Access> LevelWrites(int channel, int level) {
    ReferenceModel model;
    model.MotionLevel(channel, level);
    return model.accesses;
  }
  static std::vector<Access> TimingWrites(int value) {
    ReferenceModel model;
    model.MotionTiming(value);
    return model.accesses;
  }
};

// ---- Setup ------------------------------------------------------------------------------------

// Holds: vexo minit "Programs motion detection of all channels from the kept settings"
TEST_F(MotionDetect, IsSetUpWithMasksThenLevelsThenTheSharedParameters) {
  for (const int channels : {4, 8, 12, 16}) {
    SCOPED_TRACE(channels);
    UseBoard(channels);
    ASSERT_EQ(g_motion.ready, 0);
    TW_InitMotionDetect();
    ReferenceModel model;
    for (int c = 0; c < channels; ++c) model.MotionMask(c, MaskOf(c));
    for (int c = 0; c < channels; ++c) model.MotionLevel(c, c % 4);
    model.MotionTiming(0x33);
    EXPECT_EQ(Accesses(), model.accesses);
    // A table write of 24 bytes takes 27 cycles.
    EXPECT_EQ(Cycles(), static_cast<std::uint64_t>(channels * (27 + 12) + 20));
    EXPECT_EQ(g_motion.ready, 1);
    EXPECT_EQ(g_motion.timing, 0x33);
  }
}

TEST_F(MotionDetect, HasNoMasksAndIsNotReadyAtLoad) {
  UseBoard(16);
  g_motion = g_motion_at_load;
  EXPECT_EQ(g_motion.ready, 0);
  EXPECT_EQ(g_motion.timing, 0);
  for (int c = 0; c < 16; ++c) {
    Mark();
    TW_ApplyMotionInfo(U8(c));
    ReferenceModel model;
    model.MotionMask(c, std::vector<std::uint8_t>(24));
    model.MotionLevel(c, 0);
    EXPECT_EQ(Accesses(), model.accesses);
  }
}

// The worker waits for it, and then reads what was seen.
TEST_F(MotionDetect, IsReadyOnlyOnceAllIsWritten) {
  UseBoard(16);
  unsigned ready_early = 0;
  const AtEvents look([&ready_early](const auto&, const auto*) { ready_early += g_motion.ready; });
  TW_InitMotionDetect();
  EXPECT_EQ(ready_early, 0u);
  EXPECT_EQ(g_motion.ready, 1);
}

TEST_F(MotionDetect, IsSetUpWithoutTouchingItsTables) {
  UseBoard(16);
  TW_InitMotionDetect();
  for (int c = 0; c < 16; ++c) {
    EXPECT_EQ(g_motion.level[c], c % 4);
    for (int i = 0; i < 24; ++i) EXPECT_EQ(g_motion.mask[c][i], MaskByte(c, i));
  }
}

TEST_F(MotionDetect, OfABoardWithoutChannelsIsSetUpWithTheSharedParametersAlone) {
  UseBoard(0);
  TW_InitMotionDetect();
  EXPECT_EQ(Accesses(), TimingWrites(0x33));
  EXPECT_EQ(g_motion.ready, 1);
}

TEST_F(MotionDetect, OfOneChannelIsProgrammedFromTheTables) {
  UseBoard(16);
  for (int c = 0; c < 16; ++c) {
    Mark();
    TW_ApplyMotionInfo(U8(c));
    ReferenceModel model;
    model.MotionMask(c, MaskOf(c));
    model.MotionLevel(c, c % 4);
    EXPECT_EQ(Accesses(), model.accesses);
    EXPECT_EQ(Cycles(), 39u);
  }
}

TEST_F(MotionDetect, OfAChannelThatTheBoardLacksIsNotProgrammed) {
  for (const int channels : {0, 4, 8, 12, 16}) {
    UseBoard(channels);
    for (int c = channels; c < 256; ++c) TW_ApplyMotionInfo(U8(c));
    EXPECT_EQ(Cycles(), 0u);
  }
}

// ---- Levels -----------------------------------------------------------------------------------

// Holds: vexo mlevel "Programs a channel's sensitivity"
// Holds: Chips: vexo "`LEVEL`: sensitivity, 0 to 3"
TEST_F(MotionDetect, WritesThreeRegistersForEachOfFourLevels) {
  UseBoard(16);
  for (int c = 0; c < 16; ++c) {
    for (int level = 0; level < 4; ++level) {
      Mark();
      TW_SetMotionLevel(U8(c), U8(level));
      EXPECT_EQ(Accesses(), LevelWrites(c, level)) << "channel " << c << ", level " << level;
      EXPECT_EQ(Cycles(), 12u);
      EXPECT_EQ(g_motion.level[c], c % 4);  // the table stays
    }
  }
}

// Holds: vexo mlevel "A level above 3 does nothing."
TEST_F(MotionDetect, ChangesNothingForALevelOf4OrMore) {
  UseBoard(4);
  for (int level = 4; level < 256; ++level) TW_SetMotionLevel(0, U8(level));
  EXPECT_EQ(Cycles(), 0u);
  EXPECT_EQ(g_motion.level[0], 0);
}

// Holds: Chips: vexo "Most commands do not check a channel"
TEST_F(MotionDetect, SetsALevelByTheChipOfTheChannelWhateverTheBoard) {
  UseBoard(4);
  TW_SetMotionLevel(9, 3);
  EXPECT_EQ(Accesses(), (std::vector<Access>{W(0x30, 2, 0xA3, 0x04), W(0x30, 2, 0xA4, 0x0A),
                                             W(0x30, 2, 0xA5, 0x01)}));
}

// Holds: vexo mmask change "A channel above 15 and a row above 11 do nothing"
TEST_F(MotionDetect, IgnoresChannelsOf16AndMore) {
  UseBoard(16);
  const MotionState before = g_motion;
  sim::Bytes mask(24, 0x5A);
  for (int c = 16; c < 256; ++c) {
    TW_ApplyMotionInfo(U8(c));
    TW_ToggleMotionCell(U8(c), 0, 0);
    TW_SetMotionMaskAll(U8(c), 0);
    StoreMotionInfo(U8(c), 2, mask.data());
  }
  EXPECT_EQ(Cycles(), 0u);
  EXPECT_TRUE(std::equal(&before.mask[0][0], &before.mask[0][0] + sizeof before.mask,
                         &g_motion.mask[0][0]));
  EXPECT_TRUE(std::equal(std::begin(before.level), std::end(before.level), g_motion.level));
}

// The level alone goes by the chip that any channel number maps to.
TEST_F(MotionDetect, ProgramsTheLevelOfChannelsOf16AndMoreWhereTheyMapTo) {
  UseBoard(16);
  TW_SetMotionLevel(18, 2);
  EXPECT_EQ(Accesses(), (std::vector<Access>{W(0xC0, 2, 0xC3, 0x08), W(0xC0, 2, 0xC4, 0x09),
                                             W(0xC0, 2, 0xC5, 0x21)}));
}

// ---- Single cells -----------------------------------------------------------------------------

// Holds: Chips: vexo "`COLUMN`: 0 to 15"
// Holds: Chips: vexo "`ROW`: 0 to 11"
// Holds: VEXOAPI_SetMotionInfo "Stores and programs the motion level (0-3) and cell"
TEST_F(MotionDetect, TurnsOverEveryCellAtItsByteAndBit) {
  UseBoard(16);
  for (const int c : {0, 3, 6, 9, 15}) {
    for (int row = 0; row < 12; ++row) {
      for (int column = 0; column < 16; ++column) {
        SCOPED_TRACE(std::to_string(c) + ": row " + std::to_string(row) + ", column " +
                     std::to_string(column));
        // Columns 8-15 lie in the first byte of a row, columns 0-7 in the second.
        const int index = column >= 8 ? 2 * row : 2 * row + 1;
        const int bit = 1 << (column >= 8 ? column - 8 : column);
        const std::uint8_t old = g_motion.mask[c][index];
        Mark();
        TW_ToggleMotionCell(U8(c), U8(column), U8(row));
        EXPECT_EQ(g_motion.mask[c][index], old ^ bit);
        EXPECT_EQ(Accesses(),
                  std::vector<Access>{W(ChipOf(c), 2, 0x86 + 0x20 * (c % 4) + index, old ^ bit)});
        EXPECT_EQ(Cycles(), 4u);
      }
    }
  }
}

TEST_F(MotionDetect, RestoresByteAndRegisterWhenTheSameCellIsTurnedTwice) {
  UseBoard(8);
  TW_ApplyMotionInfo(5);
  const RegisterImage image = Image();
  const std::uint8_t old = g_motion.mask[5][14];
  TW_ToggleMotionCell(5, 9, 7);
  EXPECT_NE(Image(), image);
  TW_ToggleMotionCell(5, 9, 7);
  EXPECT_EQ(Image(), image);
  EXPECT_EQ(g_motion.mask[5][14], old);
}

TEST_F(MotionDetect, TurnsTheCellOfOneChannelAlone) {
  UseBoard(16);
  TW_ToggleMotionCell(7, 2, 3);
  for (int c = 0; c < 16; ++c) {
    for (int i = 0; i < 24; ++i) {
      const int flipped = c == 7 && i == 7 ? 0x04 : 0x00;
      EXPECT_EQ(g_motion.mask[c][i], MaskByte(c, i) ^ flipped);
    }
  }
}

// Holds: Chips: vexo "`ROW`: 0 to 11"
// Holds: vexo mmask change "A channel above 15 and a row above 11 do nothing"
TEST_F(MotionDetect, IgnoresRowsOf12AndMore) {
  UseBoard(16);
  for (int row = 12; row < 256; ++row) TW_ToggleMotionCell(0, 3, U8(row));
  EXPECT_EQ(Cycles(), 0u);
  for (int c = 0; c < 16; ++c) {
    for (int i = 0; i < 24; ++i) EXPECT_EQ(g_motion.mask[c][i], MaskByte(c, i));
  }
}

// Columns are not checked: 16 and more count modulo 8 in the byte of columns 8 to 15.
// Holds: vexo mmask change "A channel above 15 and a row above 11 do nothing"
TEST_F(MotionDetect, TakesTheBitOfALargeColumnModulo8) {
  UseBoard(4);
  const std::uint8_t old = g_motion.mask[1][4];
  TW_ToggleMotionCell(1, 21, 2);
  EXPECT_EQ(Accesses(), std::vector<Access>{W(0x03, 2, 0xAA, old ^ 0x20)});
}

// ---- Whole masks ------------------------------------------------------------------------------

TEST_F(MotionDetect, SetsAllCellsOfAChannelByteByByte) {
  UseBoard(16);
  for (const int c : {0, 5, 10, 15}) {
    for (const int clear : {0, 1, 2, 128, 255}) {
      Mark();
      TW_SetMotionMaskAll(U8(c), U8(clear));
      const int value = clear == 0 ? 0xFF : 0x00;
      for (const std::uint8_t cells : g_motion.mask[c]) EXPECT_EQ(cells, value);
      ReferenceModel model;
      model.MotionMask(c, std::vector<std::uint8_t>(24, U8(value)));
      EXPECT_EQ(Accesses(), model.accesses);
      EXPECT_EQ(Cycles(), 96u);  // each byte an access of its own
    }
  }
  EXPECT_EQ(g_motion.mask[1][0], MaskByte(1, 0));
}

// ---- Shared parameters --------------------------------------------------------------------------

// Holds: VexoMotionSetupRecord "timing_low: 1 low half of the shared parameter"
// Holds: VexoMotionSetupRecord "timing_high: 2 high half of the shared parameter"
TEST_F(MotionDetect, KeepsTheTimingsThatTheChipKnowsAndReplacesTheOthers) {
  UseBoard(4);
  // By low 0, 1, ...: 0-11 as they are, all others 3. By high: 0-8, 10 and 11; all others 9.
  constexpr std::array<int, 16> kLow = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 3, 3, 3, 3};
  constexpr std::array<int, 16> kHigh = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 9, 9, 9, 9};
  for (std::size_t low = 0; low < 16; ++low) {
    for (std::size_t high = 0; high < 16; ++high) {
      Mark();
      TW_SetMotionTiming(U8(static_cast<int>(low)), U8(static_cast<int>(high)));
      const int value = kHigh[high] * 16 + kLow[low];
      EXPECT_EQ(Accesses(), TimingWrites(value)) << low << ", " << high;
      EXPECT_EQ(Cycles(), 20u);
      EXPECT_EQ(g_motion.timing, value);
    }
  }
}

// Holds: VexoMotionSetupRecord "timing_low: 1 low half of the shared parameter"
// Holds: VexoMotionSetupRecord "timing_high: 2 high half of the shared parameter"
TEST_F(MotionDetect, ReplacesTimingsFarOutOfRange) {
  UseBoard(4);
  for (const int large : {16, 17, 100, 128, 255}) {
    Mark();
    TW_SetMotionTiming(U8(large), U8(large));
    EXPECT_EQ(Accesses(), TimingWrites(0x93)) << large;
  }
}

// Holds: VexoMotionSetupRecord "timing_low: 1 low half of the shared parameter"
// Holds: VexoMotionSetupRecord "timing_high: 2 high half of the shared parameter"
TEST_F(MotionDetect, Writes93ForTimings12And12And00ForTimings0And0) {
  UseBoard(4);
  TW_SetMotionTiming(12, 12);
  EXPECT_EQ(Accesses(), TimingWrites(0x93));
  Mark();
  TW_SetMotionTiming(0, 0);
  EXPECT_EQ(Accesses(), TimingWrites(0x00));
}

}  // namespace
}  // namespace test
