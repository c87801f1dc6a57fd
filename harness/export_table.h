// The library's exports as the host reaches them: one table, so that scripts run as well against a
// library loaded by name as against the one that is linked in.
#pragma once

#include <cstdint>

#include "VexoCtrlSDK.h"
#include "platform/platform.h"

namespace harness {

struct ExportTable {
  int (*dll_entry)(PlatHandle module, std::uint32_t reason, void* reserved);
  int (*initialize)(VexoWindow window);
  void (*uninitialize)();
  int (*get_version)(VexoChar16* buffer);
  void (*set_enable_debug)(std::uint32_t enable);
  void (*set_enable_output_msg)(std::uint32_t enable);
  int (*command_proc)(std::uint32_t code, void* parameter);
  int (*set_motion_info)(std::uint8_t channel, std::uint8_t level, std::uint8_t* mask);
  int (*text_command_proc)(const char* line);
  // Puts the library's state back to what it is at load.
  void (*reset)();
};

// The exports of the library that is linked in.
ExportTable LinkedExports();

// What host.h calls from now on; the linked exports at first.
void UseExports(const ExportTable& exports);

}  // namespace harness
