// The commands that bring a motion mask: how it is transformed, what is kept.
#include <algorithm>

#include "VexoCtrlSDK.h"
#include "chip/video_state.h"
#include "harness/host.h"
#include "motion/motion_detect.h"
#include "motion/motion_state.h"
#include "report/library_state.h"
#include "tests/api/trace_lines.h"
#include "tests/support/library_test.h"

namespace {

using Bytes = std::vector<std::uint8_t>;
using test::W;

// Twelve rows as a host has them, and as they go to the chip: the bits of each byte reversed, then
// the two bytes exchanged. Worked out by hand.
const Bytes kHostMask = {0x01, 0x02, 0x13, 0x00, 0xFE, 0x7F, 0x35, 0x0F, 0x81, 0x18, 0x00, 0xFF,
                         0xA0, 0x05, 0x1E, 0xE1, 0x6B, 0x94, 0x03, 0xC0, 0x42, 0x24, 0x7C, 0x08};
const Bytes kChipMask = {0x40, 0x80, 0x00, 0xC8, 0xFE, 0x7F, 0xF0, 0xAC, 0x18, 0x81, 0xFF, 0x00,
                         0xA0, 0x05, 0x87, 0x78, 0x29, 0xD6, 0x03, 0xC0, 0x24, 0x42, 0x10, 0x3E};

constexpr std::uint8_t kOldLevel = 3;
constexpr std::uint8_t kOldMaskByte = 0x99;

class MotionCommands : public test::LibraryTest {
 protected:
  void Pretend(int channels) {
    PretendBoard(channels);
    for (auto& mask : g_motion.mask) std::fill(std::begin(mask), std::end(mask), kOldMaskByte);
    std::fill(std::begin(g_motion.level), std::end(g_motion.level), kOldLevel);
  }
  static Bytes Record(std::uint8_t channel, std::uint8_t level) {
    Bytes record = {channel, level};
    record.insert(record.end(), kHostMask.begin(), kHostMask.end());
    return record;
  }
  static Bytes Kept(int channel) {
    return {std::begin(g_motion.mask[channel]), std::end(g_motion.mask[channel])};
  }
  static Bytes OldMask() { return Bytes(24, kOldMaskByte); }
  Bytes RecordMask() const { return {last_record.begin() + 2, last_record.begin() + 26}; }
  bool LockHeld() { return world().kernel.MutexHeld(u"CS4_GlobalLock"); }

  // The mask from a register on and then the three level registers.
  static std::vector<test::Access> Programmed(int chip, int mask_reg, const Bytes& mask,
                                              const Bytes& level) {
    std::vector<test::Access> writes;
    writes.reserve(24 + level.size());
    for (int i = 0; i < 24; ++i) {
      writes.push_back(W(chip, 2, mask_reg + i, mask[static_cast<std::size_t>(i)]));
    }
    for (int i = 0; i < static_cast<int>(level.size()); ++i) {
      writes.push_back(W(chip, 2, mask_reg - 3 + i, level[static_cast<std::size_t>(i)]));
    }
    return writes;
  }
};

constexpr std::uint32_t kBoth[] = {VEXO_CMD_MOTION_MASK, VEXO_CMD_MOTION_MASK_PREVIEW};

// Holds: VexoMotionMaskRecord "level: 1 sensitivity"
// Holds: VexoMotionMaskRecord "mask: 2 12 rows of 16 cells"
TEST_F(MotionCommands, BothProgramTheTransformedMaskAndTheLevel) {
  struct Case {
    std::uint8_t channel;
    std::uint8_t level;
    int chip;
    int mask_reg;
    Bytes level_bytes;
  };
  const Case cases[] = {
      {0, 0, 0x03, 0x86, {0xCF, 0x07, 0x51}},
      {6, 2, 0x0C, 0xC6, {0x08, 0x09, 0x21}},
      {9, 1, 0x30, 0xA6, {0x4C, 0x08, 0x41}},
      {15, 3, 0xC0, 0xE6, {0x04, 0x0A, 0x01}},
  };
  Pretend(16);
  for (const std::uint32_t code : kBoth) {
    for (const Case& c : cases) {
      Mark();
      EXPECT_EQ(Command(code, Record(c.channel, c.level)), 0);
      EXPECT_EQ(Accesses(), Programmed(c.chip, c.mask_reg, kChipMask, c.level_bytes));
      EXPECT_EQ(Cycles(), 24u + 3u + 3u * 4u);
      EXPECT_FALSE(LockHeld());
    }
  }
}

// Hosts read the record back and know that it is changed.
// Holds: Command codes of VEXOAPI_CommandProc "VEXO_CMD_MOTION_MASK:"
// Holds: Command codes of VEXOAPI_CommandProc "VEXO_CMD_MOTION_MASK_PREVIEW"
// Holds: VexoMotionMaskRecord "Written: the mask"
TEST_F(MotionCommands, BothLeaveTheRecordTransformed) {
  Pretend(4);
  for (const std::uint32_t code : kBoth) {
    EXPECT_EQ(Command(code, Record(2, 1)), 0);
    EXPECT_EQ(RecordMask(), kChipMask);
    EXPECT_EQ(last_record[0], 2);
    EXPECT_EQ(last_record[1], 1);
    EXPECT_TRUE(std::all_of(last_record.begin() + 26, last_record.end(),
                            [](std::uint8_t byte) { return byte == 0; }));
  }
}

TEST_F(MotionCommands, TwiceTheSameRecordRestoresIt) {
  Pretend(4);
  Command(VEXO_CMD_MOTION_MASK, Record(2, 1));
  EXPECT_EQ(Command(VEXO_CMD_MOTION_MASK, last_record), 0);
  EXPECT_EQ(RecordMask(), kHostMask);
}

TEST_F(MotionCommands, MotionMaskKeepsTransformedMaskAndLevel) {
  Pretend(8);
  EXPECT_EQ(Command(VEXO_CMD_MOTION_MASK, Record(6, 2)), 0);
  EXPECT_EQ(Kept(6), kChipMask);
  EXPECT_EQ(g_motion.level[6], 2);
  EXPECT_EQ(Kept(5), OldMask());
  EXPECT_EQ(Kept(7), OldMask());
  EXPECT_EQ(g_motion.level[5], kOldLevel);
  EXPECT_EQ(g_motion.level[7], kOldLevel);
}

TEST_F(MotionCommands, ThePreviewKeepsNothingSoThatTheKeptMaskCanComeBack) {
  Pretend(8);
  EXPECT_EQ(Command(VEXO_CMD_MOTION_MASK_PREVIEW, Record(6, 2)), 0);
  EXPECT_EQ(Kept(6), OldMask());
  EXPECT_EQ(g_motion.level[6], kOldLevel);
  Mark();
  TW_ApplyMotionInfo(6);
  EXPECT_EQ(Accesses(), Programmed(0x0C, 0xC6, OldMask(), {0x04, 0x0A, 0x01}));
}

// Holds: VexoMotionMaskRecord "level: 1 sensitivity"
// Holds: VEXOAPI_CommandProc "It comes back although a part was not done"
TEST_F(MotionCommands, ALevelThatDoesNotExistIsKeptButNotWritten) {
  Pretend(4);
  EXPECT_EQ(Command(VEXO_CMD_MOTION_MASK, Record(1, 4)), 0);
  EXPECT_EQ(Accesses(), Programmed(0x03, 0xA6, kChipMask, {}));
  EXPECT_EQ(g_motion.level[1], 4);
}

// Holds: Result codes "VEXO_ERROR_PARAMETER: required record missing"
// Holds: VexoMotionMaskRecord "channel: 0 below the channel count"
TEST_F(MotionCommands, AChannelThatTheBoardLacksIsRefusedAndNothingChanges) {
  for (const int channels : {4, 8, 12, 16}) {
    harness::Restart();
    Pretend(channels);
    for (const std::uint32_t code : kBoth) {
      for (const int channel : {channels, channels + 1, 255}) {
        EXPECT_EQ(Command(code, Record(static_cast<std::uint8_t>(channel), 1)), -5);
        EXPECT_EQ(RecordMask(), kHostMask);
        EXPECT_FALSE(LockHeld());
      }
    }
    EXPECT_EQ(Cycles(), 0u);
    for (int n = 0; n < 16; ++n) EXPECT_EQ(Kept(n), OldMask());
    EXPECT_EQ(Command(VEXO_CMD_MOTION_MASK, Record(static_cast<std::uint8_t>(channels - 1), 1)), 0);
  }
}

TEST_F(MotionCommands, ABoardWithoutChipsRefusesEveryChannel) {
  Pretend(4);
  g_video.chip_count = 0;
  g_video.max_channel = 0;
  EXPECT_EQ(Command(VEXO_CMD_MOTION_MASK, Record(0, 1)), -5);
  EXPECT_EQ(Cycles(), 0u);
}

// ---- VEXOAPI_SetMotionInfo -------------------------------------------------------------------

// Holds: VEXOAPI_SetMotionInfo "Stores and programs the motion level (0-3) and cell"
TEST_F(MotionCommands, SetMotionInfoKeepsAndProgramsTheMaskAsItStands) {
  Pretend(8);
  const std::size_t from = world().trace.Mark();
  Bytes mask = kHostMask;
  EXPECT_EQ(harness::SetMotionInfo(6, 2, &mask), 0);
  EXPECT_EQ(mask, kHostMask);
  EXPECT_EQ(Kept(6), kHostMask);
  EXPECT_EQ(g_motion.level[6], 2);
  EXPECT_EQ(Accesses(), Programmed(0x0C, 0xC6, kHostMask, {0x08, 0x09, 0x21}));
  const std::vector<std::string> texts = test::Texts(world().trace, from);
  EXPECT_EQ(texts[1], "lock CS4_GlobalLock");
  EXPECT_EQ(texts[texts.size() - 2], "unlock CS4_GlobalLock");
  EXPECT_FALSE(LockHeld());
}

TEST_F(MotionCommands, SetMotionInfoNeedsNoWindow) {
  Pretend(8);
  harness::Uninitialize();
  Bytes mask = kHostMask;
  EXPECT_EQ(harness::SetMotionInfo(0, 0, &mask), 0);
  EXPECT_EQ(Kept(0), kHostMask);
}

// Holds: VEXOAPI_SetMotionInfo "Does nothing while the chips are not ready"
TEST_F(MotionCommands, SetMotionInfoBeforeInitializationAnswersDoneAndKeepsNothing) {
  Pretend(4);
  g_video.g_chip_ready = 0;
  Bytes mask = kHostMask;
  EXPECT_EQ(harness::SetMotionInfo(0, 0, &mask), 0);
  EXPECT_EQ(Kept(0), OldMask());
  EXPECT_EQ(g_motion.level[0], kOldLevel);
  EXPECT_EQ(Cycles(), 0u);
  EXPECT_FALSE(LockHeld());
}

// As behind a detach, which leaves the chips ready.
TEST_F(MotionCommands, SetMotionInfoOfAnUninitializedLibraryKeepsAndProgramsNothing) {
  Pretend(4);
  g_library.g_initialized = 0;
  Bytes mask = kHostMask;
  EXPECT_EQ(harness::SetMotionInfo(0, 0, &mask), -6);
  EXPECT_EQ(Kept(0), OldMask());
  EXPECT_EQ(g_motion.level[0], kOldLevel);
  EXPECT_EQ(Cycles(), 0u);
}

// The channel is not checked against the board: a host may prepare what a later board programs.
// Holds: VEXOAPI_SetMotionInfo "A channel below 16 that the board lacks is stored"
TEST_F(MotionCommands, SetMotionInfoKeepsAChannelThatTheBoardLacks) {
  Pretend(4);
  Bytes mask = kHostMask;
  EXPECT_EQ(harness::SetMotionInfo(15, 2, &mask), 0);
  EXPECT_EQ(Kept(15), kHostMask);
  EXPECT_EQ(g_motion.level[15], 2);
  EXPECT_EQ(Cycles(), 0u);
}

// Holds: VEXOAPI_SetMotionInfo "Does nothing while the chips are not ready"
TEST_F(MotionCommands, SetMotionInfoIgnoresANullMask) {
  Pretend(16);
  EXPECT_EQ(harness::SetMotionInfo(0, 2, static_cast<sim::Bytes*>(nullptr)), 0);
  EXPECT_EQ(Kept(0), OldMask());
  EXPECT_EQ(g_motion.level[0], kOldLevel);
  EXPECT_EQ(Cycles(), 0u);
  EXPECT_FALSE(LockHeld());
}

// Holds: VEXOAPI_SetMotionInfo "Does nothing while the chips are not ready"
TEST_F(MotionCommands, SetMotionInfoIgnoresChannelsPastTheTables) {
  Pretend(16);
  const MotionState before = g_motion;
  Bytes mask = kHostMask;
  for (const int channel : {16, 17, 100, 255}) {
    EXPECT_EQ(harness::SetMotionInfo(static_cast<std::uint8_t>(channel), 2, &mask), 0);
  }
  for (int n = 0; n < 16; ++n) EXPECT_EQ(Kept(n), OldMask());
  EXPECT_TRUE(std::equal(std::begin(before.level), std::end(before.level), g_motion.level));
  EXPECT_EQ(Cycles(), 0u);
  EXPECT_FALSE(LockHeld());
}

}  // namespace
