#include "device/emulator/program.h"

#include <array>
#include <cstring>
#include <utility>

#include "device/emulator/device.h"
#include "device/emulator/imports.h"
#include "device/emulator/open_file.h"
#include "sim/world.h"

namespace emulator {
namespace {

// Of each of the program's threads.
std::uint32_t StackOf(const std::string& path, const PeImage& file) {
  if (file.StackBytes() <= kStackBytes)
    return file.StackBytes() == 0 ? kStackBytes : file.StackBytes();
  throw LoaderRefusal(kErrorNotEnoughMemory,
                      NameOf(path) + " wants a stack of " + std::to_string(file.StackBytes()) +
                          " bytes; here it gets " + std::to_string(kStackBytes) + " at most");
}

}  // namespace

Program::Program(Device& device, const std::string& path, std::uint32_t id)
    : Process({.stack = kStackBytes}), device_(device), loader_(device, *this), path_(path) {
  id_ = id;
  SetStackLimit(StackOf(path, loader_.LoadProgram(path).image->File()));
}

Program::~Program() = default;

std::uint32_t Program::RunEntry(Cpu& cpu, const std::u16string& command_line) {
  constexpr std::uint32_t kShowNormal = 1;
  if (!loader_.Attach(cpu, true)) return kErrorEntryFailed;
  const auto bytes = static_cast<std::uint32_t>((command_line.size() + 1) * sizeof(char16_t));
  const std::uint32_t text = Heap().Allocate(bytes);
  std::memcpy(cpu.Write(text, bytes), command_line.c_str(), bytes);
  const Module& module = *loader_.Find(0);
  const std::array<std::uint32_t, 4> arguments = {module.handle, 0, text, kShowNormal};
  return cpu.Call(module.image->Base() + module.image->File().EntryRva(), arguments);
}

std::uint32_t Program::Run(const std::u16string& command_line) {
  const Lease cpu(*this);
  std::uint32_t code = 0;
  try {
    code = RunEntry(*cpu, command_line);
    loader_.DetachAll(*cpu);
  } catch (const ProcessEnded& ended) {
    code = ended.code;
  }
  CloseAll();
  return exit_code_ = code;
}

// With a process its threads end, and what it has open is closed.
void Program::CloseAll() {
  sim::Kernel& kernel = sim::TheWorld().kernel;
  for (const std::uint32_t thread : std::exchange(threads, {})) kernel.EndThread(thread);
  files.clear();
  for (const PlatHandle object : std::exchange(objects, {})) kernel.CloseHandle(object);
  for (const PlatHandle driver : std::exchange(drivers, {})) {
    if (sim::TheWorld().drivers.Find(driver) != nullptr) Plat_CloseDriver(driver);
  }
}

void Program::ThreadLeft(const Cpu& cpu) { device_.Windows().ThreadLeft(cpu); }

Program& CallingProgram(const Cpu& cpu) {
  Program* const program = cpu.Owner().AsProgram();
  if (program == nullptr) cpu.Fault("a call that only a program can make");
  return *program;
}

}  // namespace emulator
