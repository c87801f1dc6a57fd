// A program's calls through the Linux desk library, and how long after a cable is pulled its window
// is told.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <vector>

#include "VexoDesk.h"

namespace {

struct Told {
  std::uint32_t loss = 0;
};

std::intptr_t OnMessage(VexoWindow, std::uint32_t message, std::uintptr_t wparam, std::intptr_t,
                        void* context) {
  if (message != VEXO_MSG_VIDEO_INFO) return 0;
  VideoDetectRecord record;
  std::memcpy(&record, reinterpret_cast<const void*>(wparam), sizeof record);
  static_cast<Told*>(context)->loss = record.loss_mask;
  return 0;
}

// A board with its chips initialized, the library silent; the monitor runs where it is wanted.
class Desk {
 public:
  Desk(benchmark::State& state, std::uint32_t time, bool monitor) {
    VexoDeskOptions options = VEXODESK_DEFAULTS;
    options.time = time;
    VexoInitRecord init = {};
    if (VexoDesk_Open(&options) != VEXODESK_OK ||
        VEXOAPI_Initialize(VexoDesk_CreateWindow(OnMessage, &told)) != VEXO_OK ||
        VEXOAPI_CommandProc(VEXO_CMD_INIT, &init) != VEXO_OK) {
      state.SkipWithError(VexoDesk_Error());
    }
    VEXOAPI_SetEnableDebug(0);
    VEXOAPI_SetEnableOutputMsg(0);
    if (!monitor) VEXOAPI_CommandProc(VEXO_CMD_STOP_MONITOR, nullptr);
  }
  ~Desk() { VexoDesk_Close(); }
  Desk(const Desk&) = delete;
  Desk& operator=(const Desk&) = delete;

  Told told;
};

// Four bus cycles and no message.
void WriteRegister(benchmark::State& state) {
  static Desk* desk = nullptr;
  if (state.thread_index() == 0) {
    desk = new Desk(state, static_cast<std::uint32_t>(state.range(0)), false);
  }
  VexoRegRecord record = {VEXO_CHIP_SLAVE1, 0, 0x06, 0x80};
  for (auto _ : state) {
    if (VEXOAPI_CommandProc(VEXO_CMD_WRITE_REG, &record) != VEXO_OK) {
      state.SkipWithError("refused");
    }
  }
  state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()));
  if (state.thread_index() == 0) delete desk;
}

// The same and a message to the window, whose procedure runs.
void ReadRegister(benchmark::State& state) {
  const Desk desk(state, static_cast<std::uint32_t>(state.range(0)), false);
  VexoRegRecord record = {VEXO_CHIP_SLAVE1, 0, 0x06, 0};
  for (auto _ : state) {
    if (VEXOAPI_CommandProc(VEXO_CMD_READ_REG, &record) != VEXO_OK) state.SkipWithError("refused");
  }
  state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()));
}

void Line(benchmark::State& state) {
  const Desk desk(state, VEXODESK_REAL, false);
  for (auto _ : state) {
    if (VexoDesk_Line("camera 5 off", nullptr, 0) != VEXODESK_OK) state.SkipWithError("refused");
  }
  state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()));
}

// From a cable, pulled or put back at any moment, to the window's procedure. Most of it is the
// monitor's own: it looks at each second edge of the sync bit, every 40 ms.
void CableToMessage(benchmark::State& state) {
  using Clock = std::chrono::steady_clock;
  const Desk desk(state, VEXODESK_REAL, true);
  std::vector<double> took;
  std::uint32_t loss = 0;
  for (auto _ : state) {
    VexoDesk_Pump(static_cast<std::uint32_t>(50 + took.size() * 7 % 40));
    loss ^= 1u << 5;
    const auto begin = Clock::now();
    VexoDesk_Line(loss != 0 ? "camera 5 off" : "camera 5 ntsc", nullptr, 0);
    while (desk.told.loss != loss) VexoDesk_Pump(1);
    const std::chrono::duration<double> passed = Clock::now() - begin;
    state.SetIterationTime(passed.count());
    took.push_back(passed.count());
  }
  std::sort(took.begin(), took.end());
  state.counters["min_ms"] = 1000 * took.front();
  state.counters["median_ms"] = 1000 * took[took.size() / 2];
  state.counters["max_ms"] = 1000 * took.back();
}

BENCHMARK(WriteRegister)->ArgName("real")->Arg(VEXODESK_VIRTUAL)->Arg(VEXODESK_REAL);
BENCHMARK(WriteRegister)->ArgName("real")->Arg(VEXODESK_REAL)->Threads(4)->UseRealTime();
BENCHMARK(ReadRegister)->ArgName("real")->Arg(VEXODESK_VIRTUAL)->Arg(VEXODESK_REAL);
BENCHMARK(Line);
BENCHMARK(CableToMessage)->UseManualTime()->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
