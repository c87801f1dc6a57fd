// Virtual time and whose turn it is.
#include "tests/sim/fixture.h"

namespace sim {
namespace {

using Scheduler = PlatformTest;

TEST_F(Scheduler, StartsAtTimeZeroWithTheHost) {
  EXPECT_EQ(kernel().Now(), 0u);
  EXPECT_EQ(kernel().Current(), By::Host);
}

TEST_F(Scheduler, SleepMovesTimeForKernelTickCountAndBoard) {
  Plat_Sleep(240);
  EXPECT_EQ(kernel().Now(), 240u);
  EXPECT_EQ(Plat_TickCount(), 240u);
  EXPECT_EQ(world().board.Time(), 240u);
}

TEST_F(Scheduler, TickCountWrapsAndSleepGoesOn) {
  kernel().Idle(0xFFFFFFF0u);
  Plat_Sleep(0x20);
  EXPECT_EQ(Plat_TickCount(), 0x10u);
}

TEST_F(Scheduler, ANewThreadRunsWhenItsCreatorNextPauses) {
  const WorkerBody body = [&] {
    Log("worker");
    return 0u;
  };
  StartWorker(body);
  Log("host");
  kernel().Pump(1);
  Log("host");
  EXPECT_EQ(log, (Lines{"0 host", "0 worker", "1 host"}));
}

TEST_F(Scheduler, TheHostGoesFirstWhenBothAreDueAtTheSameMillisecond) {
  const WorkerBody body = [&] {
    for (int i = 0; i < 3; ++i) {
      Plat_Sleep(2);
      Log("worker");
    }
    return 0u;
  };
  StartWorker(body);
  for (int i = 0; i < 3; ++i) {
    Plat_Sleep(2);
    Log("host");
  }
  EXPECT_EQ(log, (Lines{"2 host", "2 worker", "4 host", "4 worker", "6 host"}));
}

TEST_F(Scheduler, HostThreadsGoInOrderOfCreationThenLibraryThreads) {
  const WorkerBody body = [&] {
    Log("worker");
    return 0u;
  };
  StartWorker(body);
  kernel().StartHostThread([&] { Log("second"); });
  kernel().StartHostThread([&] { Log("third"); });
  Plat_Sleep(1);
  EXPECT_EQ(log, (Lines{"0 second", "0 third", "0 worker"}));
}

TEST_F(Scheduler, SleepOfZeroLetsOthersThatAreDueGoFirstWithoutTime) {
  const WorkerBody body = [&] {
    for (int i = 0; i < 2; ++i) {
      Log("worker");
      Plat_Sleep(0);
    }
    return 0u;
  };
  StartWorker(body);
  for (int i = 0; i < 3; ++i) {
    Log("host");
    Plat_Sleep(0);
  }
  EXPECT_EQ(log, (Lines{"0 host", "0 worker", "0 host", "0 worker", "0 host"}));
}

TEST_F(Scheduler, PumpPassesExactlyItsTime) {
  const WorkerBody body = []() -> std::uint32_t {
    for (;;) Plat_Sleep(7);
  };
  StartWorker(body);
  kernel().Pump(10000);
  EXPECT_EQ(kernel().Now(), 10000u);
  EXPECT_EQ(kernel().LiveThreads(), 1u);
}

TEST_F(Scheduler, CurrentTellsWhoRuns) {
  By seen = By::Host;
  const WorkerBody body = [&] {
    seen = kernel().Current();
    return 0u;
  };
  StartWorker(body);
  Plat_Sleep(1);
  EXPECT_EQ(seen, By::Worker);
  EXPECT_EQ(kernel().Current(), By::Host);
}

TEST_F(Scheduler, EveryThreadHasItsOwnIdentifier) {
  std::uint32_t seen = 0;
  const WorkerBody body = [&] {
    seen = Plat_CurrentThreadId();
    return 0u;
  };
  std::uint32_t told = 0;
  StartWorker(body, &told);
  Plat_Sleep(1);
  EXPECT_NE(seen, 0u);
  EXPECT_EQ(seen, told);
  EXPECT_NE(seen, Plat_CurrentThreadId());
}

TEST_F(Scheduler, ASecondHostThreadIsDoneWhenItsBodyIs) {
  const unsigned id = kernel().StartHostThread([&] { Plat_Sleep(5); });
  EXPECT_FALSE(kernel().HostThreadDone(id));
  Plat_Sleep(5);
  EXPECT_FALSE(kernel().HostThreadDone(id));  // due at 5 too, but the main host thread goes first
  Plat_Sleep(1);
  EXPECT_TRUE(kernel().HostThreadDone(id));
  EXPECT_FALSE(kernel().HostThreadDone(0));
  EXPECT_FALSE(kernel().HostThreadDone(id + 1));
}

TEST_F(Scheduler, WhatAHostThreadThrowsComesOutOfTheMainOne) {
  kernel().StartHostThread([] { throw std::runtime_error("of the second"); });
  EXPECT_THROW(Plat_Sleep(1), std::runtime_error);
  Plat_Sleep(1);  // once only
}

TEST_F(Scheduler, LastErrorIsOfTheThread) {
  std::uint32_t workers = 99;
  const WorkerBody body = [&] {
    workers = Plat_LastError();
    kernel().SetLastError(77);
    return 0u;
  };
  kernel().SetLastError(5);
  StartWorker(body);
  Plat_Sleep(1);
  EXPECT_EQ(workers, 0u);
  EXPECT_EQ(Plat_LastError(), 5u);
}

TEST_F(Scheduler, PausesAreTraced) {
  Plat_Sleep(3);
  Plat_Wait(Plat_CreateEvent(nullptr, false, false), 4);
  kernel().Pump(5);
  kernel().Idle(6);
  const auto events = Details<SleepEvent>();
  ASSERT_EQ(events.size(), 2u);
  EXPECT_FALSE(events[0].wait);
  EXPECT_EQ(events[0].ms, 3u);
  EXPECT_TRUE(events[1].wait);
  EXPECT_EQ(events[1].ms, 4u);
  EXPECT_EQ(Nth<SleepEvent>(1).t, 3u);
}

}  // namespace
}  // namespace sim
