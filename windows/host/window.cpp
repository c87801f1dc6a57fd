#include "window.h"

#include "sim/kernel/message_records.h"

namespace host {
namespace {

constexpr const wchar_t* kClassName = L"VexoHostWindow";

MessageSink g_sink;
bool g_from_queue = false;

LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  if (sim::FindHostMessage(message) == nullptr) {
    return DefWindowProcW(window, message, wparam, lparam);
  }
  const Origin origin = InSendMessage() ? Origin::OtherThread
                        : g_from_queue  ? Origin::Queue
                                        : Origin::OwnThread;
  if (g_sink) g_sink(message, wparam, origin);
  return 0;
}

}  // namespace

void SetMessageSink(MessageSink sink) { g_sink = std::move(sink); }

HWND MakeWindow() {
  static const ATOM window_class = [] {
    WNDCLASSW description = {};
    description.lpfnWndProc = Procedure;
    description.hInstance = GetModuleHandleW(nullptr);
    description.lpszClassName = kClassName;
    return RegisterClassW(&description);
  }();
  if (window_class == 0) return nullptr;
  return CreateWindowExW(0, kClassName, L"host", WS_OVERLAPPED, 0, 0, 8, 8, nullptr, nullptr,
                         GetModuleHandleW(nullptr), nullptr);
}

void DispatchMessages() {
  MSG message;
  while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
    g_from_queue = true;
    DispatchMessageW(&message);
    g_from_queue = false;
  }
}

bool WaitOrDispatch(HANDLE event) {
  if (MsgWaitForMultipleObjects(1, &event, FALSE, INFINITE, QS_ALLINPUT) == WAIT_OBJECT_0) {
    return false;
  }
  DispatchMessages();
  return true;
}

}  // namespace host
