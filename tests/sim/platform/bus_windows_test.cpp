// The bus windows as the library sees them.
#include "tests/sim/fixture.h"

namespace sim {
namespace {

using BusWindowAccess = PlatformTest;

struct Row {
  std::uint32_t physical;
  BusWindow window;
  Fault fault;
};
const Row kRows[] = {{0x06600000, BusWindow::Select, Fault::MapSelect},
                     {0x06400000, BusWindow::Address, Fault::MapAddress},
                     {0x06200000, BusWindow::Data, Fault::MapData}};

TEST_F(BusWindowAccess, EachPhysicalAddressHasAWindowOfItsOwn) {
  std::vector<PlatBusWindow> seen;
  for (const Row& row : kRows) {
    PlatBusWindow window = Plat_MapBusWindow(row.physical, 4, false);
    ASSERT_NE(window, nullptr);
    for (PlatBusWindow other : seen) EXPECT_NE(window, other);
    seen.push_back(window);
    Plat_StoreByte(window, 0xFF);
    EXPECT_EQ(world().trace.Events().back().window, row.window);
  }
  EXPECT_EQ(world().trace.Cycles(), 3u);
  EXPECT_TRUE(world().reports.All().empty());
}

TEST_F(BusWindowAccess, CyclesReachTheBoardAndTheTrace) {
  world().board.FitChips(1);
  PlatBusWindow select = Plat_MapBusWindow(0x06600000, 4, false);
  PlatBusWindow address = Plat_MapBusWindow(0x06400000, 4, false);
  PlatBusWindow data = Plat_MapBusWindow(0x06200000, 4, false);
  Plat_StoreByte(select, 0xFC);
  Plat_StoreByte(address, kChipId.first);
  EXPECT_EQ(Plat_LoadByte(data), kChipIdTw2835);
  Plat_StoreByte(select, 0xFF);
  const auto accesses = DecodeAccesses(world().trace);
  ASSERT_EQ(accesses.size(), 1u);
  EXPECT_TRUE(accesses[0].read);
  EXPECT_EQ(accesses[0].reg, kChipId.first);
  EXPECT_EQ(accesses[0].value, kChipIdTw2835);
  EXPECT_EQ(kernel().Now(), 0u);  // cycles take no time
}

TEST_F(BusWindowAccess, AnAccessThroughNoWindowMakesNoCycleAndIsReported) {
  PlatBusWindow window = Plat_MapBusWindow(0x06200000, 4, false);
  Plat_UnmapBusWindow(window, 4);
  for (PlatBusWindow none : {PlatBusWindow{nullptr}, window}) {
    Plat_StoreByte(none, 1);
    EXPECT_EQ(Plat_LoadByte(none), 0xFF);
  }
  PlatBusWindow mapped = Plat_MapBusWindow(0x06400000, 4, false);
  EXPECT_EQ(Plat_LoadByte(mapped + 1), 0xFF);  // the chips answer at the first byte only
  EXPECT_EQ(world().trace.Cycles(), 0u);
  EXPECT_EQ(world().reports.Count(ReportKind::UnmappedAccess), 5u);
}

TEST_F(BusWindowAccess, AWindowMappedTwiceStaysUntilItIsUnmappedTwice) {
  PlatBusWindow first = Plat_MapBusWindow(0x06200000, 4, false);
  PlatBusWindow second = Plat_MapBusWindow(0x06200000, 4, false);
  Plat_UnmapBusWindow(first, 4);
  Plat_StoreByte(second, 1);
  EXPECT_EQ(world().trace.Cycles(), 1u);
  Plat_UnmapBusWindow(second, 4);
  Plat_StoreByte(second, 1);
  EXPECT_EQ(world().trace.Cycles(), 1u);
}

TEST_F(BusWindowAccess, UnmappingTwiceIsReported) {
  PlatBusWindow window = Plat_MapBusWindow(0x06200000, 4, false);
  Plat_UnmapBusWindow(window, 4);
  Plat_UnmapBusWindow(window, 4);
  EXPECT_EQ(world().reports.Count(ReportKind::UnmappedAccess), 1u);
  EXPECT_EQ(Details<UnmapEvent>().size(), 1u);
}

TEST_F(BusWindowAccess, MappingIsTraced) {
  Plat_UnmapBusWindow(Plat_MapBusWindow(0x06400000, 4, false), 4);
  EXPECT_EQ(Plat_MapBusWindow(0x06000000, 8, true), nullptr);
  const auto maps = Details<MapEvent>();
  ASSERT_EQ(maps.size(), 2u);
  EXPECT_EQ(maps[0].physical, 0x06400000u);
  EXPECT_EQ(maps[0].length, 4u);
  EXPECT_FALSE(maps[0].cached);
  EXPECT_TRUE(maps[0].ok);
  EXPECT_EQ(maps[1].length, 8u);
  EXPECT_TRUE(maps[1].cached);
  EXPECT_FALSE(maps[1].ok);
  ASSERT_EQ(Details<UnmapEvent>().size(), 1u);
  EXPECT_EQ(Details<UnmapEvent>()[0].window, BusWindow::Address);
}

TEST_F(BusWindowAccess, EachMappingFaultHitsItsWindowOnly) {
  for (const Row& fault : kRows) {
    ResetWorld();
    world().faults.Set(fault.fault, true);
    for (const Row& row : kRows) {
      const bool hit = row.fault == fault.fault;
      EXPECT_EQ(Plat_MapBusWindow(row.physical, 4, false) == nullptr, hit);
      EXPECT_EQ(Details<MapEvent>().back().ok, !hit);
    }
    EXPECT_EQ(world().faults.Hits(fault.fault), 1u);
  }
}

}  // namespace
}  // namespace sim
