// Events that a program signals, and its critical sections.
#include "device/emulator/imports.h"
#include "device/emulator/process.h"
#include "sim/world.h"

namespace emulator {
namespace {

// What the system's headers make SetEvent of.
std::uint32_t EventModify(Cpu& cpu) {
  constexpr std::uint32_t kSet = 3;
  Expect(cpu, cpu.Argument(1) == kSet, "an event that is not to be set");
  return Kernel().SetEvent(HostHandle(cpu.Argument(0))) ? 1 : 0;
}

// The system's record in the program's memory: how often its owner is in, whose it is, an event for
// those who wait, how many they are.
constexpr std::uint32_t kDepth = 0;
constexpr std::uint32_t kOwner = 4;
constexpr std::uint32_t kEvent = 8;
constexpr std::uint32_t kWaiters = 12;
constexpr std::uint32_t kSectionBytes = 20;

std::uint32_t InitializeCriticalSection(Cpu& cpu) {
  const std::uint32_t section = cpu.Argument(0);
  for (std::uint32_t at = 0; at < kSectionBytes; at += 4) cpu.WriteWord(section + at, 0);
  const PlatHandle event = Kernel().CreateEvent(nullptr, false, false);
  cpu.Owner().objects.insert(event);
  cpu.WriteWord(section + kEvent, GuestHandle(cpu, event));
  return 0;
}

PlatHandle EventOf(const Cpu& cpu, std::uint32_t section) {
  const std::uint32_t event = cpu.ReadWord(section + kEvent);
  Expect(cpu, cpu.Owner().objects.contains(event), "a critical section that is none");
  return event;
}

// Nobody enters the kernel but who has to wait.
std::uint32_t EnterCriticalSection(Cpu& cpu) {
  const std::uint32_t section = cpu.Argument(0);
  const PlatHandle event = EventOf(cpu, section);
  const std::uint32_t self = Kernel().CurrentThreadId();
  while (cpu.ReadWord(section + kOwner) != 0 && cpu.ReadWord(section + kOwner) != self) {
    cpu.WriteWord(section + kWaiters, cpu.ReadWord(section + kWaiters) + 1);
    Kernel().Wait(event, kPlatForever);
    cpu.WriteWord(section + kWaiters, cpu.ReadWord(section + kWaiters) - 1);
  }
  cpu.WriteWord(section + kOwner, self);
  cpu.WriteWord(section + kDepth, cpu.ReadWord(section + kDepth) + 1);
  return 0;
}

std::uint32_t LeaveCriticalSection(Cpu& cpu) {
  const std::uint32_t section = cpu.Argument(0);
  const PlatHandle event = EventOf(cpu, section);
  Expect(cpu, cpu.ReadWord(section + kOwner) == Kernel().CurrentThreadId(),
         "a critical section that the thread is not in");
  const std::uint32_t depth = cpu.ReadWord(section + kDepth) - 1;
  cpu.WriteWord(section + kDepth, depth);
  if (depth != 0) return 0;
  cpu.WriteWord(section + kOwner, 0);
  if (cpu.ReadWord(section + kWaiters) != 0) Kernel().SetEvent(event);
  return 0;
}

std::uint32_t DeleteCriticalSection(Cpu& cpu) {
  const std::uint32_t section = cpu.Argument(0);
  const PlatHandle event = EventOf(cpu, section);
  Expect(cpu, cpu.ReadWord(section + kOwner) == 0, "a critical section that a thread is in");
  cpu.Owner().objects.erase(event);
  Kernel().CloseHandle(event);
  cpu.WriteWord(section + kEvent, 0);
  return 0;
}

constexpr Import kLockImports[] = {
    {kCoreDll, "EventModify", 0, EventModify},
    {kCoreDll, "InitializeCriticalSection", 0, InitializeCriticalSection},
    {kCoreDll, "EnterCriticalSection", 0, EnterCriticalSection},
    {kCoreDll, "LeaveCriticalSection", 0, LeaveCriticalSection},
    {kCoreDll, "DeleteCriticalSection", 0, DeleteCriticalSection},
};

}  // namespace

std::span<const Import> LockImports() { return kLockImports; }

}  // namespace emulator
