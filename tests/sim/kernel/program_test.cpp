// Threads of a program that come in and go out.
#include <atomic>
#include <optional>
#include <thread>

#include "tests/sim/fixture.h"

namespace sim {
namespace {

using Pace = Kernel::Pace;

// A stay inside.
class Inside {
 public:
  Inside() { TheWorld().kernel.Enter(); }
  ~Inside() { TheWorld().kernel.Leave(); }
  Inside(const Inside&) = delete;
  Inside& operator=(const Inside&) = delete;
};

class ProgramThreads : public PlatformTest {
 protected:
  ~ProgramThreads() override { ResetWorld(); }  // before the bodies go

  void Open(Pace pace) {
    // The host's own code runs outside.
    world().windows.procedure = [this](PlatWindow, std::uint32_t message, std::uintptr_t wparam,
                                       std::intptr_t) {
      kernel().Leave();
      if (procedure) procedure(message, wparam);
      kernel().Enter();
    };
    kernel().OpenToProgram(pace);
  }
  PlatHandle StartLibraryThread(WorkerBody body) {
    const Inside inside;
    bodies_.push_back(std::make_unique<WorkerBody>(std::move(body)));
    return StartWorker(*bodies_.back());
  }
  unsigned Pump(std::uint32_t ms) {
    const Inside inside;
    return kernel().Pump(ms);
  }
  std::uint32_t Now() {
    const Inside inside;
    return kernel().Ticks();
  }

  PlatWindow window = world().windows.Create();
  std::function<void(std::uint32_t message, std::uintptr_t wparam)> procedure;

 private:
  std::vector<std::unique_ptr<WorkerBody>> bodies_;
};

// Until another thread has come so far; a test's own limit ends what never comes.
void Await(const std::atomic<bool>& reached) { reached.wait(false); }
void Reach(std::atomic<bool>& place) {
  place = true;
  place.notify_all();
}

TEST_F(ProgramThreads, VirtualTimeStandsWhileTheProgramIsInItsOwnCode) {
  Open(Pace::Virtual);
  StartLibraryThread([this] {
    for (int i = 0; i < 3; ++i) {
      Plat_Sleep(100);
      Log("library");
    }
    return 0u;
  });
  EXPECT_EQ(Now(), 0u);
  EXPECT_EQ(log, Lines{});
  Pump(250);
  EXPECT_EQ(Now(), 250u);
  EXPECT_EQ(log, (Lines{"100 library", "200 library"}));
  EXPECT_EQ(Now(), 250u);
}

TEST_F(ProgramThreads, VirtualTimeJumps) {
  Open(Pace::Virtual);
  Pump(3'600'000);
  EXPECT_EQ(Now(), 3'600'000u);
}

TEST_F(ProgramThreads, AWindowsProcedureRunsInItsOwnThreadWhileTheSenderWaits) {
  for (const Pace pace : {Pace::Virtual, Pace::Real}) {
    ResetWorld();
    log.clear();
    window = world().windows.Create();
    std::optional<std::thread::id> where;
    procedure = [&](std::uint32_t message, std::uintptr_t wparam) {
      where = std::this_thread::get_id();
      EXPECT_EQ(message, 0x2404u);
      EXPECT_EQ(wparam, 7u);
      const Inside inside;  // a call from within the procedure
      log.push_back("procedure");
    };
    Open(pace);
    StartLibraryThread([this] {
      EXPECT_TRUE(Plat_SendMessage(window, 0x2404, 7, 0, 5000));
      log.push_back("sent");
      return 0u;
    });
    EXPECT_EQ(Pump(0) + Pump(20), 1u);
    EXPECT_EQ(where, std::this_thread::get_id());
    EXPECT_EQ(log, (Lines{"procedure", "sent"}));
  }
}

TEST_F(ProgramThreads, APostedMessageIsHandledByThePumpThatIsWaiting) {
  std::vector<std::uint32_t> at;
  procedure = [&](std::uint32_t, std::uintptr_t) { at.push_back(Now()); };
  Open(Pace::Virtual);
  StartLibraryThread([this] {
    Plat_Sleep(40);
    EXPECT_TRUE(Plat_PostMessage(window, 0x2405, 1, 0));
    return 0u;
  });
  EXPECT_EQ(Pump(100), 1u);
  EXPECT_EQ(at, std::vector<std::uint32_t>{40});
  EXPECT_EQ(Now(), 100u);
}

TEST_F(ProgramThreads, ASenderGivesUpWhileTheProcedureIsStillRunning) {
  bool ok = true;
  procedure = [&](std::uint32_t, std::uintptr_t) {
    const Inside inside;
    kernel().Idle(8000);
  };
  Open(Pace::Virtual);
  StartLibraryThread([&, this] {
    ok = Plat_SendMessage(window, 0x2404, 7, 0, 5000);
    Log("gave up: " + std::to_string(Plat_LastError()));
    return 0u;
  });
  EXPECT_EQ(Pump(10), 1u);
  EXPECT_FALSE(ok);
  EXPECT_EQ(log, Lines{"5000 gave up: 1460"});
  ASSERT_EQ(Details<MessageEvent>().size(), 1u);
  EXPECT_FALSE(Details<MessageEvent>()[0].ok);
}

TEST_F(ProgramThreads, ASenderIsEndedWhileTheProcedureIsRunning) {
  procedure = [&](std::uint32_t, std::uintptr_t wparam) {
    const Inside inside;
    EXPECT_TRUE(Plat_TerminateThread(wparam, 3));
  };
  Open(Pace::Virtual);
  PlatHandle sender = 0;
  sender = StartLibraryThread([&, this] {
    Plat_SendMessage(window, 0x2404, sender, 0, 5000);
    ADD_FAILURE() << "it was ended";
    return 0u;
  });
  EXPECT_EQ(Pump(10), 1u);
  EXPECT_EQ(ExitCode(sender), 3u);
}

TEST_F(ProgramThreads, ADeafWindowIsNoReasonToSpin) {
  Open(Pace::Virtual);
  world().windows.deaf = true;
  bool ok = true;
  StartLibraryThread([&, this] {
    ok = Plat_SendMessage(window, 0x2404, 7, 0, 5000);
    return 0u;
  });
  EXPECT_EQ(Pump(6000), 0u);
  EXPECT_FALSE(ok);
}

TEST_F(ProgramThreads, OneThreadIsInsideAtATime) {
  for (const Pace pace : {Pace::Virtual, Pace::Real}) {
    ResetWorld();
    Open(pace);
    constexpr unsigned kThreads = 4;
    constexpr unsigned kStays = 500;
    unsigned stays = 0;  // not atomic: the stays are one after the other
    std::vector<std::thread> threads;
    for (unsigned i = 0; i < kThreads; ++i) {
      threads.emplace_back([&] {
        for (unsigned n = 0; n < kStays; ++n) {
          const Inside inside;
          ++stays;
        }
      });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(stays, kThreads * kStays);
  }
}

TEST_F(ProgramThreads, OthersGoOnWhereOneThreadWaits) {
  Open(Pace::Virtual);
  std::atomic<bool> inside_twice = false;
  std::thread other;
  procedure = [&](std::uint32_t, std::uintptr_t) {
    other = std::thread([&] {
      const Inside inside;
      Reach(inside_twice);
    });
    Await(inside_twice);  // while the main host thread is in its procedure
  };
  {
    const Inside inside;
    EXPECT_TRUE(Plat_PostMessage(window, 0x2405, 1, 0));
  }
  EXPECT_EQ(Pump(0), 1u);
  other.join();
  EXPECT_TRUE(inside_twice);
}

TEST_F(ProgramThreads, WhatAThreadHoldsIsAbandonedWhenItEnds) {
  for (const Pace pace : {Pace::Virtual, Pace::Real}) {
    ResetWorld();
    Open(pace);
    std::atomic<bool> held = false;
    std::atomic<bool> end = false;
    std::thread holder([&] {
      {
        const Inside inside;
        EXPECT_EQ(Plat_Wait(Plat_CreateMutex(u"lock"), kPlatForever), kPlatWaitSignalled);
      }
      Reach(held);
      Await(end);
    });
    Await(held);
    std::thread waiter([&] {
      const Inside inside;
      const PlatHandle lock = Plat_CreateMutex(u"lock");
      Reach(end);
      EXPECT_EQ(Plat_Wait(lock, kPlatForever), kPlatWaitAbandoned);
      EXPECT_TRUE(Plat_ReleaseMutex(lock));
    });
    holder.join();
    waiter.join();
  }
}

TEST_F(ProgramThreads, VirtualTimeStandsWhereAllWaitForAThreadThatIsOutside) {
  Open(Pace::Virtual);
  StartLibraryThread([] {
    for (;;) Plat_Sleep(1);
    return 0u;
  });
  PlatHandle lock = 0;
  {
    const Inside inside;
    lock = Plat_CreateMutex(u"lock");
    EXPECT_EQ(Plat_Wait(lock, kPlatForever), kPlatWaitSignalled);
  }
  std::atomic<bool> asked = false;
  std::thread waiter([&] {
    const Inside inside;
    Reach(asked);
    EXPECT_EQ(Plat_Wait(lock, kPlatForever), kPlatWaitSignalled);
    EXPECT_EQ(kernel().Now(), 0u);
    EXPECT_TRUE(Plat_ReleaseMutex(lock));
  });
  Await(asked);
  {
    const Inside inside;  // comes in when the other waits
    EXPECT_EQ(kernel().OtherVisitors(), 1u);
    EXPECT_EQ(kernel().Now(), 0u);
    EXPECT_TRUE(Plat_ReleaseMutex(lock));
  }
  waiter.join();
}

TEST_F(ProgramThreads, TellsOfAWaitThatNothingCanEnd) {
  Open(Pace::Virtual);
  std::vector<std::string> told;
  kernel().on_stuck = [&](const std::string& what) {
    told.push_back(what);
    // As another process could.
    kernel().SetEvent(0x104);
  };
  {
    const Inside inside;
    const PlatHandle event = Plat_CreateEvent(u"bell", false, false);
    ASSERT_EQ(event, 0x104u);
    EXPECT_EQ(Plat_Wait(event, kPlatForever), kPlatWaitSignalled);
  }
  EXPECT_EQ(told, Lines{"nothing can wake the main host thread: the main host thread waits for the "
                        "event \"bell\""});
}

TEST_F(ProgramThreads, RealTimeIsTheClocks) {
  Open(Pace::Real);
  const auto start = std::chrono::steady_clock::now();
  std::atomic<unsigned> passes = 0;
  StartLibraryThread([&passes] {
    for (;;) {
      Plat_Sleep(1);
      ++passes;
      passes.notify_all();
    }
    return 0u;
  });
  // Nobody is inside, and the library's thread goes on all the same.
  for (unsigned seen = 0; seen < 20; seen = passes) passes.wait(seen);
  Pump(30);
  const auto took = std::chrono::steady_clock::now() - start;
  EXPECT_GE(took, std::chrono::milliseconds(50));
  const std::uint32_t now = Now();
  EXPECT_GE(now, 50u);
  const auto at_most = std::chrono::steady_clock::now() - start + std::chrono::milliseconds(1);
  EXPECT_LE(std::chrono::milliseconds(now), at_most);
}

TEST_F(ProgramThreads, AMessageWakesThePumpBeforeItsTime) {
  Open(Pace::Real);
  std::atomic<bool> handled = false;
  procedure = [&](std::uint32_t, std::uintptr_t) { Reach(handled); };
  std::thread sender([&] {
    const Inside inside;
    EXPECT_TRUE(Plat_SendMessage(window, 0x2404, 7, 0, kPlatForever));
  });
  while (!handled) Pump(200);
  sender.join();
}

TEST_F(ProgramThreads, ABoardUnderAnotherSystemIsToldTheTime) {
  kernel().SetClock(0x1'0000'0010, By::Worker);
  EXPECT_EQ(kernel().Now(), 0x10u);
  EXPECT_EQ(kernel().NowUnwrapped(), 0x1'0000'0010u);
  EXPECT_EQ(kernel().Current(), By::Worker);
  Plat_DebugOutput(u"x");
  EXPECT_EQ(Nth<DebugEvent>(0).t, 0x10u);
  EXPECT_EQ(Nth<DebugEvent>(0).by, By::Worker);
  kernel().SetClock(0, By::Host);
}

}  // namespace
}  // namespace sim
