#include "report/host_messages.h"

#include "platform/platform.h"
#include "report/diagnostics.h"
#include "report/library_state.h"

namespace {
constexpr std::uint32_t kSendLimitMs = 5000;
}

// Quirk: the failures' texts are spelled so; hosts may look for them.
void VexoSDK_SendHostMessage(std::uint32_t message, std::uintptr_t wparam, std::intptr_t lparam) {
  if (Plat_SendMessage(g_library.g_host_wnd, message, wparam, lparam, kSendLimitMs)) return;
  VexoDbg_Print(u">> SendMessage Error occure 0x%08X 0x%08X \r\n", message, Plat_LastError());
}

void VexoSDK_PostHostMessage(std::uint32_t message, std::uintptr_t wparam, std::intptr_t lparam) {
  if (Plat_PostMessage(g_library.g_host_wnd, message, wparam, lparam)) return;
  VexoDbg_Print(u">> PostMessage Error occure 0x%08X \r\n", Plat_LastError());
}
