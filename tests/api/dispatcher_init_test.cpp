// The command that initializes the chips and starts the worker, and the one that stops it.
#include <algorithm>

#include "VexoCtrlSDK.h"
#include "api/worker.h"
#include "chip/video_state.h"
#include "harness/host.h"
#include "tests/api/trace_lines.h"
#include "tests/support/at_events.h"
#include "tests/support/library_test.h"

namespace {

using Lines = std::vector<std::string>;
using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t kRecordBytes = harness::kCommandRecordBytes;

class DispatcherInit : public test::LibraryTest {
 protected:
  bool LockHeld() { return world().kernel.MutexHeld(u"CS4_GlobalLock"); }
  void FitAndBind(unsigned chips) {
    world().board.FitChips(chips);
    AttachAndBind();
    Mark();
  }
};

// Holds: VexoCtrlSDK.h "A host loads the library"
// Holds: VexoCtrlSDK.h "All multi-byte fields are little-endian."
// Holds: Command codes of VEXOAPI_CommandProc "VEXO_CMD_INIT: VexoInitRecord,"
// Holds: VexoInitRecord "Written: bytes 12-23 (all zero when initialization fails)."
// Holds: VexoInitRecord "chip_count: 12 out"
// Holds: VexoInitRecord "video_standard: 16 out"
// Holds: VexoInitRecord "chip_id: 20 out"
TEST_F(DispatcherInit, FillsTheRecordWithChipsStandardAndIdentification) {
  world().board.FitChips(3);
  world().board.SetId(1, 0x2B);
  world().board.SetId(3, 0x77);
  world().nvram.SetRecord("MDVR", VEXO_VIDEO_PAL, 12);
  AttachAndBind();
  const Bytes before(kRecordBytes, 0xA5);
  EXPECT_EQ(Command(VEXO_CMD_INIT, before), 0);
  Bytes expected = before;
  const Bytes state = {3, 0, 0, 0, 1, 0, 0, 0, 0x28, 0x2B, 0x28, 0x77};
  std::copy(state.begin(), state.end(), expected.begin() + 12);
  EXPECT_EQ(last_record, expected);
  EXPECT_FALSE(LockHeld());
}

TEST_F(DispatcherInit, HaltsTheCameraInitializesStartsTheWorkerAndResumes) {
  FitAndBind(1);
  const std::size_t from = world().trace.Mark();
  EXPECT_EQ(Command(VEXO_CMD_INIT, Bytes(24)), 0);
  Lines steps;
  bool cycles = false;
  for (const test::Line& line : test::LinesBy(sim::By::Host, world().trace, from)) {
    for (const char* kind :
         {"call", "return", "lock", "unlock", "open", "ioctl", "close", "thread", "sleep 200"}) {
      if (line.text.rfind(kind, 0) == 0) {
        if (cycles) steps.push_back("bus");
        cycles = false;
        steps.push_back(line.text);
      }
    }
    cycles = cycles || line.text.rfind("select", 0) == 0;
  }
  EXPECT_EQ(steps,
            (Lines{"call VEXOAPI_CommandProc", "lock CS4_GlobalLock", "open CAM1:", "ioctl 220864",
                   "close CAM1:", "bus", "thread start", "sleep 200", "open CAM1:", "ioctl 220860",
                   "close CAM1:", "unlock CS4_GlobalLock", "return VEXOAPI_CommandProc 0"}));
  EXPECT_EQ(world().kernel.LiveThreads(), 1u);
}

// The worker's first message may find the host reading the record.
TEST_F(DispatcherInit, TheRecordIsFilledBeforeTheWorkerStarts) {
  FitAndBind(2);
  Bytes record(24, 0xA5);
  Bytes at_start;
  const test::AtEvents watch([&](const sim::Event&, const sim::EventDetail* detail) {
    const auto* thread = std::get_if<sim::ThreadEvent>(detail);
    if (thread != nullptr && thread->what == "start") at_start = record;
  });
  EXPECT_EQ(VEXOAPI_CommandProc(VEXO_CMD_INIT, record.data()), 0);
  Bytes expected(24, 0xA5);
  const Bytes state = {2, 0, 0, 0, 0, 0, 0, 0, 0x28, 0x28, 0, 0};
  std::copy(state.begin(), state.end(), expected.begin() + 12);
  EXPECT_EQ(at_start, expected);
}

TEST_F(DispatcherInit, AFailureClearsTheRecordBeforeTheCameraResumes) {
  FitAndBind(0);
  Bytes record(24, 0xA5);
  Bytes at_resume;
  const test::AtEvents watch([&](const sim::Event&, const sim::EventDetail* detail) {
    const auto* control = std::get_if<sim::IoctlEvent>(detail);
    if (control != nullptr && control->code == 0x220860) at_resume = record;
  });
  EXPECT_EQ(VEXOAPI_CommandProc(VEXO_CMD_INIT, record.data()), -1);
  Bytes expected(24, 0xA5);
  std::fill_n(expected.begin() + 12, 12, std::uint8_t{0});
  EXPECT_EQ(at_resume, expected);
}

TEST_F(DispatcherInit, AMissingRecordTouchesNothing) {
  FitAndBind(1);
  EXPECT_EQ(CommandNull(VEXO_CMD_INIT), -5);
  EXPECT_EQ(Cycles(), 0u);
  EXPECT_EQ(test::Texts(world().trace, 0, "open"), Lines{});
  EXPECT_EQ(world().kernel.LiveThreads(), 0u);
}

// Holds: VexoInitRecord "Written: bytes 12-23 (all zero when initialization fails)."
TEST_F(DispatcherInit, AFailureClearsTheResultAndStillResumesTheCamera) {
  FitAndBind(0);
  const Bytes before(kRecordBytes, 0xA5);
  EXPECT_EQ(Command(VEXO_CMD_INIT, before), -1);
  Bytes expected = before;
  std::fill_n(expected.begin() + 12, 12, std::uint8_t{0});
  EXPECT_EQ(last_record, expected);
  EXPECT_EQ(test::Texts(world().trace, 0, "ioctl"), (Lines{"ioctl 220864", "ioctl 220860"}));
  EXPECT_EQ(world().kernel.LiveThreads(), 0u);
  EXPECT_EQ(g_video.g_chip_ready, 0);
}

// Holds: VEXOAPI_CommandProc "VEXO_CMD_INIT answers VEXO_OK also when the monitor"
TEST_F(DispatcherInit, AWorkerThatCannotBeStartedIsNoFailure) {
  FitAndBind(1);
  world().faults.Set(sim::Fault::Thread, true);
  EXPECT_EQ(Command(VEXO_CMD_INIT, Bytes(24)), 0);
  EXPECT_EQ(world().faults.Hits(sim::Fault::Thread), 1u);
  EXPECT_EQ(world().kernel.LiveThreads(), 0u);
  EXPECT_FALSE(LockHeld());
}

TEST_F(DispatcherInit, ARunningWorkerIsStoppedBeforeTheNextOneStarts) {
  FitAndBind(1);
  EXPECT_EQ(Command(VEXO_CMD_INIT, Bytes(24)), 0);
  world().kernel.Pump(100);  // it says its first word
  EXPECT_EQ(Command(VEXO_CMD_INIT, Bytes(24)), 0);
  EXPECT_EQ(test::Texts(world().trace, 0, "thread"),
            (Lines{"thread start", "thread end F0000001", "thread start"}));
}

TEST_F(DispatcherInit, ChipsStayReadyAfterAFailure) {
  FitAndBind(1);
  EXPECT_EQ(Command(VEXO_CMD_INIT, Bytes(24)), 0);
  world().board.FitChips(0);
  EXPECT_EQ(Command(VEXO_CMD_INIT, Bytes(24)), -1);
  EXPECT_EQ(g_video.g_chip_ready, 1);
  EXPECT_EQ(Command(VEXO_CMD_LIVE_SPLIT, Bytes(24)), -1);  // no such board
}

// Holds: Command codes of VEXOAPI_CommandProc "VEXO_CMD_STOP_MONITOR: no record"
// Holds: VEXOAPI_CommandProc "VEXO_OK comes back although nothing was done"
TEST_F(DispatcherInit, StopMonitorEndsTheWorker) {
  FitAndBind(1);
  EXPECT_EQ(Command(VEXO_CMD_INIT, Bytes(24)), 0);
  EXPECT_EQ(CommandNull(VEXO_CMD_STOP_MONITOR), 0);
  EXPECT_EQ(world().kernel.LiveThreads(), 0u);
  EXPECT_EQ(g_worker.thread, 0u);
  EXPECT_EQ(CommandNull(VEXO_CMD_STOP_MONITOR), 0);  // none is running
  EXPECT_FALSE(LockHeld());
}

}  // namespace
