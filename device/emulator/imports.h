// What the image's imports do: each reads its arguments as the system would and calls the
// platform's function that the library on the PC calls.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>

#include "device/emulator/machine.h"
#include "platform/platform.h"

namespace emulator {

struct Import {
  const char* dll;   // in lower case
  const char* name;  // null: by ordinal
  std::uint32_t ordinal;
  ImportHandler handler;
};

std::span<const Import> KernelImports();
std::span<const Import> DeviceImports();
std::span<const Import> TextImports();

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
