// Which chips are found, and what a board without any does.
#include "VexoCtrlSDK.h"
#include "chip/video_state.h"
#include "display/display_state.h"
#include "harness/host.h"
#include "setup/initialization.h"
#include "setup/video_detection.h"
#include "tests/setup/setup_test.h"

namespace test {
namespace {

class ChipDetection : public SetupTest {
 protected:
  // Attached, with these identification bytes, and marked.
  void Identify(const std::array<int, 4>& ids) {
    for (unsigned p = 0; p < 4; ++p) {
      world().board.SetId(p, static_cast<std::uint8_t>(ids.at(p)));
    }
    AttachOnce();
    Mark();
  }
};

TEST_F(ChipDetection, CountsIdentifications28To2FAsPresentAndNoOther) {
  Identify({0, 0, 0, 0});
  for (int id = 0; id < 256; ++id) {
    SCOPED_TRACE(id);
    world().board.SetId(2, static_cast<std::uint8_t>(id));
    const bool present = id >= 0x28 && id <= 0x2F;
    EXPECT_EQ(TW_DetectChips(), present ? 1 : 0);
    EXPECT_EQ(g_video.chip_present[2], present ? 1 : 0);
    EXPECT_EQ(g_video.report.chip_id[2], id);
  }
}

TEST_F(ChipDetection, DoesNotCountIdentifications20And30) {
  Identify({0x20, 0x30, 0x27, 0x2F});
  EXPECT_EQ(TW_DetectChips(), 1);
  EXPECT_EQ(g_video.chip_present[0], 0);
  EXPECT_EQ(g_video.chip_present[1], 0);
  EXPECT_EQ(g_video.chip_present[2], 0);
  EXPECT_EQ(g_video.chip_present[3], 1);
}

TEST_F(ChipDetection, ReadsTheIdentificationOfAllFourPositionsInOrder) {
  Identify({0x28, 0x29, 0x11, 0x2F});
  TW_DetectChips();
  EXPECT_EQ(Accesses(), (std::vector<Access>{R(0x03, 0, 0xFE, 0x28), R(0x0C, 0, 0xFE, 0x29),
                                             R(0x30, 0, 0xFE, 0x11), R(0xC0, 0, 0xFE, 0x2F)}));
  EXPECT_EQ(Cycles(), 16u);
}

// Holds: VexoInitRecord "chip_id: 20 out"
TEST_F(ChipDetection, KeepsEveryIdentificationRawWhetherItMatchedOrNot) {
  Identify({0x2B, 0x55, 0x28, 0xAA});
  TW_DetectChips();
  EXPECT_EQ(g_video.report.chip_id[0], 0x2B);
  EXPECT_EQ(g_video.report.chip_id[1], 0x55);
  EXPECT_EQ(g_video.report.chip_id[2], 0x28);
  EXPECT_EQ(g_video.report.chip_id[3], 0xAA);
}

// Holds: VexoInitRecord "chip_count: 12 out"
TEST_F(ChipDetection, GivesFourChannelsForEachChip) {
  Identify({0, 0, 0, 0});
  for (unsigned chips = 0; chips <= 4; ++chips) {
    world().board.FitChips(chips);
    EXPECT_EQ(TW_DetectChips(), chips);
    EXPECT_EQ(g_video.chip_count, chips);
    EXPECT_EQ(g_video.max_channel, 4 * chips);
    EXPECT_EQ(g_video.report.chip_count, chips);
  }
}

// Holds: Host window messages "VEXO_MSG_CHIP_VERSION: wParam: byte p"
TEST_F(ChipDetection, PacksThePresentFlagsOneAByteWithTheMasterLowest) {
  struct Row {
    std::array<int, 4> ids;
    std::uint32_t flags;
  };
  const std::array<Row, 5> rows = {{{{0, 0, 0, 0}, 0x00000000},
                                    {{0x28, 0, 0, 0}, 0x00000001},
                                    {{0, 0x28, 0, 0}, 0x00000100},
                                    {{0x28, 0, 0x28, 0x2F}, 0x01010001},
                                    {{0x28, 0x28, 0x28, 0x28}, 0x01010101}}};
  for (const Row& row : rows) {
    Identify(row.ids);
    TW_DetectChips();
    Mark();
    EXPECT_EQ(TW_GetChipPresence(), row.flags);
    EXPECT_EQ(Cycles(), 0u);
  }
}

// ---- Gaps in the fitting ----------------------------------------------------------------------

TEST_F(ChipDetection, CountsChipsAndDoesNotPlaceThem) {
  Identify({0x28, 0x00, 0x28, 0x00});
  ASSERT_EQ(TW_InitializeSetup(0, 0), 8);
  // MASTER and SLAVE1 are addressed, though SLAVE1 is the one that is missing.
  for (const Access& access : Writes()) {
    const bool quad_queue = access.page == 1 && access.reg == 0x57;  // goes to all four, always
    EXPECT_TRUE(quad_queue || access.chip != 0x30) << access;
  }
  EXPECT_EQ(Register(0, 1, 0x00), 0x08);
  EXPECT_EQ(Register(2, 1, 0x00), 0x00);  // only broadcasts reach it
  EXPECT_EQ(Register(2, 1, 0x57), 0x80);
}

TEST_F(ChipDetection, TakesAMissingChipInTheMiddleAsOneWithoutVideo) {
  Identify({0x28, 0x00, 0x28, 0x00});
  TW_InitializeSetup(0, 0);
  EXPECT_EQ(g_video.g_vid_loss_mask, 0x00F0u);
  EXPECT_EQ(g_video_detect.ntsc_count, 4);
  EXPECT_EQ(g_video.video_standard, 0);
}

TEST_F(ChipDetection, AddressesTheMasterWhenOnlyASlaveIsFitted) {
  Identify({0x00, 0x00, 0x00, 0x28});
  ASSERT_EQ(TW_InitializeSetup(0, 0), 4);
  EXPECT_EQ(g_video.g_vid_loss_mask, 0x000Fu);
  EXPECT_EQ(Register(3, 2, 0x86), 0x00);  // the masks went to the master's place
}

TEST_F(ChipDetection, GivesThreeChipsTwelveChannelsAndTheSixteenChannelSplit) {
  Identify({0x28, 0x28, 0x28, 0x00});
  world().nvram.SetRecord("MDVR", 0, 12);
  ASSERT_EQ(TW_InitializeSetup(0, 0), 12);
  EXPECT_EQ(g_video.max_channel, 12);
  EXPECT_EQ(g_video.default_live_split, 6);
  EXPECT_EQ(g_video.default_play_split, 6);
  EXPECT_EQ(Register(0, 1, 0x00), 0x00);  // no page 1 tables
  EXPECT_EQ(Register(0, 1, 0x0B), 0x00);
  EXPECT_EQ(Register(0, 1, 0x30), 0x00);
  EXPECT_EQ(Register(0, 1, 0xA0), 0x00);
  EXPECT_EQ(Register(0, 1, 0x7E), 0x00);
  EXPECT_EQ(Register(0, 1, 0xA7), 0x0D);  // the common registers
  EXPECT_EQ(Register(2, 1, 0x82), 0x92);
  EXPECT_EQ(Register(0, 0, 0x62), 0x03);  // the larger boards' audio
  EXPECT_EQ(Register(2, 2, 0x80), 0x57);  // and motion
}

// ---- No chip ------------------------------------------------------------------------------------

TEST_F(ChipDetection, OfAnEmptyBoardGivesMinus1AndWritesNothing) {
  Identify({0x20, 0x30, 0x00, 0xFF});
  EXPECT_EQ(TW_InitializeSetup(0, 0), -1);
  EXPECT_TRUE(Writes().empty());
  EXPECT_EQ(DebugText(), "");
  EXPECT_TRUE(Events<sim::NvramEvent>().empty());
  EXPECT_EQ(Elapsed(), 0u);
  EXPECT_EQ(g_video.g_chip_ready, 0);
  EXPECT_EQ(g_video.chip_count, 0);
  EXPECT_EQ(g_video.max_channel, 0);
  EXPECT_EQ(g_video.default_live_split, 7);
  EXPECT_EQ(g_video.default_play_split, 7);
  EXPECT_EQ(g_video.video_standard, 2);
  EXPECT_EQ(g_video.report.chip_id[3], 0xFF);
}

TEST_F(ChipDetection, OfAnEmptyBoardFailsTheCommandKeepsTheLockClearsTheRecordAndResumesTheCamera) {
  Identify({0, 0, 0, 0});
  std::vector<std::uint8_t> record(24, 0xEE);
  EXPECT_EQ(Command(VEXO_CMD_INIT, record), -1);
  EXPECT_EQ(world().kernel.MutexDepth(u"CS4_GlobalLock"), 1u);
  for (std::size_t i = 0; i < 24; ++i) EXPECT_EQ(last_record[i], i < 12 ? 0xEE : 0x00) << i;
  EXPECT_EQ(Flow(),
            (std::vector<std::string>{"lock", "open CAM1:", "control 220864 ok", "close",
                                      "r 03 0 FE 00", "r 0C 0 FE 00", "r 30 0 FE 00",
                                      "r C0 0 FE 00", "open CAM1:", "control 220860 ok", "close"}));
  EXPECT_EQ(world().kernel.LiveThreads(), 0u);
}

class AfterAFailedSecondDetection : public SetupTest {
 protected:
  void SetUp() override {
    StartBoard(16);
    ASSERT_EQ(Command(VEXO_CMD_INIT, {}), 0);  // its worker goes on
    world().board.FitChips(0);
    Mark();
    ASSERT_EQ(Command(VEXO_CMD_INIT, {}), -1);
  }
};

// Holds: vexo init "Chips that were initialized count as such for good"
TEST_F(AfterAFailedSecondDetection, TheChipsStayReadyWhileNoneIsCounted) {
  EXPECT_EQ(g_video.g_chip_ready, 1);
  EXPECT_EQ(g_video.chip_count, 0);
  EXPECT_EQ(g_video.max_channel, 0);
  EXPECT_EQ(g_video.report.chip_count, 0u);
  EXPECT_EQ(TW_GetChipPresence(), 0u);
  for (const std::uint8_t id : g_video.report.chip_id) EXPECT_EQ(id, 0x00);
  EXPECT_EQ(g_video.default_live_split, 6);  // of the board that was
}

TEST_F(AfterAFailedSecondDetection, EveryCommandLivesWithNoChannel) {
  struct Row {
    std::uint32_t code;
    int result;
  };
  const std::array<Row, 14> rows = {{{0xF002, 0},
                                     {0xF003, 0},
                                     {0xF004, 0},
                                     {0xF005, -1},
                                     {0xF007, -5},
                                     {0xF008, 0},
                                     {0xF009, 0},
                                     {0xF00B, -1},
                                     {0xF00C, -1},
                                     {0xF00D, -1},
                                     {0xF00E, 0},
                                     {0xF00F, 0},
                                     {0xF010, -5},
                                     {0xF011, 0}}};
  for (int fill = 0; fill < 7; ++fill) {
    for (const Row& row : rows) {
      SCOPED_TRACE(std::to_string(row.code) + " filled with " + std::to_string(fill));
      std::vector<std::uint8_t> record(64, static_cast<std::uint8_t>(fill));
      if (row.code <= 0xF004) record[0] = 0x03;  // a chip to read from
      if (row.code <= 0xF004) record[1] = 0x01;
      EXPECT_EQ(Command(row.code, record), row.result);
    }
  }
  for (const std::uint32_t code : {0xF006u, 0xF00Au}) {
    EXPECT_LE(Command(code, std::vector<std::uint8_t>(64, 1)), 0) << code;
  }
  for (std::uint32_t code = 0xFF00; code <= 0xFF0B; ++code) CommandNull(code);
  sim::Bytes mask(24, 0xFF);
  EXPECT_EQ(harness::SetMotionInfo(3, 2, &mask), 0);
}

TEST_F(AfterAFailedSecondDetection, TheWorkerReportsNoLossAndNoMotionOfChipsThatAreNotCounted) {
  world().kernel.Pump(100);  // a report of before
  world().board.FitChips(4);
  for (unsigned n = 0; n < 16; ++n) {
    world().board.SetCamera(n, sim::Camera::Off);
    world().board.SetMotion(n, true);
  }
  Mark();
  world().kernel.Pump(3000);
  const std::vector<sim::MessageEvent> messages = MessageEvents();
  EXPECT_GE(messages.size(), 3u);
  for (const sim::MessageEvent& message : messages) {
    EXPECT_EQ(message.message, VEXO_MSG_MOTION_STATUS);
    EXPECT_EQ(message.wparam, 0u);
  }
  EXPECT_EQ(world().kernel.LiveThreads(), 1u);
}

TEST_F(AfterAFailedSecondDetection, TheBoardComesBackWithItsChips) {
  world().board.FitChips(2);
  ASSERT_EQ(Command(VEXO_CMD_INIT, {}), 0);
  EXPECT_EQ(g_video.max_channel, 8);
  EXPECT_EQ(g_video.default_live_split, 4);
}

}  // namespace
}  // namespace test
