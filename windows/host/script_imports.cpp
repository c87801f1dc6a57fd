#include "script_imports.h"

#include <array>
#include <map>
#include <vector>

#include "board_service.h"
#include "sim/kernel/message_records.h"
#include "sim/world.h"
#include "turns.h"
#include "window.h"

namespace host {
namespace {

constexpr DWORD kErrorInvalidWindow = 1400;
constexpr DWORD kErrorTimeout = 1460;

// ---- What the library holds ---------------------------------------------------------------------

enum class Kind { Mutex, Event, Thread };
struct Held {
  Kind kind;
  std::string name;
};

// Handles are touched by whoever has the turn.
std::map<HANDLE, Held> g_held;
std::vector<HANDLE> g_own;      // ours, until the script ends
std::vector<HANDLE> g_fillers;  // in the place of a closed lock
std::map<PlatWindow, HWND> g_windows;

void Note(sim::EventDetail detail) {
  const BoardLock lock;
  sim::TheWorld().trace.Add(g_turns.Now(), g_turns.IsWorker() ? sim::By::Worker : sim::By::Host,
                            std::move(detail));
}

bool Fires(sim::Fault fault) {
  const BoardLock lock;
  return sim::TheWorld().faults.Fires(fault);
}

const char16_t* Units(const wchar_t* text) { return reinterpret_cast<const char16_t*>(text); }

const Held* Find(HANDLE handle) {
  const auto found = g_held.find(handle);
  return found == g_held.end() ? nullptr : &found->second;
}

HANDLE Keep(HANDLE handle, Kind kind, const wchar_t* name) {
  const DWORD error = GetLastError();
  if (handle != nullptr) g_held[handle] = {kind, name == nullptr ? "" : Utf8(name)};
  SetLastError(error);
  return handle;
}

// ---- Kernel objects -----------------------------------------------------------------------------

HANDLE WINAPI TakeMutex(SECURITY_ATTRIBUTES* security, BOOL owned, const wchar_t* name) {
  if (Fires(sim::Fault::Mutex)) {
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return nullptr;
  }
  return Keep(CreateMutexW(security, owned, name), Kind::Mutex, name);
}

HANDLE WINAPI TakeEvent(SECURITY_ATTRIBUTES* security, BOOL manual, BOOL signalled,
                        const wchar_t* name) {
  if (name != nullptr && Fires(sim::Fault::EventExists)) {
    // As another process would have it.
    g_own.push_back(CreateEventW(nullptr, manual, signalled, name));
    SetLastError(0);
  }
  return Keep(CreateEventW(security, manual, signalled, name), Kind::Event, name);
}

DWORD WINAPI Wait(HANDLE object, DWORD timeout_ms) {
  const Held* held = Find(object);
  if (held == nullptr) {
    Note(sim::LockEvent{false, "", false});
    SetLastError(ERROR_INVALID_HANDLE);
    return WAIT_FAILED;
  }
  if (held->kind != Kind::Mutex) {
    Note(sim::SleepEvent{true, static_cast<std::uint32_t>(timeout_ms)});
    const DWORD result = WaitForSingleObject(object, 0);
    if (result != WAIT_TIMEOUT || timeout_ms == 0) return result;
    g_turns.Pause(timeout_ms);
    return WaitForSingleObject(object, 0);
  }
  const DWORD result = WaitForSingleObject(object, timeout_ms);
  const bool ok = result == WAIT_OBJECT_0 || result == WAIT_ABANDONED;
  const DWORD error = GetLastError();
  Note(sim::LockEvent{false, held->name, ok});
  SetLastError(error);
  return result;
}

BOOL WINAPI Release(HANDLE mutex) {
  const Held* held = Find(mutex);
  const BOOL ok = held == nullptr ? FALSE : ReleaseMutex(mutex);
  const DWORD error = held == nullptr ? ERROR_INVALID_HANDLE : GetLastError();
  Note(sim::LockEvent{true, held == nullptr ? "" : held->name, ok != FALSE});
  SetLastError(error);
  return ok;
}

// The library keeps the value of its closed lock, on purpose. The next handle made in this process
// may get that very value; on the device values do not come back so soon. It is kept out of use.
void KeepOutOfUse(HANDLE value) {
  for (int tries = 0; tries < 16; ++tries) {
    const HANDLE filler = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    g_fillers.push_back(filler);
    if (filler == value) return;
  }
}

// ---- Drivers: of the simulated board. Their handles are none that the system could give. --------

constexpr PlatHandle kFirstDriverHandle = 0x70000000;

HANDLE WINAPI OpenDriver(const wchar_t* name, DWORD access, DWORD share, SECURITY_ATTRIBUTES*,
                         DWORD disposition, DWORD, HANDLE) {
  const BoardLock lock;
  PlatHandle handle = Plat_OpenDriver(Units(name), access, share, disposition);
  if (handle != kPlatNoHandle && handle != kPlatInvalidHandle) {
    handle += kFirstDriverHandle;
  } else {
    SetLastError(sim::TheWorld().kernel.LastError());
  }
  return reinterpret_cast<HANDLE>(handle);
}

PlatHandle SimDriver(HANDLE handle) {
  const auto value = reinterpret_cast<PlatHandle>(handle);
  return value == kPlatNoHandle || value == kPlatInvalidHandle ? value : value - kFirstDriverHandle;
}

bool IsDriver(HANDLE handle) {
  const auto value = reinterpret_cast<PlatHandle>(handle);
  return value == kPlatNoHandle || value >= kFirstDriverHandle;
}

BOOL WINAPI ControlDriver(HANDLE driver, DWORD code, void* input, DWORD input_bytes, void*, DWORD,
                          DWORD*, OVERLAPPED*) {
  const BoardLock lock;
  const bool ok = Plat_ControlDriver(SimDriver(driver), code, input, input_bytes);
  SetLastError(sim::TheWorld().kernel.LastError());
  return ok;
}

BOOL WINAPI Close(HANDLE handle) {
  const auto held = g_held.find(handle);
  if (held == g_held.end()) {
    if (!IsDriver(handle)) {  // the closed lock once more
      SetLastError(ERROR_INVALID_HANDLE);
      return FALSE;
    }
    const BoardLock lock;
    const bool ok = Plat_CloseDriver(SimDriver(handle));
    SetLastError(sim::TheWorld().kernel.LastError());
    return ok;
  }
  const bool lock = held->second.kind == Kind::Mutex;
  g_held.erase(held);
  const BOOL ok = CloseHandle(handle);
  if (lock) KeepOutOfUse(handle);
  return ok;
}

// ---- Threads ------------------------------------------------------------------------------------

struct ThreadStart {
  LPTHREAD_START_ROUTINE proc;
  void* argument;
  Turns::Thread* turn;
};

DWORD WINAPI RunThread(void* argument) {
  auto* start = static_cast<ThreadStart*>(argument);
  g_turns.Begin(start->turn);
  const DWORD code = start->proc(start->argument);
  Note(sim::ThreadEvent{"end", static_cast<std::uint32_t>(code)});
  delete start;
  g_turns.End();
  return code;
}

HANDLE WINAPI StartThread(SECURITY_ATTRIBUTES* security, SIZE_T stack, LPTHREAD_START_ROUTINE proc,
                          void* argument, DWORD flags, DWORD* id) {
  if (Fires(sim::Fault::Thread)) {
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return nullptr;
  }
  Turns::Thread* turn = g_turns.Make();
  const HANDLE thread =
      CreateThread(security, stack, RunThread, new ThreadStart{proc, argument, turn}, flags, id);
  if (thread == nullptr) {
    g_turns.Remove(turn);
    return nullptr;
  }
  turn->real = thread;
  Note(sim::ThreadEvent{"start", 0});
  return Keep(thread, Kind::Thread, nullptr);
}

BOOL WINAPI ExitCode(HANDLE thread, DWORD* code) {
  // One that has handed over for the last time is about to end.
  if (Find(thread) != nullptr && g_turns.Find(thread) == nullptr) {
    WaitForSingleObject(thread, INFINITE);
  }
  return GetExitCodeThread(thread, code);
}

BOOL WINAPI Terminate(HANDLE thread, DWORD code) {
  Turns::Thread* turn = g_turns.Find(thread);
  if (turn == nullptr) return TerminateThread(thread, code);
  Note(sim::ThreadEvent{"terminate", static_cast<std::uint32_t>(code)});
  if (Fires(sim::Fault::Terminate)) return TRUE;
  const BOOL ok = TerminateThread(thread, code);
  WaitForSingleObject(thread, INFINITE);
  g_turns.Remove(turn);
  return ok;
}

void WINAPI Pause(DWORD ms) {
  Note(sim::SleepEvent{false, static_cast<std::uint32_t>(ms)});
  g_turns.Pause(ms);
}

DWORD WINAPI Ticks() { return g_turns.Now(); }

// ---- Texts --------------------------------------------------------------------------------------

void WINAPI DebugOutput(const wchar_t* text) { Note(sim::DebugEvent{false, Utf8(text)}); }
void WINAPI KernelDebugOutput(const char* text) { Note(sim::DebugEvent{true, text}); }

// ---- Versions: of the simulated PC's files ------------------------------------------------------

DWORD g_version_bytes = 0;  // as it was told last

DWORD WINAPI VersionSize(const wchar_t* path, DWORD*) {
  const BoardLock lock;
  return g_version_bytes = Plat_VersionInfoSize(Units(path));
}

// The 32-bit library has other allocations too: of a thread's start.
HLOCAL WINAPI Allocate(UINT flags, SIZE_T bytes) {
  if (bytes != g_version_bytes || !Fires(sim::Fault::Allocate)) return LocalAlloc(flags, bytes);
  SetLastError(ERROR_NOT_ENOUGH_MEMORY);
  return nullptr;
}

BOOL WINAPI ReadVersion(const wchar_t* path, DWORD, DWORD bytes, void* buffer) {
  const BoardLock lock;
  return Plat_ReadVersionInfo(Units(path), bytes, buffer);
}

BOOL WINAPI QueryVersion(const void* buffer, const wchar_t* block, void** value, UINT* bytes) {
  static VS_FIXEDFILEINFO info;
  PlatFileVersion version;
  if (wcscmp(block, L"\\") != 0 || !Plat_QueryVersionRoot(buffer, &version)) return FALSE;
  info = {};
  info.dwSignature = VS_FFI_SIGNATURE;
  info.dwFileVersionMS = version.most_significant;
  info.dwFileVersionLS = version.least_significant;
  *value = &info;
  *bytes = sizeof(info);
  return TRUE;
}

// ---- Messages -----------------------------------------------------------------------------------

sim::Bytes TakeRecord(UINT message, std::uintptr_t wparam) {
  if (wparam == 0) return {};
  const auto* const record = reinterpret_cast<const std::uint8_t*>(wparam);
  return sim::Bytes(record, record + sim::MessageRecordBytes(message));
}

void NoteMessage(bool post, bool ok, UINT message, WPARAM wparam, LPARAM lparam) {
  sim::MessageEvent event;
  event.post = post;
  event.message = message;
  event.lparam = static_cast<std::uint32_t>(lparam);
  event.ok = ok;
  if (sim::MessageRecordBytes(message) == 0) {
    event.wparam = static_cast<std::uint32_t>(wparam);
  } else {
    event.record = TakeRecord(message, wparam);
  }
  Note(std::move(event));
}

bool g_sending_at_once = false;  // a library thread sends and the host takes it

// The window's side.
void Receive(std::uint32_t message, std::uintptr_t wparam, Origin origin) {
  if (origin == Origin::OtherThread && !g_sending_at_once) {
    // The system still hands over what a thread sent that was ended meanwhile, and its record is
    // gone with its stack. The same goes for a message that was given up and sent again.
    Turns::Thread* sender = g_turns.Sender();
    if (sender == nullptr || sender->handled) return;
    sender->handled = true;
  }
  const BoardLock lock;
  const bool number = sim::MessageRecordBytes(message) == 0;
  sim::TheWorld().windows.Receive({g_turns.Now(), message,
                                   number ? static_cast<std::uint32_t>(wparam) : 0,
                                   TakeRecord(message, wparam), origin == Origin::Queue});
}

// The host is elsewhere: the send waits until it pumps, or until the board's time is up. Real time
// is shorter than that: the message is sent again until one or the other.
bool SendInVain(HWND window, UINT message, WPARAM wparam, LPARAM lparam, UINT timeout_ms) {
  constexpr UINT kSliceMs = 200;
  Turns::Thread* self = g_turns.BeginSend(timeout_ms);
  for (;;) {
    DWORD_PTR answer = 0;
    if (SendMessageTimeoutW(window, message, wparam, lparam, SMTO_NORMAL, kSliceMs, &answer) != 0 ||
        self->handled) {
      g_turns.Answered(self);
      return true;
    }
    if (g_turns.Expired(self)) {
      self->sending = false;
      return false;
    }
  }
}

LRESULT WINAPI SendTo(HWND window, UINT message, WPARAM wparam, LPARAM lparam, UINT flags,
                      UINT timeout_ms, DWORD_PTR* answer) {
  const bool deaf = sim::TheWorld().windows.deaf;
  bool ok = false;
  DWORD error = kErrorInvalidWindow;
  if (!Fires(sim::Fault::Send)) {
    const bool worker = g_turns.IsWorker();
    if (!IsWindow(window) || (worker ? g_turns.Pumping() : !deaf)) {
      g_sending_at_once = worker;
      ok = SendMessageTimeoutW(window, message, wparam, lparam, flags, timeout_ms, answer) != 0;
      error = GetLastError();
      g_sending_at_once = false;
    } else if (worker) {
      ok = SendInVain(window, message, wparam, lparam, timeout_ms);
      error = kErrorTimeout;
    } else {
      g_turns.Pause(timeout_ms);  // a window cannot be deaf to its own thread
      error = kErrorTimeout;
    }
  }
  NoteMessage(false, ok, message, wparam, lparam);
  SetLastError(error);
  return ok;
}

BOOL WINAPI PostTo(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  BOOL ok = Fires(sim::Fault::Post) ? FALSE : PostMessageW(window, message, wparam, lparam);
  if (ok && window == nullptr) {
    // The system takes it for a message to the thread itself, which nobody handles. The simulated
    // PC says that there is no window; so does this, and the summary tells how often.
    ++g_posts_to_nobody;
    ok = FALSE;
  }
  NoteMessage(true, ok != FALSE, message, wparam, lparam);
  if (!ok) SetLastError(kErrorInvalidWindow);
  return ok;
}

}  // namespace

unsigned g_posts_to_nobody = 0;

std::span<const Import> ScriptImports() {
  static const std::array imports = {
      Replace("CreateMutexW", TakeMutex),
      Replace("CreateEventW", TakeEvent),
      Replace("WaitForSingleObject", Wait),
      Replace("ReleaseMutex", Release),
      Replace("CloseHandle", Close),
      Replace("CreateThread", StartThread),
      Replace("GetExitCodeThread", ExitCode),
      Replace("TerminateThread", Terminate),
      Replace("Sleep", Pause),
      Replace("GetTickCount", Ticks),
      Replace("LocalAlloc", Allocate),
      Replace("CreateFileW", OpenDriver),
      Replace("DeviceIoControl", ControlDriver),
      Replace("OutputDebugStringW", DebugOutput),
      Replace("OutputDebugStringA", KernelDebugOutput),
      Replace("GetFileVersionInfoSizeW", VersionSize),
      Replace("GetFileVersionInfoW", ReadVersion),
      Replace("VerQueryValueW", QueryVersion),
      Replace("SendMessageTimeoutW", SendTo),
      Replace("PostMessageW", PostTo),
  };
  SetMessageSink(Receive);
  return imports;
}

HWND RealWindow(PlatWindow window) {
  if (!sim::TheWorld().windows.Exists(window)) return reinterpret_cast<HWND>(window);
  HWND& real = g_windows[window];
  if (real == nullptr) real = MakeWindow();
  return real;
}

void EndThreads() {
  for (const auto& [handle, held] : g_held) {
    if (held.kind != Kind::Thread) continue;
    if (Turns::Thread* turn = g_turns.Find(handle)) {
      TerminateThread(handle, 0);
      g_turns.Remove(turn);
    }
    WaitForSingleObject(handle, INFINITE);
  }
}

void CloseLeftOvers() {
  for (const auto& [handle, held] : g_held) CloseHandle(handle);
  g_held.clear();
  for (const HANDLE handle : g_own) CloseHandle(handle);
  g_own.clear();
  for (const HANDLE handle : g_fillers) CloseHandle(handle);
  g_fillers.clear();
  for (const auto& [window, real] : g_windows) DestroyWindow(real);
  g_windows.clear();
}

}  // namespace host
