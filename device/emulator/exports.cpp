#include "device/emulator/exports.h"

#include <cstring>
#include <stdexcept>

#include "device/emulator/imports.h"
#include "harness/host.h"
#include "sim/world.h"

namespace emulator {
namespace {

// The caller's memory may begin anywhere that its type allows. Records are promised to need no
// alignment at all, so they begin where any access wider than a byte would be a fault; or, for a
// machine that lends aligned memory, where code that looks for whole words finds them.
constexpr unsigned kRecordMisalign = 1;
constexpr unsigned kUnitsMisalign = 2;
constexpr unsigned kBytesMisalign = 1;
constexpr std::uint32_t kVersionBytes = 2 * 20;  // what a host must give

Machine* g_machine = nullptr;
std::optional<std::size_t> g_left_out;

Machine& InUse() {
  if (g_machine == nullptr) throw std::logic_error("no image is in use");
  return *g_machine;
}

// The library keeps no memory of the system's from one call to the next.
int Call(Cpu& cpu, const char* name, std::initializer_list<std::uint32_t> arguments) {
  const auto result = static_cast<int>(cpu.Call(InUse().AddressOf(name), arguments));
  const std::size_t kept = InUse().loans.size();
  if (kept != 0) cpu.Fault("the call left allocated blocks: " + std::to_string(kept));
  return result;
}

std::uint32_t Lend(Cpu& cpu, const void* data, std::size_t bytes, bool writable,
                   unsigned misalign) {
  return cpu.Lend(data, static_cast<std::uint32_t>(bytes), writable,
                  InUse().LendsAligned() ? 0 : misalign);
}

// A byte argument in a register whose other bits are anything.
std::uint32_t Byte(std::uint8_t value) { return 0xA5A5A500u | value; }

int DllEntry(PlatHandle module, std::uint32_t reason, void*) {
  const Machine::Lease cpu(InUse());
  return Call(*cpu, "", {GuestHandle(*cpu, module), reason, 0});
}

int Initialize(VexoWindow window) {
  const Machine::Lease cpu(InUse());
  return Call(*cpu, "VEXOAPI_Initialize",
              {GuestHandle(*cpu, reinterpret_cast<PlatWindow>(window))});
}

void Uninitialize() { Call(*Machine::Lease(InUse()), "VEXOAPI_Uninitialize", {}); }

int GetVersion(VexoChar16* buffer) {
  const Machine::Lease cpu(InUse());
  if (buffer == nullptr) return Call(*cpu, "VEXOAPI_GetVersion", {0});
  const std::uint32_t text = Lend(*cpu, buffer, kVersionBytes, true, kUnitsMisalign);
  const int result = Call(*cpu, "VEXOAPI_GetVersion", {text});
  cpu->TakeBack(text, buffer, kVersionBytes);
  return result;
}

void SetEnableDebug(std::uint32_t enable) {
  Call(*Machine::Lease(InUse()), "VEXOAPI_SetEnableDebug", {enable});
}

void SetEnableOutputMsg(std::uint32_t enable) {
  Call(*Machine::Lease(InUse()), "VEXOAPI_SetEnableOutputMsg", {enable});
}

int CommandProc(std::uint32_t code, void* parameter) {
  const Machine::Lease cpu(InUse());
  if (parameter == nullptr) return Call(*cpu, "VEXOAPI_CommandProc", {code, 0});
  const std::uint32_t record =
      Lend(*cpu, parameter, harness::kCommandRecordBytes, true, kRecordMisalign);
  const int result = Call(*cpu, "VEXOAPI_CommandProc", {code, record});
  cpu->TakeBack(record, parameter, harness::kCommandRecordBytes);
  return result;
}

int SetMotionInfo(std::uint8_t channel, std::uint8_t level, std::uint8_t* mask) {
  constexpr const char* kDecorated = "?VEXOAPI_SetMotionInfo@@YAHEEPAE@Z";
  const Machine::Lease cpu(InUse());
  const std::uint32_t lent =
      mask == nullptr ? 0 : Lend(*cpu, mask, VEXO_MOTION_MASK_BYTES, false, kBytesMisalign);
  return Call(*cpu, kDecorated, {Byte(channel), Byte(level), lent});
}

int TextCommandProc(const char* line) {
  const Machine::Lease cpu(InUse());
  const std::uint32_t lent =
      line == nullptr ? 0 : Lend(*cpu, line, std::strlen(line) + 1, false, kBytesMisalign);
  return Call(*cpu, "VEXOAPI_TextCommandProc", {lent});
}

void Reload() { InUse().Reload(g_left_out); }

}  // namespace

ImageInUse::ImageInUse(Machine& machine) {
  if (g_machine != nullptr) throw std::logic_error("an image is in use already");
  g_machine = &machine;
  g_left_out.reset();
  harness::UseExports({DllEntry, Initialize, Uninitialize, GetVersion, SetEnableDebug,
                       SetEnableOutputMsg, CommandProc, SetMotionInfo, TextCommandProc, Reload});
}

ImageInUse::~ImageInUse() {
  sim::ResetWorld();
  harness::UseExports(harness::LinkedExports());
  g_machine = nullptr;
}

void ImageInUse::LeaveOut(std::optional<std::size_t> relocation) { g_left_out = relocation; }

}  // namespace emulator
