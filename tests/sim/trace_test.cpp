// The list of events, and register accesses decoded from it.
#include "tests/sim/fixture.h"

namespace sim {
namespace {

void Cycle(Trace& trace, By by, BusWindow window, std::uint8_t value, bool load = false) {
  trace.AddCycle(9, by, load, window, value);
}

TEST(TraceList, KeepsCyclesAndOtherEventsInOneOrder) {
  Trace trace;
  trace.Add(1, By::Worker, SleepEvent{false, 5});
  trace.AddCycle(2, By::Host, true, BusWindow::Data, 0x28);
  trace.Add(3, By::Host, DebugEvent{true, "text"});
  ASSERT_EQ(trace.Events().size(), 3u);
  const Event& cycle = trace.Events()[1];
  EXPECT_EQ(cycle.t, 2u);
  EXPECT_EQ(cycle.by, By::Host);
  EXPECT_EQ(cycle.kind, Event::Kind::Load);
  EXPECT_EQ(cycle.window, BusWindow::Data);
  EXPECT_EQ(cycle.value, 0x28);
  EXPECT_EQ(trace.As<SleepEvent>(trace.Events()[0])->ms, 5u);
  EXPECT_EQ(trace.Events()[0].by, By::Worker);
  EXPECT_EQ(trace.As<SleepEvent>(cycle), nullptr);
  EXPECT_EQ(trace.As<SleepEvent>(trace.Events()[2]), nullptr);
  EXPECT_EQ(std::get<DebugEvent>(trace.Detail(trace.Events()[2])).text, "text");
  EXPECT_EQ(trace.Mark(), 3u);
}

// Counts what it hears.
class Hearer : public TraceListener {
 public:
  void OnEvent(const Event& event, const EventDetail* detail) override {
    ++(detail == nullptr ? cycles : others);
    last = event.t;
  }
  unsigned cycles = 0;
  unsigned others = 0;
  std::uint32_t last = 0;
};

TEST(TraceList, ListenersHearWhatIsNotKeptUntilTheyAreRemoved) {
  Trace trace;
  Hearer all;
  Hearer but_cycles;
  trace.SetCapacity(2);
  trace.AddListener(all);
  trace.AddListener(but_cycles, Trace::Hears::AllButCycles);
  for (std::uint32_t t = 0; t < 5; ++t) {
    trace.AddCycle(t, By::Host, false, BusWindow::Data, 0);
    trace.Add(t + 10, By::Host, SleepEvent{false, 5});
  }
  EXPECT_EQ(trace.Events().size(), 2u);
  EXPECT_EQ(trace.Cycles(), 5u);
  EXPECT_EQ(all.cycles, 5u);
  EXPECT_EQ(all.others, 5u);
  EXPECT_EQ(but_cycles.cycles, 0u);
  EXPECT_EQ(but_cycles.others, 5u);
  EXPECT_EQ(all.last, 14u);
  trace.RemoveListener(all);
  trace.ForgetEvents();
  Cycle(trace, By::Host, BusWindow::Data, 0);
  EXPECT_EQ(all.cycles, 5u);
  EXPECT_EQ(trace.Events().size(), 1u);  // kept again
  EXPECT_EQ(trace.Cycles(), 6u);
}

TEST(TraceList, SwitchedOffCountsCyclesOnly) {
  Trace trace;
  trace.SetEnabled(false);
  trace.Add(1, By::Host, SleepEvent{});
  Cycle(trace, By::Host, BusWindow::Select, 0);
  EXPECT_TRUE(trace.Events().empty());
  EXPECT_EQ(trace.Cycles(), 1u);
  trace.SetEnabled(true);
  Cycle(trace, By::Host, BusWindow::Select, 0);
  EXPECT_EQ(trace.Events().size(), 1u);
  EXPECT_EQ(trace.Cycles(), 2u);
}

TEST(TraceList, ClearForgetsEverything) {
  Trace trace;
  trace.Add(1, By::Host, SleepEvent{});
  Cycle(trace, By::Host, BusWindow::Select, 0);
  trace.Clear();
  EXPECT_TRUE(trace.Events().empty());
  EXPECT_EQ(trace.Cycles(), 0u);
  trace.Add(1, By::Host, SleepEvent{false, 8});
  EXPECT_EQ(trace.As<SleepEvent>(trace.Events()[0])->ms, 8u);
}

TEST(RegisterAccesses, WritesReadsAndTablesAreDecoded) {
  Trace trace;
  const struct {
    BusWindow window;
    std::uint8_t value;
    bool load;
  } cycles[] = {
      {BusWindow::Select, 0xFD, false},  {BusWindow::Address, 0x06, false},
      {BusWindow::Data, 0x84, false},    {BusWindow::Select, 0xFF, false},
      {BusWindow::Select, 0xAA, false},  {BusWindow::Address, 0xFF, false},
      {BusWindow::Data, 1, false},       {BusWindow::Data, 2, false},
      {BusWindow::Select, 0xFF, false},  {BusWindow::Select, 0xFB, false},
      {BusWindow::Address, 0x0A, false}, {BusWindow::Data, 0x33, true},
      {BusWindow::Select, 0xFF, false},
  };
  for (const auto& cycle : cycles) Cycle(trace, By::Host, cycle.window, cycle.value, cycle.load);
  const auto accesses = DecodeAccesses(trace);
  struct Row {
    bool read;
    std::uint8_t chip, page, reg, value;
  };
  const Row rows[] = {{false, kChipMaster, 1, 0x06, 0x84},
                      {false, kChipAll, 2, 0xFF, 1},
                      {false, kChipAll, 2, 0x00, 2},  // the address wraps
                      {true, kChipSlave1, 2, 0x0A, 0x33}};
  ASSERT_EQ(accesses.size(), std::size(rows));
  for (std::size_t i = 0; i < accesses.size(); ++i) {
    EXPECT_EQ(accesses[i].read, rows[i].read) << i;
    EXPECT_EQ(accesses[i].Chip(), rows[i].chip) << i;
    EXPECT_EQ(accesses[i].Page(), rows[i].page) << i;
    EXPECT_EQ(accesses[i].reg, rows[i].reg) << i;
    EXPECT_EQ(accesses[i].value, rows[i].value) << i;
    EXPECT_EQ(accesses[i].t, 9u) << i;
  }
}

TEST(RegisterAccesses, HostAndWorkerAreDecodedApart) {
  Trace trace;
  Cycle(trace, By::Host, BusWindow::Select, 0xFC);
  Cycle(trace, By::Worker, BusWindow::Select, 0xFD);
  Cycle(trace, By::Host, BusWindow::Address, 0x10);
  Cycle(trace, By::Worker, BusWindow::Address, 0xAB);
  Cycle(trace, By::Host, BusWindow::Data, 1);
  Cycle(trace, By::Worker, BusWindow::Data, 2, true);
  const auto accesses = DecodeAccesses(trace);
  ASSERT_EQ(accesses.size(), 2u);
  EXPECT_EQ(accesses[0].by, By::Host);
  EXPECT_EQ(accesses[0].Page(), 0);
  EXPECT_EQ(accesses[0].reg, 0x10);
  EXPECT_EQ(accesses[1].by, By::Worker);
  EXPECT_EQ(accesses[1].Page(), 1);
  EXPECT_EQ(accesses[1].reg, 0xAB);
}

TEST(RegisterAccesses, AnAccessBegunBeforeTheMarkIsDecodedWhole) {
  Trace trace;
  Cycle(trace, By::Host, BusWindow::Select, 0xFC);
  Cycle(trace, By::Host, BusWindow::Address, 0x10);
  Cycle(trace, By::Host, BusWindow::Data, 1);
  const std::size_t mark = trace.Mark();
  trace.Add(9, By::Host, SleepEvent{});
  Cycle(trace, By::Host, BusWindow::Data, 2);
  const auto accesses = DecodeAccesses(trace, mark);
  ASSERT_EQ(accesses.size(), 1u);
  EXPECT_EQ(accesses[0].Chip(), kChipMaster);
  EXPECT_EQ(accesses[0].reg, 0x11);
  EXPECT_EQ(accesses[0].value, 2);
}

TEST(RegisterAccesses, SelectBytesNameChipAndPage) {
  struct Row {
    std::uint8_t select, chip, page;
  };
  const Row rows[] = {
      {0xFC, kChipMaster, 0}, {0xFD, kChipMaster, 1}, {0xFE, kChipMaster, 2},
      {0xF3, kChipSlave1, 0}, {0xF7, kChipSlave1, 1}, {0xFB, kChipSlave1, 2},
      {0xCF, kChipSlave2, 0}, {0xDF, kChipSlave2, 1}, {0xEF, kChipSlave2, 2},
      {0x3F, kChipSlave3, 0}, {0x7F, kChipSlave3, 1}, {0xBF, kChipSlave3, 2},
      {0x00, kChipAll, 0},    {0x55, kChipAll, 1},    {0xAA, kChipAll, 2},
      {0xFF, 0, 0xFF},  // none
      {0xF0, 0, 0xFF},  // two
      {0x54, 0, 0xFF},  // all, on two pages
  };
  for (const Row& row : rows) {
    RegisterAccess access;
    access.select = row.select;
    EXPECT_EQ(access.Chip(), row.chip) << int{row.select};
    EXPECT_EQ(access.Page(), row.page) << int{row.select};
  }
}

}  // namespace
}  // namespace sim
