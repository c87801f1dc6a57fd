// Kernel objects, threads, time, window messages.
#include "ce_api.h"
#include "platform/platform.h"

namespace {

void* Handle(PlatHandle handle) { return reinterpret_cast<void*>(handle); }
PlatHandle FromHandle(const void* handle) { return reinterpret_cast<PlatHandle>(handle); }

// Both are the system's UTF-16 units.
const wchar_t* Wide(const char16_t* text) { return reinterpret_cast<const wchar_t*>(text); }

HWND__* Window(PlatWindow window) { return reinterpret_cast<HWND__*>(window); }

}  // namespace

#ifndef CE_OTHER_CALL
static void* StartThread(PlatThreadProc proc, void* argument, CeDword* thread_id) {
  // The system calls a thread procedure as the library calls its own functions, and its 32-bit word
  // is an unsigned long.
  return CreateThread(nullptr, 0, reinterpret_cast<CeThreadProc>(proc), argument, 0, thread_id);
}
#endif

PlatHandle Plat_CreateMutex(const char16_t* name) {
  return FromHandle(CreateMutexW(nullptr, 0, Wide(name)));
}

PlatHandle Plat_CreateEvent(const char16_t* name, bool manual_reset, bool signalled) {
  SetLastError(0);
  return FromHandle(CreateEventW(nullptr, manual_reset, signalled, Wide(name)));
}

std::uint32_t Plat_Wait(PlatHandle object, std::uint32_t timeout_ms) {
  return WaitForSingleObject(Handle(object), timeout_ms);
}

bool Plat_ReleaseMutex(PlatHandle mutex) { return ReleaseMutex(Handle(mutex)) != 0; }
bool Plat_CloseHandle(PlatHandle handle) { return CloseHandle(Handle(handle)) != 0; }

PlatHandle Plat_CreateThread(PlatThreadProc proc, void* argument, std::uint32_t* thread_id) {
  CeDword id = 0;
  void* thread = StartThread(proc, argument, &id);
  *thread_id = id;
  return FromHandle(thread);
}

bool Plat_GetExitCodeThread(PlatHandle thread, std::uint32_t* exit_code) {
  CeDword code = 0;
  const bool known = GetExitCodeThread(Handle(thread), &code) != 0;
  *exit_code = code;
  return known;
}

bool Plat_TerminateThread(PlatHandle thread, std::uint32_t exit_code) {
  return TerminateThread(Handle(thread), exit_code) != 0;
}

bool Plat_SetThreadQuantum(PlatHandle thread, std::uint32_t quantum_ms) {
  return CeSetThreadQuantum(Handle(thread), quantum_ms) != 0;
}

std::uint32_t Plat_CurrentThreadId() { return GetCurrentThreadId(); }
void Plat_Sleep(std::uint32_t duration_ms) { Sleep(duration_ms); }
std::uint32_t Plat_TickCount() { return GetTickCount(); }
std::uint32_t Plat_LastError() { return GetLastError(); }

void Plat_DisableThreadCalls(PlatHandle module) {
  DisableThreadLibraryCalls(reinterpret_cast<HINSTANCE__*>(module));
}

bool Plat_IsWindow(PlatWindow window) { return IsWindow(Window(window)) != 0; }

bool Plat_SendMessage(PlatWindow window, std::uint32_t message, std::uintptr_t wparam,
                      std::intptr_t lparam, std::uint32_t timeout_ms) {
  CeDwordPtr answer = 0;
  return SendMessageTimeout(Window(window), message, static_cast<CeUnsigned>(wparam),
                            static_cast<CeLong>(lparam), kCeSendNormal, timeout_ms, &answer) != 0;
}

bool Plat_PostMessage(PlatWindow window, std::uint32_t message, std::uintptr_t wparam,
                      std::intptr_t lparam) {
  return PostMessageW(Window(window), message, static_cast<CeUnsigned>(wparam),
                      static_cast<CeLong>(lparam)) != 0;
}
