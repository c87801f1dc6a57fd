// Beginning and end of library threads.
#include "tests/sim/fixture.h"

namespace sim {
namespace {

using Termination = PlatformTest;

TEST_F(Termination, AThreadRunsToItsExitCode) {
  const WorkerBody body = [] {
    Plat_Sleep(10);
    return 0xF0000001u;
  };
  const PlatHandle thread = StartWorker(body);
  EXPECT_EQ(ExitCode(thread), kPlatStillActive);
  EXPECT_EQ(kernel().LiveThreads(), 1u);
  Plat_Sleep(11);
  EXPECT_EQ(ExitCode(thread), 0xF0000001u);
  EXPECT_EQ(kernel().LiveThreads(), 0u);
  EXPECT_TRUE(Plat_CloseHandle(thread));
  EXPECT_EQ(kernel().OpenHandles(), 0u);
}

TEST_F(Termination, AThreadGoesOnWhenItsHandleIsClosed) {
  const WorkerBody body = [&] {
    Plat_Sleep(10);
    Log("worker");
    return 0u;
  };
  Plat_CloseHandle(StartWorker(body));
  Plat_Sleep(20);
  EXPECT_EQ(log, (Lines{"10 worker"}));
}

// Every place where a thread can be parked.
struct Place {
  const char* name;
  std::function<void()> pause;
};

TEST_F(Termination, EndsAThreadWhereverItIs) {
  PlatHandle mutex = 0;
  PlatWindow window = 0;
  const std::vector<Place> places = {
      {"sleep", [] { Plat_Sleep(100); }},
      {"endless sleep", [] { Plat_Sleep(kPlatForever); }},
      {"event", [] { Plat_Wait(Plat_CreateEvent(nullptr, false, false), kPlatForever); }},
      {"mutex", [&] { Plat_Wait(mutex, kPlatForever); }},
      {"send", [&] { Plat_SendMessage(window, 0x2404, 1, 0, 5000); }},
  };
  for (const Place& place : places) {
    ResetWorld();
    log.clear();
    mutex = Plat_CreateMutex(u"lock");
    Plat_Wait(mutex, kPlatForever);
    window = world().windows.Create();
    const WorkerBody body = [&] {
      Log("before");
      place.pause();
      Log("after");
      return 0u;
    };
    const PlatHandle thread = StartWorker(body);
    Plat_Sleep(1);
    EXPECT_TRUE(Plat_TerminateThread(thread, 0xFFFF0000u));
    EXPECT_EQ(ExitCode(thread), 0xFFFF0000u) << place.name;
    EXPECT_EQ(kernel().LiveThreads(), 0u);
    EXPECT_EQ(kernel().Now(), 1u);
    Plat_ReleaseMutex(mutex);
    kernel().Pump(10000);
    EXPECT_EQ(log, (Lines{"0 before"})) << place.name;
    EXPECT_FALSE(kernel().MutexHeld(u"lock"));
    EXPECT_TRUE(world().windows.received.empty());
    EXPECT_TRUE(Details<MessageEvent>().empty());
  }
}

TEST_F(Termination, EndsAThreadThatHasNotBegun) {
  const WorkerBody body = [&] {
    Log("worker");
    return 0u;
  };
  const PlatHandle thread = StartWorker(body);
  EXPECT_TRUE(Plat_TerminateThread(thread, 3));
  Plat_Sleep(10);
  EXPECT_TRUE(log.empty());
  EXPECT_EQ(ExitCode(thread), 3u);
}

TEST_F(Termination, EndsAThreadAtABusCycle) {
  PlatBusWindow data = Plat_MapBusWindow(0x06200000, 4, false);
  const WorkerBody body = [&]() -> std::uint32_t {
    for (;;) Plat_StoreByte(data, 1);
  };
  kernel().SetPreemption(10);
  const PlatHandle thread = StartWorker(body);
  Plat_Sleep(1);
  const std::uint64_t cycles = world().trace.Cycles();
  EXPECT_GT(cycles, 0u);
  EXPECT_TRUE(Plat_TerminateThread(thread, 4));
  Plat_Sleep(100);
  EXPECT_EQ(world().trace.Cycles(), cycles);
}

TEST_F(Termination, AThreadMayEndItself) {
  PlatHandle thread = 0;
  const WorkerBody body = [&] {
    Plat_TerminateThread(thread, 5);
    Log("after");
    return 0u;
  };
  thread = StartWorker(body);
  Plat_Sleep(1);
  EXPECT_TRUE(log.empty());
  EXPECT_EQ(ExitCode(thread), 5u);
  EXPECT_EQ(Details<ThreadEvent>().size(), 2u);  // start, terminate, no end
}

TEST_F(Termination, AnEndedThreadCannotBeTerminated) {
  const WorkerBody body = [] { return 6u; };
  const PlatHandle thread = StartWorker(body);
  Plat_Sleep(1);
  EXPECT_FALSE(Plat_TerminateThread(thread, 7));
  EXPECT_EQ(Plat_LastError(), 5u);
  EXPECT_EQ(ExitCode(thread), 6u);
}

TEST_F(Termination, AbandonsTheMutexOfTheThread) {
  const PlatHandle mutex = Plat_CreateMutex(u"lock");
  const WorkerBody body = [&] {
    Plat_Wait(mutex, kPlatForever);
    Plat_Sleep(kPlatForever);
    return 0u;
  };
  const PlatHandle thread = StartWorker(body);
  Plat_Sleep(1);
  EXPECT_EQ(Plat_Wait(mutex, 10), kPlatWaitTimeout);
  Plat_TerminateThread(thread, 1);
  EXPECT_EQ(Plat_Wait(mutex, 10), kPlatWaitAbandoned);
}

TEST_F(Termination, UnwindsTheFramesOfTheThread) {
  struct Guard {
    int* count;
    ~Guard() {
      ++*count;
      Plat_Sleep(1000);  // a thread on its way out does not pause any more
    }
  };
  int unwound = 0;
  const WorkerBody body = [&] {
    const Guard outer{&unwound};
    const Guard inner{&unwound};
    Plat_Sleep(kPlatForever);
    return 0u;
  };
  const PlatHandle thread = StartWorker(body);
  Plat_Sleep(1);
  Plat_TerminateThread(thread, 1);
  EXPECT_EQ(unwound, 2);
  EXPECT_EQ(kernel().Now(), 1u);
}

TEST_F(Termination, LeftOverThreadsEndWithTheWorld) {
  const WorkerBody body = [&] {
    Plat_Sleep(10);
    Log("after");
    return 0u;
  };
  StartWorker(body);
  StartWorker(body);
  Plat_Sleep(1);
  StartWorker(body);  // has not begun
  ResetWorld();
  Plat_Sleep(100);
  EXPECT_TRUE(log.empty());
  EXPECT_EQ(kernel().LiveThreads(), 0u);
}

TEST_F(Termination, StartEndAndTerminationAreTraced) {
  const WorkerBody body = [] {
    Plat_Sleep(10);
    return 9u;
  };
  StartWorker(body);
  const PlatHandle second = StartWorker(body);
  Plat_Sleep(5);
  Plat_TerminateThread(second, 0xFFFF0000u);
  Plat_Sleep(10);
  const auto events = Details<ThreadEvent>();
  ASSERT_EQ(events.size(), 4u);
  EXPECT_EQ(events[0].what, "start");
  EXPECT_EQ(events[0].code, 0u);
  EXPECT_EQ(Nth<ThreadEvent>(0).by, By::Host);
  EXPECT_EQ(events[2].what, "terminate");
  EXPECT_EQ(events[2].code, 0xFFFF0000u);
  EXPECT_EQ(Nth<ThreadEvent>(2).by, By::Host);
  EXPECT_EQ(Nth<ThreadEvent>(2).t, 5u);
  EXPECT_EQ(events[3].what, "end");
  EXPECT_EQ(events[3].code, 9u);
  EXPECT_EQ(Nth<ThreadEvent>(3).by, By::Worker);
  EXPECT_EQ(Nth<ThreadEvent>(3).t, 10u);
}

TEST_F(Termination, TheThreadFaultFires) {
  const WorkerBody body = [&] {
    Log("worker");
    return 0u;
  };
  world().faults.Set(Fault::Thread, true);
  EXPECT_EQ(StartWorker(body), kPlatNoHandle);
  EXPECT_EQ(Plat_LastError(), 8u);
  EXPECT_EQ(world().faults.Hits(Fault::Thread), 1u);
  Plat_Sleep(1);
  EXPECT_TRUE(log.empty());
  EXPECT_TRUE(Details<ThreadEvent>().empty());
}

TEST_F(Termination, UnderItsFaultTheThreadGoesOn) {
  const WorkerBody body = [] {
    Plat_Sleep(10);
    return 5u;
  };
  const PlatHandle thread = StartWorker(body);
  Plat_Sleep(1);
  world().faults.Set(Fault::Terminate, true);
  EXPECT_TRUE(Plat_TerminateThread(thread, 7));
  EXPECT_EQ(world().faults.Hits(Fault::Terminate), 1u);
  EXPECT_EQ(ExitCode(thread), kPlatStillActive);
  Plat_Sleep(20);
  EXPECT_EQ(ExitCode(thread), 5u);
}

TEST_F(Termination, TheQuantumIsKept) {
  const WorkerBody body = [] { return 0u; };
  const PlatHandle thread = StartWorker(body);
  EXPECT_EQ(kernel().ThreadQuantum(thread), 0u);
  EXPECT_TRUE(Plat_SetThreadQuantum(thread, 2));
  EXPECT_EQ(kernel().ThreadQuantum(thread), 2u);
  EXPECT_EQ(kernel().ThreadQuantum(12345), 0u);
}

TEST_F(Termination, ThousandsOfThreadsComeAndGo) {
  unsigned begun = 0;
  const WorkerBody body = [&] {
    ++begun;
    Plat_Sleep(begun % 2 == 0 ? 1 : kPlatForever);
    return 0u;
  };
  for (unsigned i = 0; i < 3000; ++i) {
    const PlatHandle thread = StartWorker(body);
    Plat_Sleep(2);
    if (ExitCode(thread) == kPlatStillActive) Plat_TerminateThread(thread, 1);
    Plat_CloseHandle(thread);
  }
  EXPECT_EQ(begun, 3000u);
  EXPECT_EQ(kernel().LiveThreads(), 0u);
  EXPECT_EQ(kernel().OpenHandles(), 0u);
}

}  // namespace
}  // namespace sim
