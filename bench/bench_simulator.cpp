// How fast the simulated board is: bus cycles, initialization, and virtual time against real.
#include <benchmark/benchmark.h>

#include <cstdint>

#include "VexoCtrlSDK.h"
#include "chip/register_bus.h"
#include "harness/host.h"
#include "platform/platform.h"
#include "sim/world.h"

namespace {

constexpr std::uint32_t kAttach = 1;
constexpr std::uint32_t kIdleMs = 10'000;

// A fresh 16-channel board with the library attached and a host window bound.
sim::World& AttachedWorld() {
  harness::Restart();
  sim::World& world = sim::TheWorld();
  world.board.FitChips(kChipsMax);
  harness::Entry(kAttach);
  harness::Initialize(world.windows.Create());
  return world;
}

bool InitializeChips() {
  sim::Bytes record;
  return harness::CommandProc(VEXO_CMD_INIT, &record) == VEXO_OK;
}

// One register write through the platform's byte access, four bus cycles.
void BusCycles(benchmark::State& state, bool trace) {
  constexpr std::uint8_t kSelectMasterPage1 = 0xFD;
  constexpr std::uint8_t kReg = 0x40;
  constexpr std::uint64_t kCyclesKept = 1 << 20;
  sim::World& world = AttachedWorld();
  world.trace.SetEnabled(trace);
  world.trace.Clear();
  Plat_StoreByte(g_bus.select, kSelectIdle);
  if (world.trace.Cycles() != 1) state.SkipWithError("a bus cycle was not counted");
  std::uint64_t clear_at = kCyclesKept;
  std::uint64_t cycles = 0;
  std::uint8_t value = 0;
  for (auto _ : state) {
    Plat_StoreByte(g_bus.select, kSelectMasterPage1);
    Plat_StoreByte(g_bus.address, kReg);
    Plat_StoreByte(g_bus.data, value++);
    Plat_StoreByte(g_bus.select, kSelectIdle);
    cycles += 4;
    // A long run keeps its trace; here it would only fill the memory.
    if (cycles >= clear_at) {
      clear_at += kCyclesKept;
      world.trace.Clear();
    }
  }
  state.SetItemsProcessed(static_cast<std::int64_t>(cycles));
}

void BusCyclesTraced(benchmark::State& state) { BusCycles(state, true); }
void BusCyclesUntraced(benchmark::State& state) { BusCycles(state, false); }

// Command 0xF001 on 16 channels, a running worker's stop and restart included.
void Initialization(benchmark::State& state) {
  sim::World& world = AttachedWorld();
  std::uint64_t cycles = 0;
  for (auto _ : state) {
    world.trace.Clear();  // its count of cycles too
    if (!InitializeChips()) {
      state.SkipWithError("initialization failed");
      break;
    }
    cycles = world.trace.Cycles();
  }
  state.counters["bus_cycles"] = static_cast<double>(cycles);
  harness::Restart();
}

// The host pumps its messages while nothing happens but the worker's polling.
void IdleBoard(benchmark::State& state) {
  sim::World& world = AttachedWorld();
  if (!InitializeChips()) state.SkipWithError("initialization failed");
  for (auto _ : state) {
    world.trace.Clear();
    world.kernel.Pump(kIdleMs);
  }
  if (world.trace.Cycles() == 0) state.SkipWithError("the worker does not poll");
  const double virtual_seconds = kIdleMs / 1000.0 * static_cast<double>(state.iterations());
  state.counters["virtual_s_per_real_s"] =
      benchmark::Counter(virtual_seconds, benchmark::Counter::kIsRate);
  harness::Restart();
}

// Real time, not the main thread's: the worker is a thread of its own.
BENCHMARK(BusCyclesTraced)->UseRealTime();
BENCHMARK(BusCyclesUntraced)->UseRealTime();
BENCHMARK(Initialization)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(IdleBoard)->UseRealTime()->Unit(benchmark::kMillisecond);

}  // namespace
