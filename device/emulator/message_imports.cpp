// What a program's loop does: messages of its threads and windows, and their timers.
#include <array>

#include "device/emulator/device.h"
#include "device/emulator/imports.h"
#include "device/emulator/program.h"
#include "sim/world.h"

namespace emulator {
namespace {

constexpr std::uint32_t kErrorNoTimer = 87;

DeviceWindows& WindowsOf(const Cpu& cpu) { return CallingProgram(cpu).OfDevice().Windows(); }

// Both zero: any message.
sim::Kernel::MessageChoice ReadChoice(Cpu& cpu, bool take) {
  Expect(cpu, cpu.Argument(1) == 0, "a choice among windows");
  const std::uint32_t first = cpu.Argument(2);
  const std::uint32_t last = cpu.Argument(3);
  if (first == 0 && last == 0) return {.take = take};
  return {first, last, take};
}

void Write(const Cpu& cpu, std::uint32_t record, const GuestMessage& message) {
  const std::array<std::uint32_t, 7> words = {
      message.window, message.message, message.wparam, message.lparam, Kernel().Now(), 0, 0};
  for (unsigned i = 0; i < words.size(); ++i) cpu.WriteWord(record + 4 * i, words[i]);
}

// What was sent is answered here, whoever waits for it; what was posted is given to the caller.
std::uint32_t PeekMessage(Cpu& cpu) {
  constexpr std::uint32_t kRemove = 1;
  const std::uint32_t how = cpu.Argument(4);
  Expect(cpu, (how & ~kRemove) == 0, "ways of looking for messages that are not known");
  const auto message = WindowsOf(cpu).Next(cpu, ReadChoice(cpu, how == kRemove));
  if (!message) return 0;
  Write(cpu, cpu.Argument(0), *message);
  return 1;
}

// 0 for the message that ends a loop.
std::uint32_t GetMessage(Cpu& cpu) {
  DeviceWindows& windows = WindowsOf(cpu);
  const auto choice = ReadChoice(cpu, true);
  Expect(cpu, choice.first == 0, "a choice among messages, which nobody can wait for");
  for (;;) {
    if (const auto message = windows.Next(cpu, choice)) {
      Write(cpu, cpu.Argument(0), *message);
      return message->message == kQuitMessage ? 0 : 1;
    }
    Kernel().AwaitMessage(windows.LongestWait(cpu));
  }
}

std::uint32_t DispatchMessage(Cpu& cpu) {
  const std::uint32_t record = cpu.Argument(0);
  return WindowsOf(cpu).Call(cpu, {cpu.ReadWord(record), cpu.ReadWord(record + 4),
                                   cpu.ReadWord(record + 8), cpu.ReadWord(record + 12)});
}

// The keys of a recorder write no characters.
std::uint32_t TranslateMessage(Cpu&) { return 0; }

std::uint32_t PostThreadMessage(Cpu& cpu) {
  const bool posted = Kernel().PostThreadMessage(cpu.Argument(0), cpu.Argument(1), cpu.Argument(2),
                                                 static_cast<std::int32_t>(cpu.Argument(3)));
  return posted ? 1 : 0;
}

std::uint32_t PostQuitMessage(Cpu& cpu) {
  WindowsOf(cpu).Quit(cpu, cpu.Argument(0));
  return 0;
}

std::uint32_t SetTimer(Cpu& cpu) {
  const std::uint32_t timer = cpu.Argument(1);
  Expect(cpu, timer != 0 && cpu.Argument(3) == 0, "a timer without a number, or with a procedure");
  const bool set = WindowsOf(cpu).SetTimer(cpu, cpu.Argument(0), timer, cpu.Argument(2));
  return set ? timer : Fail(kErrorInvalidWindow);
}

std::uint32_t KillTimer(Cpu& cpu) {
  return WindowsOf(cpu).KillTimer(cpu, cpu.Argument(0), cpu.Argument(1)) ? 1 : Fail(kErrorNoTimer);
}

constexpr Import kMessageImports[] = {
    {kCoreDll, "PeekMessageW", 0, PeekMessage},
    {kCoreDll, "GetMessageW", 0, GetMessage},
    {kCoreDll, "DispatchMessageW", 0, DispatchMessage},
    {kCoreDll, "TranslateMessage", 0, TranslateMessage},
    {kCoreDll, "PostThreadMessageW", 0, PostThreadMessage},
    {kCoreDll, "PostQuitMessage", 0, PostQuitMessage},
    {kCoreDll, "SetTimer", 0, SetTimer},
    {kCoreDll, "KillTimer", 0, KillTimer},
};

}  // namespace

std::span<const Import> MessageImports() { return kMessageImports; }

}  // namespace emulator
