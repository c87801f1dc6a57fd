// CEDDK.dll: the two functions of the device-driver kit, and the board behind them.
#include "VexoDesk.h"
#include "board.h"
#include "image.h"
#include "imports.h"
#include "lines.h"
#include "run_scripts.h"

namespace {

// The library has been mapped and its imports are bound; its entry comes next.
void Serve(HMODULE library) {
  if (kit::BoardKind() != kit::Kind::Real) return;
  kit::SwitchOn();
  try {
    kit::ReplaceImports(library, kit::RealImports());
  } catch (const std::exception& error) {
    kit::Refuse(error.what());
  }
}

// The board stays on when a program unloads the library and loads it again.
void Stay(HINSTANCE module) {
  HMODULE pinned = nullptr;
  GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_PIN,
                     reinterpret_cast<const wchar_t*>(module), &pinned);
}

}  // namespace

extern "C" {

void* WINAPI MmMapIoSpace(DWORD address_low, DWORD address_high, DWORD bytes, DWORD cached) {
  return address_high != 0 ? nullptr : kit::MapWindow(address_low, bytes, cached != 0);
}

void WINAPI MmUnmapIoSpace(void* address, DWORD bytes) { kit::UnmapWindow(address, bytes); }

DWORD RTCNVRAM_Init() {
  const kit::AtBoard at_board;
  return Plat_NvramInit();
}
DWORD RTCNVRAM_DeInit() {
  const kit::AtBoard at_board;
  return Plat_NvramDeinit();
}
DWORD RTCNVRAM_Read(DWORD block, void* request) { return kit::ReadNvram(block, request); }
DWORD RTCNVRAM_Write(DWORD block, void* request) { return kit::WriteNvram(block, request); }

int VexoDesk_Line(const char* line, char* answer, size_t capacity) {
  return kit::RunLine(line, answer, capacity);
}
int VexoDesk_RunScripts(int count, const char* const* words) {
  return kit::RunScripts(count, words);
}
int VexoDesk_ControlPort() { return kit::ControlPort(); }
int VexoDesk_PagePort() { return kit::PagePort(); }

BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, void* /*reserved*/) {
  if (reason != DLL_PROCESS_ATTACH) return TRUE;
  Stay(module);
  kit::OpenPages();
  if (!kit::WatchLibrary(Serve)) kit::Refuse("the system's loader tells nobody what it loads");
  // A library that brings this DLL along is mapped already, and nobody is told of it.
  if (HMODULE const library = GetModuleHandleW(kit::kLibrary)) Serve(library);
  return TRUE;
}

}  // extern "C"
