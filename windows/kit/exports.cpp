#include "exports.h"

#include <stdexcept>
#include <type_traits>

#include "VexoCtrlSDK.h"
#include "board.h"
#include "crossing.h"
#include "harness/export_table.h"
#include "image.h"
#include "imports.h"

namespace kit {
namespace {

template <typename Function>
void Bind(Function& function, HMODULE library, const char* name) {
  function = reinterpret_cast<Function>(ExportOf(library, name));
}

// Throws std::runtime_error for one that is missing; `dll_entry` and `reset` are left null.
harness::ExportTable BindExports(HMODULE library) {
  harness::ExportTable exports = {};
  Bind(exports.initialize, library, "VEXOAPI_Initialize");
  Bind(exports.uninitialize, library, "VEXOAPI_Uninitialize");
  Bind(exports.get_version, library, "VEXOAPI_GetVersion");
  Bind(exports.set_enable_debug, library, "VEXOAPI_SetEnableDebug");
  Bind(exports.set_enable_output_msg, library, "VEXOAPI_SetEnableOutputMsg");
  Bind(exports.command_proc, library, "VEXOAPI_CommandProc");
  Bind(exports.set_motion_info, library, VEXO_EXPORT_SET_MOTION_INFO);
  Bind(exports.text_command_proc, library, "VEXOAPI_TextCommandProc");
  return exports;
}

// ---- In real time -------------------------------------------------------------------------------

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

// ---- In virtual time ----------------------------------------------------------------------------

HMODULE g_mapped = nullptr;
harness::ExportTable g_mapped_exports;

void Map() {
  if (g_mapped != nullptr) return;
  g_mapped = MapWithoutEntry(VirtualImports());
  g_mapped_exports = BindExports(g_mapped);
}

// The image stays, with all that a detach leaves in it, as long as the script.
void Unmap() {
  if (g_mapped != nullptr) FreeLibrary(g_mapped);
  g_mapped = nullptr;
}

int Enter(PlatHandle, std::uint32_t reason, void*) {
  Map();
  int result = 0;
  GoIn([&] { result = EntryOf(g_mapped)(g_mapped, reason, nullptr); });
  return result;
}

// Calls an export of the mapped library.
template <typename Result, typename... Parameters, typename... Arguments>
Result CallMapped(Result (*harness::ExportTable::*function)(Parameters...),
                  Arguments... arguments) {
  Map();
  if constexpr (std::is_void_v<Result>) {
    GoIn([&] { (g_mapped_exports.*function)(arguments...); });
  } else {
    Result result{};
    GoIn([&] { result = (g_mapped_exports.*function)(arguments...); });
    return result;
  }
}

}  // namespace

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

void UseMappedExports() {
  using Table = harness::ExportTable;
  harness::UseExports({
      Enter,
      [](VexoWindow window) { return CallMapped(&Table::initialize, window); },
      [] { CallMapped(&Table::uninitialize); },
      [](VexoChar16* buffer) { return CallMapped(&Table::get_version, buffer); },
      [](std::uint32_t enable) { CallMapped(&Table::set_enable_debug, enable); },
      [](std::uint32_t enable) { CallMapped(&Table::set_enable_output_msg, enable); },
      [](std::uint32_t code, void* record) {
        return CallMapped(&Table::command_proc, code, record);
      },
      [](std::uint8_t channel, std::uint8_t level, std::uint8_t* mask) {
        return CallMapped(&Table::set_motion_info, channel, level, mask);
      },
      [](const char* line) { return CallMapped(&Table::text_command_proc, line); },
      Unmap,
  });
}

}  // namespace kit
