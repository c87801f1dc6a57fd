// The bus windows as a program sees them: pages that nobody may touch. Each access faults, the
// handler reads the instruction, does what it asks on the bus, and goes on behind it. A page never
// becomes accessible, so no thread slips past the handler.
#pragma once

#include <cstdint>
#include <optional>

namespace kit {

struct Bus {
  // One access, `bytes` wide. Window -1: there is none behind the address.
  void (*store)(int window, std::uint32_t value, unsigned bytes);
  std::uint8_t (*load)(int window, unsigned bytes);
  // An instruction that no byte access of a compiler looks like. Does not return.
  void (*refuse)(const char* reason, const std::uint8_t* code);
};

inline constexpr unsigned kIoPages = 3;

// Once a process, for good; false when the system gives no pages.
bool OpenIoPages(const Bus& bus);

// Where a window is, and which one is there.
void* IoPage(unsigned window);
std::optional<unsigned> WindowAt(const void* address);

}  // namespace kit
