// What the stand-in DLLs ask of the program that has the simulated board.
#pragma once

#include <windows.h>

#include <cstdint>

struct BoardHost {
  // Number of the bus window at a physical address, -1 when it cannot be mapped.
  int (*map)(std::uint32_t physical, std::uint32_t bytes, std::uint32_t cached);
  void (*unmap)(int window);

  // One access, `bytes` wide. Window -1: there is none behind the address.
  void (*store)(int window, std::uint32_t value, unsigned bytes);
  std::uint8_t (*load)(int window, unsigned bytes);
  // An instruction that no byte access of a compiler looks like. Does not return.
  void (*refuse)(const char* reason, const std::uint8_t* code);

  // NVRAM; all give 0 on success.
  std::uint32_t (*nvram_init)();
  std::uint32_t (*nvram_deinit)();
  std::uint32_t (*nvram_read)(std::uint32_t block, void* request);
  std::uint32_t (*nvram_write)(std::uint32_t block, void* request);
};

// The program exports one function of this name and type.
inline constexpr const char* kBoardHostExport = "VexoBoardHost";
using BoardHostFunction = const BoardHost* (*)();

inline const BoardHost& TheBoardHost() {
  static const BoardHost* const host = [] {
    const FARPROC function = GetProcAddress(GetModuleHandleW(nullptr), kBoardHostExport);
    if (function == nullptr) {
      OutputDebugStringA("the stand-in needs a program that has a simulated board\n");
      TerminateProcess(GetCurrentProcess(), 3);
      __builtin_unreachable();
    }
    return reinterpret_cast<BoardHostFunction>(reinterpret_cast<void*>(function))();
  }();
  return *host;
}
