// The worker thread: what it polls and when it tells the host. All times are virtual.
#include <cstdio>

#include "harness/host.h"
#include "report/diagnostics.h"
#include "tests/api/worker_fixture.h"
#include "tests/support/at_events.h"

namespace {

using sim::By;
using test::kMotion0;
using test::kNoLoss;
using test::Line;
using test::LineList;
using test::Said;

class Worker : public test::WorkerTest {};

// ---- Start -----------------------------------------------------------------------------------

TEST_F(Worker, StartPausesTellsTheThreadAndGivesItAQuantumOf2Ms) {
  Prepare(false);
  const std::size_t from = Place();
  EXPECT_EQ(VexoSDK_StartWorker(), 1);
  EXPECT_EQ(Elapsed(), 200u);
  char text[80];
  std::snprintf(text, sizeof text,
                "debug >> [THREAD_ID 0x%08x] check worker thread set run flag!\\r\\n",
                g_worker.thread_id);
  EXPECT_EQ(test::LinesBy(By::Host, world().trace, from),
            (LineList{{0, By::Host, "thread start"},
                      {0, By::Host, "sleep 200"},
                      {200, By::Host, "debug [VEXOSDK]: "},
                      {200, By::Host, text}}));
  EXPECT_EQ(world().kernel.ThreadQuantum(g_worker.thread), 2u);
}

TEST_F(Worker, TheQuantumComesAfterThePauseAndTheText) {
  Prepare(false);
  std::vector<std::uint32_t> quanta;
  const test::AtEvents watch([&](const sim::Event& event, const sim::EventDetail* detail) {
    if (event.by != By::Host) return;
    if (std::get_if<sim::SleepEvent>(detail) != nullptr ||
        std::get_if<sim::DebugEvent>(detail) != nullptr) {
      quanta.push_back(world().kernel.ThreadQuantum(g_worker.thread));
    }
  });
  EXPECT_EQ(VexoSDK_StartWorker(), 1);
  EXPECT_EQ(quanta, (std::vector<std::uint32_t>{0, 0, 0}));  // the pause, prefix and text
  EXPECT_EQ(world().kernel.ThreadQuantum(g_worker.thread), 2u);
}

TEST_F(Worker, TheThreadMarksItsBlockBeforeItAsksTheChips) {
  Prepare(false);
  unsigned cycles = 0;
  const test::AtEvents watch([&](const sim::Event& event, const sim::EventDetail* detail) {
    if (event.by != By::Worker || detail != nullptr) return;
    if (cycles++ != 0) return;
    EXPECT_EQ(g_worker.block.running, 1u);
    EXPECT_EQ(g_worker.block.thread_id, world().kernel.CurrentThreadId());
  });
  VexoSDK_StartWorker();
  EXPECT_GT(cycles, 0u);
}

TEST_F(Worker, TheThreadFindsItsExitCodeFromTheStart) {
  Prepare(false);
  std::vector<std::uint32_t> codes;
  const test::AtEvents watch([&codes](const sim::Event&, const sim::EventDetail* detail) {
    if (std::get_if<sim::ThreadEvent>(detail) != nullptr) {
      codes.push_back(g_worker.block.exit_code);
    }
  });
  EXPECT_EQ(VexoSDK_StartWorker(), 1);
  EXPECT_EQ(codes, std::vector{0xF0000001u});
}

TEST_F(Worker, TheStartIsToldAtLevelZero) {
  Prepare(false);
  harness::SetEnableDebug(0);
  Mark();
  VexoSDK_StartWorker();
  EXPECT_EQ(Debug().size(), 0u);
  harness::SetEnableDebug(1);
  harness::SetEnableOutputMsg(0);
  Mark();
  VexoSDK_StartWorker();
  EXPECT_EQ(Debug().size(), 2u);
  VexoDbg_SetLevelThreshold(1);
  Mark();
  VexoSDK_StartWorker();
  EXPECT_EQ(Debug().size(), 0u);
}

TEST_F(Worker, TheThreadMarksItsBlock) {
  StartFalling();
  EXPECT_EQ(g_worker.block.running, 1u);
  EXPECT_EQ(g_worker.block.stop_request, 0u);
  EXPECT_EQ(g_worker.block.thread_id, g_worker.thread_id);
  EXPECT_NE(g_worker.thread_id, 0u);
  EXPECT_EQ(g_worker.block.exit_code, 0xF0000001u);
  EXPECT_EQ(g_worker.block.reserved, 0u);
}

TEST_F(Worker, AThreadThatCannotBeCreatedIsToldWithItsReason) {
  Prepare(false);
  world().faults.Set(sim::Fault::Thread, true);
  g_worker.block = {1, 1, 1, 1, 1};
  EXPECT_EQ(VexoSDK_StartWorker(), 0);
  EXPECT_EQ(world().faults.Hits(sim::Fault::Thread), 1u);
  EXPECT_EQ(DebugText(),
            "[VexoCtrlSDK]: >> Fail Create Worker Thread!! \r\n"
            "[VexoCtrlSDK]: ************           Error Msg : "
            "Not enough storage is available to process this command.\r\n \n");
  EXPECT_EQ(Elapsed(), 0u);
  EXPECT_EQ(g_worker.thread, 0u);
  EXPECT_EQ(g_worker.block.running, 0u);
  EXPECT_EQ(g_worker.block.stop_request, 0u);
  EXPECT_EQ(g_worker.block.thread_id, 0u);
  EXPECT_EQ(g_worker.block.exit_code, 0xF0000001u);
  EXPECT_EQ(g_worker.block.reserved, 0u);
}

TEST_F(Worker, TheReasonIsTheThreadsThoughTheFirstTextFailsWithItsOwn) {
  constexpr std::uint32_t kAccessDenied = 5;
  Prepare(false);
  world().faults.Set(sim::Fault::Thread, true);
  const test::AtEvents watch([this](const sim::Event&, const sim::EventDetail* detail) {
    if (std::get_if<sim::DebugEvent>(detail) != nullptr) {
      world().kernel.SetLastError(kAccessDenied);
    }
  });
  EXPECT_EQ(VexoSDK_StartWorker(), 0);
  EXPECT_NE(DebugText().find("Not enough storage is available"), std::string::npos);
}

TEST_F(Worker, ReadsTheEdgeSelectorOnceAndThenTheStatusBit) {
  StartFalling();
  PumpTo(300);
  unsigned selector_reads = 0;
  for (const sim::RegisterAccess& access : sim::DecodeAccesses(world().trace)) {
    ASSERT_TRUE(access.read);
    ASSERT_EQ(access.select, 0xFD);  // master, page 1
    if (access.reg == 0xA4) {
      ++selector_reads;
      EXPECT_EQ(access.t, 0u);
    } else {
      ASSERT_EQ(access.reg, 0xAB);
    }
  }
  EXPECT_EQ(selector_reads, 1u);
}

TEST_F(Worker, AChangedSelectorCountsFromTheNextStartOn) {
  StartFalling();
  SelectEdge(true);
  SyncAt(210, false);
  PumpTo(220);
  EXPECT_EQ(Sent(), (LineList{Said(210, kNoLoss)}));
}

// ---- Waiting for the first sync level --------------------------------------------------------

// Holds: Host window messages "The monitor, a thread that VEXO_CMD_INIT starts"
TEST_F(Worker, PollsEvery3MsUntilTheStatusBitIsSet) {
  Prepare(false);
  world().board.SetSyncPeriod(10);  // set from 10 on
  VexoSDK_StartWorker();
  const LineList waits = WorkerLines("wait");
  ASSERT_GE(waits.size(), 6u);
  // 0, 3, 6, 9: not yet. At 12 it is set, and is read again at once.
  const LineList expected = {Said(0, "wait 3"), Said(3, "wait 3"),  Said(6, "wait 3"),
                             Said(9, "wait 3"), Said(12, "wait 2"), Said(14, "wait 2")};
  EXPECT_EQ(LineList(waits.begin(), waits.begin() + 6), expected);
}

// The first wait does not look at the stop request: only its end does, or a termination.
// Holds: VEXOAPI_CommandProc "After 20 ms it terminates the thread."
// Holds: VEXOAPI_CommandProc "That happens where the sync bit was never set"
TEST_F(Worker, AStatusBitThatNeverComesTakesATerminationOnThe21stPass) {
  Prepare(false);
  world().board.HoldSync(false);
  VexoSDK_StartWorker();
  const std::size_t from = Place();
  Mark();
  VexoSDK_StopWorker();
  LineList expected;
  for (std::uint32_t pass = 0; pass < 21; ++pass) {
    if (pass == 20) expected.push_back({220, By::Host, "thread terminate FFFF0000"});
    expected.push_back({200 + pass, By::Host, "sleep 1"});
  }
  EXPECT_EQ(test::LinesBy(By::Host, world().trace, from), expected);
  EXPECT_EQ(Elapsed(), 21u);
  EXPECT_EQ(world().kernel.LiveThreads(), 0u);
  EXPECT_EQ(g_worker.thread, 0u);
  // It went on polling to the end.
  EXPECT_EQ(WorkerLines("wait 3", from).size(), 7u);
  EXPECT_EQ(WorkerLines("thread").size(), 0u);
}

TEST_F(Worker, ATerminationIsRepeatedOnEachPassUntilTheThreadHasEnded) {
  Prepare(false);
  world().board.HoldSync(false);
  VexoSDK_StartWorker();
  const std::size_t from = Place();
  world().faults.Set(sim::Fault::Terminate, true);
  world().kernel.StartHostThread([&] {
    Plat_Sleep(22);  // until after the terminations of 220, 221 and 222
    world().faults.Set(sim::Fault::Terminate, false);
    Plat_Sleep(100);
    world().board.HoldSync(true);  // ends a thread that nobody terminates any more
  });
  VexoSDK_StopWorker();
  EXPECT_EQ(world().faults.Hits(sim::Fault::Terminate), 3u);
  LineList expected;
  for (std::uint32_t t = 220; t <= 223; ++t) {
    expected.push_back({t, By::Host, "thread terminate FFFF0000"});
  }
  EXPECT_EQ(test::LinesBy(By::Host, world().trace, from, "thread terminate"), expected);
  EXPECT_EQ(world().kernel.LiveThreads(), 0u);
  EXPECT_EQ(g_worker.thread, 0u);
}

// Holds: VEXOAPI_CommandProc "VEXO_CMD_STOP_MONITOR, and VEXO_CMD_INIT likewise"
TEST_F(Worker, AStatusBitThatComesDuringTheStopEndsTheThreadByItself) {
  Prepare(false);
  world().board.SetSyncPeriod(210);  // set from 210 on, which is a poll of the first wait
  VexoSDK_StartWorker();
  Mark();
  const std::size_t from = Place();
  VexoSDK_StopWorker();
  EXPECT_EQ(WorkerLines("thread", from), (LineList{Said(210, "thread end F0000001")}));
  EXPECT_EQ(Elapsed(), 11u);
  // It looks at the request before it reads again.
  EXPECT_EQ(WorkerLines("data", from), (LineList{Said(201, "data->00"), Said(204, "data->00"),
                                                 Said(207, "data->00"), Said(210, "data->10")}));
}

// ---- Edges -----------------------------------------------------------------------------------

struct EdgeCase {
  bool rising;  // the selector
  bool start;   // level when the worker starts to monitor
  bool edge;    // level afterwards
  bool counts;
};

class WorkerEdges : public Worker, public ::testing::WithParamInterface<EdgeCase> {};

// Holds: Host window messages "The monitor, a thread that VEXO_CMD_INIT starts"
TEST_P(WorkerEdges, OnlyTheSelectedOneCounts) {
  const EdgeCase& c = GetParam();
  Start(c.rising, true);
  if (!c.start) {
    SyncAt(210, false);
    PumpTo(230);
  }
  const std::size_t sent_before = Sent().size();
  const std::size_t from = Place();
  const std::uint32_t t = world().kernel.Now();
  world().board.HoldSync(c.edge);
  PumpTo(t + 20);
  if (c.counts) {
    EXPECT_EQ(Sent().size(), sent_before + 1);
    EXPECT_EQ(WorkerLines("wait 5", from).size(), 0u);
  } else {
    EXPECT_EQ(Sent().size(), sent_before);
    EXPECT_EQ(WorkerLines("wait 5", from).size(), c.start == c.edge ? 0u : 1u);
  }
}

INSTANTIATE_TEST_SUITE_P(BothSelectorSettings, WorkerEdges,
                         ::testing::Values(EdgeCase{false, true, false, true},
                                           EdgeCase{false, true, true, false},
                                           EdgeCase{true, true, false, false},
                                           EdgeCase{true, false, true, true},
                                           EdgeCase{true, false, false, false}));

TEST_F(Worker, ARisingEdgeIsIgnoredForFiveMsWhereFallingOnesCount) {
  StartFalling();
  SyncAt(210, false);  // the first word
  PumpTo(230);
  const std::size_t sent = Sent().size();
  const std::size_t from = Place();
  SyncAt(240, true);
  PumpTo(250);
  EXPECT_EQ(Sent().size(), sent);
  EXPECT_EQ(WorkerLines("wait 5", from), (LineList{Said(240, "wait 5")}));
}

TEST_F(Worker, PollsEvery2MsWhileTheBitStaysAndPausesFiveAfterAnIgnoredEdge) {
  Start(true, true);  // rising edges count
  const std::size_t from = Place();
  SyncAt(204, false);
  PumpTo(214);
  EXPECT_EQ(WorkerLines("wait", from),
            (LineList{Said(200, "wait 2"), Said(202, "wait 2"), Said(204, "wait 5"),
                      Said(209, "wait 2"), Said(211, "wait 2"), Said(213, "wait 2")}));
}

TEST_F(Worker, AfterACountedEdgeItReadsAgainWithoutAPause) {
  StartFalling();
  SyncAt(210, false);
  const std::size_t from = Place();
  PumpTo(212);
  std::vector<int> registers;
  for (const sim::RegisterAccess& access : sim::DecodeAccesses(world().trace, from)) {
    EXPECT_EQ(access.t, 210u);
    registers.push_back(access.reg);
  }
  // Status bit, loss flags, a standard for each channel, motion flags, status bit.
  EXPECT_EQ(registers, (std::vector<int>{0xAB, 0x78, 0x01, 0x11, 0x21, 0x31, 0x79, 0xAB}));
  EXPECT_EQ(WorkerLines("wait", from), (LineList{Said(210, "wait 2")}));
}

// ---- What it tells ---------------------------------------------------------------------------

// Holds: Host window messages "VEXO_MSG_VIDEO_INFO after its first reading"
TEST_F(Worker, TheFirstEdgeAlwaysTellsTheVideo) {
  StartFalling();
  SyncAt(210, false);
  PumpTo(230);
  EXPECT_EQ(Sent(), (LineList{Said(210, kNoLoss)}));
  ASSERT_EQ(world().windows.received.size(), 1u);
  EXPECT_EQ(world().windows.received[0].t, 210u);
}

// Holds: Host window messages "VEXO_MSG_MOTION_STATUS whenever the motion mask is not"
TEST_F(Worker, TheFirstEdgeTellsMotionOnlyIfThereIsSome) {
  StartFalling();
  world().board.SetMotion(0, true);
  world().board.SetMotion(2, true);
  SyncAt(210, false);
  PumpTo(230);
  EXPECT_EQ(Sent(), (LineList{Said(210, kNoLoss), Said(210, "send 2404 5")}));
}

// Holds: Host window messages "VEXO_MSG_VIDEO_INFO: wParam: address"
// Holds: VideoDetectRecord "loss_mask: 0 bit n"
// Holds: VideoDetectRecord "standard: 4 VEXO_VIDEO_..."
TEST_F(Worker, TheVideoRecordCarriesLossAndStandards) {
  StartFalling();
  world().board.SetCamera(1, sim::Camera::Pal);
  world().board.SetCamera(3, sim::Camera::Pal);
  world().board.SetWeak(3, true);
  world().board.SetCamera(0, sim::Camera::Off);
  SyncAt(210, false);
  PumpTo(230);
  EXPECT_EQ(Sent(), (LineList{Said(210,
                                   "send 2403 [09000000"
                                   "00010002000000000000000000000000]")}));
}

// Holds: Host window messages "VEXO_MSG_VIDEO_INFO after its first reading"
// Holds: Host window messages "Another standard alone is no news."
TEST_F(Worker, OnlyAChangedLossMaskIsToldAgain) {
  StartFalling();
  SyncAt(210, false);  // seen at 210
  SyncAt(220, true);   // seen at 220
  SyncAt(230, false);  // seen at 231
  PumpTo(240);
  EXPECT_EQ(Sent().size(), 1u);
  world().board.SetCamera(2, sim::Camera::Pal);  // a standard alone is no news
  SyncAt(241, true);                             // seen at 241
  SyncAt(250, false);                            // seen at 250
  PumpTo(260);
  EXPECT_EQ(Sent().size(), 1u);
  world().board.SetCamera(2, sim::Camera::Off);
  SyncAt(260, true);   // seen at 260
  SyncAt(271, false);  // seen at 271
  PumpTo(280);
  ASSERT_EQ(Sent().size(), 2u);
  EXPECT_EQ(Sent()[1], Said(271,
                            "send 2403 [04000000"
                            "00000100000000000000000000000000]"));
}

TEST_F(Worker, WhileTheChipsAreNotReadyTheRecordIsEmptyAndThereIsNoMotion) {
  StartFalling();
  world().board.SetMotion(0, true);
  world().board.SetCamera(0, sim::Camera::Off);
  g_video.g_chip_ready = 0;
  SyncAt(210, false);
  const std::size_t from = Place();
  PumpTo(230);
  EXPECT_EQ(Sent(), (LineList{Said(210, kNoLoss)}));
  for (const sim::RegisterAccess& access : sim::DecodeAccesses(world().trace, from)) {
    EXPECT_EQ(access.reg, 0xAB);
  }
}

// Holds: VexoCtrlSDK.h "The library answers with result codes and tells the host about"
// Holds: Host window messages "VEXO_MSG_MOTION_STATUS whenever the motion mask is not"
// Holds: Host window messages "VEXO_MSG_MOTION_STATUS: wParam: 16-bit mask"
TEST_F(Worker, AChangeOfMotionIsToldAtOnce) {
  StartFalling();
  SyncAt(210, false);
  SyncAt(220, true);  // seen at 220, next polls 225, 227, ...
  world().board.SetMotion(1, true);
  SyncAt(231, false);
  PumpTo(240);
  world().board.SetMotion(1, false);
  SyncAt(241, true);  // seen at 241, next polls 246, 248, ...
  SyncAt(250, false);
  PumpTo(260);
  EXPECT_EQ(Sent(), (LineList{Said(210, kNoLoss), Said(231, "send 2404 2"), Said(250, kMotion0)}));
}

// ---- The repeat of the motion mask -----------------------------------------------------------

// Holds: Host window messages "VEXO_MSG_MOTION_STATUS whenever the motion mask is not"
TEST_F(Worker, AnUnchangedMaskIsRepeated900MsAfterTheStampWasSet) {
  StartFalling();
  SyncAt(210, false);  // sets the stamp
  EXPECT_EQ(g_worker.motion_stamp, 0u);
  PumpTo(212);
  EXPECT_EQ(g_worker.motion_stamp, 210u);
  SyncAt(300, true);    // seen at 300, next polls 305, 307, ...
  SyncAt(401, false);   // 191 ms: too early
  SyncAt(501, true);    // seen at 501, next polls 506, 508, ...
  SyncAt(1110, false);  // 900 ms
  PumpTo(1120);
  EXPECT_EQ(Sent(), (LineList{Said(210, kNoLoss), Said(1110, kMotion0)}));
  // The repeat clears the stamp; the next counted edge sets it anew.
  EXPECT_EQ(g_worker.motion_stamp, 0u);
  SyncAt(1200, true);  // next polls 1205, 1207, ...
  SyncAt(1301, false);
  PumpTo(1310);
  EXPECT_EQ(g_worker.motion_stamp, 1301u);
  SyncAt(1401, true);   // next polls 1406, 1408, ...
  SyncAt(2200, false);  // 899 ms
  PumpTo(2210);
  EXPECT_EQ(Sent().size(), 2u);
  SyncAt(2300, true);  // next polls 2305, 2307, ...
  SyncAt(2401, false);
  PumpTo(2410);
  ASSERT_EQ(Sent().size(), 3u);
  EXPECT_EQ(Sent()[2], Said(2401, kMotion0));
}

TEST_F(Worker, At899MsItIsTooEarly) {
  StartFalling();
  SyncAt(210, false);
  SyncAt(300, true);    // next polls 305, 307, ...
  SyncAt(1109, false);  // 899 ms after 210
  PumpTo(1120);
  EXPECT_EQ(Sent(), (LineList{Said(210, kNoLoss)}));
  EXPECT_EQ(g_worker.motion_stamp, 210u);
}

// Holds: Host window messages "VEXO_MSG_MOTION_STATUS whenever the motion mask is not"
TEST_F(Worker, TheRepeatCarriesTheMaskThatIsStillThere) {
  StartFalling();
  world().board.SetMotion(3, true);
  SyncAt(210, false);  // told as a change: the stamp is not set
  PumpTo(220);
  EXPECT_EQ(g_worker.motion_stamp, 0u);
  SyncAt(300, true);
  SyncAt(401, false);  // unchanged: sets it
  PumpTo(410);
  EXPECT_EQ(g_worker.motion_stamp, 401u);
  SyncAt(501, true);
  SyncAt(1300, false);  // 899 ms
  PumpTo(1310);
  EXPECT_EQ(Sent().size(), 2u);
  SyncAt(1400, true);
  SyncAt(1501, false);
  PumpTo(1510);
  EXPECT_EQ(Sent(),
            (LineList{Said(210, kNoLoss), Said(210, "send 2404 8"), Said(1501, "send 2404 8")}));
}

// A change leaves the stamp alone, so the first unchanged pass after it may repeat at once.
// Holds: Host window messages "VEXO_MSG_MOTION_STATUS whenever the motion mask is not"
TEST_F(Worker, AStampLeftOverFromBeforeAChangeRepeatsAtOnce) {
  StartFalling();
  SyncAt(210, false);  // stamp 210
  SyncAt(300, true);   // next polls 305, 307, ...
  world().board.SetMotion(0, true);
  SyncAt(1111, false);  // a change, 901 ms later
  PumpTo(1120);
  EXPECT_EQ(g_worker.motion_stamp, 210u);
  SyncAt(1121, true);  // next polls 1126, 1128, ...
  SyncAt(1130, false);
  PumpTo(1140);
  EXPECT_EQ(Sent(),
            (LineList{Said(210, kNoLoss), Said(1111, "send 2404 1"), Said(1130, "send 2404 1")}));
  EXPECT_EQ(g_worker.motion_stamp, 0u);
}

// Only what was sent clears it.
TEST_F(Worker, ARepeatThatIsCutOffIsMadeUpForAtOnce) {
  StartFalling();
  SyncAt(210, false);  // stamp 210
  SyncAt(300, true);
  world().windows.deaf = true;
  SyncAt(1110, false);  // 900 ms
  PumpTo(1120);
  VexoSDK_StopWorker();  // ends the thread in its send
  EXPECT_EQ(g_worker.motion_stamp, 210u);
  world().windows.deaf = false;
  world().board.HoldSync(true);
  const std::size_t from = Place();
  VexoSDK_StartWorker();
  world().board.HoldSync(false);
  const std::uint32_t t = world().kernel.Now();
  PumpTo(t + 5);
  EXPECT_EQ(WorkerLines("send", from), (LineList{Said(t, kNoLoss), Said(t, kMotion0)}));
}

TEST_F(Worker, TheStampSurvivesAStopAndAStart) {
  StartFalling();
  SyncAt(210, false);
  PumpTo(1300);
  VexoSDK_StopWorker();
  EXPECT_EQ(g_worker.motion_stamp, 210u);
  world().board.HoldSync(true);
  VexoSDK_StartWorker();
  EXPECT_EQ(g_worker.motion_stamp, 210u);
  world().board.HoldSync(false);
  const std::uint32_t t = world().kernel.Now();
  PumpTo(t + 5);
  const LineList sent = Sent();
  ASSERT_EQ(sent.size(), 3u);
  EXPECT_EQ(sent[1].text, kNoLoss);
  EXPECT_EQ(sent[2].text, kMotion0);  // on its very first edge
}

TEST_F(Worker, TheTickDifferenceWrapsAround) {
  StartFalling();
  g_worker.motion_stamp = 0xFFFFFF00u;  // 256 ms before the ticks began anew
  SyncAt(642, false);                   // 898 ms
  PumpTo(643);
  EXPECT_EQ(Sent().size(), 1u);
  SyncAt(644, true);  // next polls 649, 651, ...
  SyncAt(651, false);
  PumpTo(660);
  EXPECT_EQ(Sent().size(), 2u);
}

TEST_F(Worker, AStoppedStatusBitStopsAllReporting) {
  StartFalling();
  SyncAt(210, false);
  PumpTo(220);
  world().board.SetMotion(0, true);
  world().board.SetCamera(0, sim::Camera::Off);
  PumpTo(60'000);
  EXPECT_EQ(Sent().size(), 1u);
}

TEST_F(Worker, ARunningSyncRepeatsAbout900Ms) {
  Prepare(false);
  world().board.SetSyncPeriod(20);
  VexoSDK_StartWorker();
  PumpTo(10'000);
  LineList sent = Sent();
  ASSERT_GT(sent.size(), 3u);
  EXPECT_EQ(sent[0].text, kNoLoss);
  sent.erase(sent.begin());
  EXPECT_EQ(sent.size(), 10u);
  for (const Line& line : sent) EXPECT_EQ(line.text, kMotion0);
  for (std::size_t i = 1; i < sent.size(); ++i) {
    // An edge every 40 ms: the repeat, then the stamp at the next edge, then 900 ms.
    EXPECT_GE(sent[i].t - sent[i - 1].t, 900u);
    EXPECT_LE(sent[i].t - sent[i - 1].t, 1000u);
  }
}

// The record that a message points to is the window's to write to.
TEST_F(Worker, AWindowThatWritesToTheRecordIsNotToldAgain) {
  Prepare(false);
  world().board.SetSyncPeriod(20);
  world().windows.procedure = [](PlatWindow, std::uint32_t message, std::uintptr_t wparam,
                                 std::intptr_t) {
    if (message == VEXO_MSG_VIDEO_INFO) {
      reinterpret_cast<VideoDetectRecord*>(wparam)->loss_mask = 0xAAAA;
    }
  };
  VexoSDK_StartWorker();
  PumpTo(800);
  EXPECT_EQ(Sent(), (LineList{{Sent().at(0).t, By::Worker, kNoLoss}}));
}

}  // namespace
