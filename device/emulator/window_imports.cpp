// Windows of a program, and the messages that its loop takes.
#include <array>

#include "device/emulator/device.h"
#include "device/emulator/imports.h"
#include "device/emulator/program.h"
#include "sim/text.h"
#include "sim/world.h"

namespace emulator {
namespace {

constexpr const char* kCoreDll = "coredll.dll";
constexpr std::uint32_t kErrorInvalidWindow = 1400;
constexpr std::uint32_t kErrorClassUnknown = 1407;
constexpr std::uint32_t kErrorClassKnown = 1410;
constexpr std::uint32_t kCreateMessage = 1;
constexpr std::uint32_t kDestroyMessage = 2;
constexpr std::uint32_t kFailed = 0xFFFFFFFF;

// The windows are those of the first thread of the first program.
Device& WindowsOf(const Cpu& cpu) {
  Program& program = CallingProgram(cpu);
  if (!program.OfDevice().IsFirst(program) || program.FirstThread() != &cpu) {
    cpu.Fault("a window of another thread than the first program's first one");
  }
  return program.OfDevice();
}

std::u16string ClassName(const Cpu& cpu, std::uint32_t address) {
  return sim::ToUtf16(sim::ToLower(Narrow(cpu, address)));
}

std::uint32_t RegisterClass(Cpu& cpu) {
  constexpr std::uint32_t kFirstAtom = 0xC000;
  Device& device = WindowsOf(cpu);
  const std::uint32_t record = cpu.Argument(0);
  const std::uint32_t procedure = cpu.ReadWord(record + 4);
  const std::uint32_t name = cpu.ReadWord(record + 36);
  const auto [at, fresh] =
      device.window_classes.try_emplace(ClassName(cpu, name), Device::WindowClass{procedure});
  if (!fresh) return Fail(kErrorClassKnown);
  return kFirstAtom + static_cast<std::uint32_t>(device.window_classes.size());
}

// The window's procedure hears of it, with what it was asked for, before the call returns.
std::uint32_t CreateWindow(Cpu& cpu) {
  constexpr unsigned kArguments = 12;
  Device& device = WindowsOf(cpu);
  std::array<std::uint32_t, kArguments> asked{};
  for (unsigned i = 0; i < kArguments; ++i) asked[i] = cpu.Argument(i);
  const auto found = device.window_classes.find(ClassName(cpu, asked[1]));
  if (found == device.window_classes.end()) return Fail(kErrorClassUnknown);
  const std::uint32_t procedure = found->second.procedure;
  sim::Windows& windows = sim::TheWorld().windows;
  const PlatWindow created = windows.Create();
  const auto window = static_cast<std::uint32_t>(created);
  device.window_procedures[window] = procedure;
  const std::array<std::uint32_t, kArguments> record = {asked[11], asked[10], asked[9], asked[8],
                                                        asked[7],  asked[6],  asked[5], asked[4],
                                                        asked[3],  asked[2],  asked[1], asked[0]};
  GuestHeap& heap = cpu.Owner().Heap();
  const std::uint32_t at = heap.Allocate(4 * kArguments);
  for (unsigned i = 0; i < kArguments; ++i) cpu.WriteWord(at + 4 * i, record[i]);
  const std::array<std::uint32_t, 4> arguments = {window, kCreateMessage, 0, at};
  const std::uint32_t answer = cpu.Call(procedure, arguments);
  heap.Free(at);
  if (answer != kFailed) return window;
  device.window_procedures.erase(window);
  windows.Destroy(created);
  return 0;
}

std::uint32_t DestroyWindow(Cpu& cpu) {
  Device& device = WindowsOf(cpu);
  const std::uint32_t window = cpu.Argument(0);
  const auto found = device.window_procedures.find(window);
  if (found == device.window_procedures.end()) return Fail(kErrorInvalidWindow);
  const std::array<std::uint32_t, 4> arguments = {window, kDestroyMessage, 0, 0};
  cpu.Call(found->second, arguments);
  device.window_procedures.erase(window);
  sim::TheWorld().windows.Destroy(window);
  return 1;
}

std::uint32_t DefaultProcedure(Cpu&) { return 0; }

// What was sent is answered here, whoever waits for it; what was posted is given to the caller.
std::uint32_t PeekMessage(Cpu& cpu) {
  constexpr std::uint32_t kRemove = 1;
  Device& device = WindowsOf(cpu);
  Expect(cpu, cpu.Argument(1) == 0 && cpu.Argument(2) == 0 && cpu.Argument(3) == 0,
         "a choice among messages");
  const std::uint32_t record = cpu.Argument(0);
  Expect(cpu, cpu.Argument(4) == kRemove, "a message that stays in its queue");
  sim::Kernel& kernel = sim::TheWorld().kernel;
  const auto message = kernel.TakeMessage();
  if (!message) return 0;
  const std::array<std::uint32_t, 7> words = {static_cast<std::uint32_t>(message->window),
                                              message->message,
                                              device.GuestWparam(message->message, message->wparam),
                                              static_cast<std::uint32_t>(message->lparam),
                                              kernel.Now(),
                                              0,
                                              0};
  for (unsigned i = 0; i < words.size(); ++i) cpu.WriteWord(record + 4 * i, words[i]);
  return 1;
}

std::uint32_t DispatchMessage(Cpu& cpu) {
  const Device& device = WindowsOf(cpu);
  std::array<std::uint32_t, 4> message{};
  for (unsigned i = 0; i < message.size(); ++i) {
    message[i] = cpu.ReadWord(cpu.Argument(0) + 4 * i);
  }
  const auto found = device.window_procedures.find(message[0]);
  return found == device.window_procedures.end() ? 0 : cpu.Call(found->second, message);
}

constexpr Import kImports[] = {
    {kCoreDll, "RegisterClassW", 0, RegisterClass},
    {kCoreDll, "CreateWindowExW", 0, CreateWindow},
    {kCoreDll, "DestroyWindow", 0, DestroyWindow},
    {kCoreDll, "DefWindowProcW", 0, DefaultProcedure},
    {kCoreDll, "PeekMessageW", 0, PeekMessage},
    {kCoreDll, "DispatchMessageW", 0, DispatchMessage},
};

}  // namespace

std::span<const Import> WindowImports() { return kImports; }

}  // namespace emulator
