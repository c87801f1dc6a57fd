// What the library makes of single platform calls that fail.
#include <stdexcept>

#include "VexoCtrlSDK.h"
#include "api/worker.h"
#include "chip/register_bus.h"
#include "harness/host.h"
#include "report/library_state.h"
#include "tests/api/worker_fixture.h"

namespace {

using Lines = std::vector<std::string>;
using sim::By;
using sim::Fault;
using sim::Faults;

constexpr std::uint32_t kDetach = 0;
constexpr std::uint32_t kAttach = 1;

class PlatformFailures : public test::WorkerTest {
 protected:
  void Fail(Fault fault, Faults::Plan plan = Faults::Always()) { world().faults.Set(fault, plan); }
  unsigned Hits(Fault fault) { return world().faults.Hits(fault); }
  Lines LinesOf(std::uint32_t reason, const std::string& prefix) {
    const std::size_t from = world().trace.Mark();
    harness::Entry(reason);
    return test::Texts(world().trace, from, prefix);
  }
};

// ---- Attach and detach --------------------------------------------------------------------------

TEST_F(PlatformFailures, AnEventThatFailsForAnotherReasonThanANameInUseIsDoneWithout) {
  Fail(Fault::Event);
  AttachAndBind();
  EXPECT_EQ(Hits(Fault::Event), 1u);
  EXPECT_EQ(DebugText().find("Already Register"), std::string::npos);
  EXPECT_EQ(g_library.g_initialized, 1u);
  EXPECT_EQ(g_library.g_instance_event, kPlatNoHandle);
  EXPECT_EQ(CommandNull(VEXO_CMD_STOP_MONITOR), VEXO_OK);
  // Nothing is closed that is none: the lock alone.
  const std::uint64_t closed = world().faults.Calls(Fault::Close);
  harness::Entry(kDetach);
  EXPECT_EQ(world().faults.Calls(Fault::Close), closed + 1);
  EXPECT_EQ(world().kernel.OpenHandles(), 0u);
}

TEST_F(PlatformFailures, DetachAfterAMutexThatCouldNotBeMadeClosesTheEventAlone) {
  Fail(Fault::Mutex);
  harness::Entry(kAttach);
  EXPECT_EQ(Hits(Fault::Mutex), 1u);
  EXPECT_EQ(g_library.g_cs4_lock, kPlatNoHandle);
  harness::Entry(kDetach);
  EXPECT_EQ(world().faults.Calls(Fault::Close), 1u);
  EXPECT_EQ(world().kernel.OpenHandles(), 0u);
  // The next attach tries again.
  world().faults.Set(Fault::Mutex, false);
  harness::Entry(kAttach);
  EXPECT_NE(g_library.g_cs4_lock, kPlatNoHandle);
}

TEST_F(PlatformFailures, AnNvramLibraryThatCannotBeInitializedIsIgnored) {
  Fail(Fault::NvramInit);
  EXPECT_EQ(LinesOf(kAttach, "nvram"), Lines{"nvram init failed"});
  EXPECT_EQ(Hits(Fault::NvramInit), 1u);
  EXPECT_EQ(g_library.g_initialized, 1u);
  EXPECT_NE(DebugText().find(">> VEXO SDK Version : 1. 0. 1. 6"), std::string::npos);
  EXPECT_EQ(LinesOf(kDetach, "nvram"), Lines{"nvram deinit"});
}

TEST_F(PlatformFailures, TheNvramLibraryIsShutDownAlsoInAProcessThatNeverInitializedIt) {
  Fail(Fault::EventExists);
  EXPECT_EQ(LinesOf(kAttach, "nvram"), Lines{});
  EXPECT_EQ(g_library.g_initialized, 0u);
  EXPECT_EQ(LinesOf(kDetach, "nvram"), Lines{"nvram deinit"});
}

TEST_F(PlatformFailures, WithoutAWindowTheSecondAttachLeavesTheChipsReadyAndAccessesMeetNothing) {
  struct Case {
    Fault fault;
    unsigned reports;  // accesses that meet nothing, of the four of a write
  };
  for (const Case& c :
       {Case{Fault::MapSelect, 4}, Case{Fault::MapAddress, 2}, Case{Fault::MapData, 1}}) {
    harness::Restart();
    ExpectReports();
    StartBoard(4);
    harness::Entry(kDetach);
    Fail(c.fault);
    AttachAndBind();
    EXPECT_EQ(Hits(c.fault), 1u);
    EXPECT_EQ(g_video.g_chip_ready, 1u);
    Mark();
    EXPECT_EQ(Command(VEXO_CMD_WRITE_REG, {kChipMaster, 2, 0x67, 0x12}), VEXO_OK);
    EXPECT_EQ(world().reports.Count(sim::ReportKind::UnmappedAccess), c.reports);
    EXPECT_EQ(Cycles(), 4u - c.reports);
    EXPECT_NE(Register(0, 2, 0x67), 0x12);
    // The text command looks first.
    harness::TextCommandProc("vexo init 0 0 ");
    EXPECT_NE(DebugText().find(">>ERROR NULL REGISTER"), std::string::npos);
  }
}

// ---- The lock -----------------------------------------------------------------------------------

TEST_F(PlatformFailures, ACommandThatCannotWaitForTheLockRunsWithoutIt) {
  StartBoard(4);
  Fail(Fault::Wait, Faults::Nth(1));
  EXPECT_EQ(Command(VEXO_CMD_WRITE_REG, {kChipMaster, 2, 0x67, 0x12}), VEXO_OK);
  EXPECT_EQ(Hits(Fault::Wait), 1u);
  EXPECT_EQ(Register(0, 2, 0x67), 0x12);
  EXPECT_EQ(test::Texts(world().trace, 0, "lock").back(), "lock  failed");
  EXPECT_FALSE(world().kernel.MutexHeld(u"CS4_GlobalLock"));
}

TEST_F(PlatformFailures, ALockThatIsNotGivenBackStaysWithItsThread) {
  StartBoard(4);
  Fail(Fault::Release, Faults::Nth(1));
  EXPECT_EQ(CommandNull(VEXO_CMD_STOP_MONITOR), VEXO_OK);
  EXPECT_EQ(Hits(Fault::Release), 1u);
  EXPECT_EQ(world().kernel.MutexDepth(u"CS4_GlobalLock"), 1u);
  EXPECT_EQ(CommandNull(VEXO_CMD_STOP_MONITOR), VEXO_OK);
}

// ---- The worker ---------------------------------------------------------------------------------

TEST_F(PlatformFailures, AWorkerWithoutItsEventSleepsBetweenItsPolls) {
  Prepare(false);
  world().board.HoldSync(false);
  world().kernel.SetWatch([this] {
    if (world().faults.Calls(Fault::Load) > 10'000) throw std::runtime_error("no pause");
  });
  Fail(Fault::Event, Faults::Nth(1));
  EXPECT_EQ(VexoSDK_StartWorker(), 1);
  EXPECT_EQ(Hits(Fault::Event), 1u);
  // The first wait takes 3 ms, the others 2, and 5 after an edge that does not count.
  SyncAt(201, true);
  PumpTo(206);
  SyncAt(206, false);
  PumpTo(210);
  SyncAt(210, true);
  PumpTo(219);
  const test::LineList sleeps = WorkerLines("sleep");
  ASSERT_GE(sleeps.size(), 8u);
  EXPECT_EQ(sleeps[0], test::Said(0, "sleep 3"));
  EXPECT_EQ(sleeps[1], test::Said(3, "sleep 3"));
  EXPECT_EQ(sleeps[67], test::Said(201, "sleep 2"));
  EXPECT_EQ(std::count(sleeps.begin(), sleeps.end(), test::Said(211, "sleep 5")), 1);
  EXPECT_EQ(Sent(), (test::LineList{test::Said(207, test::kNoLoss)}));
  VexoSDK_StopWorker();
  EXPECT_EQ(world().kernel.LiveThreads(), 0u);
}

TEST_F(PlatformFailures, AWorkerWhoseWaitFailsOnceSleepsThatOnce) {
  StartFalling();
  Fail(Fault::Wait, Faults::Nth(2));
  PumpTo(210);
  EXPECT_EQ(Hits(Fault::Wait), 1u);
  EXPECT_EQ(WorkerLines("sleep"), (test::LineList{test::Said(202, "sleep 2")}));
  VexoSDK_StopWorker();
}

TEST_F(PlatformFailures, AWorkerThatCannotBeAskedForItsExitCodeIsForgottenAndRunsOn) {
  StartFalling();
  Fail(Fault::ExitCode, Faults::Nth(1));
  VexoSDK_StopWorker();
  EXPECT_EQ(Hits(Fault::ExitCode), 1u);
  EXPECT_EQ(g_worker.thread, kPlatNoHandle);
  EXPECT_EQ(g_worker.block.stop_request, 0u);
  EXPECT_EQ(world().kernel.LiveThreads(), 1u);
  EXPECT_EQ(VexoSDK_StartWorker(), 1);
  EXPECT_EQ(world().kernel.LiveThreads(), 2u);
}

TEST_F(PlatformFailures, AWorkerWhoseQuantumCannotBeSetIsStartedAllTheSame) {
  Prepare(false);
  Fail(Fault::Quantum);
  EXPECT_EQ(VexoSDK_StartWorker(), 1);
  EXPECT_EQ(Hits(Fault::Quantum), 1u);
  EXPECT_EQ(world().kernel.ThreadQuantum(g_worker.thread), 0u);
  VexoSDK_StopWorker();
}

}  // namespace
