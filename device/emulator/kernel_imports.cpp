// Kernel objects, threads, time, memory, window messages.
#include <cstring>

#include "device/emulator/imports.h"
#include "device/emulator/program.h"
#include "sim/kernel/message_records.h"
#include "sim/text.h"
#include "sim/world.h"

namespace emulator {
namespace {

constexpr std::uint32_t kThreadAttach = 2;
constexpr std::uint32_t kThreadDetach = 3;

// The handle of a new object, which the process has open.
std::uint32_t Opened(const Cpu& cpu, PlatHandle handle) {
  if (handle != kPlatNoHandle) cpu.Owner().objects.insert(handle);
  return GuestHandle(cpu, handle);
}

std::uint32_t CreateMutex(Cpu& cpu) {
  Expect(cpu, cpu.Argument(0) == 0 && cpu.Argument(1) == 0, "an owned or secured mutex");
  const std::uint32_t name = cpu.Argument(2);
  const std::u16string text = name == 0 ? std::u16string() : cpu.WideText(name);
  return Opened(cpu, Plat_CreateMutex(OrNull(name, text)));
}

std::uint32_t CreateEvent(Cpu& cpu) {
  Expect(cpu, cpu.Argument(0) == 0, "a secured event");
  const std::uint32_t name = cpu.Argument(3);
  const std::u16string text = name == 0 ? std::u16string() : cpu.WideText(name);
  return Opened(cpu,
                Plat_CreateEvent(OrNull(name, text), cpu.Argument(1) != 0, cpu.Argument(2) != 0));
}

std::uint32_t WaitForSingleObject(Cpu& cpu) {
  return Plat_Wait(HostHandle(cpu.Argument(0)), cpu.Argument(1));
}

std::uint32_t ReleaseMutex(Cpu& cpu) {
  return Plat_ReleaseMutex(HostHandle(cpu.Argument(0))) ? 1 : 0;
}

// The system has one close for all; the platform tells drivers apart. A driver that could not be
// opened is closed by its bad handle.
std::uint32_t CloseHandle(Cpu& cpu) {
  if (CloseCardFile(cpu, cpu.Argument(0))) return 1;
  const PlatHandle handle = HostHandle(cpu.Argument(0));
  const bool driver = handle == kPlatNoHandle || handle == kPlatInvalidHandle ||
                      cpu.Owner().drivers.contains(handle);
  cpu.Owner().objects.erase(handle);
  return (driver ? Plat_CloseDriver(handle) : Plat_CloseHandle(handle)) ? 1 : 0;
}

std::uint32_t RunThread(void* argument) {
  const auto start = *static_cast<const Process::ThreadStart*>(argument);
  const std::uint32_t arguments[] = {start.argument};
  const Process::Lease cpu(*start.process);
  Program* const program = start.process->AsProgram();
  if (program != nullptr) program->Modules().TellThread(*cpu, kThreadAttach);
  const std::uint32_t code = cpu->Call(start.proc, arguments);
  if (program != nullptr) program->Modules().TellThread(*cpu, kThreadDetach);
  return code;
}

std::uint32_t CreateThread(Cpu& cpu) {
  Expect(cpu, cpu.Argument(0) == 0 && cpu.Argument(1) == 0 && cpu.Argument(4) == 0,
         "a secured, suspended or sized thread");
  Process& process = cpu.Owner();
  process.thread_starts.push_back({&process, cpu.Argument(2), cpu.Argument(3)});
  std::uint32_t id = 0;
  const PlatHandle handle = Plat_CreateThread(RunThread, &process.thread_starts.back(), &id);
  if (cpu.Argument(5) != 0) cpu.WriteWord(cpu.Argument(5), id);
  if (handle != kPlatNoHandle) process.threads.insert(id);
  return Opened(cpu, handle);
}

std::uint32_t GetExitCodeThread(Cpu& cpu) {
  std::uint32_t code = 0;
  if (!Plat_GetExitCodeThread(HostHandle(cpu.Argument(0)), &code)) return 0;
  cpu.WriteWord(cpu.Argument(1), code);
  return 1;
}

std::uint32_t TerminateThread(Cpu& cpu) {
  return Plat_TerminateThread(HostHandle(cpu.Argument(0)), cpu.Argument(1)) ? 1 : 0;
}

std::uint32_t SetThreadQuantum(Cpu& cpu) {
  return Plat_SetThreadQuantum(HostHandle(cpu.Argument(0)), cpu.Argument(1)) ? 1 : 0;
}

std::uint32_t Sleep(Cpu& cpu) {
  Plat_Sleep(cpu.Argument(0));
  return 0;
}

std::uint32_t GetTickCount(Cpu&) { return Plat_TickCount(); }
std::uint32_t GetLastError(Cpu&) { return Plat_LastError(); }

std::uint32_t SetLastError(Cpu& cpu) {
  Kernel().SetLastError(cpu.Argument(0));
  return 0;
}

std::uint32_t DisableThreadLibraryCalls(Cpu& cpu) {
  if (Program* const program = cpu.Owner().AsProgram()) {
    Module* const module = program->Modules().Find(cpu.Argument(0));
    if (module == nullptr || cpu.Argument(0) == 0) return Fail(kErrorInvalidHandle);
    module->thread_calls = false;
  }
  Plat_DisableThreadCalls(HostHandle(cpu.Argument(0)));
  return 1;
}

// ---- Memory -----------------------------------------------------------------------------------

std::uint32_t LocalAlloc(Cpu& cpu) {
  constexpr std::uint32_t kZeros = 0x40;
  const std::uint32_t flags = cpu.Argument(0);
  Expect(cpu, (flags & ~kZeros) == 0, "memory that may move");
  const std::uint32_t bytes = cpu.Argument(1);
  void* memory = Plat_Allocate(bytes);
  if (memory == nullptr) return 0;
  const std::uint32_t address = cpu.Owner().Heap().Allocate(bytes);
  if (address == 0) {
    Plat_Free(memory);
    Kernel().SetLastError(kErrorNotEnoughMemory);
    return 0;
  }
  cpu.Owner().loans[address] = {memory, false};
  if ((flags & kZeros) != 0 && bytes != 0) std::memset(cpu.Write(address, bytes), 0, bytes);
  return address;
}

std::uint32_t LocalFree(Cpu& cpu) {
  const std::uint32_t address = cpu.Argument(0);
  if (address == 0) return 0;
  const auto found = cpu.Owner().loans.find(address);
  if (found == cpu.Owner().loans.end()) {
    cpu.Fault("freeing " + sim::Hex(address, 8) + ", where no memory was allocated");
  }
  if (found->second.system_text) {
    Plat_FreeSystemText(static_cast<char16_t*>(found->second.memory));
  } else {
    Plat_Free(found->second.memory);
  }
  cpu.Owner().loans.erase(found);
  cpu.Owner().Heap().Free(address);
  return 0;
}

// ---- Window messages --------------------------------------------------------------------------

// What a message's wParam is for the host: the number, or the memory that it points to.
std::uintptr_t HostWparam(const Cpu& cpu, std::uint32_t message, std::uint32_t wparam) {
  const auto bytes = static_cast<std::uint32_t>(sim::MessageRecordBytes(message));
  if (bytes == 0 || wparam == 0) return wparam;
  return reinterpret_cast<std::uintptr_t>(cpu.Read(wparam, bytes));
}

std::intptr_t HostLparam(std::uint32_t lparam) { return static_cast<std::int32_t>(lparam); }

std::uint32_t IsWindow(Cpu& cpu) { return Plat_IsWindow(cpu.Argument(0)) ? 1 : 0; }

std::uint32_t PostMessage(Cpu& cpu) {
  const std::uint32_t message = cpu.Argument(1);
  return Plat_PostMessage(cpu.Argument(0), message, HostWparam(cpu, message, cpu.Argument(2)),
                          HostLparam(cpu.Argument(3)))
             ? 1
             : 0;
}

std::uint32_t SendMessageTimeout(Cpu& cpu) {
  Expect(cpu, cpu.Argument(4) == 0, "send flags");
  const std::uint32_t message = cpu.Argument(1);
  const std::uint32_t answer = cpu.Argument(6);
  const bool ok =
      Plat_SendMessage(cpu.Argument(0), message, HostWparam(cpu, message, cpu.Argument(2)),
                       HostLparam(cpu.Argument(3)), cpu.Argument(5));
  if (ok && answer != 0) cpu.WriteWord(answer, 0);
  return ok ? 1 : 0;
}

constexpr Import kKernelImports[] = {
    {kCoreDll, "CreateMutexW", 0, CreateMutex},
    {kCoreDll, "CreateEventW", 0, CreateEvent},
    {kCoreDll, "WaitForSingleObject", 0, WaitForSingleObject},
    {kCoreDll, "ReleaseMutex", 0, ReleaseMutex},
    {kCoreDll, "CloseHandle", 0, CloseHandle},
    {kCoreDll, "CreateThread", 0, CreateThread},
    {kCoreDll, "GetExitCodeThread", 0, GetExitCodeThread},
    {kCoreDll, "TerminateThread", 0, TerminateThread},
    {kCoreDll, "CeSetThreadQuantum", 0, SetThreadQuantum},
    {kCoreDll, "Sleep", 0, Sleep},
    {kCoreDll, "GetTickCount", 0, GetTickCount},
    {kCoreDll, "GetLastError", 0, GetLastError},
    {kCoreDll, "SetLastError", 0, SetLastError},
    {kCoreDll, "DisableThreadLibraryCalls", 0, DisableThreadLibraryCalls},
    {kCoreDll, "LocalAlloc", 0, LocalAlloc},
    {kCoreDll, "LocalFree", 0, LocalFree},
    {kCoreDll, "IsWindow", 0, IsWindow},
    {kCoreDll, "PostMessageW", 0, PostMessage},
    {kCoreDll, "SendMessageTimeout", 0, SendMessageTimeout},
};

}  // namespace

void Expect(const Cpu& cpu, bool met, const char* what) {
  if (!met) cpu.Fault(std::string("a call with ") + what);
}

std::uint32_t Fail(std::uint32_t error) {
  Kernel().SetLastError(error);
  return 0;
}

std::string Narrow(const Cpu& cpu, std::uint32_t address) {
  return sim::ToUtf8(cpu.WideText(address).c_str());
}

std::span<const Import> KernelImports() { return kKernelImports; }

std::uint32_t GuestHandle(const Cpu& cpu, PlatHandle handle) {
  if (handle == kPlatInvalidHandle) return 0xFFFFFFFF;
  if (handle >= 0xFFFFFFFF) cpu.Fault("a handle that is wider than 32 bits");
  return static_cast<std::uint32_t>(handle);
}

PlatHandle HostHandle(std::uint32_t handle) {
  return handle == 0xFFFFFFFF ? kPlatInvalidHandle : handle;
}

}  // namespace emulator
