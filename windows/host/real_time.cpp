#include "real_time.h"

#include <array>

#include "board_service.h"
#include "sim/world.h"
#include "window.h"

namespace host {

std::atomic<unsigned> g_short_sleeps;
std::atomic<unsigned> g_sends_waiting;
std::atomic<unsigned> g_worker_waits;

namespace {

struct Log {
  std::string texts;
  std::vector<RealTimeSend> sends;
  std::vector<std::uint32_t> lock_waits;
  std::vector<std::uint32_t> terminations;
  std::vector<std::uint32_t> messages;
};
Log g_log;  // under the board's lock
std::atomic<DWORD> g_host_thread;
std::atomic<DWORD> g_start;
std::atomic<bool> g_in_system_wait;  // the library's thread is
HANDLE g_lock = nullptr;

AccessStamp RealStamp() {
  return {static_cast<std::uint32_t>(GetTickCount() - g_start),
          GetCurrentThreadId() != g_host_thread};
}

// Marks the library's own thread as one that waits in the system and holds nothing of ours.
class SystemWait {
 public:
  SystemWait() : worker_(GetCurrentThreadId() != g_host_thread) {
    if (worker_) g_in_system_wait = true;
  }
  ~SystemWait() {
    if (worker_) g_in_system_wait = false;
  }
  SystemWait(const SystemWait&) = delete;
  SystemWait& operator=(const SystemWait&) = delete;

 private:
  bool worker_;
};

void WINAPI DebugOutput(const wchar_t* text) {
  const BoardLock lock;
  g_log.texts += Utf8(text);
}
void WINAPI KernelDebugOutput(const char* text) {
  const BoardLock lock;
  g_log.texts += text;
}

HANDLE WINAPI TakeMutex(SECURITY_ATTRIBUTES* security, BOOL owned, const wchar_t* name) {
  g_lock = CreateMutexW(security, owned, name);
  return g_lock;
}

DWORD WINAPI Wait(HANDLE object, DWORD timeout_ms) {
  DWORD result = 0;
  {
    const SystemWait wait;
    result = WaitForSingleObject(object, timeout_ms);
  }
  if (object == g_lock) {
    const BoardLock lock;
    g_log.lock_waits.push_back(static_cast<std::uint32_t>(result));
  } else {
    ++g_worker_waits;
  }
  return result;
}

// A worker that is asked to end has twenty pauses of 1 ms for it, which is little on a busy
// machine: they last longer here.
void WINAPI Pause(DWORD ms) {
  constexpr DWORD kShort = 1;
  constexpr DWORD kPatient = 50;
  if (ms == kShort) ++g_short_sleeps;
  Sleep(ms == kShort ? kPatient : ms);
}

LRESULT WINAPI SendTo(HWND window, UINT message, WPARAM wparam, LPARAM lparam, UINT flags,
                      UINT timeout_ms, DWORD_PTR* answer) {
  const DWORD start = GetTickCount();
  LRESULT result = 0;
  ++g_sends_waiting;
  {
    const SystemWait wait;
    result = SendMessageTimeoutW(window, message, wparam, lparam, flags, timeout_ms, answer);
  }
  --g_sends_waiting;
  const DWORD error = GetLastError();
  {
    const BoardLock lock;
    g_log.sends.push_back(
        {message, timeout_ms, static_cast<std::uint32_t>(GetTickCount() - start), result != 0});
  }
  SetLastError(error);
  return result;
}

// A thread that is ended inside the handler of a bus access, or inside the system's way to it,
// keeps locks of this process for ever. On the device there is neither, so the moment is chosen: in
// the library's own code, or in a wait. While it is suspended nothing may be called that takes a
// lock of the process.
BOOL WINAPI Terminate(HANDLE thread, DWORD code) {
  HMODULE const library = GetModuleHandleW(L"VexoCtrlSDK.dll");
  const auto begin = reinterpret_cast<std::uintptr_t>(library);
  const std::uintptr_t end = begin + ImageBytes(library);
  for (;;) {
    const BoardLock lock;
    SuspendThread(thread);
    CONTEXT context = {};
    context.ContextFlags = CONTEXT_CONTROL;
    bool in_library = false;
    if (GetThreadContext(thread, &context)) {
#ifdef _WIN64
      const std::uintptr_t at = context.Rip;
#else
      const std::uintptr_t at = context.Eip;
#endif
      in_library = at >= begin && at < end;
    }
    if (g_in_system_wait || in_library) {
      g_log.terminations.push_back(static_cast<std::uint32_t>(code));
      const BOOL ok = TerminateThread(thread, code);
      if (g_sends_waiting != 0) --g_sends_waiting;
      g_in_system_wait = false;
      return ok;
    }
    ResumeThread(thread);
    SwitchToThread();
  }
}

constexpr std::uintptr_t kDriver = 0x70000000;

HANDLE WINAPI OpenDriver(const wchar_t*, DWORD, DWORD, SECURITY_ATTRIBUTES*, DWORD, DWORD, HANDLE) {
  return reinterpret_cast<HANDLE>(kDriver);
}
BOOL WINAPI ControlDriver(HANDLE, DWORD, void*, DWORD, void*, DWORD, DWORD*, OVERLAPPED*) {
  return TRUE;
}
BOOL WINAPI Close(HANDLE handle) {
  return handle == reinterpret_cast<HANDLE>(kDriver) ? TRUE : CloseHandle(handle);
}

std::span<const Import> RealTimeImports() {
  static const std::array imports = {
      Replace("OutputDebugStringW", DebugOutput),
      Replace("OutputDebugStringA", KernelDebugOutput),
      Replace("CreateMutexW", TakeMutex),
      Replace("WaitForSingleObject", Wait),
      Replace("Sleep", Pause),
      Replace("SendMessageTimeoutW", SendTo),
      Replace("TerminateThread", Terminate),
      Replace("CreateFileW", OpenDriver),
      Replace("DeviceIoControl", ControlDriver),
      Replace("CloseHandle", Close),
  };
  return imports;
}

template <typename T>
T Copy(const T& part) {
  const BoardLock lock;
  return part;
}

}  // namespace

std::string RealTimeTexts() { return Copy(g_log.texts); }
std::vector<RealTimeSend> RealTimeSends() { return Copy(g_log.sends); }
std::vector<std::uint32_t> RealTimeLockWaits() { return Copy(g_log.lock_waits); }
std::vector<std::uint32_t> RealTimeTerminations() { return Copy(g_log.terminations); }
std::vector<std::uint32_t> RealTimeMessages() { return Copy(g_log.messages); }

RealTimeLibrary::RealTimeLibrary(unsigned chips) {
  {
    const BoardLock lock;
    g_log = {};
    sim::ResetWorld();
    sim::World& world = sim::TheWorld();
    world.trace.SetEnabled(false);
    world.board.FitChips(chips);
    world.nvram.MakeDefault(static_cast<std::uint8_t>(kChannelsPerChip * chips));
  }
  g_short_sleeps = 0;
  g_sends_waiting = 0;
  g_worker_waits = 0;
  g_host_thread = GetCurrentThreadId();
  g_start = GetTickCount();
  SetAccessStamp(RealStamp);
  library_ = LoadWithImports(RealTimeImports());
  exports = BindExports(library_);
}

RealTimeLibrary::~RealTimeLibrary() { FreeLibrary(library_); }

RealTimeWindow::RealTimeWindow() {
  SetMessageSink([](std::uint32_t message, std::uintptr_t, Origin) {
    const BoardLock lock;
    g_log.messages.push_back(message);
  });
  const HANDLE ready = CreateEventW(nullptr, FALSE, FALSE, nullptr);
  thread_ = std::thread([this, ready] { Run(ready); });
  WaitForSingleObject(ready, INFINITE);
  CloseHandle(ready);
}

RealTimeWindow::~RealTimeWindow() {
  end_ = true;
  thread_.join();
}

void RealTimeWindow::Run(HANDLE ready) {
  window_ = MakeWindow();
  SetEvent(ready);
  while (!end_) {
    if (deaf) {
      Sleep(2);
    } else {
      MsgWaitForMultipleObjects(0, nullptr, FALSE, 2, QS_ALLINPUT);
      if (!deaf) DispatchMessages();
    }
  }
  DestroyWindow(window_);
}

}  // namespace host
