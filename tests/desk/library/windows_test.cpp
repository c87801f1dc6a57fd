// Windows, messages and time.
#include <atomic>
#include <thread>

#include "tests/desk/library/program.h"

namespace desk {
namespace {

using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::Field;
using testing::HasSubstr;
using testing::IsEmpty;

class DeskWindows : public ProgramTest {
 protected:
  DeskWindows() { Open(); }
};

// Holds: VexoCtrlSDK.h "The library answers with result codes and tells the host about"
// Holds: VexoDesk.h "A program calls the exports of VexoCtrlSDK.h as it does"
// Holds: VexoDeskProcedure "Called with each message of the window"
// Holds: VexoDesk_CreateWindow "A window for VEXOAPI_Initialize"
// Holds: VexoDesk_Pump "Handles messages while duration_ms pass"
TEST_F(DeskWindows, AreToldOfACableWhileTheProgramPumps) {
  Start();
  ASSERT_GE(VexoDesk_Pump(100), 1);
  messages.clear();
  Line("camera 5 off");
  EXPECT_EQ(VexoDesk_Pump(100), 1);
  ASSERT_EQ(messages.size(), 1u);
  EXPECT_EQ(messages[0].code, VEXO_MSG_VIDEO_INFO);
  EXPECT_EQ(messages[0].value, 1u << 5);
}

// Holds: VexoDesk_Pump "Handles messages while duration_ms pass"
// Holds: VexoDesk_Sleep "Lets duration_ms pass"
TEST_F(DeskWindows, AreToldNothingWhileTheProgramSleeps) {
  Start();
  VexoDesk_Pump(100);
  messages.clear();
  const std::uint64_t begin = VexoDesk_Now();
  Line("camera 5 off");
  EXPECT_EQ(VexoDesk_Sleep(1000), VEXODESK_OK);
  EXPECT_EQ(VexoDesk_Now(), begin + 1000);
  EXPECT_THAT(messages, IsEmpty());
  EXPECT_GE(VexoDesk_Pump(0), 1);
  EXPECT_EQ(messages[0].code, VEXO_MSG_VIDEO_INFO);
}

TEST_F(DeskWindows, LoseAMessageThatNobodyAnswersForFiveSeconds) {
  Start();
  VexoDesk_Pump(100);
  messages.clear();
  Line("camera 5 off");
  VexoDesk_Sleep(5100);
  VexoDesk_Pump(1000);
  EXPECT_THAT(messages, Each(Field(&Message::code, VEXO_MSG_MOTION_STATUS)));
  Line("camera 6 off");
  messages.clear();
  VexoDesk_Pump(100);
  EXPECT_THAT(messages, Contains(Field(&Message::value, 0x60u)));
}

// Holds: VexoDeskProcedure "Called with each message of the window"
TEST_F(DeskWindows, AreToldInTheCallThatSends) {
  Start();
  messages.clear();
  VexoRegRecord record = {VEXO_CHIP_MASTER, 0, 0xFE, 0};
  EXPECT_EQ(VEXOAPI_CommandProc(VEXO_CMD_READ_REG, &record), VEXO_OK);
  ASSERT_EQ(messages.size(), 1u);
  EXPECT_EQ(messages[0].code, VEXO_MSG_REG_VALUE);
  EXPECT_EQ(messages[0].value, 0x28u);
}

// Holds: Host window messages "The procedure may call the library."
// Holds: VexoDeskProcedure "It may call anything here"
TEST_F(DeskWindows, MayCallTheLibraryInTheirProcedure) {
  Start();
  VexoDesk_Pump(100);
  messages.clear();
  std::vector<int> results;
  on_message = [&](const Message& message) {
    if (message.code != VEXO_MSG_VIDEO_INFO) return;
    VexoRegRecord record = {VEXO_CHIP_SLAVE1, 0, 0xFE, 0};
    results.push_back(VEXOAPI_CommandProc(VEXO_CMD_READ_REG, &record));
    results.push_back(record.value);
    results.push_back(VEXOAPI_TextCommandProc("vexo rver "));
    char answer[100];
    results.push_back(VexoDesk_Line("camera 5 ntsc", answer, sizeof answer));
  };
  Line("camera 5 off");
  VexoDesk_Pump(200);
  EXPECT_THAT(results, ElementsAre(VEXO_OK, 0x28, VEXO_OK, VEXODESK_OK, VEXO_OK, 0x28, VEXO_OK,
                                   VEXODESK_OK));
}

// Holds: VexoDeskProcedure "It may call anything here"
// Holds: VexoDesk_Pump "The thread that opened the board"
TEST_F(DeskWindows, MayPumpInTheirProcedure) {
  Start();
  VexoDesk_Pump(100);
  messages.clear();
  int pumped = -1;
  on_message = [&](const Message& message) {
    if (message.value != 1u << 5) return;
    Line("camera 6 off");
    // The sender waits for this procedure, so none of its messages comes.
    pumped = VexoDesk_Pump(1000);
  };
  const std::uint64_t begin = VexoDesk_Now();
  Line("camera 5 off");
  EXPECT_GE(VexoDesk_Pump(1500), 2);
  EXPECT_EQ(pumped, 0);
  ASSERT_GE(messages.size(), 2u);
  EXPECT_EQ(messages[0].value, 1u << 5);
  EXPECT_EQ(messages[1].code, VEXO_MSG_MOTION_STATUS);
  EXPECT_GE(messages[1].at, begin + 1000);
}

// Holds: VexoDeskProcedure "lparam is 0"
TEST_F(DeskWindows, MayStopTheMonitorInTheirProcedureAndReadTheRecordAfterwards) {
  static VideoDetectRecord after;
  window = VexoDesk_CreateWindow(
      [](VexoWindow, std::uint32_t message, std::uintptr_t wparam, std::intptr_t,
         void*) -> std::intptr_t {
        if (message != VEXO_MSG_VIDEO_INFO) return 0;
        EXPECT_EQ(VEXOAPI_CommandProc(VEXO_CMD_STOP_MONITOR, nullptr), VEXO_OK);
        after = *reinterpret_cast<const VideoDetectRecord*>(wparam);
        return 0;
      },
      nullptr);
  ASSERT_EQ(VEXOAPI_Initialize(window), VEXO_OK);
  Line("camera 3 off");
  VexoInitRecord record = {};
  ASSERT_EQ(VEXOAPI_CommandProc(VEXO_CMD_INIT, &record), VEXO_OK);
  EXPECT_GE(VexoDesk_Pump(1000), 1);
  EXPECT_EQ(after.loss_mask, 1u << 3);
  EXPECT_EQ(after.standard[15], VEXO_VIDEO_NTSC);
}

TEST_F(DeskWindows, MayOutlastTheSendersPatienceInTheirProcedure) {
  Start();
  VexoDesk_Pump(100);
  messages.clear();
  on_message = [&](const Message& message) {
    if (message.value == 1u << 5) VexoDesk_Sleep(6000);
  };
  Line("camera 5 off");
  VexoDesk_Pump(7000);
  Line("camera 6 off");
  VexoDesk_Pump(100);
  EXPECT_THAT(messages, Contains(Field(&Message::value, 0x60u)));
}

// Holds: VexoDesk_DestroyWindow "The window is gone"
TEST_F(DeskWindows, MayBeDestroyedInTheirProcedure) {
  Start();
  VexoDesk_Pump(100);
  messages.clear();
  on_message = [&](const Message&) {
    EXPECT_EQ(VexoDesk_DestroyWindow(window), VEXODESK_OK) << VexoDesk_Error();
  };
  Line("camera 5 off");
  VexoDesk_Pump(2000);
  EXPECT_EQ(messages.size(), 1u);
}

// Holds: VexoDesk_DestroyWindow "The window is gone"
// Holds: VexoDesk_DestroyWindow "VEXODESK_ERROR_ARGUMENT for what is no window."
TEST_F(DeskWindows, AreNoneAfterTheirEnd) {
  Start();
  EXPECT_EQ(VexoDesk_DestroyWindow(window), VEXODESK_OK);
  EXPECT_EQ(VexoDesk_DestroyWindow(window), VEXODESK_ERROR_ARGUMENT);
  EXPECT_THAT(VexoDesk_Error(), HasSubstr("expected a window"));
  EXPECT_EQ(VexoDesk_DestroyWindow(nullptr), VEXODESK_ERROR_ARGUMENT);
  messages.clear();
  VexoDesk_Pump(2000);
  EXPECT_THAT(messages, IsEmpty());
}

// Holds: VexoDesk_CreateWindow "procedure may be null"
TEST_F(DeskWindows, NeedNoProcedure) {
  VexoWindow quiet = VexoDesk_CreateWindow(nullptr, nullptr);
  ASSERT_NE(quiet, nullptr);
  EXPECT_EQ(VEXOAPI_Initialize(quiet), VEXO_OK);
  VexoInitRecord record = {};
  EXPECT_EQ(VEXOAPI_CommandProc(VEXO_CMD_INIT, &record), VEXO_OK);
  EXPECT_GE(VexoDesk_Pump(100), 1);
}

// Holds: VexoDeskProcedure "The result is dropped."
// Holds: VexoDesk_CreateWindow "context is handed to it."
TEST_F(DeskWindows, HaveEachTheirOwnProcedureAndContext) {
  static const auto count = [](VexoWindow, std::uint32_t, std::uintptr_t, std::intptr_t,
                               void* context) -> std::intptr_t {
    return ++*static_cast<int*>(context);
  };
  int first = 0;
  int second = 0;
  VexoWindow one = VexoDesk_CreateWindow(count, &first);
  VexoWindow two = VexoDesk_CreateWindow(count, &second);
  EXPECT_NE(one, two);
  ASSERT_EQ(VEXOAPI_Initialize(one), VEXO_OK);
  VexoInitRecord record = {};
  ASSERT_EQ(VEXOAPI_CommandProc(VEXO_CMD_INIT, &record), VEXO_OK);
  VexoDesk_Pump(100);
  const int told = first;
  EXPECT_GE(told, 1);
  EXPECT_EQ(second, 0);
  ASSERT_EQ(VEXOAPI_Initialize(two), VEXO_OK);
  Line("camera 5 off");
  VexoDesk_Pump(100);
  EXPECT_EQ(first, told);
  EXPECT_EQ(second, 1);
}

// Holds: VEXOAPI_Initialize "Any thread."
// Holds: VexoDesk.h "Any thread may call the exports of VexoCtrlSDK.h"
// Holds: Results "VEXODESK_ERROR_THREAD: not the thread that opened the board"
// Holds: VexoDesk_Error "Why the calling thread's last failing call of a VexoDesk"
// Holds: VexoDesk_Error "Valid until its next call."
// Holds: VexoDesk_Error "Any thread."
// Holds: VexoDesk_CreateWindow "The thread that opened the board."
// Holds: VexoDesk_DestroyWindow "The thread that opened the board."
// Holds: VexoDesk_Pump "The thread that opened the board"
// Holds: VexoDesk_Sleep "Any thread."
TEST_F(DeskWindows, BelongToTheThreadThatOpenedTheBoard) {
  Start();
  std::thread([this] {
    EXPECT_EQ(VexoDesk_Pump(1), VEXODESK_ERROR_THREAD);
    EXPECT_THAT(VexoDesk_Error(), HasSubstr("the thread that opened the board"));
    EXPECT_EQ(VexoDesk_DestroyWindow(window), VEXODESK_ERROR_THREAD);
    EXPECT_EQ(VexoDesk_CreateWindow(nullptr, nullptr), nullptr);
    EXPECT_EQ(VexoDesk_Sleep(1), VEXODESK_OK);
    EXPECT_EQ(VEXOAPI_Initialize(window), VEXO_OK);
  }).join();
  // Each thread has its own reason.
  VexoDesk_DestroyWindow(nullptr);
  EXPECT_THAT(VexoDesk_Error(), HasSubstr("expected a window"));
}

// Holds: Host window messages "Sent messages are handled by the window's thread where"
// Holds: VexoDeskProcedure "Called with each message of the window"
TEST_F(DeskWindows, AreToldBySendersOfOtherThreadsInTheirOwn) {
  Start();
  messages.clear();
  const auto here = std::this_thread::get_id();
  std::thread::id told;
  on_message = [&](const Message& message) {
    if (message.code == VEXO_MSG_REG_VALUE) told = std::this_thread::get_id();
  };
  std::atomic<bool> read = false;
  std::thread other([&] {
    while (!read) {
      VexoRegRecord record = {VEXO_CHIP_MASTER, 0, 0xFE, 0};
      EXPECT_EQ(VEXOAPI_CommandProc(VEXO_CMD_READ_REG, &record), VEXO_OK);
      EXPECT_EQ(record.value, 0x28);
    }
  });
  while (told == std::thread::id()) VexoDesk_Pump(1);
  read = true;
  while (VexoDesk_Pump(1) != 0) {
  }
  other.join();
  EXPECT_EQ(told, here);
}

// Holds: VexoDesk.h "VEXODESK_VIRTUAL passes only in VexoDesk_Pump and VexoDesk_Sleep"
// Holds: VexoDesk_Pump "Returns how many were handled."
// Holds: VexoDesk_Now "Milliseconds since the board was opened"
TEST_F(DeskWindows, PassAnHourOfVirtualTimeToTheMillisecond) {
  Start();
  const std::uint64_t begin = VexoDesk_Now();
  messages.clear();
  const int handled = VexoDesk_Pump(3'600'000);
  EXPECT_EQ(VexoDesk_Now(), begin + 3'600'000);
  EXPECT_EQ(handled, static_cast<int>(messages.size()));
  // The first mask of video loss; and motion, whose 900 ms are counted from one rising edge of the
  // sync bit to another, and begin again at the next.
  EXPECT_EQ(handled, 1 + 3'600'000 / 960);
}

class RealTime : public ProgramTest {
 protected:
  RealTime() {
    VexoDeskOptions options = VEXODESK_DEFAULTS;
    options.time = VEXODESK_REAL;
    Open(options);
  }
};

// Holds: VexoDesk.h "VEXODESK_REAL is the clock's."
// Holds: VexoDeskOptions "time: VEXODESK_VIRTUAL or VEXODESK_REAL"
TEST_F(RealTime, PassesByItself) {
  const std::uint64_t begin = VexoDesk_Now();
  while (VexoDesk_Now() == begin) {
  }
  SUCCEED();
}

TEST_F(RealTime, TellsOfACable) {
  Start();
  Line("camera 5 off");
  const std::uint64_t begin = VexoDesk_Now();
  const auto told = [this] { return !messages.empty() && messages.back().value == 1u << 5; };
  while (!told() && VexoDesk_Now() < begin + 20'000) VexoDesk_Pump(1);
  EXPECT_TRUE(told());
}

// Holds: VexoDesk.h "One thread is in the library at a time"
TEST_F(RealTime, GoesOnWhileAnotherThreadSleeps) {
  Start();
  std::atomic<bool> awake = false;
  std::thread sleeper([&] {
    VexoDesk_Sleep(300);
    awake = true;
  });
  unsigned calls = 0;
  VexoRegRecord record = {VEXO_CHIP_MASTER, 0, 0xFE, 0};
  while (!awake) calls += VEXOAPI_CommandProc(VEXO_CMD_READ_REG, &record) == VEXO_OK;
  sleeper.join();
  EXPECT_GT(calls, 1u);
}

}  // namespace
}  // namespace desk
