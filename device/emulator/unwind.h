// Who called, found as the system finds it when it unwinds: by an image's function table and by
// what the function's own instructions did to the stack.
//
// An instruction in the prolog undoes what ran of it, one in an epilog is followed by what is left
// of that, and one in between undoes the whole prolog. A function without an entry in the table has
// its caller in lr.
#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "device/emulator/cpu.h"
#include "device/emulator/loaded_image.h"

namespace emulator {

inline constexpr unsigned kSp = 13;
inline constexpr unsigned kLr = 14;
inline constexpr unsigned kPc = 15;

// A function of the table, by addresses.
struct FunctionRange {
  std::uint32_t begin = 0;
  std::uint32_t body = 0;  // behind the prolog
  std::uint32_t end = 0;
};
// The one that an address lies in, found by halving; none when it lies in none. Throws BadImage for
// code of 16-bit instructions.
std::optional<FunctionRange> FindFunction(const LoadedImage& image, std::uint32_t address);

// A call that is under way.
struct Frame {
  std::array<std::uint32_t, 16> registers{};
  bool waits = false;  // for a call to come back; pc is behind that
};

Frame FrameOf(const Cpu& cpu);
// As the caller has the registers when the call comes back: pc, sp and r4 to r11; the others hold
// anything. Throws harness::ImageFault for a function that cannot be undone.
Frame CallerOf(const Cpu& cpu, const Frame& frame);

}  // namespace emulator
