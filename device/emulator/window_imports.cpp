// Windows of a program.
#include <array>

#include "device/emulator/device.h"
#include "device/emulator/imports.h"
#include "device/emulator/program.h"
#include "sim/text.h"

namespace emulator {
namespace {

constexpr std::uint32_t kErrorClassUnknown = 1407;
constexpr std::uint32_t kErrorClassKnown = 1410;
constexpr std::uint32_t kCreateMessage = 1;
constexpr std::uint32_t kDestroyMessage = 2;
constexpr std::uint32_t kFailed = 0xFFFFFFFF;

std::u16string ClassName(const Cpu& cpu, std::uint32_t address) {
  return sim::ToUtf16(sim::ToLower(Narrow(cpu, address)));
}

std::string Title(const Cpu& cpu, std::uint32_t address) {
  return address == 0 ? "" : Narrow(cpu, address);
}

// A class is its program's.
std::uint32_t RegisterClass(Cpu& cpu) {
  constexpr std::uint32_t kFirstAtom = 0xC000;
  Program& program = CallingProgram(cpu);
  const std::uint32_t record = cpu.Argument(0);
  const std::uint32_t procedure = cpu.ReadWord(record + 4);
  const std::uint32_t name = cpu.ReadWord(record + 36);
  const auto [at, fresh] = program.window_classes.try_emplace(ClassName(cpu, name), procedure);
  if (!fresh) return Fail(kErrorClassKnown);
  return kFirstAtom + static_cast<std::uint32_t>(program.window_classes.size());
}

// The window's procedure hears of it, with what it was asked for, before the call returns.
std::uint32_t CreateWindow(Cpu& cpu) {
  constexpr unsigned kArguments = 12;
  const Program& program = CallingProgram(cpu);
  std::array<std::uint32_t, kArguments> asked{};
  for (unsigned i = 0; i < kArguments; ++i) asked[i] = cpu.Argument(i);
  const auto found = program.window_classes.find(ClassName(cpu, asked[1]));
  if (found == program.window_classes.end()) return Fail(kErrorClassUnknown);
  DeviceWindows& windows = program.OfDevice().Windows();
  const std::uint32_t window = windows.Create(cpu, found->second, Title(cpu, asked[2]));
  const std::array<std::uint32_t, kArguments> record = {asked[11], asked[10], asked[9], asked[8],
                                                        asked[7],  asked[6],  asked[5], asked[4],
                                                        asked[3],  asked[2],  asked[1], asked[0]};
  GuestHeap& heap = cpu.Owner().Heap();
  const std::uint32_t at = heap.Allocate(4 * kArguments);
  for (unsigned i = 0; i < kArguments; ++i) cpu.WriteWord(at + 4 * i, record[i]);
  const std::uint32_t answer = windows.Call(cpu, {window, kCreateMessage, 0, at});
  heap.Free(at);
  if (answer != kFailed) return window;
  windows.Destroy(cpu, window);
  return 0;
}

std::uint32_t DestroyWindow(Cpu& cpu) {
  DeviceWindows& windows = CallingProgram(cpu).OfDevice().Windows();
  const std::uint32_t window = cpu.Argument(0);
  windows.Call(cpu, {window, kDestroyMessage, 0, 0});
  return windows.Destroy(cpu, window) ? 1 : Fail(kErrorInvalidWindow);
}

std::uint32_t SetWindowText(Cpu& cpu) {
  DeviceWindows& windows = CallingProgram(cpu).OfDevice().Windows();
  const bool set = windows.SetTitle(cpu.Argument(0), Title(cpu, cpu.Argument(1)));
  return set ? 1 : Fail(kErrorInvalidWindow);
}

std::uint32_t ShowWindow(Cpu& cpu) {
  DeviceWindows& windows = CallingProgram(cpu).OfDevice().Windows();
  const auto before = windows.Show(cpu.Argument(0), cpu.Argument(1) != 0);
  if (!before) return Fail(kErrorInvalidWindow);
  return *before ? 1 : 0;
}

std::uint32_t DefaultProcedure(Cpu&) { return 0; }

// Some brush, pen or font: nobody looks at what is painted here.
std::uint32_t GetStockObject(Cpu& cpu) {
  constexpr std::uint32_t kFirstObject = 0x30000;
  return kFirstObject + cpu.Argument(0);
}

constexpr Import kWindowImports[] = {
    {kCoreDll, "RegisterClassW", 0, RegisterClass},
    {kCoreDll, "CreateWindowExW", 0, CreateWindow},
    {kCoreDll, "DestroyWindow", 0, DestroyWindow},
    {kCoreDll, "SetWindowTextW", 0, SetWindowText},
    {kCoreDll, "ShowWindow", 0, ShowWindow},
    {kCoreDll, "DefWindowProcW", 0, DefaultProcedure},
    {kCoreDll, "GetStockObject", 0, GetStockObject},
};

}  // namespace

std::span<const Import> WindowImports() { return kWindowImports; }

}  // namespace emulator
