// The one world, and that a fresh one remembers nothing.
#include "tests/sim/fixture.h"

namespace sim {
namespace {

using FreshWorld = PlatformTest;

TEST_F(FreshWorld, ForgetsEverything) {
  Plat_Sleep(100);
  Plat_CreateMutex(u"lock");
  world().faults.Set(Fault::Thread, true);
  world().windows.deaf = true;
  world().board.FitChips(1);
  world().nvram.SetBlank();
  PlatBusWindow window = Plat_MapBusWindow(0x06200000, 4, false);
  kernel().SetPreemption(3);

  ResetWorld();
  EXPECT_EQ(kernel().Now(), 0u);
  EXPECT_EQ(world().board.Time(), 0u);
  EXPECT_EQ(kernel().OpenHandles(), 0u);
  EXPECT_FALSE(world().faults.Fires(Fault::Thread));
  EXPECT_FALSE(world().windows.deaf);
  EXPECT_EQ(world().board.FittedCount(), 4u);
  EXPECT_TRUE(world().nvram.Content().empty());
  EXPECT_TRUE(world().trace.Events().empty());
  Plat_StoreByte(window, 1);
  EXPECT_EQ(world().trace.Cycles(), 0u);
  Plat_CreateMutex(u"lock");
  EXPECT_EQ(Plat_LastError(), 0u);
}

TEST_F(FreshWorld, IsTheSameWorldUntilItIsReset) { EXPECT_EQ(&TheWorld(), &TheWorld()); }

TEST_F(FreshWorld, RecordsEventsAtTheCurrentTimeByTheCurrentThread) {
  Plat_Sleep(7);
  world().Record(DebugEvent{false, "x"});
  EXPECT_EQ(Nth<DebugEvent>(0).t, 7u);
  EXPECT_EQ(Nth<DebugEvent>(0).by, By::Host);
}

TEST_F(FreshWorld, FaultsCountOnlyWhileTheyAreOn) {
  Faults faults;
  EXPECT_FALSE(faults.Fires(Fault::Send));
  faults.Set(Fault::Send, true);
  EXPECT_TRUE(faults.Fires(Fault::Send));
  EXPECT_TRUE(faults.Fires(Fault::Send));
  EXPECT_FALSE(faults.Fires(Fault::Post));
  faults.Set(Fault::Send, false);
  EXPECT_FALSE(faults.Fires(Fault::Send));
  EXPECT_EQ(faults.Hits(Fault::Send), 2u);
  EXPECT_EQ(faults.Hits(Fault::Post), 0u);
}

}  // namespace
}  // namespace sim
