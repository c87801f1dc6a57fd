// Mutexes, events and handles.
#include "tests/sim/fixture.h"

namespace sim {
namespace {

using Objects = PlatformTest;
const char16_t* const kName = u"CS4_GlobalLock";

TEST_F(Objects, AFreeMutexIsTakenAtOnceAndCountsItsOwner) {
  const PlatHandle mutex = Plat_CreateMutex(kName);
  EXPECT_FALSE(kernel().MutexHeld(kName));
  EXPECT_EQ(Plat_Wait(mutex, kPlatForever), kPlatWaitSignalled);
  EXPECT_EQ(Plat_Wait(mutex, kPlatForever), kPlatWaitSignalled);
  EXPECT_EQ(kernel().MutexDepth(kName), 2u);
  EXPECT_TRUE(Plat_ReleaseMutex(mutex));
  EXPECT_TRUE(kernel().MutexHeld(kName));
  EXPECT_TRUE(Plat_ReleaseMutex(mutex));
  EXPECT_FALSE(kernel().MutexHeld(kName));
  EXPECT_EQ(kernel().Now(), 0u);
}

TEST_F(Objects, ReleaseFailsForWhoDoesNotOwnTheMutex) {
  const PlatHandle mutex = Plat_CreateMutex(kName);
  EXPECT_FALSE(Plat_ReleaseMutex(mutex));
  EXPECT_EQ(Plat_LastError(), 288u);
  Plat_Wait(mutex, kPlatForever);
  bool released = true;
  kernel().StartHostThread([&] { released = Plat_ReleaseMutex(mutex); });
  Plat_Sleep(1);
  EXPECT_FALSE(released);
  EXPECT_EQ(kernel().MutexDepth(kName), 1u);
}

TEST_F(Objects, BadHandlesFailEverywhere) {
  const PlatHandle closed = Plat_CreateMutex(kName);
  Plat_CloseHandle(closed);
  for (const PlatHandle bad : {kPlatNoHandle, kPlatInvalidHandle, PlatHandle{12345}, closed}) {
    std::uint32_t code = 0;
    EXPECT_EQ(Plat_Wait(bad, kPlatForever), kPlatWaitFailed);
    EXPECT_EQ(Plat_LastError(), 6u);
    EXPECT_FALSE(Plat_ReleaseMutex(bad));
    EXPECT_FALSE(Plat_CloseHandle(bad));
    EXPECT_FALSE(Plat_GetExitCodeThread(bad, &code));
    EXPECT_FALSE(Plat_TerminateThread(bad, 1));
    EXPECT_FALSE(Plat_SetThreadQuantum(bad, 2));
    EXPECT_FALSE(kernel().SetEvent(bad));
    EXPECT_EQ(Plat_LastError(), 6u);
  }
}

TEST_F(Objects, AHandleOfAnotherKindIsNone) {
  const PlatHandle mutex = Plat_CreateMutex(kName);
  const PlatHandle event = Plat_CreateEvent(nullptr, true, false);
  std::uint32_t code = 0;
  EXPECT_FALSE(Plat_ReleaseMutex(event));
  EXPECT_FALSE(kernel().SetEvent(mutex));
  EXPECT_FALSE(Plat_GetExitCodeThread(mutex, &code));
}

TEST_F(Objects, HandleValuesAreNeverReused) {
  const PlatHandle first = Plat_CreateEvent(nullptr, true, false);
  Plat_CloseHandle(first);
  const PlatHandle second = Plat_CreateEvent(nullptr, true, false);
  EXPECT_NE(first, second);
  EXPECT_NE(kernel().NewHandleValue(), second);
  EXPECT_EQ(kernel().OpenHandles(), 1u);
}

TEST_F(Objects, ANamedObjectLivesWhileAHandleIsOpen) {
  const PlatHandle first = Plat_CreateEvent(u"VEXOSDK", true, false);
  EXPECT_EQ(Plat_LastError(), 0u);
  const PlatHandle second = Plat_CreateEvent(u"VEXOSDK", true, false);
  EXPECT_EQ(Plat_LastError(), kPlatErrorAlreadyExists);
  EXPECT_NE(first, second);
  kernel().SetEvent(first);
  EXPECT_EQ(Plat_Wait(second, 0), kPlatWaitSignalled);
  Plat_CloseHandle(first);
  const PlatHandle third = Plat_CreateEvent(u"VEXOSDK", true, false);
  EXPECT_EQ(Plat_LastError(), kPlatErrorAlreadyExists);
  Plat_CloseHandle(second);
  Plat_CloseHandle(third);
  Plat_CreateEvent(u"VEXOSDK", true, false);
  EXPECT_EQ(Plat_LastError(), 0u);
}

TEST_F(Objects, ANamedMutexIsOneMutexThroughAllItsHandles) {
  const PlatHandle first = Plat_CreateMutex(kName);
  const PlatHandle second = Plat_CreateMutex(kName);
  EXPECT_EQ(Plat_LastError(), kPlatErrorAlreadyExists);
  Plat_Wait(first, kPlatForever);
  EXPECT_TRUE(Plat_ReleaseMutex(second));
}

TEST_F(Objects, ANameIsOfOneKindOnly) {
  Plat_CreateMutex(kName);
  EXPECT_EQ(Plat_CreateEvent(kName, true, false), kPlatNoHandle);
  EXPECT_EQ(Plat_LastError(), 6u);
  Plat_CreateEvent(u"event", true, false);
  EXPECT_EQ(Plat_CreateMutex(u"event"), kPlatNoHandle);
}

TEST_F(Objects, UnnamedEventsAreApart) {
  const PlatHandle first = Plat_CreateEvent(nullptr, true, true);
  const PlatHandle second = Plat_CreateEvent(nullptr, true, false);
  EXPECT_EQ(Plat_LastError(), 0u);
  EXPECT_EQ(Plat_Wait(first, 0), kPlatWaitSignalled);
  EXPECT_EQ(Plat_Wait(second, 0), kPlatWaitTimeout);
}

TEST_F(Objects, MutexWaitersAreServedInOrderOfArrival) {
  const PlatHandle mutex = Plat_CreateMutex(kName);
  Plat_Wait(mutex, kPlatForever);
  for (const char* name : {"second", "third", "fourth"}) {
    kernel().StartHostThread([this, mutex, name] {
      Plat_Wait(mutex, kPlatForever);
      Log(name);
      Plat_Sleep(10);
      Plat_ReleaseMutex(mutex);
    });
  }
  Plat_Sleep(5);
  Plat_ReleaseMutex(mutex);
  Plat_Wait(mutex, kPlatForever);  // behind them all
  Log("main");
  EXPECT_EQ(log, (Lines{"5 second", "15 third", "25 fourth", "35 main"}));
}

TEST_F(Objects, AMutexWaitGivesUpAtItsLimitAndLeavesTheQueue) {
  const PlatHandle mutex = Plat_CreateMutex(kName);
  Plat_Wait(mutex, kPlatForever);
  std::uint32_t result = 0;
  kernel().StartHostThread([&] { result = Plat_Wait(mutex, 20); });
  Plat_Sleep(21);
  EXPECT_EQ(result, kPlatWaitTimeout);
  Plat_ReleaseMutex(mutex);
  EXPECT_FALSE(kernel().MutexHeld(kName));
}

TEST_F(Objects, AWaitOfNoTimeAsksOnly) {
  const PlatHandle mutex = Plat_CreateMutex(kName);
  Plat_Wait(mutex, kPlatForever);
  std::uint32_t result = 0;
  kernel().StartHostThread([&] { result = Plat_Wait(mutex, 0); });
  Plat_Sleep(1);
  EXPECT_EQ(result, kPlatWaitTimeout);
}

TEST_F(Objects, AMutexOfAnEndedThreadIsAbandoned) {
  const PlatHandle mutex = Plat_CreateMutex(kName);
  kernel().StartHostThread([&] {
    Plat_Wait(mutex, kPlatForever);
    Plat_Wait(mutex, kPlatForever);
  });
  Plat_Sleep(1);
  EXPECT_EQ(Plat_Wait(mutex, kPlatForever), kPlatWaitAbandoned);
  EXPECT_EQ(kernel().MutexDepth(kName), 1u);
  EXPECT_EQ(Plat_Wait(mutex, kPlatForever), kPlatWaitSignalled);  // told once
}

TEST_F(Objects, AWaiterGetsTheMutexWhenItsOwnerEnds) {
  const PlatHandle mutex = Plat_CreateMutex(kName);
  kernel().StartHostThread([&] {
    Plat_Wait(mutex, kPlatForever);
    Plat_Sleep(30);
  });
  Plat_Sleep(1);
  EXPECT_EQ(Plat_Wait(mutex, kPlatForever), kPlatWaitAbandoned);
  EXPECT_EQ(kernel().Now(), 30u);
}

TEST_F(Objects, AMutexClosedWhileAThreadWaitsForItIsStillHandedOn) {
  const PlatHandle mutex = Plat_CreateMutex(kName);
  const PlatHandle other = Plat_CreateMutex(kName);
  Plat_Wait(mutex, kPlatForever);
  std::uint32_t result = 99;
  kernel().StartHostThread([&] { result = Plat_Wait(other, kPlatForever); });
  Plat_Sleep(1);
  Plat_CloseHandle(other);
  Plat_ReleaseMutex(mutex);
  Plat_CloseHandle(mutex);
  Plat_Sleep(1);
  EXPECT_EQ(result, kPlatWaitSignalled);
}

TEST_F(Objects, AnEventWaitTakesItsTimeLimit) {
  const PlatHandle event = Plat_CreateEvent(nullptr, false, false);
  EXPECT_EQ(Plat_Wait(event, 3), kPlatWaitTimeout);
  EXPECT_EQ(kernel().Now(), 3u);
}

TEST_F(Objects, AnAutoResetEventLetsOneWaitPassAManualResetEventAll) {
  const PlatHandle single = Plat_CreateEvent(nullptr, false, true);
  EXPECT_EQ(Plat_Wait(single, 0), kPlatWaitSignalled);
  EXPECT_EQ(Plat_Wait(single, 0), kPlatWaitTimeout);
  const PlatHandle manual = Plat_CreateEvent(nullptr, true, true);
  EXPECT_EQ(Plat_Wait(manual, 0), kPlatWaitSignalled);
  EXPECT_EQ(Plat_Wait(manual, 0), kPlatWaitSignalled);
}

TEST_F(Objects, SignallingWakesOneWaiterOrAll) {
  for (const bool manual : {false, true}) {
    const PlatHandle event = Plat_CreateEvent(nullptr, manual, false);
    int woken = 0;
    for (int i = 0; i < 3; ++i) {
      kernel().StartHostThread([&] {
        if (Plat_Wait(event, 100) == kPlatWaitSignalled) ++woken;
      });
    }
    Plat_Sleep(1);
    kernel().SetEvent(event);
    Plat_Sleep(200);
    EXPECT_EQ(woken, manual ? 3 : 1);
  }
}

TEST_F(Objects, AThreadCanBeWaitedFor) {
  const WorkerBody body = [] {
    Plat_Sleep(40);
    return 7u;
  };
  const PlatHandle thread = StartWorker(body);
  EXPECT_EQ(Plat_Wait(thread, 10), kPlatWaitTimeout);
  EXPECT_EQ(Plat_Wait(thread, kPlatForever), kPlatWaitSignalled);
  EXPECT_EQ(kernel().Now(), 40u);
  EXPECT_EQ(ExitCode(thread), 7u);
}

TEST_F(Objects, LocksAreTracedByName) {
  const PlatHandle mutex = Plat_CreateMutex(kName);
  Plat_Wait(mutex, kPlatForever);
  Plat_ReleaseMutex(mutex);
  Plat_ReleaseMutex(mutex);
  Plat_Wait(kPlatNoHandle, kPlatForever);
  Plat_ReleaseMutex(kPlatNoHandle);
  struct Row {
    bool unlock;
    const char* name;
    bool ok;
  };
  const Row rows[] = {{false, "CS4_GlobalLock", true},
                      {true, "CS4_GlobalLock", true},
                      {true, "CS4_GlobalLock", false},
                      {false, "", false},
                      {true, "", false}};
  const auto events = Details<LockEvent>();
  ASSERT_EQ(events.size(), std::size(rows));
  for (std::size_t i = 0; i < events.size(); ++i) {
    EXPECT_EQ(events[i].unlock, rows[i].unlock) << i;
    EXPECT_EQ(events[i].name, rows[i].name) << i;
    EXPECT_EQ(events[i].ok, rows[i].ok) << i;
  }
}

TEST_F(Objects, ALockIsTracedWhenItIsTaken) {
  const PlatHandle mutex = Plat_CreateMutex(kName);
  Plat_Wait(mutex, kPlatForever);
  kernel().StartHostThread([&] { Plat_Wait(mutex, kPlatForever); });
  kernel().StartHostThread([&] { Plat_Wait(mutex, 2); });
  Plat_Sleep(10);
  Plat_ReleaseMutex(mutex);
  Plat_Sleep(1);
  const auto events = Details<LockEvent>();
  ASSERT_EQ(events.size(), 4u);
  EXPECT_FALSE(events[1].ok);  // gave up at 2
  EXPECT_EQ(Nth<LockEvent>(1).t, 2u);
  EXPECT_TRUE(events[3].ok);  // after the release at 10
  EXPECT_EQ(Nth<LockEvent>(3).t, 10u);
}

TEST_F(Objects, TheMutexFaultFires) {
  world().faults.Set(Fault::Mutex, true);
  EXPECT_EQ(Plat_CreateMutex(kName), kPlatNoHandle);
  EXPECT_EQ(Plat_LastError(), 8u);
  EXPECT_EQ(world().faults.Hits(Fault::Mutex), 1u);
  world().faults.Set(Fault::Mutex, false);
  EXPECT_NE(Plat_CreateMutex(kName), kPlatNoHandle);
  EXPECT_EQ(world().faults.Hits(Fault::Mutex), 1u);
}

TEST_F(Objects, TheEventFaultMakesNamedEventsExistAlready) {
  world().faults.Set(Fault::EventExists, true);
  EXPECT_NE(Plat_CreateEvent(nullptr, true, false), kPlatNoHandle);
  EXPECT_EQ(Plat_LastError(), 0u);
  EXPECT_EQ(world().faults.Hits(Fault::EventExists), 0u);
  EXPECT_NE(Plat_CreateEvent(u"VEXOSDK", true, false), kPlatNoHandle);
  EXPECT_EQ(Plat_LastError(), kPlatErrorAlreadyExists);
  EXPECT_EQ(world().faults.Hits(Fault::EventExists), 1u);
}

// ---- Deadlock ---------------------------------------------------------------------------------

std::string DeadlockText(PlatHandle object) {
  try {
    Plat_Wait(object, kPlatForever);
  } catch (const Deadlock& deadlock) {
    return deadlock.what();
  }
  return "no deadlock";
}

TEST_F(Objects, WaitingForAnEventThatNobodySignalsIsADeadlock) {
  EXPECT_EQ(DeadlockText(Plat_CreateEvent(u"VEXOSDK", true, false)),
            "nothing can wake the main host thread: the main host thread waits for the event "
            "\"VEXOSDK\"");
}

TEST_F(Objects, ALiveWorkerDoesNotHideADeadlock) {
  const WorkerBody body = []() -> std::uint32_t {
    for (;;) Plat_Sleep(2);
  };
  StartWorker(body);
  Plat_Sleep(1);
  EXPECT_THROW(Plat_Wait(Plat_CreateEvent(nullptr, true, false), kPlatForever), Deadlock);
  EXPECT_EQ(kernel().LiveThreads(), 1u);
  EXPECT_EQ(kernel().Now(), 1u);
}

TEST_F(Objects, ADeadlockSaysWhatEveryThreadWaitsFor) {
  const PlatHandle mutex = Plat_CreateMutex(kName);
  const PlatHandle other = Plat_CreateMutex(u"other");
  Plat_Wait(other, kPlatForever);
  kernel().StartHostThread([&] {
    Plat_Wait(mutex, kPlatForever);
    Plat_Wait(other, kPlatForever);
  });
  const WorkerBody body = [] {
    Plat_Sleep(50);
    return 0u;
  };
  StartWorker(body);
  Plat_Sleep(1);
  EXPECT_EQ(DeadlockText(mutex),
            "nothing can wake the main host thread: the main host thread waits for the mutex "
            "\"CS4_GlobalLock\" that host thread 1 holds; host thread 1 waits for the mutex "
            "\"other\" that the main host thread holds; library thread 4099 sleeps until 50 ms");
  // The main host thread left the queue and goes on as if it had not asked.
  Plat_ReleaseMutex(other);
  Plat_Sleep(1);
  EXPECT_EQ(Plat_Wait(mutex, kPlatForever), kPlatWaitAbandoned);
}

TEST_F(Objects, WaitingForAThreadThatWillGoOnIsNoDeadlock) {
  const PlatHandle mutex = Plat_CreateMutex(kName);
  kernel().StartHostThread([&] {
    Plat_Wait(mutex, kPlatForever);
    Plat_Sleep(1000);
    Plat_ReleaseMutex(mutex);
  });
  Plat_Sleep(1);
  EXPECT_EQ(Plat_Wait(mutex, kPlatForever), kPlatWaitSignalled);
  EXPECT_EQ(kernel().Now(), 1000u);
}

TEST_F(Objects, ABlockedSecondHostThreadIsLeftUntilTheWorldEnds) {
  const PlatHandle mutex = Plat_CreateMutex(kName);
  Plat_Wait(mutex, kPlatForever);
  const unsigned id = kernel().StartHostThread([&] {
    Plat_Wait(mutex, kPlatForever);
    Log("never");
  });
  Plat_Sleep(1000);
  EXPECT_FALSE(kernel().HostThreadDone(id));
  ResetWorld();
  EXPECT_TRUE(log.empty());
}

}  // namespace
}  // namespace sim
