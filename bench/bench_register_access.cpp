// What a register access costs on the device beyond its bus cycles.
//
// The register bus is compiled here with the device's byte access, its windows pointed at plain
// memory. Beside each operation stands the sequence of volatile accesses that it must make, written
// by hand in a file of its own, checking nothing and with the select byte known beforehand.
#include <benchmark/benchmark.h>

#include <array>
#include <cstdint>

#include "bench/by_hand.h"
#include "chip/register_bus.h"
#include "report/diagnostics.h"

// The refusals of the register bus print; nothing is refused here.
void VexoDbg_Print(const char16_t* /*format*/, ...) {}

namespace {

constexpr std::uint8_t kReg = 0x40;
constexpr std::uint8_t kSelectMasterPage1 = 0xFD;
constexpr std::uint8_t kTableBytes = 16;

// The three windows, each on a cache line of its own.
struct alignas(64) Window {
  std::uint8_t byte = 0;
};
std::array<Window, 3> memory;

void MapWindows() {
  g_bus.select = &memory[0].byte;
  g_bus.address = &memory[1].byte;
  g_bus.data = &memory[2].byte;
}

constexpr std::array<std::uint8_t, kTableBytes> kTable = {0, 1, 2,  3,  4,  5,  6,  7,
                                                          8, 9, 10, 11, 12, 13, 14, 15};

void WriteRegister(benchmark::State& state) {
  MapWindows();
  std::uint8_t value = 0;
  for (auto _ : state) Write(kChipMaster, RegisterAddress{kPage1, kReg}, value++);
}

void WriteRegisterByHand(benchmark::State& state) {
  MapWindows();
  std::uint8_t value = 0;
  for (auto _ : state) WriteByHand(kSelectMasterPage1, kReg, value++);
}

void ReadRegister(benchmark::State& state) {
  MapWindows();
  for (auto _ : state) benchmark::DoNotOptimize(Read(kChipMaster, RegisterAddress{kPage1, kReg}));
}

void ReadRegisterByHand(benchmark::State& state) {
  MapWindows();
  for (auto _ : state) benchmark::DoNotOptimize(ReadByHand(kSelectMasterPage1, kReg));
}

void WriteTable16(benchmark::State& state) {
  MapWindows();
  for (auto _ : state) WriteRun(kChipMaster, {kPage1, kReg}, kTable.data(), kTableBytes);
}

void WriteTable16ByHand(benchmark::State& state) {
  MapWindows();
  for (auto _ : state) WriteTableByHand(kSelectMasterPage1, kReg, kTable.data(), kTableBytes);
}

BENCHMARK(WriteRegister);
BENCHMARK(WriteRegisterByHand);
BENCHMARK(ReadRegister);
BENCHMARK(ReadRegisterByHand);
BENCHMARK(WriteTable16);
BENCHMARK(WriteTable16ByHand);

}  // namespace
