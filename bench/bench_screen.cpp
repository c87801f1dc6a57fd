// What a picture of the screen costs.
#include <benchmark/benchmark.h>

#include <cstdint>

#include "VexoCtrlSDK.h"
#include "harness/host.h"
#include "sim/screen/screen.h"
#include "sim/world.h"

namespace {

// Attached and initialized, the cameras of the standard; the worker stands still.
sim::World& Prepare(bool pal) {
  harness::Restart();
  sim::World& world = sim::TheWorld();
  world.board.FitChips(kChipsMax);
  for (unsigned channel = 0; channel < kChannelsMax; ++channel) {
    world.board.SetCamera(channel, pal ? sim::Camera::Pal : sim::Camera::Ntsc);
  }
  const int standard = pal ? VEXO_VIDEO_PAL : VEXO_VIDEO_NTSC;
  world.nvram.SetRecord("MDVR", static_cast<std::uint8_t>(standard), kChannelsMax);
  harness::Entry(1);
  harness::Initialize(world.windows.Create());
  sim::Bytes record;
  harness::CommandProc(VEXO_CMD_INIT, &record);
  harness::CommandProc(VEXO_CMD_STOP_MONITOR, nullptr);
  return world;
}

bool Command(std::uint32_t code, sim::Bytes record) {
  for (std::uint8_t channel = 0; channel < kChannelsMax; ++channel) record.push_back(channel);
  return harness::CommandProc(code, &record) == VEXO_OK;
}

void Pictures(benchmark::State& state, const sim::Board& board) {
  const sim::Image image = sim::ComposeScreen(board);
  state.counters["lines"] = image.height;
  for (auto _ : state) benchmark::DoNotOptimize(sim::ComposeScreen(board));
  harness::Restart();
}

// By standard and split mode.
void Live(benchmark::State& state) {
  const sim::World& world = Prepare(state.range(0) == VEXO_VIDEO_PAL);
  const auto mode = static_cast<std::uint8_t>(state.range(1));
  if (!Command(VEXO_CMD_LIVE_SPLIT, {0, 0, 0, 0, mode, 0})) state.SkipWithError("no layout");
  Pictures(state, world.board);
}

void Playback(benchmark::State& state) {
  const sim::World& world = Prepare(state.range(0) == VEXO_VIDEO_PAL);
  const auto mode = static_cast<std::uint8_t>(state.range(1));
  if (!Command(VEXO_CMD_PLAY_MODE, {0, 0, 0, 0, 0, mode}) ||
      harness::CommandProc(VEXO_CMD_RESTORE_BLANK, nullptr) != VEXO_OK) {
    state.SkipWithError("no playback");
  }
  Pictures(state, world.board);
}

void EveryStandard(benchmark::internal::Benchmark* benchmark) {
  benchmark->ArgNames({"pal", "mode"})
      ->ArgsProduct(
          {{VEXO_VIDEO_NTSC, VEXO_VIDEO_PAL}, {VEXO_SPLIT_FULL, VEXO_SPLIT_9, VEXO_SPLIT_16}})
      ->Unit(benchmark::kMillisecond);
}

BENCHMARK(Live)->Apply(EveryStandard);
BENCHMARK(Playback)->Apply(EveryStandard);

}  // namespace
