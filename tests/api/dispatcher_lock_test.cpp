// "CS4_GlobalLock": held around every command, and kept on four paths.
#include <algorithm>
#include <optional>

#include "VexoCtrlSDK.h"
#include "chip/registers.h"
#include "display/display_state.h"
#include "harness/host.h"
#include "report/library_state.h"
#include "tests/api/trace_lines.h"
#include "tests/model/command_model.h"
#include "tests/support/library_test.h"

namespace {

using Lines = std::vector<std::string>;
using Bytes = std::vector<std::uint8_t>;

constexpr const char* kLock = "lock CS4_GlobalLock";
constexpr const char* kUnlock = "unlock CS4_GlobalLock";

// ---- Every way through the two exports that take it ------------------------------------------

// What the board and the library are like before.
enum class Scene {
  Foreign,     // another process has the library: not initialized, but the mutex is there
  Unbound,     // chips ready, no window
  Attached,    // chips not ready yet
  NoChip,      // neither ready nor fitted
  LostChips,   // ready, but the chips no longer answer
  Live,        // ready, 4 channels
  Live12,      // ready, a board without layouts
  Playback,    // ready, 4 channels, decoded pictures
  Playback12,  // ready, a board without layouts
};

using Record = std::optional<Bytes>;  // none: a null pointer
const Record kNull = std::nullopt;

constexpr std::uint32_t kMotionInfo = 0xFFFFFFFF;  // stands for VEXOAPI_SetMotionInfo

struct Path {
  const char* name;
  Scene scene;
  std::uint32_t code;
  Record record;
  int result;
};

std::ostream& operator<<(std::ostream& out, const Path& path) {
  return out << "code 0x" << std::hex << path.code << std::dec << ", " << path.name;
}

constexpr const char* kUnknown = "unknown code";

const Path kKeeping[] = {
    {kUnknown, Scene::Live, 0x0000, kNull, -1},
    {kUnknown, Scene::Live, 0x10000, kNull, -1},
    {kUnknown, Scene::Live, 0x0001, kNull, -1},
    {kUnknown, Scene::Live, 0x2401, kNull, -1},
    {kUnknown, Scene::Live, 0xEFFF, kNull, -1},
    {kUnknown, Scene::Live, 0xF000, kNull, -1},
    {kUnknown, Scene::Live, test::kUnknownCommand, kNull, -1},
    {kUnknown, Scene::Live, 0xF0FF, kNull, -1},
    {kUnknown, Scene::Live, 0xFEFF, kNull, -1},
    {kUnknown, Scene::Live, 0xFF0C, kNull, -1},
    {kUnknown, Scene::Live, 0xFFFF, kNull, -1},
    {kUnknown, Scene::Live, 0x10000 | test::kUnknownCommand, Bytes(24), -1},
    {kUnknown, Scene::Live, 0xFFFF0000, Bytes(24), -1},
    {kUnknown, Scene::Attached, 0xF000, kNull, -1},
    {kUnknown, Scene::Attached, test::kUnknownCommand, kNull, -1},
    {kUnknown, Scene::Attached, 0xFF0C, Bytes(24), -1},
    {"initialization without a record", Scene::Attached, 0xF001, kNull, -5},
    {"initialization without a record, again", Scene::Live, 0xF001, kNull, -5},
    {"failed initialization", Scene::NoChip, 0xF001, Bytes(24), -1},
    {"failed initialization, again", Scene::LostChips, 0xF001, Bytes(24), -1},
    // Waits first and tests then: a host that is refused here has the lock.
    {"uninitialized library", Scene::Foreign, kMotionInfo, Bytes(24), -6},
};

const Bytes kLayout4 = {0, 0, 0, 0, VEXO_SPLIT_4, 0, 0, 1, 2, 3};
const Bytes kLayout16 = {0, 0, 0, 0, VEXO_SPLIT_16};
const Bytes kLayoutNone = {0, 0, 0, 0, 7};
const Bytes kChannel4 = {4};

// All but the refusals that every command has alike (see below).
const Path kReleasing[] = {
    {"done", Scene::Attached, 0xF001, Bytes(24), 0},
    {"done, again", Scene::Live, 0xF001, Bytes(24), 0},
    {"done", Scene::Live, 0xF002, kNull, 0},
    {"done", Scene::Attached, 0xF002, Bytes(24), 0},
    {"done", Scene::Live, 0xF003, Bytes{kChipMaster, 0, 0xFE}, 0},
    {"no such page", Scene::Live, 0xF003, Bytes{kChipMaster, 3, 0xFE}, 0},
    {"chips not ready", Scene::Attached, 0xF003, Bytes{kChipMaster, 0, 0xFE}, 0},
    {"done", Scene::Live, 0xF004, Bytes{kChipMaster, 2, 0x67, 0x11}, 0},
    {"no such page", Scene::Live, 0xF004, Bytes{kChipMaster, 3, 0x67, 0x11}, 0},
    {"chips not ready", Scene::Attached, 0xF004, Bytes{kChipMaster, 2, 0x67, 0x11}, 0},
    {"done", Scene::Live, 0xF005, kLayout4, 0},
    {"in playback", Scene::Playback, 0xF005, kLayout4, -1},
    {"no such mode", Scene::Live, 0xF005, kLayoutNone, -5},
    {"not on this board", Scene::Live, 0xF005, kLayout16, -1},
    {"no layouts", Scene::Live12, 0xF005, kLayout4, -1},
    {"done", Scene::Playback, 0xF006, kLayout4, 0},
    {"in live view", Scene::Live, 0xF006, kLayout4, -1},
    {"no such mode", Scene::Playback, 0xF006, kLayoutNone, -5},
    {"refused mode", Scene::Playback, 0xF006, Bytes{0, 0, 0, 0, VEXO_SPLIT_6}, -5},
    {"not on this board", Scene::Playback, 0xF006, kLayout16, -1},
    {"no layouts", Scene::Playback12, 0xF006, kLayout4, -1},
    {"done", Scene::Live, 0xF007, Bytes(26), 0},
    {"no such channel", Scene::Live, 0xF007, kChannel4, -5},
    {"done", Scene::Live, 0xF008, Bytes(12, 0xFF), 0},
    {"done", Scene::Playback, 0xF008, Bytes(12, 0x05), 0},
    {"done", Scene::Live, 0xF009, kLayout4, 0},
    {"done", Scene::Playback, 0xF009, kLayout4, 0},
    {"not on this board", Scene::Live, 0xF009, kLayout16, 0},
    {"no layouts", Scene::Live12, 0xF009, kLayout4, 0},
    {"done", Scene::Live, 0xF00A, Bytes{0, 0, 0, 0, 0, VEXO_SPLIT_4, 0, 1, 2, 3}, 0},
    {"done, again", Scene::Playback, 0xF00A, Bytes(24), 0},
    {"not on this board", Scene::Live, 0xF00A, Bytes{0, 0, 0, 0, 0, VEXO_SPLIT_16}, 0},
    {"no layouts", Scene::Live12, 0xF00A, Bytes(24), -8},
    {"done", Scene::Live, 0xF00B, Bytes{1, 0, 0, 0}, 0},
    {"done", Scene::Playback, 0xF00B, Bytes{1, 0, 0, 0}, 0},
    {"no layouts", Scene::Live12, 0xF00B, Bytes{1, 0, 0, 0}, -1},
    {"done", Scene::Live, 0xF00C, Bytes{1, 0, 0, 0}, 0},
    {"no layouts", Scene::Live12, 0xF00C, Bytes{1, 0, 0, 0}, -1},
    {"done", Scene::Live, 0xF00D, kNull, 0},
    {"done", Scene::Playback, 0xF00D, kNull, 0},
    {"no layouts", Scene::Live12, 0xF00D, kNull, -1},
    {"done", Scene::Live, 0xF00E, Bytes{0, 3, 3, 1}, 0},
    {"in playback", Scene::Playback, 0xF00E, Bytes{0, 3, 3, 1}, 0},
    {"done", Scene::Live, 0xF00F, kNull, 0},
    {"done", Scene::Live, 0xF010, Bytes(26), 0},
    {"no such channel", Scene::Live, 0xF010, kChannel4, -5},
    {"done", Scene::Live, 0xF011, Bytes{0, 1, 2}, 0},
    {"no such channel", Scene::Live, 0xF011, Bytes{16, 1, 2}, 0},
    {"done", Scene::Live, 0x1F00F, kNull, 0},
    {"done", Scene::Live, 0xFF00, kNull, 0},
    {"done", Scene::Live, 0xFF01, kNull, 0},
    {"done", Scene::Live, 0xFF02, kNull, 0},
    {"done", Scene::Live, 0xFF03, kNull, 0},
    {"done", Scene::Live, 0xFF04, kNull, 0},
    {"done", Scene::Live, 0xFF05, kNull, 0},
    {"done", Scene::Live, 0xFF06, kNull, 0},
    {"done", Scene::Live, 0xFF07, kNull, 0},
    {"done", Scene::Live, 0xFF08, kNull, 0},
    {"done", Scene::Live, 0xFF09, kNull, 0},
    {"done", Scene::Live, 0xFF0A, kNull, 0},
    {"done", Scene::Live, 0xFF0B, kNull, 0},
    {"done", Scene::Live, kMotionInfo, Bytes(24), 0},
    {"no window", Scene::Unbound, kMotionInfo, Bytes(24), 0},
    {"chips not ready", Scene::Attached, kMotionInfo, Bytes(24), 0},
};

// Null records and chips that are not ready, of every command that minds.
std::vector<Path> Refusals() {
  std::vector<Path> paths;
  for (std::uint32_t code = 0xF003; code <= 0xF011; ++code) {
    const bool needs_record = code != 0xF00D && code != 0xF00F;
    const bool needs_chips = code >= 0xF005;
    if (needs_record) {
      paths.push_back({"no record", Scene::Live, code, kNull, -5});
      paths.push_back({"no record, chips not ready", Scene::Attached, code, kNull, -5});
    } else {
      paths.push_back({"chips not ready", Scene::Attached, code, kNull, -8});
    }
    if (needs_chips) {
      paths.push_back({"chips not ready", Scene::Attached, code, Bytes(64), -8});
    }
  }
  for (std::uint32_t code = 0xFF00; code <= 0xFF0B; ++code) {
    paths.push_back({"chips not ready", Scene::Attached, code, kNull, -8});
    paths.push_back({"chips not ready", Scene::Attached, code, Bytes(64), -8});
  }
  return paths;
}

std::vector<Path> ReleasingPaths() {
  std::vector<Path> paths = Refusals();
  paths.insert(paths.end(), std::begin(kReleasing), std::end(kReleasing));
  return paths;
}

class DispatcherLock : public test::LibraryTest {
 protected:
  bool LockHeld() { return world().kernel.MutexHeld(u"CS4_GlobalLock"); }
  unsigned LockDepth() { return world().kernel.MutexDepth(u"CS4_GlobalLock"); }

  void Begin(Scene scene) {
    ExpectReports();  // the dumps read registers without a name
    harness::Restart();
    switch (scene) {
      case Scene::Foreign:
        world().faults.Set(sim::Fault::EventExists, true);
        harness::Entry(1);
        ASSERT_EQ(world().faults.Hits(sim::Fault::EventExists), 1u);
        break;
      case Scene::NoChip:
        world().board.FitChips(0);
        AttachAndBind();
        break;
      case Scene::Attached:
        AttachAndBind();
        break;
      default:
        StartBoard(scene == Scene::Live12 || scene == Scene::Playback12 ? 12 : 4);
        break;
    }
    if (scene == Scene::Playback || scene == Scene::Playback12) g_display.view = kViewPlayback;
    if (scene == Scene::LostChips) world().board.FitChips(0);
    if (scene == Scene::Unbound) harness::Uninitialize();
    from_ = world().trace.Mark();
  }

  int Walk(const Path& path) {
    Bytes record = path.record.value_or(Bytes());
    if (path.code == kMotionInfo) return harness::SetMotionInfo(0, 0, &record);
    return harness::CommandProc(path.code, path.record ? &record : nullptr);
  }

  // What of lock, bus cycles and unlock happened since Begin(), in order, runs of cycles as one.
  Lines LockAndBus() {
    Lines steps;
    const sim::Trace& trace = world().trace;
    for (std::size_t i = from_; i < trace.Events().size(); ++i) {
      const sim::Event& event = trace.Events()[i];
      if (trace.As<sim::LockEvent>(event) != nullptr) {
        steps.push_back(test::Text(trace, event));
      } else if (test::IsBusCycle(event) && (steps.empty() || steps.back() != "bus")) {
        steps.push_back("bus");
      }
    }
    return steps;
  }

  // A command from another host thread that lives on for a second. Returns the thread.
  unsigned CommandFromAnotherThread(std::uint32_t code, int* result) {
    return world().kernel.StartHostThread([this, code, result] {
      *result = harness::CommandProc(code, nullptr);
      world().kernel.Idle(1000);
    });
  }

  // Whether another thread's wait for the lock comes to an end within a minute.
  bool AnotherThreadGetsIt() {
    bool got_it = false;
    const unsigned other = world().kernel.StartHostThread([this, &got_it] {
      const PlatHandle lock = world().kernel.CreateMutex(u"CS4_GlobalLock");
      EXPECT_EQ(world().kernel.Wait(lock, kPlatForever), kPlatWaitSignalled);
      got_it = true;
      world().kernel.ReleaseMutex(lock);
    });
    world().kernel.Idle(60'000);
    EXPECT_EQ(world().kernel.HostThreadDone(other), got_it);
    return got_it;
  }

  // The same for a whole command.
  bool AnotherThreadsCommandReturns() {
    int result = 99;
    const unsigned other = CommandFromAnotherThread(VEXO_CMD_STOP_MONITOR, &result);
    world().kernel.Idle(60'000);
    const bool done = world().kernel.HostThreadDone(other);
    EXPECT_EQ(result, done ? 0 : 99);
    return done;
  }

 private:
  std::size_t from_ = 0;
};

// ---- The paths that keep it ------------------------------------------------------------------

// Holds: VEXOAPI_CommandProc "An unknown code"
// Holds: VEXOAPI_SetMotionInfo "Returns VEXO_OK, or VEXO_ERROR_UNINITIALIZED"
TEST_F(DispatcherLock, FourPathsReturnWithItAndAnotherThreadWaits) {
  for (const Path& path : kKeeping) {
    SCOPED_TRACE(path);
    Begin(path.scene);
    EXPECT_EQ(Walk(path), path.result);
    EXPECT_EQ(LockDepth(), 1u);
    Lines steps = LockAndBus();
    EXPECT_EQ(steps.front(), kLock);
    EXPECT_EQ(std::count(steps.begin(), steps.end(), kUnlock), 0);
    EXPECT_FALSE(AnotherThreadGetsIt());
    if (path.scene != Scene::Foreign) {  // there no command comes as far as the lock
      EXPECT_FALSE(AnotherThreadsCommandReturns());
    }
  }
}

TEST_F(DispatcherLock, EachKeepingPathTakesItOnceMore) {
  Begin(Scene::Live);
  unsigned depth = 0;
  for (const Path& path : kKeeping) {
    if (path.scene != Scene::Live) continue;
    EXPECT_EQ(Walk(path), path.result) << path;
    EXPECT_EQ(LockDepth(), ++depth) << path;
  }
}

// ---- All other paths -------------------------------------------------------------------------

// Holds: VEXOAPI_CommandProc "Returns VEXO_OK or the operation's own result"
// Holds: VEXOAPI_SetMotionInfo "Returns VEXO_OK, or VEXO_ERROR_UNINITIALIZED"
TEST_F(DispatcherLock, EveryOtherPathReleasesItAndAnotherThreadGoesOn) {
  for (const Path& path : ReleasingPaths()) {
    SCOPED_TRACE(path);
    Begin(path.scene);
    EXPECT_EQ(Walk(path), path.result);
    EXPECT_FALSE(LockHeld());
    EXPECT_TRUE(AnotherThreadGetsIt());
    if (path.scene != Scene::Unbound) {
      EXPECT_TRUE(AnotherThreadsCommandReturns());
    }
  }
}

// The bus belongs to other drivers too: they may come in only while nobody has the lock.
TEST_F(DispatcherLock, BusCyclesLieBetweenTheWaitAndTheRelease) {
  for (const Path& path : ReleasingPaths()) {
    if ((path.code & 0xFFFF) == VEXO_CMD_BLANK_MASK) continue;
    SCOPED_TRACE(path);
    Begin(path.scene);
    EXPECT_EQ(Walk(path), path.result);
    Lines steps = LockAndBus();
    std::erase(steps, "bus");
    EXPECT_EQ(steps, (Lines{kLock, kUnlock}));
    steps = LockAndBus();
    EXPECT_EQ(steps.front(), kLock);
    EXPECT_EQ(steps.back(), kUnlock);
  }
}

// Holds: Exports "Two ask for more"
// Holds: VEXOAPI_CommandProc "Any thread, but for VEXO_CMD_BLANK_MASK"
TEST_F(DispatcherLock, TheBlankMaskIsWrittenAfterTheRelease) {
  for (const Path& path : kReleasing) {
    if (path.code != VEXO_CMD_BLANK_MASK) continue;
    SCOPED_TRACE(path);
    Begin(path.scene);
    EXPECT_EQ(Walk(path), path.result);
    EXPECT_EQ(LockAndBus(),
              path.result == 0 ? (Lines{kLock, kUnlock, "bus"}) : (Lines{kLock, kUnlock}));
  }
}

// With a hand-over at every bus cycle the other thread asks for the lock in the middle.
TEST_F(DispatcherLock, ARunningCommandKeepsAnotherThreadOutUntilItsRelease) {
  unsigned commands = 0;
  for (const Path& path : kReleasing) {
    if (path.scene == Scene::Unbound) continue;  // there the other thread's command is refused
    Begin(path.scene);
    Walk(path);
    const Lines alone = LockAndBus();
    if (alone != Lines{kLock, "bus", kUnlock} || path.code == VEXO_CMD_INIT) continue;
    ++commands;
    SCOPED_TRACE(path);
    Begin(path.scene);
    world().kernel.SetSeed(1);
    world().kernel.SetPreemption(1);
    int result = 99;
    world().kernel.StartHostThread(
        [&result] { result = harness::CommandProc(VEXO_CMD_MOTION_CLEAR, nullptr); });
    EXPECT_EQ(Walk(path), path.result);
    world().kernel.SetPreemption(0);
    world().kernel.Idle(100);
    EXPECT_EQ(result, 0);
    EXPECT_EQ(LockAndBus(), (Lines{kLock, "bus", kUnlock, kLock, "bus", kUnlock}));
  }
  EXPECT_GE(commands, 30u);
}

// Holds: VEXOAPI_CommandProc "Any thread, but for VEXO_CMD_BLANK_MASK"
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

// ---- Who goes on and who waits ---------------------------------------------------------------

TEST_F(DispatcherLock, TheThreadThatKeptItGoesOnAndKeepsIt) {
  PretendBoard(4);
  EXPECT_EQ(CommandNull(test::kUnknownCommand), -1);
  EXPECT_EQ(Command(VEXO_CMD_MOTION_REG, {0, 1, 2}), 0);
  EXPECT_EQ(LockDepth(), 1u);
  EXPECT_EQ(CommandNull(0xFF0C), -1);
  EXPECT_EQ(CommandNull(VEXO_CMD_LIVE_SPLIT), -5);
  EXPECT_EQ(LockDepth(), 2u);
}

TEST_F(DispatcherLock, AnotherThreadWaitsForACommandOnlyAsLongAsItRuns) {
  AttachAndBind();
  int result = 99;
  std::uint32_t done_at = 0;
  world().kernel.StartHostThread([this, &result, &done_at] {
    result = harness::CommandProc(VEXO_CMD_STOP_MONITOR, nullptr);
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

// The window's own thread is in its procedure: nobody answers until the send runs out.
// Holds: Host window messages "In the VEXO_MSG_REG_VALUE of another thread's"
TEST_F(DispatcherLock, ACommandInTheMessageOfAnothersReadWaitsForItsSendToRunOut) {
  StartBoard(4);
  std::optional<std::uint32_t> took;
  world().windows.procedure = [&](PlatWindow, std::uint32_t message, std::uintptr_t,
                                  std::intptr_t) {
    if (message != VEXO_MSG_REG_VALUE) return;
    Mark();
    EXPECT_EQ(CommandNull(VEXO_CMD_MOTION_CLEAR), 0);
    took = Elapsed();
  };
  int result = 99;
  Bytes record = {kChipMaster, 0, 0xFE, 0};
  const unsigned other = world().kernel.StartHostThread(
      [&] { result = harness::CommandProc(VEXO_CMD_READ_REG, &record); });
  world().kernel.AwaitMessage(1000);
  EXPECT_FALSE(world().kernel.TakeMessage({}).has_value());  // takes the send on the way
  EXPECT_EQ(took, 5000u);
  world().kernel.Idle(1);
  EXPECT_TRUE(world().kernel.HostThreadDone(other));
  EXPECT_EQ(result, 0);
  EXPECT_EQ(record[3], 0x28);
  EXPECT_FALSE(LockHeld());
}

TEST_F(DispatcherLock, TheEndOfTheThreadThatKeptItHandsItOn) {
  AttachAndBind();
  int kept = 99;
  CommandFromAnotherThread(test::kUnknownCommand, &kept);  // ends after a second
  world().kernel.Idle(1);
  EXPECT_EQ(kept, -1);
  EXPECT_TRUE(LockHeld());
  Mark();
  EXPECT_EQ(CommandNull(VEXO_CMD_STOP_MONITOR), 0);
  EXPECT_EQ(Elapsed(), 999u);
  EXPECT_FALSE(LockHeld());
}

// Holds: VEXOAPI_CommandProc "Any thread, but for VEXO_CMD_BLANK_MASK"
TEST_F(DispatcherLock, BlankMaskOfOneThreadLetsAnotherThreadIn) {
  StartBoard(4);
  world().kernel.SetSeed(1);
  world().kernel.SetPreemption(1);  // a hand-over at every bus cycle
  int result = 99;
  world().kernel.StartHostThread(
      [&result] { result = harness::CommandProc(VEXO_CMD_MOTION_CLEAR, nullptr); });
  EXPECT_EQ(Command(VEXO_CMD_BLANK_MASK, {1, 0, 0, 0}), 0);
  world().kernel.SetPreemption(0);
  EXPECT_EQ(result, 0);  // came in and went while this one wrote its mask
  ExpectReports();
}

// ---- The lock is the board's -----------------------------------------------------------------

// Holds: VEXOAPI_SetMotionInfo "Any thread: waits for "CS4_GlobalLock" without"
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
  EXPECT_EQ(harness::SetMotionInfo(0, 0, &mask), 0);
  EXPECT_EQ(Elapsed(), 69u);
}

// Holds: Exports "So does the monitor"
TEST_F(DispatcherLock, TheWorkerTakesNoLock) {
  AttachAndBind();
  EXPECT_EQ(Command(VEXO_CMD_INIT, Bytes(24)), 0);
  world().kernel.Pump(200);
  EXPECT_FALSE(test::LinesBy(sim::By::Worker, world().trace).empty());
  EXPECT_TRUE(test::LinesBy(sim::By::Worker, world().trace, 0, "lock").empty());
}

}  // namespace
