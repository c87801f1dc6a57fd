#include "display/anti_rolling.h"

#include <string>

#include "VexoCtrlSDK.h"
#include "chip/video_state.h"
#include "display/channel_display.h"
#include "display/display_state.h"
#include "display/live_split.h"
#include "tests/display/display_test.h"
#include "tests/support/at_events.h"

namespace test {
namespace {

constexpr const char* kFailed = "<VEXOCtrlSDK.DLL> : ERROR : fail to apply anti-rolling !!! \r\n";

class AntiRolling : public DisplayTest, public ::testing::WithParamInterface<int> {};

TEST_P(AntiRolling, HoldsEveryPositionAndPollsEveryChipOnceWhenAllHaveSettled) {
  UseBoard(GetParam());
  ReferenceModel model = Model();
  model.ApplyAntiRolling();
  TW_ApplyAntiRolling();
  ExpectLike(model);
  EXPECT_TRUE(Waits().empty());
  EXPECT_EQ(Elapsed(), 0u);
}

TEST_P(AntiRolling, PollsAgainAfter5MsUntilTheChipsHaveSettled) {
  UseBoard(GetParam());
  for (const int busy : {1, 2, 7, 198, 199}) {
    SCOPED_TRACE(busy);
    world().board.SetSettle(busy);
    Scribble(3);
    ReferenceModel model = Model();
    model.busy_polls = busy;
    model.ApplyAntiRolling();
    TW_ApplyAntiRolling();
    ExpectLike(model);
    EXPECT_EQ(Waits(), std::vector<std::uint32_t>(static_cast<std::size_t>(busy), 5));
    EXPECT_EQ(Elapsed(), static_cast<unsigned>(5 * busy));
    EXPECT_TRUE(KernelDebug().empty());
  }
}

// Holds: VEXOAPI_CommandProc "VEXO_CMD_INIT, VEXO_CMD_LIVE_SPLIT, VEXO_CMD_LIVE_MODE"
TEST_P(AntiRolling, GivesUpAfter200PollsAnd199WaitsAndSaysSoOnTheKernelOutput) {
  UseBoard(GetParam());
  for (const int busy : {200, 201, kNever}) {
    SCOPED_TRACE(busy);
    world().board.SetSettle(busy);
    Scribble(4);
    ReferenceModel model = Model();
    model.busy_polls = kNever;
    model.ApplyAntiRolling();
    ASSERT_EQ(model.accesses.size(), 8u + 200u * static_cast<unsigned>(GetParam()) / 4u);
    TW_ApplyAntiRolling();
    ExpectLike(model);
    EXPECT_EQ(Waits(), std::vector<std::uint32_t>(199, 5));
    EXPECT_EQ(Elapsed(), 995u);
    EXPECT_EQ(KernelDebug(), std::vector<std::string>{kFailed});
    EXPECT_EQ(DebugText(), "");
  }
}

TEST_P(AntiRolling, ReleaseShowsAllFourChannelsOfEveryChip) {
  UseBoard(GetParam());
  ReferenceModel model = Model();
  model.ReleaseAntiRolling();
  TW_ReleaseAntiRolling();
  ExpectLike(model);
}

INSTANTIATE_TEST_SUITE_P(Boards, AntiRolling, ::testing::Values(4, 8, 12, 16),
                         [](const auto& tested) {
                           return std::to_string(tested.param) + "Channels";
                         });

class AntiRollingEdges : public DisplayTest {};

TEST_F(AntiRollingEdges, KeepsAllButThePositionOfTheMastersRegisterOnHold) {
  UseBoard(8);
  for (int old = 0; old < 256; ++old) {
    for (int n = 0; n < 4; ++n) {
      world().board.Poke(0, 1, static_cast<std::uint8_t>(0x10 + 8 * n),
                         static_cast<std::uint8_t>(old));
    }
    TW_ApplyAntiRolling();
    for (int n = 0; n < 4; ++n) {
      const int held = ((old & 0xFC) | 0x10) + n;
      ASSERT_EQ(Register(0, 1, 0x10 + 8 * n), held) << old;
      ASSERT_EQ(Register(1, 1, 0x10 + 8 * n), held) << old;
    }
  }
}

// Chips are counted, not placed.
TEST_F(AntiRollingEdges, ReleasesAnEmptyPositionBetweenChips) {
  UseBoard(12);
  ReferenceModel model = Model();
  model.ReleaseAntiRolling();
  g_video.chip_present[1] = 0;
  TW_ReleaseAntiRolling();
  ExpectLike(model);
}

TEST_F(AntiRollingEdges, KeepsBits5And3And2OnRelease) {
  UseBoard(8);
  for (int old = 0; old < 256; ++old) {
    for (int n = 0; n < 4; ++n) {
      world().board.Poke(1, 1, static_cast<std::uint8_t>(0x10 + 8 * n),
                         static_cast<std::uint8_t>(old));
    }
    TW_ReleaseAntiRolling();
    for (int n = 0; n < 4; ++n) {
      ASSERT_EQ(Register(1, 1, 0x10 + 8 * n), (old & 0x2C) + 0xC0 + n) << old;
    }
  }
}

TEST_F(AntiRollingEdges, WaitsForAnyOneChip) {
  // An empty position reads 0xFF: a chip that never settles, beside one that has settled.
  UseBoard(4);
  g_video.chip_count = 2;
  TW_ApplyAntiRolling();
  EXPECT_EQ(Waits().size(), 199u);
  EXPECT_EQ(KernelDebug().size(), 1u);

  world().board.SetId(1, 0x28);
  world().board.SetId(0, 0x00);
  Scribble(5);
  TW_ApplyAntiRolling();
  EXPECT_EQ(Waits().size(), 199u);
  EXPECT_EQ(KernelDebug().size(), 1u);
}

TEST_F(AntiRollingEdges, PollsAsOftenAsTheCallerAllowsAndWaitsBetweenPolls) {
  UseBoard(8);
  struct Row {
    int busy;
    unsigned max_polls;
    bool settled;
    std::size_t polls;
  };
  for (const Row& row : {Row{0, 1, true, 1}, Row{1, 1, false, 1}, Row{1, 2, true, 2},
                         Row{2, 2, false, 2}, Row{201, kPollWithoutLimit, true, 202}}) {
    SCOPED_TRACE(std::to_string(row.busy) + " of " + std::to_string(row.max_polls));
    world().board.SetSettle(row.busy);
    Scribble(6);
    WriteChannelDisplayToAll(kDisplayEnable | kDisplayHold);
    Mark();
    EXPECT_EQ(WaitUntilSettled(row.max_polls), row.settled);
    EXPECT_EQ(Accesses().size(), 2 * row.polls);
    EXPECT_EQ(Waits(), std::vector<std::uint32_t>(row.polls - 1, 5));
  }
}

TEST_F(AntiRollingEdges, LooksAtTheLowNibbleOfTheStatusAlone) {
  UseBoard(4);
  world().board.Poke(0, 1, 0x04, 0xF0);
  TW_ApplyAntiRolling();
  EXPECT_TRUE(Waits().empty());
}

// A chip answers with all four bits; of what it answers one line at a time comes through.
TEST_F(AntiRollingEdges, EachBitOfTheLowNibbleIsWaitedFor) {
  UseBoard(4);
  world().board.SetSettle(kNever);
  WriteChannelDisplayToAll(kDisplayEnable | kDisplayHold);
  for (unsigned bit = 0; bit < kChannelsPerChip; ++bit) {
    const AtEvents watch([this, bit](const sim::Event& event, const sim::EventDetail*) {
      sim::DataLines lines;
      if (event.window == sim::BusWindow::Address)
        lines.low = static_cast<std::uint8_t>(~(1u << bit));
      world().board.SetDataLines(lines);
    });
    Mark();
    EXPECT_FALSE(WaitUntilSettled(1)) << bit;
    EXPECT_EQ(Accesses(), std::vector{R(kChipMaster, 1, 0x04, 1 << bit)});
  }
}

TEST_F(AntiRollingEdges, PollsNoChipOnABoardWithoutChips) {
  UseBoard(0);
  TW_ApplyAntiRolling();
  EXPECT_EQ(Accesses().size(), 8u);  // the hold itself
  EXPECT_TRUE(Waits().empty());
  Mark();
  TW_ReleaseAntiRolling();
  ExpectUntouched();
}

TEST_F(AntiRollingEdges, ReportsAChipThatNeverSettlesWithBothOutputSwitchesOff) {
  UseBoard(4);
  world().board.SetSettle(kNever);
  VEXOAPI_SetEnableDebug(0);
  VEXOAPI_SetEnableOutputMsg(0);
  TW_ApplyAntiRolling();
  EXPECT_EQ(KernelDebug(), std::vector<std::string>{kFailed});
  EXPECT_EQ(DebugText(), "");
}

TEST_F(AntiRollingEdges, DoesNotStopTheChangeWhenTheChipsNeverSettle) {
  UseBoard(8, 1);
  world().board.SetSettle(kNever);
  const Channels list = {0, 1, 2, 3};
  ReferenceModel model = Model();
  model.busy_polls = kNever;
  model.LiveSplit(1, list);
  EXPECT_EQ(TW_SetLiveSplit8Ch(1, list.data()), 0);
  ExpectLike(model);
  EXPECT_EQ(g_display.live_split, 1);
  EXPECT_EQ(KernelDebug(), std::vector<std::string>{kFailed});
}

}  // namespace
}  // namespace test
