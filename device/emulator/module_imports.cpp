// Modules and processes: what a program asks of the loader and of the kernel.
#include <algorithm>
#include <array>
#include <cstring>

#include "device/emulator/device.h"
#include "device/emulator/imports.h"
#include "device/emulator/program.h"
#include "sim/text.h"
#include "sim/world.h"

namespace emulator {
namespace {

constexpr std::uint32_t kErrorInsufficientBuffer = 122;
// What the system's headers have in the place of a call: the handle of the running process.
constexpr std::uint32_t kCurrentProcess = 0x42;

std::uint32_t Refused(const LoaderRefusal& refusal) {
  Device::Tell(std::string(refusal.what()) + ": error " + std::to_string(refusal.error));
  return Fail(refusal.error);
}

std::uint32_t LoadLibrary(Cpu& cpu) {
  Loader& loader = CallingProgram(cpu).Modules();
  try {
    Module& module = loader.Load(Narrow(cpu, cpu.Argument(0)));
    const std::uint32_t handle = module.handle;
    if (loader.Attach(cpu, false)) return handle;
    loader.Free(cpu, module);
    return Fail(kErrorEntryFailed);
  } catch (const LoaderRefusal& refusal) {
    return Refused(refusal);
  }
}

std::uint32_t GetProcAddress(Cpu& cpu) {
  constexpr std::uint32_t kMostOrdinal = 0xFFFF;
  Loader& loader = CallingProgram(cpu).Modules();
  const Module* const module = loader.Find(cpu.Argument(0));
  const std::uint32_t name = cpu.Argument(1);
  if (module == nullptr || cpu.Argument(0) == 0) return Fail(kErrorInvalidHandle);
  const auto address = name <= kMostOrdinal ? loader.Export(*module, name)
                                            : loader.Export(*module, Narrow(cpu, name));
  return address ? *address : Fail(kErrorProcedureNotFound);
}

// The length without the terminator; what does not fit is cut, and ended all the same.
std::uint32_t GetModuleFileName(Cpu& cpu) {
  const Module* const module = CallingProgram(cpu).Modules().Find(cpu.Argument(0));
  if (module == nullptr) return Fail(kErrorInvalidHandle);
  std::u16string path = sim::ToUtf16(module->path);
  const std::uint32_t room = cpu.Argument(2);
  if (room == 0) return Fail(kErrorInsufficientBuffer);
  if (path.size() >= room) path.resize(room - 1);
  const auto bytes = static_cast<std::uint32_t>((path.size() + 1) * sizeof(char16_t));
  std::memcpy(cpu.Write(cpu.Argument(1), bytes), path.c_str(), bytes);
  return static_cast<std::uint32_t>(path.size());
}

// ---- Processes ----------------------------------------------------------------------------------

// The system takes the name, the command line and flags; the rest must be null.
std::uint32_t CreateProcess(Cpu& cpu) {
  Program& caller = CallingProgram(cpu);
  const bool plain = cpu.Argument(2) == 0 && cpu.Argument(3) == 0 && cpu.Argument(4) == 0 &&
                     cpu.Argument(5) == 0 && cpu.Argument(6) == 0 && cpu.Argument(7) == 0 &&
                     cpu.Argument(8) == 0;
  Expect(cpu, plain, "what this system's CreateProcess must be given as null");
  const std::string path = Narrow(cpu, cpu.Argument(0));
  const std::uint32_t line = cpu.Argument(1);
  const std::u16string command_line = line == 0 ? std::u16string() : cpu.WideText(line);
  const std::uint32_t information = cpu.Argument(9);
  try {
    std::uint32_t handle = 0;
    const Program& program = caller.OfDevice().Start(path, command_line, &handle);
    if (information != 0) {
      const std::array<std::uint32_t, 4> words = {handle, handle, program.Id(), program.Id()};
      for (std::uint32_t i = 0; i < words.size(); ++i) cpu.WriteWord(information + 4 * i, words[i]);
    }
    return 1;
  } catch (const LoaderRefusal& refusal) {
    return Refused(refusal);
  }
}

std::uint32_t GetExitCodeProcess(Cpu& cpu) {
  const Program& caller = CallingProgram(cpu);
  const Program* const program =
      cpu.Argument(0) == kCurrentProcess ? &caller : caller.OfDevice().ProcessOf(cpu.Argument(0));
  if (program == nullptr) return Fail(kErrorInvalidHandle);
  cpu.WriteWord(cpu.Argument(1), program->ExitCode());
  return 1;
}

std::uint32_t TerminateProcess(Cpu& cpu) {
  CallingProgram(cpu);
  Expect(cpu, cpu.Argument(0) == kCurrentProcess, "another process to be ended");
  throw ProcessEnded{cpu.Argument(1)};
}

// ---- Time ---------------------------------------------------------------------------------------

std::uint32_t WriteLong(const Cpu& cpu, std::uint32_t address, std::uint64_t value) {
  cpu.WriteWord(address, static_cast<std::uint32_t>(value));
  cpu.WriteWord(address + 4, static_cast<std::uint32_t>(value >> 32));
  return 1;
}

std::uint32_t QueryPerformanceCounter(Cpu& cpu) {
  return WriteLong(cpu, cpu.Argument(0), sim::TheWorld().kernel.Microseconds());
}

std::uint32_t QueryPerformanceFrequency(Cpu& cpu) {
  constexpr std::uint64_t kMicroseconds = 1'000'000;
  return WriteLong(cpu, cpu.Argument(0), kMicroseconds);
}

constexpr Import kModuleImports[] = {
    {kCoreDll, "LoadLibraryW", 0, LoadLibrary},
    {kCoreDll, "GetProcAddressW", 0, GetProcAddress},
    {kCoreDll, "GetModuleFileNameW", 0, GetModuleFileName},
    {kCoreDll, "CreateProcessW", 0, CreateProcess},
    {kCoreDll, "GetExitCodeProcess", 0, GetExitCodeProcess},
    {kCoreDll, "TerminateProcess", 0, TerminateProcess},
    {kCoreDll, "QueryPerformanceCounter", 0, QueryPerformanceCounter},
    {kCoreDll, "QueryPerformanceFrequency", 0, QueryPerformanceFrequency},
};

}  // namespace

std::span<const Import> ModuleImports() { return kModuleImports; }

bool FreeProgramModule(Cpu& cpu, std::uint32_t handle) {
  Program* const program = cpu.Owner().AsProgram();
  if (program == nullptr || handle == 0) return false;
  Module* const module = program->Modules().Find(handle);
  if (module == nullptr) return false;
  program->Modules().Free(cpu, *module);
  return true;
}

}  // namespace emulator
