// Seeds and preemption: other orders of the same threads, each of them reproducible.
#include <set>

#include "tests/sim/fixture.h"

namespace sim {
namespace {

class Interleaving : public PlatformTest {
 protected:
  // Three threads that log and pause together; the order in which they did so.
  std::string OrderWithSeed(std::uint64_t seed) {
    ResetWorld();
    kernel().SetSeed(seed);
    std::string order;
    const auto run = [&order](char name) {
      for (int i = 0; i < 8; ++i) {
        order += name;
        Plat_Sleep(5);
      }
    };
    const WorkerBody body = [&] {
      run('w');
      return 0u;
    };
    StartWorker(body);
    kernel().StartHostThread([&] { run('2'); });
    run('h');
    Plat_Sleep(100);
    return order;
  }

  // Host and worker that store their own values; the order of the bus cycles.
  std::string CyclesWithPreemption(std::uint64_t seed, unsigned one_in) {
    ResetWorld();
    kernel().SetSeed(seed);
    kernel().SetPreemption(one_in);
    PlatBusWindow address = Plat_MapBusWindow(0x06400000, 4, false);
    const WorkerBody body = [&] {
      for (int i = 0; i < 30; ++i) {
        Plat_StoreByte(address, 2);
        if (i % 10 == 9) Plat_Sleep(2);
      }
      return 0u;
    };
    StartWorker(body);
    Plat_Sleep(1);
    for (int i = 0; i < 30; ++i) Plat_StoreByte(address, 1);
    kernel().SetPreemption(0);
    Plat_Sleep(100);
    std::string order;
    for (const Event& event : world().trace.Events()) {
      if (event.kind == Event::Kind::Store) order += event.value == 1 ? 'h' : 'w';
    }
    return order;
  }
};

TEST_F(Interleaving, NoSeedIsTheDefaultOrder) {
  std::string expected = "h";
  for (int i = 0; i < 7; ++i) expected += "2wh";
  EXPECT_EQ(OrderWithSeed(0), expected + "2w");
}

TEST_F(Interleaving, TheSameSeedIsTheSameOrder) {
  for (std::uint64_t seed = 1; seed <= 20; ++seed) {
    EXPECT_EQ(OrderWithSeed(seed), OrderWithSeed(seed));
  }
}

TEST_F(Interleaving, DifferentSeedsGiveDifferentOrders) {
  std::set<std::string> orders;
  for (std::uint64_t seed = 1; seed <= 50; ++seed) orders.insert(OrderWithSeed(seed));
  EXPECT_GT(orders.size(), 40u);
}

TEST_F(Interleaving, ASeedChoosesOnlyAmongThreadsThatAreDue) {
  for (std::uint64_t seed = 1; seed <= 50; ++seed) {
    ResetWorld();
    log.clear();
    kernel().SetSeed(seed);
    const WorkerBody body = [&] {
      Plat_Sleep(3);
      Log("worker");
      return 0u;
    };
    StartWorker(body);
    Plat_Sleep(2);
    Log("host");
    Plat_Sleep(2);
    Log("host");
    EXPECT_EQ(log, (Lines{"2 host", "3 worker", "4 host"}));
  }
}

TEST_F(Interleaving, ASeedMayLetAnotherThreadTakeAFreeMutexFirst) {
  std::set<std::string> firsts;
  for (std::uint64_t seed = 1; seed <= 20; ++seed) {
    ResetWorld();
    log.clear();
    kernel().SetSeed(seed);
    const PlatHandle mutex = Plat_CreateMutex(u"lock");
    kernel().StartHostThread([&] {
      Plat_Wait(mutex, kPlatForever);
      Log("second");
      Plat_ReleaseMutex(mutex);
    });
    Plat_Wait(mutex, kPlatForever);
    Log("main");
    Plat_ReleaseMutex(mutex);
    Plat_Sleep(1);
    EXPECT_EQ(log.size(), 2u);
    firsts.insert(log.front());
  }
  EXPECT_EQ(firsts.size(), 2u);
}

TEST_F(Interleaving, WithoutPreemptionNobodyIsInterruptedBetweenPauses) {
  const std::string order = CyclesWithPreemption(7, 0);
  EXPECT_EQ(order, std::string(10, 'w') + std::string(30, 'h') + std::string(20, 'w'));
}

TEST_F(Interleaving, PreemptionHandsOverAtBusCycles) {
  std::set<std::string> orders;
  for (std::uint64_t seed = 1; seed <= 20; ++seed) {
    const std::string order = CyclesWithPreemption(seed, 4);
    EXPECT_EQ(order.size(), 60u);
    EXPECT_EQ(order, CyclesWithPreemption(seed, 4));
    orders.insert(order);
  }
  EXPECT_GT(orders.size(), 15u);
}

TEST_F(Interleaving, PreemptionMayWakeASleeperWhoseTimeThenComes) {
  PlatBusWindow address = Plat_MapBusWindow(0x06400000, 4, false);
  kernel().SetSeed(1);
  kernel().SetPreemption(1);
  const WorkerBody body = [&] {
    Plat_Sleep(500);
    Log("worker");
    return 0u;
  };
  StartWorker(body);
  Plat_Sleep(1);
  Plat_StoreByte(address, 1);
  Log("host");
  EXPECT_EQ(log, (Lines{"500 worker", "500 host"}));
}

TEST_F(Interleaving, PreemptionWithNobodyElseGoesOn) {
  PlatBusWindow address = Plat_MapBusWindow(0x06400000, 4, false);
  kernel().SetPreemption(1);
  Plat_StoreByte(address, 1);
  EXPECT_EQ(kernel().Now(), 0u);
  EXPECT_EQ(world().trace.Cycles(), 1u);
}

TEST_F(Interleaving, BusCyclesTakeTheTimeThatTheyAreTold) {
  PlatBusWindow address = Plat_MapBusWindow(0x06400000, 4, false);
  Plat_StoreByte(address, 1);
  EXPECT_EQ(kernel().Microseconds(), 0u);
  kernel().SetCycleTime(300'000);
  for (int i = 0; i < 3; ++i) Plat_StoreByte(address, 1);
  EXPECT_EQ(kernel().Now(), 0u);
  EXPECT_EQ(kernel().Microseconds(), 900u);
  Plat_LoadByte(address);
  EXPECT_EQ(kernel().Now(), 1u);
  EXPECT_EQ(world().board.Time(), 1u);
  EXPECT_EQ(kernel().Microseconds(), 1200u);
  kernel().SetCycleTime(0);
  Plat_StoreByte(address, 1);
  EXPECT_EQ(kernel().Microseconds(), 1200u);
}

TEST_F(Interleaving, WhileABusCycleTakesTimeOthersRunThatHaveWaited) {
  PlatBusWindow address = Plat_MapBusWindow(0x06400000, 4, false);
  kernel().SetCycleTime(500'000);
  const WorkerBody body = [&] {
    Plat_Sleep(2);
    Log("worker");
    return 0u;
  };
  StartWorker(body);
  for (int i = 0; i < 8; ++i) Plat_StoreByte(address, 1);
  Log("host");
  EXPECT_EQ(log, (Lines{"2 worker", "4 host"}));
}

}  // namespace
}  // namespace sim
