// The host's ways to a motion mask: the record of the two mask commands, and the export.
#include <algorithm>

#include "VexoCtrlSDK.h"
#include "chip/video_state.h"
#include "harness/host.h"
#include "motion/motion_detect.h"
#include "motion/motion_state.h"
#include "tests/model/reference_model.h"
#include "tests/support/library_test.h"

namespace test {
namespace {

using Bytes = std::vector<std::uint8_t>;

// A mask, and by hand what the chip gets: the bits of each byte reversed, then the bytes of each
// row exchanged.
const Bytes kHostMask = {0x01, 0x80, 0x02, 0x00, 0x0F, 0xF0, 0x12, 0x34, 0xFF, 0x00, 0xAA, 0x55,
                         0xC0, 0x07, 0x80, 0x01, 0x00, 0x10, 0x5A, 0x3C, 0x96, 0x69, 0xE1, 0x1F};
const Bytes kChipMask = {0x01, 0x80, 0x00, 0x40, 0x0F, 0xF0, 0x2C, 0x48, 0x00, 0xFF, 0xAA, 0x55,
                         0xE0, 0x03, 0x80, 0x01, 0x08, 0x00, 0x3C, 0x5A, 0x96, 0x69, 0xF8, 0x87};

Bytes Record(int channel, int level, const Bytes& mask) {
  Bytes record = {static_cast<std::uint8_t>(channel), static_cast<std::uint8_t>(level)};
  record.insert(record.end(), mask.begin(), mask.end());
  return record;
}

class MotionMask : public LibraryTest {
 protected:
  void UseBoard(int channels) {
    harness::Restart();  // a test may use one board after another
    PretendBoard(channels);
    for (auto& mask : g_motion.mask) std::fill(std::begin(mask), std::end(mask), 0xEE);
    std::fill(std::begin(g_motion.level), std::end(g_motion.level), 0xEE);
  }
  static Bytes KeptMask(int channel) {
    return {std::begin(g_motion.mask[channel]), std::end(g_motion.mask[channel])};
  }
  Bytes MaskInRecord() const { return {last_record.begin() + 2, last_record.begin() + 26}; }

  static std::vector<Access> Programmed(int channel, const Bytes& mask, int level) {
    ReferenceModel model;
    model.MotionMask(channel, mask);
    model.MotionLevel(channel, level);
    return model.accesses;
  }
  void ExpectNothingKept() {
    for (int c = 0; c < 16; ++c) {
      EXPECT_EQ(KeptMask(c), Bytes(24, 0xEE)) << c;
      EXPECT_EQ(g_motion.level[c], 0xEE) << c;
    }
  }
};

// Holds: VexoMotionMaskRecord "Written: the mask"
TEST_F(MotionMask, IsTransformedInTheCallersRecordAndProgrammedSo) {
  UseBoard(16);
  EXPECT_EQ(Command(VEXO_CMD_MOTION_MASK, Record(6, 2, kHostMask)), 0);
  EXPECT_EQ(MaskInRecord(), kChipMask);
  EXPECT_EQ(last_record[0], 6);
  EXPECT_EQ(last_record[1], 2);
  EXPECT_EQ(Accesses(), Programmed(6, kChipMask, 2));
  EXPECT_EQ(Cycles(), 27u + 12u);
}

TEST_F(MotionMask, TouchesNoByteOfTheRecordBehindTheMask) {
  UseBoard(4);
  Bytes record = Record(0, 1, kHostMask);
  record.resize(64, 0x77);
  EXPECT_EQ(Command(VEXO_CMD_MOTION_MASK, record), 0);
  EXPECT_TRUE(std::all_of(last_record.begin() + 26, last_record.end(),
                          [](std::uint8_t byte) { return byte == 0x77; }));
}

// Holds: Command codes of VEXOAPI_CommandProc "VEXO_CMD_MOTION_MASK:"
TEST_F(MotionMask, IsKeptWithItsLevel) {
  UseBoard(16);
  EXPECT_EQ(Command(VEXO_CMD_MOTION_MASK, Record(11, 2, kHostMask)), 0);
  EXPECT_EQ(KeptMask(11), kChipMask);
  EXPECT_EQ(g_motion.level[11], 2);
  EXPECT_EQ(g_motion.level[10], 0xEE);
  Mark();
  TW_ApplyMotionInfo(11);
  EXPECT_EQ(Accesses(), Programmed(11, kChipMask, 2));
}

TEST_F(MotionMask, KeepsALevelThatTheChipDoesNotKnowButWritesNone) {
  UseBoard(4);
  EXPECT_EQ(Command(VEXO_CMD_MOTION_MASK, Record(0, 4, kHostMask)), 0);
  EXPECT_EQ(Cycles(), 27u);
  EXPECT_EQ(g_motion.level[0], 4);
}

TEST_F(MotionMask, OfAPreviewIsTransformedAndProgrammedTheSameWay) {
  UseBoard(8);
  EXPECT_EQ(Command(VEXO_CMD_MOTION_MASK_PREVIEW, Record(5, 1, kHostMask)), 0);
  EXPECT_EQ(MaskInRecord(), kChipMask);
  EXPECT_EQ(Accesses(), Programmed(5, kChipMask, 1));
}

// Holds: Command codes of VEXOAPI_CommandProc "VEXO_CMD_MOTION_MASK_PREVIEW"
TEST_F(MotionMask, OfAPreviewIsNotKept) {
  UseBoard(8);
  EXPECT_EQ(Command(VEXO_CMD_MOTION_MASK_PREVIEW, Record(5, 1, kHostMask)), 0);
  ExpectNothingKept();
}

TEST_F(MotionMask, OfAPreviewGivesWayToTheKeptOne) {
  UseBoard(8);
  EXPECT_EQ(Command(VEXO_CMD_MOTION_MASK, Record(5, 1, kHostMask)), 0);
  EXPECT_EQ(Command(VEXO_CMD_MOTION_MASK_PREVIEW, Record(5, 2, Bytes(24, 0x00))), 0);
  EXPECT_EQ(Register(1, 2, 0xA6), 0x00);
  Mark();
  TW_ApplyMotionInfo(5);
  EXPECT_EQ(Accesses(), Programmed(5, kChipMask, 1));
}

TEST_F(MotionMask, TwiceTransformedIsTheHostsAgain) {
  UseBoard(4);
  EXPECT_EQ(Command(VEXO_CMD_MOTION_MASK, Record(0, 1, kHostMask)), 0);
  EXPECT_EQ(Command(VEXO_CMD_MOTION_MASK, last_record), 0);
  EXPECT_EQ(MaskInRecord(), kHostMask);
}

TEST_F(MotionMask, OfAChannelThatTheBoardLacksIsRefusedAndLeftAsItIs) {
  for (const std::uint32_t code : {VEXO_CMD_MOTION_MASK, VEXO_CMD_MOTION_MASK_PREVIEW}) {
    for (const int channels : {4, 8, 12, 16}) {
      UseBoard(channels);
      for (const int channel : {channels, channels + 1, 16, 255}) {
        EXPECT_EQ(Command(code, Record(channel, 1, kHostMask)), -5);
        EXPECT_EQ(MaskInRecord(), kHostMask);
      }
      EXPECT_EQ(Cycles(), 0u);
      ExpectNothingKept();
      EXPECT_EQ(Command(code, Record(channels - 1, 1, kHostMask)), 0);
    }
  }
}

// ---- VEXOAPI_SetMotionInfo ----------------------------------------------------------------------

// Holds: VEXOAPI_SetMotionInfo "Stores and programs the motion level (0-3) and cell"
TEST_F(MotionMask, OfTheExportIsKeptAndProgrammedAsItStands) {
  UseBoard(16);
  Bytes mask = kHostMask;
  EXPECT_EQ(harness::SetMotionInfo(13, 1, &mask), 0);
  EXPECT_EQ(mask, kHostMask);
  EXPECT_EQ(KeptMask(13), kHostMask);
  EXPECT_EQ(g_motion.level[13], 1);
  EXPECT_EQ(Accesses(), Programmed(13, kHostMask, 1));
}

TEST_F(MotionMask, OfTheExportIsKeptForAChannelThatTheBoardLacksButNotProgrammed) {
  UseBoard(4);
  Bytes mask = kHostMask;
  EXPECT_EQ(harness::SetMotionInfo(9, 3, &mask), 0);
  EXPECT_EQ(Cycles(), 0u);
  EXPECT_EQ(KeptMask(9), kHostMask);
  EXPECT_EQ(g_motion.level[9], 3);
}

// Holds: VEXOAPI_SetMotionInfo "A channel below 16 that the board lacks is stored"
TEST_F(MotionMask, OfTheExportIsProgrammedWithoutALevelThatTheChipDoesNotKnow) {
  UseBoard(8);
  for (const int level : {4, 255}) {
    Mark();
    Bytes mask = kHostMask;
    EXPECT_EQ(harness::SetMotionInfo(6, static_cast<std::uint8_t>(level), &mask), 0);
    EXPECT_EQ(KeptMask(6), kHostMask);
    EXPECT_EQ(g_motion.level[6], level);
    ReferenceModel model;
    model.MotionMask(6, kHostMask);
    EXPECT_EQ(Accesses(), model.accesses);
  }
}

TEST_F(MotionMask, OfTheExportIsIgnoredForChannelsOf16AndMore) {
  UseBoard(16);
  for (const int channel : {16, 17, 100, 255}) {
    Bytes mask = kHostMask;
    EXPECT_EQ(harness::SetMotionInfo(static_cast<std::uint8_t>(channel), 1, &mask), 0);
  }
  EXPECT_EQ(Cycles(), 0u);
  ExpectNothingKept();
}

TEST_F(MotionMask, OfTheExportIsIgnoredWhileTheChipsAreNotReady) {
  UseBoard(16);
  g_video.g_chip_ready = 0;
  Bytes mask = kHostMask;
  EXPECT_EQ(harness::SetMotionInfo(2, 1, &mask), 0);
  EXPECT_EQ(Cycles(), 0u);
  ExpectNothingKept();
}

TEST_F(MotionMask, SurvivesInTheTablesUntilTheNextInitialization) {
  StartBoard(4);
  ASSERT_EQ(Command(VEXO_CMD_MOTION_MASK, Record(1, 3, kHostMask)), 0);
  ASSERT_EQ(Register(0, 2, 0xA6), 0x01);
  ASSERT_EQ(Command(VEXO_CMD_INIT, {}), 0);
  EXPECT_EQ(KeptMask(1), Bytes(24, 0xFF));
  EXPECT_EQ(g_motion.level[1], 1);
  EXPECT_EQ(Register(0, 2, 0xA6), 0xFF);
}

}  // namespace
}  // namespace test
