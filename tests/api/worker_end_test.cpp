// The worker thread when the host does not answer, and how it ends. All times are virtual.
#include "harness/host.h"
#include "report/library_state.h"
#include "tests/api/worker_fixture.h"

namespace {

using sim::By;
using test::kMotion0;
using test::kNoLoss;
using test::Line;
using test::LineList;
using test::Said;

class WorkerEnd : public test::WorkerTest {};

// ---- The host does not answer ----------------------------------------------------------------

// Holds: Host window messages "It sends with a limit of 5000 ms"
// Holds: Host window messages "Told is what it tried to tell"
TEST_F(WorkerEnd, ADeafWindowCostsFiveSecondsAMessage) {
  StartFalling();
  world().windows.deaf = true;
  world().board.SetMotion(0, true);
  SyncAt(210, false);
  PumpTo(10'300);
  EXPECT_EQ(Sent(), (LineList{Said(5210, std::string(kNoLoss) + " failed"),
                              Said(10210, "send 2404 1 failed")}));
  EXPECT_EQ(
      WorkerLines("debug >>"),
      (LineList{Said(5210, "debug >> SendMessage Error occure 0x00002403 0x000005B4 \\r\\n"),
                Said(10210, "debug >> SendMessage Error occure 0x00002404 0x000005B4 \\r\\n")}));
  // What could not be told is not told again.
  world().windows.deaf = false;
  SyncAt(10'310, true);
  SyncAt(10'330, false);
  PumpTo(10'350);
  EXPECT_EQ(Sent().size(), 2u);
}

// Holds: Host window messages "Sent messages are handled by the window's thread where"
TEST_F(WorkerEnd, ABusyHostIsWaitedFor) {
  StartFalling();
  SyncAt(210, false);
  world().kernel.Idle(500);  // busy from 210 to 710
  EXPECT_TRUE(world().windows.received.empty());
  EXPECT_TRUE(Sent().empty());
  PumpTo(720);
  EXPECT_EQ(Sent(), (LineList{Said(710, kNoLoss)}));
  ASSERT_EQ(world().windows.received.size(), 1u);
  EXPECT_EQ(world().windows.received[0].t, 710u);
}

// Holds: Host window messages "The monitor, a thread that VEXO_CMD_INIT starts"
// Holds: Host window messages "Told is what it tried to tell"
// Holds: VEXOAPI_Uninitialize "Stops nothing: send VEXO_CMD_STOP_MONITOR first."
TEST_F(WorkerEnd, WithoutAWindowEverySendFailsAtOnceAndTheWorkerGoesOn) {
  StartFalling();
  harness::Uninitialize();
  world().board.SetMotion(0, true);
  SyncAt(210, false);
  PumpTo(220);
  EXPECT_EQ(Sent(), (LineList{Said(210, std::string(kNoLoss) + " failed"),
                              Said(210, "send 2404 1 failed")}));
  EXPECT_EQ(
      WorkerLines("debug"),
      (LineList{Said(210, "debug [VexoCtrlSDK]: "),
                Said(210, "debug >> SendMessage Error occure 0x00002403 0x00000578 \\r\\n"),
                Said(210, "debug [VexoCtrlSDK]: "),
                Said(210, "debug >> SendMessage Error occure 0x00002404 0x00000578 \\r\\n")}));
  EXPECT_EQ(world().kernel.LiveThreads(), 1u);
  // A window that is bound later hears what is new.
  harness::Initialize(world().windows.Create());
  world().board.SetMotion(0, false);
  SyncAt(230, true);
  SyncAt(241, false);
  PumpTo(250);
  ASSERT_EQ(Sent().size(), 3u);
  EXPECT_EQ(Sent()[2].text, kMotion0);
}

TEST_F(WorkerEnd, ADestroyedWindowFailsTheSendThatWaitsForIt) {
  StartFalling();
  SyncAt(210, false);
  world().kernel.Idle(100);  // the worker sends and waits
  world().windows.Destroy(g_library.g_host_wnd);
  world().kernel.Pump(10);
  EXPECT_EQ(Sent(), (LineList{Said(310, std::string(kNoLoss) + " failed")}));
  EXPECT_EQ(
      WorkerLines("debug >>"),
      (LineList{Said(310, "debug >> SendMessage Error occure 0x00002403 0x00000578 \\r\\n")}));
  EXPECT_EQ(world().kernel.LiveThreads(), 1u);
}

TEST_F(WorkerEnd, AFailedSendIsOnlyPrinted) {
  StartFalling();
  world().faults.Set(sim::Fault::Send, true);
  SyncAt(210, false);
  PumpTo(220);
  EXPECT_EQ(world().faults.Hits(sim::Fault::Send), 1u);
  EXPECT_EQ(Sent().size(), 1u);
  EXPECT_EQ(world().kernel.LiveThreads(), 1u);
}

// ---- Stop ------------------------------------------------------------------------------------

// Holds: VEXOAPI_CommandProc "VEXO_CMD_STOP_MONITOR, and VEXO_CMD_INIT likewise"
TEST_F(WorkerEnd, StopEndsTheThreadAtTheEndOfItsPass) {
  StartFalling();
  const std::size_t from = Place();
  Mark();
  VexoSDK_StopWorker();
  // It was in the wait of 198 and 200: no more reads.
  EXPECT_EQ(test::Lines(world().trace, from),
            (LineList{{200, By::Host, "sleep 1"}, Said(200, "thread end F0000001")}));
  EXPECT_EQ(Elapsed(), 1u);
  EXPECT_EQ(g_worker.thread, 0u);
}

TEST_F(WorkerEnd, StopClearsTheBlockAndClosesTheThread) {
  StartFalling();
  const unsigned handles = world().kernel.OpenHandles();
  VexoSDK_StopWorker();
  EXPECT_EQ(world().kernel.OpenHandles(), handles - 1);
  EXPECT_EQ(g_worker.block.running, 0u);
  EXPECT_EQ(g_worker.block.stop_request, 0u);
  EXPECT_EQ(g_worker.block.thread_id, 0u);
  EXPECT_EQ(g_worker.block.exit_code, 0u);
  EXPECT_EQ(g_worker.block.reserved, 0u);
}

// Whether it has ended cannot be known, so it is forgotten without another word.
TEST_F(WorkerEnd, AThreadThatCannotBeAskedForItsCodeIsNeitherWaitedForNorTerminated) {
  StartFalling();
  ASSERT_TRUE(world().kernel.CloseHandle(g_worker.thread));
  const std::size_t from = Place();
  Mark();
  VexoSDK_StopWorker();
  EXPECT_EQ(test::Lines(world().trace, from), LineList{});
  EXPECT_EQ(Elapsed(), 0u);
  EXPECT_EQ(g_worker.thread, 0u);
  EXPECT_EQ(g_worker.block.stop_request, 0u);
  EXPECT_EQ(world().kernel.LiveThreads(), 1u);
}

TEST_F(WorkerEnd, StopWithoutAThreadDoesNothing) {
  Prepare(false);
  g_worker.block.exit_code = 7;
  const std::size_t from = Place();
  VexoSDK_StopWorker();
  EXPECT_EQ(test::Lines(world().trace, from), LineList{});
  EXPECT_EQ(g_worker.block.stop_request, 0u);
  EXPECT_EQ(g_worker.block.exit_code, 7u);
}

// Holds: VEXOAPI_CommandProc "After 20 ms it terminates the thread."
// Holds: VEXOAPI_CommandProc "That happens where the sync bit was never set"
TEST_F(WorkerEnd, AThreadStuckInASendHoldsUpTheStopForTheTerminationOnly) {
  StartFalling();
  world().windows.deaf = true;
  SyncAt(210, false);
  PumpTo(220);
  Mark();
  VexoSDK_StopWorker();
  EXPECT_EQ(Elapsed(), 21u);
  EXPECT_EQ(test::LinesBy(By::Host, world().trace, 0, "thread terminate"),
            (LineList{{240, By::Host, "thread terminate FFFF0000"}}));
  EXPECT_EQ(world().kernel.LiveThreads(), 0u);
}

TEST_F(WorkerEnd, StartStopsTheThreadThatRunsFirst) {
  StartFalling();
  const std::uint32_t old_id = g_worker.thread_id;
  const std::size_t from = Place();
  EXPECT_EQ(VexoSDK_StartWorker(), 1);
  const LineList threads = [&] {
    LineList lines;
    for (const Line& line : test::Lines(world().trace, from)) {
      if (line.text.rfind("thread", 0) == 0) lines.push_back(line);
    }
    return lines;
  }();
  EXPECT_EQ(threads, (LineList{Said(200, "thread end F0000001"), {201, By::Host, "thread start"}}));
  EXPECT_NE(g_worker.thread_id, old_id);
  EXPECT_EQ(g_worker.block.running, 1u);
  EXPECT_EQ(g_worker.block.stop_request, 0u);
  EXPECT_EQ(g_worker.block.thread_id, g_worker.thread_id);
  EXPECT_EQ(g_worker.block.exit_code, 0xF0000001u);
  EXPECT_EQ(world().kernel.LiveThreads(), 1u);
}

// Holds: Host window messages "Told is what it tried to tell"
TEST_F(WorkerEnd, ANewThreadTellsTheVideoAgain) {
  StartFalling();
  SyncAt(210, false);
  PumpTo(220);
  world().board.HoldSync(true);
  VexoSDK_StartWorker();
  world().board.HoldSync(false);
  PumpTo(world().kernel.Now() + 10);
  ASSERT_EQ(Sent().size(), 2u);
  EXPECT_EQ(Sent()[1].text, kNoLoss);
}

TEST_F(WorkerEnd, TheThreadReturnsTheExitCodeOfItsBlock) {
  StartFalling();
  g_worker.block.exit_code = 0x1234;
  VexoSDK_StopWorker();
  EXPECT_EQ(WorkerLines("thread"), (LineList{Said(200, "thread end 00001234")}));
}

TEST_F(WorkerEnd, WithoutABlockTheThreadGivesUpAfterMakingItsEvent) {
  Prepare(false);
  const unsigned handles = world().kernel.OpenHandles();
  EXPECT_EQ(VexoSDK_WorkerProc(nullptr), 0xFF00FF00u);
  EXPECT_EQ(world().kernel.OpenHandles(), handles + 1);
  EXPECT_EQ(Cycles(), 0u);
}

TEST_F(WorkerEnd, TheEventThatPacesTheThreadIsNotSignalledAndResetsItself) {
  constexpr PlatHandle kHandleStep = 4;
  Prepare(false);
  const PlatHandle pause = world().kernel.NewHandleValue() + kHandleStep;
  VexoSDK_WorkerProc(nullptr);
  EXPECT_EQ(world().kernel.Wait(pause, 0), kPlatWaitTimeout);
  ASSERT_TRUE(world().kernel.SetEvent(pause));
  EXPECT_EQ(world().kernel.Wait(pause, 0), kPlatWaitSignalled);
  EXPECT_EQ(world().kernel.Wait(pause, 0), kPlatWaitTimeout);
}

// The event that paces the thread is never closed: one more stays open with every start.
TEST_F(WorkerEnd, EveryThreadLeavesItsEventOpen) {
  Prepare(false);
  world().board.HoldSync(true);
  const unsigned before = world().kernel.OpenHandles();
  VexoSDK_StartWorker();
  VexoSDK_StopWorker();
  EXPECT_EQ(world().kernel.OpenHandles(), before + 1);
  VexoSDK_StartWorker();
  VexoSDK_StopWorker();
  EXPECT_EQ(world().kernel.OpenHandles(), before + 2);
}

// ---- Twice the same --------------------------------------------------------------------------

TEST_F(WorkerEnd, TheSameRunGivesTheSameTrace) {
  const auto run = [this] {
    harness::Restart();
    Prepare(true);
    world().board.SetSyncPeriod(17);
    VexoSDK_StartWorker();
    for (unsigned n = 0; n < 20; ++n) {
      world().board.SetMotion(n % 4, n % 3 == 0);
      if (n % 5 == 0) world().board.SetCamera(n % 4, sim::Camera::Off);
      world().windows.deaf = n == 7;
      world().kernel.Pump(133);
    }
    VexoSDK_StopWorker();
    return test::TraceAsJson(world().trace);
  };
  const std::string first = run();
  EXPECT_GT(first.size(), 10'000u);
  EXPECT_EQ(run(), first);
}

}  // namespace
