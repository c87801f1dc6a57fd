// The exports that read or set the library's own state.

#include "VexoCtrlSDK.h"
#include "report/diagnostics.h"
#include "report/library_state.h"

namespace {
constexpr std::int32_t kLevelInvalidWindow = 4;
}

int VEXOAPI_Initialize(VexoWindow window) {
  if (g_library.g_initialized == 0) return VEXO_ERROR_UNINITIALIZED;
  const PlatWindow handle = reinterpret_cast<PlatWindow>(window);
  if (!Plat_IsWindow(handle)) {
    // Quirk: answers "done" all the same; hosts rely on it and notice by the commands' -8.
    VexoDbg_PrintLevel(kLevelInvalidWindow, u">> VEXOAPI_Initialize Invalid window handle \r\n");
    return VEXO_OK;
  }
  g_library.g_host_wnd = handle;
  return VEXO_OK;
}

void VEXOAPI_Uninitialize(void) {
  if (g_library.g_initialized != 0) g_library.g_host_wnd = 0;
}

int VEXOAPI_GetVersion(VexoChar16* buffer) {
  if (g_library.g_initialized == 0) return 0;
  int length = 0;
  while (g_library.g_version_text[length] != u'\0') ++length;
  if (buffer != nullptr) {
    for (int i = 0; i <= length; ++i) buffer[i] = g_library.g_version_text[i];
  }
  return length;
}

void VEXOAPI_SetEnableDebug(std::uint32_t enable) {
  if (g_library.g_initialized != 0) VexoDbg_SetDebugOutput(enable);
}

void VEXOAPI_SetEnableOutputMsg(std::uint32_t enable) {
  if (g_library.g_initialized != 0) VexoDbg_SetOutputMessage(enable);
}
