// Time that passes as something else does.
#include <gmock/gmock.h>

#include "tests/sim/fixture.h"

namespace sim {
namespace {

using testing::ElementsAre;

class Pacer : public PlatformTest {
 protected:
  // Lets time pass at once, and says when it was asked for what.
  void Watch() {
    kernel().SetPacer([this](std::uint64_t due) {
      Log((kernel().Current() == By::Host ? "host asks for " : "worker asks for ") +
          std::to_string(due));
      return due;
    });
  }
  // Ends pumps at this time, if it can be.
  void EndAt(std::uint64_t time) {
    kernel().SetPacer([time](std::uint64_t due) { return std::min(time, due); });
  }
};

TEST_F(Pacer, IsAskedBeforeTimeMovesByWhoeverHasTheTurn) {
  const WorkerBody body = [&] {
    Plat_Sleep(3);
    Log("worker");
    Plat_Sleep(100);
    return 0u;
  };
  StartWorker(body);
  Watch();
  Plat_Sleep(5);
  Plat_Sleep(0);
  EXPECT_EQ(log, (Lines{"0 worker asks for 3", "3 worker", "3 worker asks for 5"}));
}

TEST_F(Pacer, IsAskedWhenAThreadEnds) {
  const WorkerBody body = [] { return 0u; };
  StartWorker(body);
  Watch();
  Plat_Sleep(5);
  EXPECT_EQ(log, (Lines{"0 worker asks for 5"}));
}

TEST_F(Pacer, IsAskedWhenABusCycleHandsOverToAThreadThatIsNotDue) {
  const WorkerBody body = [&] {
    Plat_Sleep(7);
    Log("worker");
    return 0u;
  };
  StartWorker(body);
  Plat_Sleep(1);
  Watch();
  kernel().SetPreemption(1);
  kernel().AtBusCycle();
  kernel().SetPreemption(0);
  EXPECT_EQ(log, (Lines{"1 host asks for 7", "7 worker"}));
}

TEST_F(Pacer, EndsAPumpBeforeItsTime) {
  EndAt(4);
  kernel().Pump(10);
  EXPECT_EQ(kernel().Now(), 4u);
  EXPECT_EQ(world().board.Time(), 4u);
}

TEST_F(Pacer, EndsNoSleepAndNoPumpAtTheTimeThatIsNow) {
  EndAt(4);
  Plat_Sleep(10);
  EXPECT_EQ(kernel().Now(), 10u);
  EndAt(10);
  kernel().Pump(10);
  EXPECT_EQ(kernel().Now(), 20u);
}

TEST_F(Pacer, IsNotAskedForTheThreadsOfAProgram) {
  Watch();
  kernel().OpenToProgram(Kernel::Pace::Virtual);
  kernel().Enter();
  kernel().Idle(5);
  kernel().Leave();
  EXPECT_EQ(kernel().NowUnwrapped(), 5u);
  EXPECT_THAT(log, ElementsAre());
}

// Three threads that are often due at the same time, so that each seed is another run.
TEST_F(Pacer, PumpsThatEndedEarlyAndThoseThatWereThatLongAreTheSameRunWithAnySeed) {
  for (std::uint64_t seed = 0; seed < 20; ++seed) {
    std::vector<std::uint32_t> lengths;
    const auto run = [&](bool again) {
      ResetWorld();
      log.clear();
      kernel().SetSeed(seed);
      const WorkerBody bodies[] = {[&] {
                                     for (int i = 0; i < 60; ++i) {
                                       Plat_Sleep(4);
                                       Log("four");
                                     }
                                     return 0u;
                                   },
                                   [&] {
                                     for (int i = 0; i < 40; ++i) {
                                       Plat_Sleep(6);
                                       Log("six");
                                     }
                                     return 0u;
                                   },
                                   [&] {
                                     for (int i = 0; i < 30; ++i) {
                                       Plat_Sleep(8);
                                       Log("eight");
                                     }
                                     return 0u;
                                   }};
      for (const WorkerBody& body : bodies) StartWorker(body);
      if (again) {
        for (const std::uint32_t length : lengths) kernel().Pump(length);
      } else {
        for (std::uint64_t end = 0; end < 240;) {
          end += 1 + (end * 7 + seed) % 11;
          // Then, or as soon after it as something else is not due.
          kernel().SetPacer([this, end](std::uint64_t due) {
            return std::min(due, std::max(end, kernel().NowUnwrapped() + 1));
          });
          const std::uint32_t begin = kernel().Now();
          kernel().Pump(1000);
          lengths.push_back(kernel().Now() - begin);
        }
      }
      Lines done = log;
      ResetWorld();
      return done;
    };
    const Lines first = run(false);
    EXPECT_GT(lengths.size(), 10u);
    EXPECT_EQ(run(true), first) << "seed " << seed;
  }
}

}  // namespace
}  // namespace sim
