// What lives as long as the library is attached to a process.
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/platform.h"

inline constexpr std::size_t kVersionTextUnits = 20;  // terminator included

struct LibraryState {
  PlatHandle g_module = 0;          // the library's own module
  std::uint32_t g_initialized = 0;  // 1: this process is the one that has the library
  PlatWindow g_host_wnd = 0;        // host window; 0 while none is bound
  PlatHandle g_cs4_lock = 0;        // mutex "CS4_GlobalLock", shared with the bus's other drivers
  PlatHandle g_instance_event = 0;  // event "VEXOSDK", the mark of the one instance
  char16_t g_version_text[kVersionTextUnits] = {};
};
extern LibraryState g_library;
