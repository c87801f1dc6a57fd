// The library's imports on the real system: thin wrappers that note what happens, and what the
// recorder has and a PC lacks.
#include <array>
#include <atomic>
#include <cwchar>
#include <map>
#include <string>

#include "board.h"
#include "imports.h"
#include "sim/kernel/message_records.h"

namespace kit {
namespace {

const char16_t* Units(const wchar_t* text) { return reinterpret_cast<const char16_t*>(text); }

// Adds to the trace; the system's last error stays what it was.
template <typename Detail>
void Note(Detail detail) {
  const DWORD error = GetLastError();
  {
    const AtBoard at_board;
    sim::TheWorld().Record(std::move(detail));
  }
  SetLastError(error);
}

bool Fires(sim::Fault fault) {
  const AtBoard at_board;
  return sim::TheWorld().faults.Fires(fault);
}

// The board's reason for a failure becomes the system's.
template <typename Result>
Result WithReason(bool ok, Result result) {
  if (!ok) SetLastError(sim::TheWorld().kernel.LastError());
  return result;
}

// ---- Waiting ------------------------------------------------------------------------------------

std::atomic<bool> g_worker_waits;  // in the system, and holds nothing of ours

class SystemWait {
 public:
  SystemWait() {
    if (IsWorker()) g_worker_waits = true;
  }
  ~SystemWait() {
    if (IsWorker()) g_worker_waits = false;
  }
  SystemWait(const SystemWait&) = delete;
  SystemWait& operator=(const SystemWait&) = delete;
};

// Names of the library's mutexes. At the board.
std::map<HANDLE, std::string> g_mutexes;

// None: no mutex.
std::string NameOfMutex(HANDLE handle) {
  const AtBoard at_board;
  const auto found = g_mutexes.find(handle);
  return found == g_mutexes.end() ? "" : found->second;
}

HANDLE WINAPI MakeMutex(SECURITY_ATTRIBUTES* security, BOOL owned, const wchar_t* name) {
  if (Fires(sim::Fault::Mutex)) {
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return nullptr;
  }
  HANDLE const mutex = CreateMutexW(security, owned, name);
  const DWORD error = GetLastError();
  if (mutex != nullptr) {
    const AtBoard at_board;
    g_mutexes[mutex] = name == nullptr ? "mutex" : sim::ToUtf8(Units(name));
  }
  SetLastError(error);
  return mutex;
}

HANDLE WINAPI MakeEvent(SECURITY_ATTRIBUTES* security, BOOL manual, BOOL signalled,
                        const wchar_t* name) {
  if (Fires(sim::Fault::Event)) {
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return nullptr;
  }
  HANDLE const event = CreateEventW(security, manual, signalled, name);
  // As if another process had it.
  if (name != nullptr && Fires(sim::Fault::EventExists)) SetLastError(ERROR_ALREADY_EXISTS);
  return event;
}

// A call that is to fail goes on with no handle, and fails as it does with one that is none.
HANDLE Unless(sim::Fault fault, HANDLE handle) { return Fires(fault) ? nullptr : handle; }

DWORD WINAPI Wait(HANDLE object, DWORD timeout_ms) {
  const std::string mutex = NameOfMutex(object);
  if (mutex.empty()) Note(sim::SleepEvent{true, static_cast<std::uint32_t>(timeout_ms)});
  DWORD result = 0;
  {
    const SystemWait wait;
    result = WaitForSingleObject(Unless(sim::Fault::Wait, object), timeout_ms);
  }
  if (!mutex.empty()) {
    Note(sim::LockEvent{false, mutex, result == WAIT_OBJECT_0 || result == WAIT_ABANDONED});
  }
  return result;
}

BOOL WINAPI Release(HANDLE mutex) {
  const std::string name = NameOfMutex(mutex);
  const BOOL ok = ReleaseMutex(Unless(sim::Fault::Release, mutex));
  Note(sim::LockEvent{true, name, ok != FALSE});
  return ok;
}

void WINAPI Pause(DWORD ms) {
  Note(sim::SleepEvent{false, static_cast<std::uint32_t>(ms)});
  const SystemWait wait;
  Sleep(ms);
}

// ---- Threads ------------------------------------------------------------------------------------

struct ThreadStart {
  LPTHREAD_START_ROUTINE proc;
  void* argument;
};

DWORD WINAPI RunThread(void* argument) {
  const ThreadStart start = *static_cast<ThreadStart*>(argument);
  delete static_cast<ThreadStart*>(argument);
  BecomeWorker();
  const DWORD code = start.proc(start.argument);
  Note(sim::ThreadEvent{"end", static_cast<std::uint32_t>(code)});
  return code;
}

HANDLE WINAPI StartThread(SECURITY_ATTRIBUTES* security, SIZE_T stack, LPTHREAD_START_ROUTINE proc,
                          void* argument, DWORD flags, DWORD* id) {
  if (Fires(sim::Fault::Thread)) {
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return nullptr;
  }
  auto* const start = new ThreadStart{proc, argument};
  HANDLE const thread = CreateThread(security, stack, RunThread, start, flags, id);
  if (thread == nullptr) {
    delete start;
    return nullptr;
  }
  Note(sim::ThreadEvent{"start", 0});
  return thread;
}

// Whether a suspended thread is in the library's own code.
bool IsInLibrary(HANDLE thread, HMODULE library) {
  CONTEXT context = {};
  context.ContextFlags = CONTEXT_CONTROL;
  if (!GetThreadContext(thread, &context)) return false;
#ifdef _WIN64
  return IsInImage(library, context.Rip);
#else
  return IsInImage(library, context.Eip);
#endif
}

// A thread that is ended while it is at the board, or inside the system's way to it, keeps locks of
// this process for ever. On the device there is neither, so the moment is chosen: in the library's
// own code, or in a wait. While the thread is suspended nothing may be called that takes a lock of
// the process, and the caller is at the board, so that the thread is not.
BOOL EndAtGoodMoment(HANDLE thread, DWORD code) {
  HMODULE const library = GetModuleHandleW(kLibrary);
  for (;;) {
    {
      const AtBoard at_board;
      if (SuspendThread(thread) == static_cast<DWORD>(-1)) return TerminateThread(thread, code);
      const bool in_library = IsInLibrary(thread, library);
      if (in_library || g_worker_waits) {
        const BOOL ok = TerminateThread(thread, code);
        g_worker_waits = false;
        return ok;
      }
      ResumeThread(thread);
    }
    SwitchToThread();
  }
}

BOOL WINAPI Terminate(HANDLE thread, DWORD code) {
  Note(sim::ThreadEvent{"terminate", static_cast<std::uint32_t>(code)});
  if (Fires(sim::Fault::Terminate)) return TRUE;
  return EndAtGoodMoment(thread, code);
}

BOOL WINAPI ExitCode(HANDLE thread, DWORD* code) {
  return GetExitCodeThread(Unless(sim::Fault::ExitCode, thread), code);
}

// ---- Texts and versions -------------------------------------------------------------------------

void WINAPI DebugOutput(const wchar_t* text) {
  const AtBoard at_board;
  ShowText(sim::ToUtf8(Units(text)));
  Plat_DebugOutput(Units(text));
}

void WINAPI KernelDebugOutput(const char* text) {
  const AtBoard at_board;
  ShowText(text);
  sim::TheWorld().Record(sim::DebugEvent{true, text});
}

std::atomic<DWORD> g_version_bytes;  // as it was told last

DWORD WINAPI VersionSize(const wchar_t* path, DWORD*) {
  const AtBoard at_board;
  g_version_bytes = Plat_VersionInfoSize(Units(path));
  return WithReason(g_version_bytes != 0, g_version_bytes.load());
}

BOOL WINAPI ReadVersion(const wchar_t* path, DWORD, DWORD bytes, void* buffer) {
  const AtBoard at_board;
  const bool ok = Plat_ReadVersionInfo(Units(path), static_cast<std::uint32_t>(bytes), buffer);
  return WithReason(ok, BOOL{ok});
}

BOOL WINAPI QueryVersion(const void* buffer, const wchar_t* block, void** value, UINT* bytes) {
  static VS_FIXEDFILEINFO info;
  const AtBoard at_board;
  PlatFileVersion version;
  const bool ok = std::wcscmp(block, L"\\") == 0 && Plat_QueryVersionRoot(buffer, &version);
  if (!ok) return WithReason(false, FALSE);
  info = {};
  info.dwSignature = VS_FFI_SIGNATURE;
  info.dwFileVersionMS = version.most_significant;
  info.dwFileVersionLS = version.least_significant;
  *value = &info;
  *bytes = sizeof(info);
  return TRUE;
}

// The 32-bit library has other allocations too: of a thread's start.
HLOCAL WINAPI Allocate(UINT flags, SIZE_T bytes) {
  if (bytes != g_version_bytes || !Fires(sim::Fault::Allocate)) return LocalAlloc(flags, bytes);
  SetLastError(ERROR_NOT_ENOUGH_MEMORY);
  return nullptr;
}

// ---- Drivers: the board's. Their handles are none that the system could give. -------------------

constexpr PlatHandle kDrivers = 0x70000000;

bool IsNone(PlatHandle handle) { return handle == kPlatNoHandle || handle == kPlatInvalidHandle; }

PlatHandle BoardDriver(HANDLE handle) {
  const auto value = reinterpret_cast<PlatHandle>(handle);
  return IsNone(value) ? value : value - kDrivers;
}

HANDLE WINAPI OpenDriver(const wchar_t* name, DWORD access, DWORD share, SECURITY_ATTRIBUTES*,
                         DWORD disposition, DWORD, HANDLE) {
  const AtBoard at_board;
  const PlatHandle handle =
      Plat_OpenDriver(Units(name), static_cast<std::uint32_t>(access),
                      static_cast<std::uint32_t>(share), static_cast<std::uint32_t>(disposition));
  const bool ok = !IsNone(handle);
  return WithReason(ok, reinterpret_cast<HANDLE>(ok ? handle + kDrivers : handle));
}

BOOL WINAPI ControlDriver(HANDLE driver, DWORD code, void* input, DWORD input_bytes, void*, DWORD,
                          DWORD*, OVERLAPPED*) {
  const AtBoard at_board;
  const bool ok = Plat_ControlDriver(BoardDriver(driver), static_cast<std::uint32_t>(code), input,
                                     static_cast<std::uint32_t>(input_bytes));
  return WithReason(ok, BOOL{ok});
}

BOOL WINAPI Close(HANDLE handle) {
  const auto value = reinterpret_cast<PlatHandle>(handle);
  {
    const AtBoard at_board;
    if (value == kPlatNoHandle || value >= kDrivers) {
      const bool ok = Plat_CloseDriver(BoardDriver(handle));
      return WithReason(ok, BOOL{ok});
    }
    if (!sim::TheWorld().faults.Fires(sim::Fault::Close)) {
      g_mutexes.erase(handle);
    } else {
      handle = nullptr;
    }
  }
  return CloseHandle(handle);
}

// ---- Messages -----------------------------------------------------------------------------------

void NoteMessage(bool post, bool ok, UINT message, WPARAM wparam, LPARAM lparam) {
  sim::MessageEvent event;
  event.post = post;
  event.message = message;
  event.lparam = static_cast<std::uint32_t>(lparam);
  event.ok = ok;
  const std::size_t bytes = sim::MessageRecordBytes(message);
  if (bytes == 0) {
    event.wparam = static_cast<std::uint32_t>(wparam);
  } else {
    const auto* const record = reinterpret_cast<const std::uint8_t*>(wparam);
    event.record = record == nullptr ? sim::Bytes{} : sim::Bytes(record, record + bytes);
  }
  Note(std::move(event));
}

bool IsDeaf() {
  const AtBoard at_board;
  return sim::TheWorld().windows.deaf;
}

bool Send(HWND window, UINT message, WPARAM wparam, LPARAM lparam, UINT flags, UINT timeout_ms,
          DWORD_PTR* answer) {
  if (Fires(sim::Fault::Send)) {
    SetLastError(ERROR_INVALID_WINDOW_HANDLE);
    return false;
  }
  const bool deaf = IsDeaf() && IsWindow(window);
  const SystemWait wait;
  if (!deaf) {
    return SendMessageTimeoutW(window, message, wparam, lparam, flags, timeout_ms, answer) != 0;
  }
  Sleep(timeout_ms);
  SetLastError(ERROR_TIMEOUT);
  return false;
}

LRESULT WINAPI SendTo(HWND window, UINT message, WPARAM wparam, LPARAM lparam, UINT flags,
                      UINT timeout_ms, DWORD_PTR* answer) {
  const bool ok = Send(window, message, wparam, lparam, flags, timeout_ms, answer);
  NoteMessage(false, ok, message, wparam, lparam);
  return ok;
}

BOOL WINAPI PostTo(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  BOOL ok = FALSE;
  if (Fires(sim::Fault::Post)) {
    SetLastError(ERROR_INVALID_WINDOW_HANDLE);
  } else {
    ok = PostMessageW(window, message, wparam, lparam);
  }
  NoteMessage(true, ok != FALSE, message, wparam, lparam);
  return ok;
}

}  // namespace

std::span<const Import> RealImports() {
  static const std::array imports = {
      Replace("CreateMutexW", MakeMutex),
      Replace("CreateEventW", MakeEvent),
      Replace("WaitForSingleObject", Wait),
      Replace("ReleaseMutex", Release),
      Replace("Sleep", Pause),
      Replace("CreateThread", StartThread),
      Replace("TerminateThread", Terminate),
      Replace("GetExitCodeThread", ExitCode),
      Replace("OutputDebugStringW", DebugOutput),
      Replace("OutputDebugStringA", KernelDebugOutput),
      Replace("GetFileVersionInfoSizeW", VersionSize),
      Replace("GetFileVersionInfoW", ReadVersion),
      Replace("VerQueryValueW", QueryVersion),
      Replace("LocalAlloc", Allocate),
      Replace("CreateFileW", OpenDriver),
      Replace("DeviceIoControl", ControlDriver),
      Replace("CloseHandle", Close),
      Replace("SendMessageTimeoutW", SendTo),
      Replace("PostMessageW", PostTo),
  };
  return imports;
}

}  // namespace kit
