// Initialization as the text command runs it: the camera halted around it, the outcome told to the
// host by messages.
#include <algorithm>

#include "VexoCtrlSDK.h"
#include "chip/register_bus.h"
#include "chip/video_state.h"
#include "harness/host.h"
#include "setup/initialization.h"
#include "tests/setup/setup_test.h"

namespace test {
namespace {

class VexoProcInitialize : public SetupTest {
 protected:
  void PowerOn(int chips, int cameras = 0) {
    Fit(chips, cameras);
    AttachOnce();
    Mark();
  }
  // Prints from the given one on.
  std::vector<std::string> PrintsFrom(const std::string& text) {
    const std::vector<std::string> prints = Prints();
    const auto first = std::find(prints.begin(), prints.end(), text);
    return {first, prints.end()};
  }
};

const std::string kNew = Plain(">>VEXO INIT NEW !!! \r\n");

TEST_F(VexoProcInitialize, RefusesWhileAnyBusWindowIsNotMapped) {
  for (const auto fault : {sim::Fault::MapSelect, sim::Fault::MapAddress, sim::Fault::MapData}) {
    harness::Restart();
    world().faults.Set(fault, true);
    PowerOn(4);
    ASSERT_GE(world().faults.Hits(fault), 1u);
    VexoProc_Initialize(1, 2);
    EXPECT_EQ(Prints(),
              std::vector<std::string>{Plain(">>ERROR NULL REGISTER VexoProc_Initialize!!\r\n")});
    EXPECT_EQ(Cycles(), 0u);
    EXPECT_EQ(Elapsed(), 0u);
    EXPECT_TRUE(Events<sim::OpenEvent>().empty());
    EXPECT_TRUE(MessageEvents().empty());
    EXPECT_EQ(g_video.g_chip_ready, 0);
  }
}

TEST_F(VexoProcInitialize, NeedsEachOfTheThreeWindows) {
  const std::array<PlatBusWindow BusWindows::*, 3> windows = {
      &BusWindows::select, &BusWindows::address, &BusWindows::data};
  for (const auto window : windows) {
    harness::Restart();
    PowerOn(4);
    g_bus.*window = nullptr;
    VexoProc_Initialize(1, 2);
    EXPECT_EQ(Prints(),
              std::vector<std::string>{Plain(">>ERROR NULL REGISTER VexoProc_Initialize!!\r\n")});
    EXPECT_EQ(Cycles(), 0u);
  }
}

TEST_F(VexoProcInitialize, PrintsBothArguments) {
  PowerOn(1);
  VexoProc_Initialize(1234, 65535);
  EXPECT_EQ(Prints().front(), Plain(">>VEXO INIT INFO 1234 65535  \r\n"));
}

// Holds: vexo init "Halts the camera stream"
TEST_F(VexoProcInitialize, HaltsTheCameraAndSleepsHalfASecondBeforeAndAfter) {
  PowerOn(4);
  VexoProc_Initialize(0, 0);
  const std::vector<std::string> flow = Flow();
  const std::vector<std::string> head(flow.begin(), flow.begin() + 7);
  EXPECT_EQ(head, (std::vector<std::string>{
                      "print [VexoCtrlSDK]: ", "print >>VEXO INIT INFO 0 0  \r\n",
                      "open CAM1:", "control 220864 ok", "close", "sleep 500", "r 03 0 FE 28"}));
  const std::size_t resumed = PlaceOf(flow, "control 220860 ok");
  EXPECT_EQ(flow[resumed - 2], "sleep 500");
  EXPECT_EQ(flow[resumed - 3], "w FF 2 5F AA");  // the last write of initialization
  EXPECT_EQ(flow[resumed + 3], "print >>VEXO INIT NEW !!! \r\n");
  EXPECT_EQ(Elapsed(), 500u + 240u + 500u);
}

TEST_F(VexoProcInitialize, TakesNoLockAndStartsNoWorker) {
  PowerOn(4);
  VexoProc_Initialize(0, 0);
  EXPECT_TRUE(Events<sim::LockEvent>().empty());
  EXPECT_TRUE(Events<sim::ThreadEvent>().empty());
}

// Holds: Host window messages "VEXO_MSG_INIT_RESULT: wParam: address of a VideoState"
// Holds: Host window messages "VEXO_MSG_VIDEO_INFO: wParam: address"
// Holds: VideoState "VEXO_MSG_INIT_RESULT: the same as bytes 12-23 of VexoInitRecord."
// Holds: VideoState "chip_count: 0 chips found"
// Holds: VideoState "video_standard: 4 VEXO_VIDEO_..."
// Holds: VideoState "chip_id: 8 identification of master"
// Holds: vexo init "Halts the camera stream"
TEST_F(VexoProcInitialize, PostsTheResultAndThenSendsTheVideo) {
  PowerOn(4, 1);
  world().board.SetId(1, 0x2A);
  world().board.SetCamera(2, sim::Camera::Ntsc);
  world().board.SetCamera(9, sim::Camera::Off);
  world().board.SetWeak(9, true);
  world().nvram.SetRecord("MDVR", 1, 16);
  VexoProc_Initialize(0, 0);
  const auto messages = MessageEvents();
  ASSERT_EQ(messages.size(), 2u);

  EXPECT_EQ(messages[0].message, 0x2402u);
  EXPECT_TRUE(messages[0].post);
  EXPECT_TRUE(messages[0].ok);
  EXPECT_EQ(messages[0].lparam, 0u);
  EXPECT_EQ(messages[0].record, (sim::Bytes{4, 0, 0, 0, 1, 0, 0, 0, 0x28, 0x2A, 0x28, 0x28}));

  EXPECT_EQ(messages[1].message, 0x2403u);
  EXPECT_FALSE(messages[1].post);
  EXPECT_TRUE(messages[1].ok);
  EXPECT_EQ(messages[1].lparam, 0u);
  EXPECT_EQ(messages[1].record,
            (sim::Bytes{0, 2, 0, 0, 1, 1, 0, 1, 1, 1, 1, 1, 1, 2, 1, 1, 1, 1, 1, 1}));
}

TEST_F(VexoProcInitialize, PrintsAndPostsTheResultBeforeItReadsTheVideo) {
  PowerOn(1);
  VexoProc_Initialize(0, 0);
  const std::vector<std::string> flow = Flow();
  const auto told = PlaceOf(flow, "print >>NEXT TW_InitializeSetup MAX CH 4\r\n");
  const std::vector<std::string> rest(flow.begin() + static_cast<std::ptrdiff_t>(told) + 1,
                                      flow.end());
  EXPECT_EQ(rest,
            (std::vector<std::string>{"post 2402", "r 03 1 78 00", "r 03 0 01 C9", "r 03 0 11 C9",
                                      "r 03 0 21 C9", "r 03 0 31 C9", "send 2403"}));
}

// Holds: Host window messages "VEXO_MSG_INIT_RESULT: wParam: address of a VideoState"
TEST_F(VexoProcInitialize, PostsARecordThatStaysValid) {
  PowerOn(2);
  VexoProc_Initialize(0, 0);
  world().windows.received.clear();
  world().kernel.Pump(1);  // the host handles it when it likes
  ASSERT_EQ(world().windows.received.size(), 1u);
  EXPECT_TRUE(world().windows.received[0].posted);
  EXPECT_EQ(world().windows.received[0].record,
            (sim::Bytes{2, 0, 0, 0, 0, 0, 0, 0, 0x28, 0x28, 0, 0}));
}

// Holds: VideoDetectRecord "standard: 4 VEXO_VIDEO_..."
TEST_F(VexoProcInitialize, LeavesZeroForTheChannelsOfMissingChips) {
  PowerOn(1, 1);
  world().nvram.SetRecord("MDVR", 1, 4);
  VexoProc_Initialize(0, 0);
  EXPECT_EQ(MessageEvents().back().record,
            (sim::Bytes{0, 0, 0, 0, 1, 1, 1, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
}

TEST_F(VexoProcInitialize, PrintsTheChannelCountOfEveryBoard) {
  for (int chips = 1; chips <= 4; ++chips) {
    PowerOn(chips);
    VexoProc_Initialize(0, 0);
    EXPECT_EQ(PrintsFrom(kNew),
              (std::vector<std::string>{kNew, Plain(">>NEXT TW_InitializeSetup MAX CH " +
                                                    std::to_string(4 * chips) + "\r\n")}));
  }
}

// Holds: Host window messages "VEXO_STATUS_DETECT_ERROR: chip initialization found no"
TEST_F(VexoProcInitialize, PostsStatus1003WhenNoChipAnswers) {
  PowerOn(0);
  VexoProc_Initialize(7, 8);
  EXPECT_EQ(Prints(),
            (std::vector<std::string>{Plain(">>VEXO INIT INFO 7 8  \r\n"), kNew,
                                      Plain(">>DETECT DEVICE ERROR TW_InitializeSetup\r\n")}));
  const auto messages = MessageEvents();
  ASSERT_EQ(messages.size(), 1u);
  EXPECT_EQ(messages[0].message, 0x2401u);
  EXPECT_EQ(messages[0].wparam, 0x1003u);
  EXPECT_EQ(messages[0].lparam, 0u);
  EXPECT_TRUE(messages[0].post);
  EXPECT_EQ(Elapsed(), 1000u);
  const std::vector<std::string> flow = Flow();
  PlaceOf(flow, "control 220864 ok");
  PlaceOf(flow, "control 220860 ok");
}

// Holds: Host window messages "VEXO_STATUS_NOT_DETECTED: chip initialization gave no"
TEST_F(VexoProcInitialize, PostsStatus1005WhenTheChipsVanishUnderIt) {
  PowerOn(1);
  // Without a lock another thread may look for the chips in the meantime, and find none.
  world().kernel.StartHostThread([this] {
    world().kernel.Sleep(600);
    world().board.FitChips(0);
    TW_DetectChips();
  });
  VexoProc_Initialize(0, 0);
  EXPECT_EQ(PrintsFrom(kNew),
            (std::vector<std::string>{kNew, Plain(">>NOT DETECT ERROR TW_InitializeSetup\r\n")}));
  const auto messages = MessageEvents();
  ASSERT_EQ(messages.size(), 1u);
  EXPECT_EQ(messages[0].message, 0x2401u);
  EXPECT_EQ(messages[0].wparam, 0x1005u);
  EXPECT_TRUE(messages[0].post);
}

TEST_F(VexoProcInitialize, PrintsAFailedPostAndAFailedSend) {
  PowerOn(1);
  world().faults.Set(sim::Fault::Post, true);
  world().faults.Set(sim::Fault::Send, true);
  VexoProc_Initialize(0, 0);
  EXPECT_EQ(world().faults.Hits(sim::Fault::Post), 1u);
  EXPECT_EQ(world().faults.Hits(sim::Fault::Send), 1u);
  EXPECT_EQ(
      PrintsFrom(kNew),
      (std::vector<std::string>{kNew, Plain(">>NEXT TW_InitializeSetup MAX CH 4\r\n"),
                                Plain(">> PostMessage Error occure 0x00000578 \r\n"),
                                Plain(">> SendMessage Error occure 0x00002403 0x00000578 \r\n")}));
}

TEST_F(VexoProcInitialize, PrintsAFailedPostOfAFailure) {
  PowerOn(0);
  world().faults.Set(sim::Fault::Post, true);
  VexoProc_Initialize(0, 0);
  EXPECT_EQ(world().faults.Hits(sim::Fault::Post), 1u);
  EXPECT_EQ(Prints().back(), Plain(">> PostMessage Error occure 0x00000578 \r\n"));
}

// No initialization gives this result; hosts know the status all the same.
// Holds: Host window messages "VEXO_STATUS_DEVICE_PROBLEM: chip initialization met"
TEST_F(VexoProcInitialize, PostsStatus1004ForADeviceProblem) {
  AttachAndBind();
  Mark();
  ReportInitialization(-2);
  EXPECT_EQ(Prints(),
            (std::vector<std::string>{Plain(">>DEVICE PROBLEM ERROR TW_InitializeSetup\r\n")}));
  const auto messages = MessageEvents();
  ASSERT_EQ(messages.size(), 1u);
  EXPECT_EQ(messages[0].message, 0x2401u);
  EXPECT_EQ(messages[0].wparam, 0x1004u);
  EXPECT_TRUE(messages[0].post);
}

// Holds: vexo init "Chips that were initialized count as such for good"
TEST_F(VexoProcInitialize, LeavesTheResultOfAnEarlierRunReadyAfterAFailure) {
  PowerOn(2);
  VexoProc_Initialize(0, 0);
  world().board.FitChips(0);
  Mark();
  VexoProc_Initialize(0, 0);
  EXPECT_EQ(g_video.g_chip_ready, 1);
  EXPECT_EQ(MessageEvents().at(0).wparam, 0x1003u);
}

}  // namespace
}  // namespace test
