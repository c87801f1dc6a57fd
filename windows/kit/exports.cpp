#include "exports.h"

#include <stdexcept>

#include "board.h"
#include "image.h"

namespace kit {
namespace {

#ifdef _WIN64
constexpr const char* kSetMotionInfo = "?VEXOAPI_SetMotionInfo@@YAHEEPEAE@Z";
#else
constexpr const char* kSetMotionInfo = "?VEXOAPI_SetMotionInfo@@YAHEEPAE@Z";
#endif

template <typename Function>
void Bind(Function& function, HMODULE library, const char* name) {
  function = reinterpret_cast<Function>(ExportOf(library, name));
}

// Calls an export of the loaded library, away from the board.
template <typename Function, typename... Arguments>
auto Call(Function harness::ExportTable::*function, Arguments... arguments) {
  HMODULE const library = GetModuleHandleW(kLibrary);
  if (library == nullptr) throw std::runtime_error("the program has not loaded VexoCtrlSDK.dll");
  const harness::ExportTable exports = BindExports(library);
  const AwayFromBoard away;
  return (exports.*function)(arguments...);
}

int RefuseEntry(PlatHandle, std::uint32_t, void*) {
  throw std::runtime_error("the program itself loads and unloads the library");
}

int RefuseWindow(VexoWindow) {
  throw std::runtime_error("the program itself gives the library its window");
}

}  // namespace

harness::ExportTable BindExports(HMODULE library) {
  harness::ExportTable exports = {};
  Bind(exports.initialize, library, "VEXOAPI_Initialize");
  Bind(exports.uninitialize, library, "VEXOAPI_Uninitialize");
  Bind(exports.get_version, library, "VEXOAPI_GetVersion");
  Bind(exports.set_enable_debug, library, "VEXOAPI_SetEnableDebug");
  Bind(exports.set_enable_output_msg, library, "VEXOAPI_SetEnableOutputMsg");
  Bind(exports.command_proc, library, "VEXOAPI_CommandProc");
  Bind(exports.set_motion_info, library, kSetMotionInfo);
  Bind(exports.text_command_proc, library, "VEXOAPI_TextCommandProc");
  return exports;
}

void UseLoadedExports() {
  using Table = harness::ExportTable;
  harness::UseExports({
      RefuseEntry,
      RefuseWindow,
      [] { Call(&Table::uninitialize); },
      [](VexoChar16* buffer) { return Call(&Table::get_version, buffer); },
      [](std::uint32_t enable) { Call(&Table::set_enable_debug, enable); },
      [](std::uint32_t enable) { Call(&Table::set_enable_output_msg, enable); },
      [](std::uint32_t code, void* record) { return Call(&Table::command_proc, code, record); },
      [](std::uint8_t channel, std::uint8_t level, std::uint8_t* mask) {
        return Call(&Table::set_motion_info, channel, level, mask);
      },
      [](const char* line) { return Call(&Table::text_command_proc, line); },
      [] {},
  });
}

}  // namespace kit
