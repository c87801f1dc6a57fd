// What the image costs: instructions of each operation on the emulated processor, which are the
// same on every run, the deepest stack, and how fast the emulation is.
//
// The image is build/device/VexoCtrlSDK.DLL, or what VEXO_IMAGE names; its linker map lies beside.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <optional>
#include <string>
#include <utility>

#include "VexoCtrlSDK.h"
#include "chip/register_bus.h"
#include "device/emulator/exports.h"
#include "device/emulator/linker_map.h"
#include "harness/host.h"
#include "sim/world.h"

namespace {

constexpr std::uint32_t kAttach = 1;

// The same sequence of accesses written by hand, nothing checked, the select byte known:
//   ldr r3, =g_bus; ldr ip, [r3]; strb r0, [ip]; ldr r0, [r3, #4]; strb r1, [r0];
//   ldr r0, [r3, #8]; strb r2, [r0]; mov r0, #0xFF; strb r0, [ip]; bx lr
constexpr int kRegisterWriteByHand = 10;

emulator::Machine* g_machine = nullptr;
std::optional<emulator::LinkerMap> g_map;

// A fresh 16-channel board, attached and initialized, its worker stopped.
bool Prepare() {
  harness::Restart();
  sim::World& world = sim::TheWorld();
  world.trace.SetEnabled(false);
  world.board.FitChips(kChipsMax);
  harness::Entry(kAttach);
  harness::Initialize(world.windows.Create());
  sim::Bytes record;
  return harness::CommandProc(VEXO_CMD_INIT, &record) == VEXO_OK &&
         harness::CommandProc(VEXO_CMD_STOP_MONITOR, nullptr) == VEXO_OK;
}

// Instructions of the host's thread alone.
template <typename Function>
double Count(const Function& function) {
  const std::uint64_t before = g_machine->FirstProcessorInstructions();
  function();
  return static_cast<double>(g_machine->FirstProcessorInstructions() - before);
}

void Finish(benchmark::State& state, std::uint64_t instructions_before) {
  const auto ran = static_cast<double>(g_machine->Instructions() - instructions_before);
  state.counters["instructions_per_s"] = benchmark::Counter(ran, benchmark::Counter::kIsRate);
  if (g_machine->FirstFault()) state.SkipWithError(g_machine->FirstFault()->c_str());
}

// The head of a record and channels from 0 on.
sim::Bytes Record(sim::Bytes head, std::uint8_t channels) {
  for (std::uint8_t channel = 0; channel < channels; ++channel) head.push_back(channel);
  return head;
}

// Counted the first time, on a board that shows sixteen channels.
void Command(benchmark::State& state, std::uint32_t code, const sim::Bytes& record) {
  if (!Prepare()) state.SkipWithError("initialization failed");
  // Playback layouts need playback.
  sim::Bytes playback = Record({0, 0, 0, 0, 0, VEXO_SPLIT_16}, kChannelsMax);
  if (code == VEXO_CMD_PLAY_SPLIT) harness::CommandProc(VEXO_CMD_PLAY_MODE, &playback);
  int result = VEXO_OK;
  const auto run = [&] {
    sim::Bytes copy = record;
    result = harness::CommandProc(code, &copy);
  };
  state.counters["instructions"] = Count(run);
  if (result != VEXO_OK) state.SkipWithError("the command failed");
  const std::uint64_t before = g_machine->Instructions();
  for (auto _ : state) run();
  Finish(state, before);
}

// The library's own function, called where the linker put it; the count is that of the chip and
// page that cost the most.
void WriteOne(benchmark::State& state, const char* function, unsigned pages_per_page) {
  const auto* linked = g_map ? g_map->Find(function) : nullptr;
  if (linked == nullptr || !Prepare()) {
    state.SkipWithError("no such function in the linker map, or no initialization");
    return;
  }
  const std::uint32_t address =
      linked->address - g_machine->Image().PreferredBase() + g_machine->Base();
  std::array<std::uint32_t, 4> arguments = {kChipMaster, kPage1, 0x40, 0x5A};
  const auto run = [&] { g_machine->Call(address, arguments); };
  double most = 0;
  for (const std::uint8_t chip : {kChipMaster, kChipSlave1, kChipSlave2, kChipSlave3, kChipAll}) {
    for (std::uint8_t page = kPage0; page < kPageCount; ++page) {
      arguments = {chip, page * pages_per_page, 0x40, 0x5A};
      const std::uint64_t cycles = sim::TheWorld().trace.Cycles();
      most = std::max(most, Count(run));
      if (sim::TheWorld().trace.Cycles() - cycles != 4) {
        state.SkipWithError("no register was written");
      }
    }
  }
  state.counters["instructions"] = most;
  state.counters["by_hand"] = kRegisterWriteByHand;
  const std::uint64_t before = g_machine->Instructions();
  for (auto _ : state) run();
  Finish(state, before);
}

// As a host gives it, chip and page to be checked; and as the library names its own registers.
void RegisterWrite(benchmark::State& state) { WriteOne(state, "_Z16TW_WriteRegisterhhhh", 1); }
void NamedWrite(benchmark::State& state) {
  WriteOne(state, "_Z11WriteCycleshhhh", PageOfEveryChip(1));
}

// Command 0xF001 on 16 channels. The worker's instructions are not counted, the host's waiting is
// none.
void Initialization(benchmark::State& state) {
  if (!Prepare()) state.SkipWithError("initialization failed");
  const auto run = [] {
    sim::Bytes record;
    harness::CommandProc(VEXO_CMD_INIT, &record);
  };
  const std::uint64_t cycles = sim::TheWorld().trace.Cycles();
  const double instructions = Count(run);
  state.counters["instructions"] = instructions;
  state.counters["per_cycle"] =
      instructions / static_cast<double>(sim::TheWorld().trace.Cycles() - cycles);
  const std::uint64_t before = g_machine->Instructions();
  for (auto _ : state) run();
  Finish(state, before);
  state.counters["deepest_stack"] = g_machine->DeepestStack();
}

// By split mode.
struct Layout {
  const char* name;
  std::uint8_t windows;
};
constexpr std::array<Layout, 7> kLayouts = {
    {{"full", 1}, {"4", 4}, {"6", 6}, {"8", 8}, {"9", 9}, {"13", 13}, {"16", 16}}};

// A command whose record ends with the mode, what follows it, and the channels of the windows.
void ChangeLayout(benchmark::State& state, std::uint32_t code, sim::Bytes head,
                  const sim::Bytes& behind_mode) {
  const auto mode = static_cast<std::uint8_t>(state.range(0));
  const Layout& layout = kLayouts.at(mode);
  state.SetLabel(layout.name);
  head.push_back(mode);
  head.insert(head.end(), behind_mode.begin(), behind_mode.end());
  Command(state, code, Record(std::move(head), layout.windows));
}

void LiveSplit(benchmark::State& state) {
  ChangeLayout(state, VEXO_CMD_LIVE_SPLIT, {0, 0, 0, 0}, {0});
}
void PlaySplit(benchmark::State& state) {
  ChangeLayout(state, VEXO_CMD_PLAY_SPLIT, {0, 0, 0, 0}, {0});
}
void LiveMode(benchmark::State& state) {
  ChangeLayout(state, VEXO_CMD_LIVE_MODE, {0, 0, 0, 0}, {});
}
void PlayMode(benchmark::State& state) {
  ChangeLayout(state, VEXO_CMD_PLAY_MODE, {0, 0, 0, 0, 0}, {});
}

// The whole command, lock and all.
void WriteCommand(benchmark::State& state) {
  Command(state, VEXO_CMD_WRITE_REG, {VEXO_CHIP_MASTER, 1, 0x40, 0x5A});
}

}  // namespace

BENCHMARK(RegisterWrite)->UseRealTime();
BENCHMARK(NamedWrite)->UseRealTime();
BENCHMARK(WriteCommand)->UseRealTime();
BENCHMARK(Initialization)->UseRealTime();
BENCHMARK(LiveSplit)->DenseRange(VEXO_SPLIT_FULL, VEXO_SPLIT_16)->UseRealTime();
BENCHMARK(LiveMode)->DenseRange(VEXO_SPLIT_FULL, VEXO_SPLIT_16)->UseRealTime();
BENCHMARK(PlayMode)->DenseRange(VEXO_SPLIT_FULL, VEXO_SPLIT_16)->UseRealTime();
// The other layouts are the mode switch's alone.
BENCHMARK(PlaySplit)
    ->Arg(VEXO_SPLIT_FULL)
    ->Arg(VEXO_SPLIT_4)
    ->Arg(VEXO_SPLIT_9)
    ->Arg(VEXO_SPLIT_16)
    ->UseRealTime();

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
  const char* named = std::getenv("VEXO_IMAGE");
  const std::filesystem::path path = named != nullptr ? named : VEXO_DEFAULT_IMAGE;
  try {
    g_map = emulator::LinkerMap::Beside(path.string());
    emulator::Machine machine(emulator::PeImage::Load(path.string()));
    const emulator::ImageInUse in_use(machine);
    g_machine = &machine;
    benchmark::RunSpecifiedBenchmarks();
  } catch (const std::exception& error) {
    std::cerr << "bench_image: " << error.what() << std::endl;
    return 1;
  }
  return 0;
}
