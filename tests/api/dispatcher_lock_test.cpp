// "CS4_GlobalLock": held around every command, and kept on four paths.
#include "VexoCtrlSDK.h"
#include "api/library_state.h"
#include "chip/registers.h"
#include "support/library_test.h"
#include "tests/api/trace_lines.h"
#include "tools/vexosim/host.h"

namespace {

using Lines = std::vector<std::string>;
using Bytes = std::vector<std::uint8_t>;

constexpr const char* kLock = "lock CS4_GlobalLock";
constexpr const char* kUnlock = "unlock CS4_GlobalLock";

class DispatcherLock : public test::LibraryTest {
 protected:
  bool LockHeld() { return world().kernel.MutexHeld(u"CS4_GlobalLock"); }
  unsigned LockDepth() { return world().kernel.MutexDepth(u"CS4_GlobalLock"); }

  // A command from another host thread that lives on for a second. Returns the thread.
  unsigned CommandFromAnotherThread(std::uint32_t code, int* result) {
    return world().kernel.StartHostThread([this, code, result] {
      *result = vexosim::CommandProc(code, nullptr);
      world().kernel.Idle(1000);
    });
  }
};

// ---- Around the commands ---------------------------------------------------------------------

struct CommandCase {
  std::uint32_t code;
  Bytes record;
};

const CommandCase kBusCommands[] = {
    {0xF003, {kChipMaster, 0, 0xFE}},
    {0xF004, {kChipMaster, 2, 0x67, 0x11}},
    {0xF005, {0, 0, 0, 0, VEXO_SPLIT_4, 0, 0, 1, 2, 3}},
    {0xF007, Bytes(26)},
    {0xF008, Bytes(12, 0xFF)},
    {0xF009, {0, 0, 0, 0, VEXO_SPLIT_4, 0, 1, 2, 3}},
    {0xF00C, {1, 0, 0, 0}},
    {0xF00D, {}},
    {0xF00E, {0, 3, 3, 1}},
    {0xF00F, {}},
    {0xF010, Bytes(26)},
    {0xF011, {0, 1, 2}},
};

// What of lock, bus cycles and unlock happened, in order, runs of cycles as one.
Lines LockAndBus(const sim::Trace& trace, std::size_t from) {
  Lines steps;
  for (std::size_t i = from; i < trace.Events().size(); ++i) {
    const sim::Event& event = trace.Events()[i];
    if (trace.As<sim::LockEvent>(event) != nullptr) {
      steps.push_back(test::Text(trace, event));
    } else if (test::IsBusCycle(event) && (steps.empty() || steps.back() != "bus")) {
      steps.push_back("bus");
    }
  }
  return steps;
}

TEST_F(DispatcherLock, EveryCommandTouchesTheBusInsideIt) {
  StartBoard(4);
  for (const CommandCase& c : kBusCommands) {
    const std::size_t from = world().trace.Mark();
    EXPECT_EQ(Command(c.code, c.record), 0) << std::hex << c.code;
    EXPECT_EQ(LockAndBus(world().trace, from), (Lines{kLock, "bus", kUnlock}))
        << std::hex << c.code;
    EXPECT_FALSE(LockHeld());
  }
}

TEST_F(DispatcherLock, InitializationTouchesTheBusInsideIt) {
  AttachAndBind();
  const std::size_t from = world().trace.Mark();
  EXPECT_EQ(Command(VEXO_CMD_INIT, Bytes(24)), 0);
  EXPECT_EQ(LockAndBus(world().trace, from), (Lines{kLock, "bus", kUnlock}));
}

// Only the blank mask is written outside: other drivers of the bus may come in between.
TEST_F(DispatcherLock, TheBlankMaskIsWrittenAfterTheRelease) {
  StartBoard(4);
  const std::size_t from = world().trace.Mark();
  EXPECT_EQ(Command(VEXO_CMD_BLANK_MASK, {1, 0, 0, 0}), 0);
  EXPECT_EQ(LockAndBus(world().trace, from), (Lines{kLock, kUnlock, "bus"}));
  EXPECT_FALSE(LockHeld());
}

TEST_F(DispatcherLock, RefusalsReleaseIt) {
  AttachAndBind();
  struct Case {
    std::uint32_t code;
    bool record;
    int result;
  };
  for (const Case& c : {Case{0xF003, false, -5}, Case{0xF005, false, -5}, Case{0xF005, true, -8},
                        Case{0xF00D, false, -8}, Case{0xFF00, false, -8}, Case{0xFF0B, true, -8}}) {
    const std::size_t from = world().trace.Mark();
    EXPECT_EQ(c.record ? Command(c.code, Bytes(24)) : CommandNull(c.code), c.result);
    EXPECT_EQ(LockAndBus(world().trace, from), (Lines{kLock, kUnlock})) << std::hex << c.code;
    EXPECT_FALSE(LockHeld());
  }
}

TEST_F(DispatcherLock, TheWaitHasNoTimeLimit) {
  AttachAndBind();
  world().kernel.StartHostThread([this] {
    world().kernel.Wait(g_library.g_cs4_lock, kPlatForever);
    world().kernel.Idle(100'000'000);
    world().kernel.ReleaseMutex(g_library.g_cs4_lock);
  });
  world().kernel.Idle(1);  // lets the other thread take it
  Mark();
  EXPECT_EQ(CommandNull(VEXO_CMD_STOP_MONITOR), 0);
  EXPECT_EQ(Elapsed(), 99'999'999u);
}

// ---- The paths that keep it ------------------------------------------------------------------

TEST_F(DispatcherLock, UnknownCodesKeepIt) {
  AttachAndBind();
  unsigned depth = 0;
  for (const std::uint32_t code : {0x0000u, 0x0001u, 0xEFFFu, 0xF000u, 0xF012u, 0xF0FFu, 0xFEFFu,
                                   0xFF0Cu, 0xFFFFu, 0x1F012u, 0xFFFF0000u}) {
    EXPECT_EQ(CommandNull(code), -1) << std::hex << code;
    EXPECT_EQ(LockDepth(), ++depth) << std::hex << code;
  }
}

TEST_F(DispatcherLock, InitializationWithoutARecordKeepsIt) {
  AttachAndBind();
  EXPECT_EQ(CommandNull(VEXO_CMD_INIT), -5);
  EXPECT_EQ(LockDepth(), 1u);
}

TEST_F(DispatcherLock, AFailedInitializationKeepsIt) {
  world().board.FitChips(0);
  AttachAndBind();
  EXPECT_EQ(Command(VEXO_CMD_INIT, Bytes(24)), -1);
  EXPECT_EQ(LockDepth(), 1u);
}

// Waits first and tests then: a host that is refused here has the lock.
TEST_F(DispatcherLock, SetMotionInfoOfAnUninitializedLibraryKeepsIt) {
  world().faults.Set(sim::Fault::EventExists, true);
  vexosim::Entry(1);
  const std::size_t from = world().trace.Mark();
  Bytes mask(24);
  EXPECT_EQ(vexosim::SetMotionInfo(0, 0, &mask), -6);
  EXPECT_EQ(LockAndBus(world().trace, from), Lines{kLock});
  EXPECT_EQ(LockDepth(), 1u);
}

// ---- Who goes on and who waits ---------------------------------------------------------------

TEST_F(DispatcherLock, TheThreadThatKeptItGoesOnAndKeepsIt) {
  PretendBoard(4);
  EXPECT_EQ(CommandNull(0xF012), -1);
  EXPECT_EQ(Command(VEXO_CMD_MOTION_REG, {0, 1, 2}), 0);
  EXPECT_EQ(LockDepth(), 1u);
  EXPECT_EQ(CommandNull(0xFF0C), -1);
  EXPECT_EQ(CommandNull(VEXO_CMD_LIVE_SPLIT), -5);
  EXPECT_EQ(LockDepth(), 2u);
}

TEST_F(DispatcherLock, AnotherThreadThenWaits) {
  for (const std::uint32_t code : {0xF012u, 0xFF0Cu}) {
    vexosim::Restart();
    AttachAndBind();
    EXPECT_EQ(CommandNull(code), -1);
    int result = 99;
    const unsigned other = CommandFromAnotherThread(VEXO_CMD_STOP_MONITOR, &result);
    world().kernel.Pump(60'000);
    EXPECT_FALSE(world().kernel.HostThreadDone(other));
    EXPECT_EQ(result, 99);
  }
}

TEST_F(DispatcherLock, AnotherThreadWaitsForACommandOnlyAsLongAsItRuns) {
  AttachAndBind();
  int result = 99;
  std::uint32_t done_at = 0;
  world().kernel.StartHostThread([this, &result, &done_at] {
    result = vexosim::CommandProc(VEXO_CMD_STOP_MONITOR, nullptr);
    done_at = world().kernel.Now();
  });
  // Pauses for 240 and 200 ms inside, where the other thread runs.
  EXPECT_EQ(Command(VEXO_CMD_INIT, Bytes(24)), 0);
  EXPECT_EQ(result, 99);
  const std::uint32_t released_at = world().kernel.Now();
  world().kernel.Pump(100);
  EXPECT_EQ(result, 0);
  EXPECT_GE(released_at, 440u);
  EXPECT_GE(done_at, released_at);
}

TEST_F(DispatcherLock, TheEndOfTheThreadThatKeptItHandsItOn) {
  AttachAndBind();
  int kept = 99;
  CommandFromAnotherThread(0xF012, &kept);  // ends after a second
  world().kernel.Idle(1);
  EXPECT_EQ(kept, -1);
  EXPECT_TRUE(LockHeld());
  Mark();
  EXPECT_EQ(CommandNull(VEXO_CMD_STOP_MONITOR), 0);
  EXPECT_EQ(Elapsed(), 999u);
  EXPECT_FALSE(LockHeld());
}

TEST_F(DispatcherLock, BlankMaskOfOneThreadLetsAnotherThreadIn) {
  StartBoard(4);
  world().kernel.SetSeed(1);
  world().kernel.SetPreemption(1);  // a hand-over at every bus cycle
  int result = 99;
  world().kernel.StartHostThread(
      [&result] { result = vexosim::CommandProc(VEXO_CMD_MOTION_CLEAR, nullptr); });
  EXPECT_EQ(Command(VEXO_CMD_BLANK_MASK, {1, 0, 0, 0}), 0);
  world().kernel.SetPreemption(0);
  EXPECT_EQ(result, 0);  // came in and went while this one wrote its mask
  ExpectReports();
}

// ---- The lock is the board's -----------------------------------------------------------------

TEST_F(DispatcherLock, AnotherDriverOfTheBusIsWaitedFor) {
  StartBoard(4);
  world().kernel.StartHostThread([this] {
    const PlatHandle lock = world().kernel.CreateMutex(u"CS4_GlobalLock");
    world().kernel.Wait(lock, kPlatForever);
    world().kernel.Idle(70);
    world().kernel.ReleaseMutex(lock);
  });
  world().kernel.Idle(1);
  Mark();
  Bytes mask(24);
  EXPECT_EQ(vexosim::SetMotionInfo(0, 0, &mask), 0);
  EXPECT_EQ(Elapsed(), 69u);
}

TEST_F(DispatcherLock, TheWorkerTakesNoLock) {
  AttachAndBind();
  EXPECT_EQ(Command(VEXO_CMD_INIT, Bytes(24)), 0);
  world().kernel.Pump(200);
  EXPECT_FALSE(test::LinesBy(sim::By::Worker, world().trace).empty());
  EXPECT_TRUE(test::LinesBy(sim::By::Worker, world().trace, 0, "lock").empty());
}

}  // namespace
