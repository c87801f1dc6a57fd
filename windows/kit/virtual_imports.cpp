// The library's imports on the simulated kernel: everything that it asks of the system, as the PC's
// platform layer answers it.
#include <array>
#include <cstdlib>
#include <string>

#include "board.h"
#include "crossing.h"
#include "imports.h"

namespace kit {
namespace {

const char16_t* Units(const wchar_t* text) { return reinterpret_cast<const char16_t*>(text); }
PlatHandle Handle(HANDLE handle) { return reinterpret_cast<PlatHandle>(handle); }
HANDLE Handle(PlatHandle handle) { return reinterpret_cast<HANDLE>(handle); }
PlatWindow Window(HWND window) { return reinterpret_cast<PlatWindow>(window); }
std::uint32_t Word(DWORD value) { return static_cast<std::uint32_t>(value); }

// ---- Kernel objects, threads, time --------------------------------------------------------------

HANDLE WINAPI MakeMutex(SECURITY_ATTRIBUTES*, BOOL, const wchar_t* name) {
  return Handle(Plat_CreateMutex(Units(name)));
}
HANDLE WINAPI MakeEvent(SECURITY_ATTRIBUTES*, BOOL manual, BOOL signalled, const wchar_t* name) {
  return Handle(Plat_CreateEvent(Units(name), manual != 0, signalled != 0));
}
DWORD WINAPI Wait(HANDLE object, DWORD timeout_ms) {
  return GoOut([&] { return DWORD{Plat_Wait(Handle(object), Word(timeout_ms))}; });
}
BOOL WINAPI Release(HANDLE mutex) {
  return GoOut([&] { return BOOL{Plat_ReleaseMutex(Handle(mutex))}; });
}

struct ThreadStart {
  LPTHREAD_START_ROUTINE proc;
  void* argument;
};

std::uint32_t RunThread(void* argument) {
  const ThreadStart start = *static_cast<ThreadStart*>(argument);
  delete static_cast<ThreadStart*>(argument);
  std::uint32_t code = 0;
  GoIn([&] { code = Word(start.proc(start.argument)); });
  return code;
}

HANDLE WINAPI StartThread(SECURITY_ATTRIBUTES*, SIZE_T, LPTHREAD_START_ROUTINE proc, void* argument,
                          DWORD, DWORD* id) {
  std::uint32_t thread_id = 0;
  auto* const start = new ThreadStart{proc, argument};
  const PlatHandle thread = Plat_CreateThread(RunThread, start, &thread_id);
  if (thread == kPlatNoHandle) {
    delete start;
    return nullptr;
  }
  *id = thread_id;
  return Handle(thread);
}

BOOL WINAPI ExitCode(HANDLE thread, DWORD* code) {
  std::uint32_t exit_code = 0;
  const bool ok = Plat_GetExitCodeThread(Handle(thread), &exit_code);
  *code = exit_code;
  return ok;
}
BOOL WINAPI Terminate(HANDLE thread, DWORD code) {
  return GoOut([&] { return BOOL{Plat_TerminateThread(Handle(thread), Word(code))}; });
}
DWORD WINAPI ThreadId() { return Plat_CurrentThreadId(); }
void WINAPI Pause(DWORD ms) {
  GoOut([&] { Plat_Sleep(Word(ms)); });
}
DWORD WINAPI Ticks() { return Plat_TickCount(); }
DWORD WINAPI LastError() { return Plat_LastError(); }
void WINAPI SetError(DWORD error) { sim::TheWorld().kernel.SetLastError(Word(error)); }
BOOL WINAPI ThreadCallsOff(HMODULE module) {
  Plat_DisableThreadCalls(reinterpret_cast<PlatHandle>(module));
  return TRUE;
}

// ---- Drivers ------------------------------------------------------------------------------------

bool IsDriver(PlatHandle handle) {
  return handle == kPlatNoHandle || handle == kPlatInvalidHandle ||
         sim::TheWorld().drivers.Find(handle) != nullptr;
}

HANDLE WINAPI OpenDriver(const wchar_t* name, DWORD access, DWORD share, SECURITY_ATTRIBUTES*,
                         DWORD disposition, DWORD, HANDLE) {
  return Handle(Plat_OpenDriver(Units(name), Word(access), Word(share), Word(disposition)));
}
BOOL WINAPI ControlDriver(HANDLE driver, DWORD code, void* input, DWORD input_bytes, void*, DWORD,
                          DWORD*, OVERLAPPED*) {
  return Plat_ControlDriver(Handle(driver), Word(code), input, Word(input_bytes));
}
BOOL WINAPI Close(HANDLE handle) {
  const PlatHandle value = Handle(handle);
  return IsDriver(value) ? Plat_CloseDriver(value) : Plat_CloseHandle(value);
}

// ---- Texts and versions -------------------------------------------------------------------------

void WINAPI DebugOutput(const wchar_t* text) { Plat_DebugOutput(Units(text)); }
void WINAPI KernelDebugOutput(const char* text) {
  Plat_KernelDebugOutput(sim::ToUtf16(text).c_str());
}

DWORD WINAPI FormatError(DWORD, const void* module, DWORD code, DWORD, wchar_t* text, DWORD,
                         va_list*) {
  char16_t* const found = Plat_SystemText(Word(code), reinterpret_cast<PlatHandle>(module));
  *reinterpret_cast<char16_t**>(text) = found;
  return found == nullptr ? 0 : static_cast<DWORD>(std::char_traits<char16_t>::length(found));
}
HMODULE WINAPI LoadData(const wchar_t* name, HANDLE, DWORD) {
  return reinterpret_cast<HMODULE>(Plat_LoadDataModule(Units(name)));
}
BOOL WINAPI UnloadData(HMODULE module) {
  Plat_FreeModule(reinterpret_cast<PlatHandle>(module));
  return TRUE;
}

std::uint32_t g_version_bytes = 0;  // as it was told last

DWORD WINAPI VersionSize(const wchar_t* path, DWORD*) {
  return g_version_bytes = Plat_VersionInfoSize(Units(path));
}
BOOL WINAPI ReadVersion(const wchar_t* path, DWORD, DWORD bytes, void* buffer) {
  return Plat_ReadVersionInfo(Units(path), Word(bytes), buffer);
}
BOOL WINAPI QueryVersion(const void* buffer, const wchar_t*, void** value, UINT* bytes) {
  static VS_FIXEDFILEINFO info;
  PlatFileVersion version;
  if (!Plat_QueryVersionRoot(buffer, &version)) return FALSE;
  info = {};
  info.dwSignature = VS_FFI_SIGNATURE;
  info.dwFileVersionMS = version.most_significant;
  info.dwFileVersionLS = version.least_significant;
  *value = &info;
  *bytes = sizeof(info);
  return TRUE;
}

// The library's one allocation is of version information; on 32 bits a thread's start is another.
HLOCAL WINAPI Allocate(UINT, SIZE_T bytes) {
  if (bytes == g_version_bytes) return Plat_Allocate(static_cast<std::uint32_t>(bytes));
  ++sim::TheWorld().allocations;
  return std::malloc(bytes);
}
HLOCAL WINAPI Free(HLOCAL memory) {
  Plat_Free(memory);
  return nullptr;
}

// ---- Messages -----------------------------------------------------------------------------------

BOOL WINAPI IsOne(HWND window) { return Plat_IsWindow(Window(window)); }
LRESULT WINAPI SendTo(HWND window, UINT message, WPARAM wparam, LPARAM lparam, UINT,
                      UINT timeout_ms, DWORD_PTR*) {
  return GoOut([&] {
    return LRESULT{Plat_SendMessage(Window(window), message, wparam, lparam, timeout_ms)};
  });
}
BOOL WINAPI PostTo(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  return GoOut([&] { return BOOL{Plat_PostMessage(Window(window), message, wparam, lparam)}; });
}

}  // namespace

std::span<const Import> VirtualImports() {
  static const std::array imports = {
      Replace("CreateMutexW", MakeMutex),
      Replace("CreateEventW", MakeEvent),
      Replace("WaitForSingleObject", Wait),
      Replace("ReleaseMutex", Release),
      Replace("CloseHandle", Close),
      Replace("CreateThread", StartThread),
      Replace("GetExitCodeThread", ExitCode),
      Replace("TerminateThread", Terminate),
      Replace("GetCurrentThreadId", ThreadId),
      Replace("Sleep", Pause),
      Replace("GetTickCount", Ticks),
      Replace("GetLastError", LastError),
      Replace("SetLastError", SetError),
      Replace("DisableThreadLibraryCalls", ThreadCallsOff),
      Replace("CreateFileW", OpenDriver),
      Replace("DeviceIoControl", ControlDriver),
      Replace("OutputDebugStringW", DebugOutput),
      Replace("OutputDebugStringA", KernelDebugOutput),
      Replace("FormatMessageW", FormatError),
      Replace("LoadLibraryExW", LoadData),
      Replace("FreeLibrary", UnloadData),
      Replace("GetFileVersionInfoSizeW", VersionSize),
      Replace("GetFileVersionInfoW", ReadVersion),
      Replace("VerQueryValueW", QueryVersion),
      Replace("LocalAlloc", Allocate),
      Replace("LocalFree", Free),
      Replace("IsWindow", IsOne),
      Replace("SendMessageTimeoutW", SendTo),
      Replace("PostMessageW", PostTo),
  };
  return imports;
}

}  // namespace kit
