// Text lines a second, beside the C library's own way to cut the same lines and read their numbers.
#include <benchmark/benchmark.h>

#include <array>
#include <cstdlib>
#include <cstring>
#include <string>

#include "VexoCtrlSDK.h"
#include "harness/host.h"
#include "platform/platform.h"
#include "sim/world.h"

namespace {

// From the first keyword of the grammar to the last, words and numbers of every kind.
constexpr std::array kLines = {
    "vexo init_ 1 ",
    "vexo lsplit 6 0 0 ",
    "vexo lsplit_pos 1 0 2 0 2 0 ",
    "vexo mpip start 2 0 90 132 10 40 0 ",
    "vexo zoom pos 45 30 0 ",
    "vexo mmask change 0 3 4 ",
    "vexo rr 3 1 ab ",
    "vexo color 16 all 128 128 128 128 ",
    "vpb setp 1 2 3 4 5 6 7 8 9 10 ",
    "vpb set_wndsize 0 100 80 ",
};

constexpr auto kLineCount = static_cast<std::int64_t>(kLines.size());

// The library attached, the chips not initialized: lines are read and nothing is sent to the chips.
void Lines(benchmark::State& state) {
  harness::Restart();
  harness::Entry(1);
  sim::TheWorld().trace.SetEnabled(false);
  for (auto _ : state) {
    for (const char* line : kLines) benchmark::DoNotOptimize(VEXOAPI_TextCommandProc(line));
  }
  state.SetItemsProcessed(state.iterations() * kLineCount);
  harness::Restart();
}

void LinesByStrtok(benchmark::State& state) {
  for (auto _ : state) {
    for (const char* line : kLines) {
      char copy[256];
      std::memcpy(copy, line, std::strlen(line) + 1);
      char* rest = nullptr;
      int sum = 0;
      for (const char* token = strtok_r(copy, " ,\n", &rest); token != nullptr;
           token = strtok_r(nullptr, " ,\n", &rest)) {
        sum += std::atoi(token);
      }
      benchmark::DoNotOptimize(sum);
    }
  }
  state.SetItemsProcessed(state.iterations() * kLineCount);
}

// One line with all its work on a 16-channel board: the layout that a console user changes most.
void LiveSplitLine(benchmark::State& state) {
  harness::Restart();
  sim::World& world = sim::TheWorld();
  world.board.FitChips(kChipsMax);
  harness::Entry(1);
  harness::Initialize(world.windows.Create());
  sim::Bytes record;
  harness::CommandProc(VEXO_CMD_INIT, &record);
  harness::CommandProc(VEXO_CMD_STOP_MONITOR, nullptr);
  world.trace.SetEnabled(false);
  for (auto _ : state) {
    if (VEXOAPI_TextCommandProc("vexo lsplit 6 0 ") != VEXO_OK) state.SkipWithError("rejected");
  }
  state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()));
  harness::Restart();
}

BENCHMARK(Lines);
BENCHMARK(LinesByStrtok);
BENCHMARK(LiveSplitLine);

}  // namespace

BENCHMARK_MAIN();
