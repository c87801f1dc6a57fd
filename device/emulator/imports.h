// What the image's imports do: each reads its arguments as the system would and calls the
// platform's function that the library on the PC calls.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>

#include "device/emulator/process.h"
#include "platform/platform.h"
#include "sim/world.h"

namespace emulator {

inline constexpr const char* kCoreDll = "coredll.dll";

// Errors of calls, as GetLastError tells them.
inline constexpr std::uint32_t kErrorInvalidHandle = 6;
inline constexpr std::uint32_t kErrorNotEnoughMemory = 8;
inline constexpr std::uint32_t kErrorInvalidWindow = 1400;

struct Import {
  const char* dll;   // in lower case
  const char* name;  // null: by ordinal
  std::uint32_t ordinal;
  ImportHandler handler;
};

std::span<const Import> KernelImports();
std::span<const Import> DeviceImports();
std::span<const Import> LockImports();
std::span<const Import> TextImports();
// Of programs: a library alone that calls one is a fault.
std::span<const Import> ModuleImports();
std::span<const Import> FileImports();
std::span<const Import> WindowImports();
std::span<const Import> MessageImports();

inline sim::Kernel& Kernel() { return sim::TheWorld().kernel; }

// A call fails with this error: 0.
std::uint32_t Fail(std::uint32_t error);
// A call of the guest with an argument that the emulated system cannot give a meaning.
void Expect(const Cpu& cpu, bool met, const char* what);
std::string Narrow(const Cpu& cpu, std::uint32_t address);  // a wide text, as UTF-8

// What CreateFileW and CloseHandle do for files of the card.
std::uint32_t OpenCardFile(Cpu& cpu, const std::string& path);
bool CloseCardFile(const Cpu& cpu, std::uint32_t handle);

// ---- What a library does too, when a program has loaded it -------------------------------------

// False when no such module is the program's.
bool FreeProgramModule(Cpu& cpu, std::uint32_t handle);

// Handles of the platform are wider than the guest's; its two bad ones stay the bad ones.
std::uint32_t GuestHandle(const Cpu& cpu, PlatHandle handle);
PlatHandle HostHandle(std::uint32_t handle);
// The argument as the name of an object; none for 0.
inline const char16_t* OrNull(std::uint32_t address, const std::u16string& text) {
  return address == 0 ? nullptr : text.c_str();
}

// The platform's wide printf with arguments from the guest. `next` gives a word of the argument
// list after the other.
std::u16string FormatForGuest(const Cpu& cpu, const std::u16string& format,
                              const std::function<std::uint32_t()>& next);

}  // namespace emulator
