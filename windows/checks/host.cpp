#include "host.h"

#include <algorithm>
#include <array>
#include <stdexcept>

#include "checks.h"

namespace checks {
namespace {

template <typename Function>
void Bind(Function& function, HMODULE module, const char* name) {
  const FARPROC found = GetProcAddress(module, name);
  Require(found != nullptr, std::string("there is no export ") + name);
  function = reinterpret_cast<Function>(reinterpret_cast<void*>(found));
}

// Of this process.
std::vector<DWORD> Threads() {
  std::vector<DWORD> threads;
  HANDLE const snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
  THREADENTRY32 thread = {};
  thread.dwSize = sizeof(thread);
  for (BOOL more = Thread32First(snapshot, &thread); more; more = Thread32Next(snapshot, &thread)) {
    if (thread.th32OwnerProcessID == GetCurrentProcessId()) {
      threads.push_back(thread.th32ThreadID);
    }
  }
  CloseHandle(snapshot);
  return threads;
}

}  // namespace

std::string Board(const std::string& line) {
  std::array<char, 16'384> answer{};
  const int result = VexoDesk_Line(line.c_str(), answer.data(), answer.size());
  Require(result == VEXODESK_OK,
          "'" + line + "': " + std::to_string(result) + ": " + answer.data());
  return answer.data();
}

bool BoardMeets(const std::string& expectation) {
  std::array<char, 16'384> answer{};
  const int result = VexoDesk_Line(expectation.c_str(), answer.data(), answer.size());
  Require(result == VEXODESK_OK || result == VEXODESK_ERROR_UNMET,
          "'" + expectation + "': " + std::to_string(result) + ": " + answer.data());
  return result == VEXODESK_OK;
}

// ---- The library --------------------------------------------------------------------------------

Library::Library() : module_(LoadLibraryW(L"VexoCtrlSDK.dll")) {
  Require(module_ != nullptr,
          "VexoCtrlSDK.dll cannot be loaded: error " + std::to_string(GetLastError()));
  Bind(initialize, module_, "VEXOAPI_Initialize");
  Bind(uninitialize, module_, "VEXOAPI_Uninitialize");
  Bind(get_version, module_, "VEXOAPI_GetVersion");
  Bind(set_enable_debug, module_, "VEXOAPI_SetEnableDebug");
  Bind(set_enable_output_msg, module_, "VEXOAPI_SetEnableOutputMsg");
  Bind(command_proc, module_, "VEXOAPI_CommandProc");
  Bind(text_command_proc, module_, "VEXOAPI_TextCommandProc");
  Bind(set_motion_info, module_, VEXO_EXPORT_SET_MOTION_INFO);
}

// ---- The window ---------------------------------------------------------------------------------

LRESULT CALLBACK Window::Procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  auto* const self = reinterpret_cast<Window*>(GetWindowLongPtrW(window, GWLP_USERDATA));
  if (self == nullptr || message < VEXO_MSG_STATUS || message > VEXO_MSG_REG_VALUE) {
    return DefWindowProcW(window, message, wparam, lparam);
  }
  const std::scoped_lock lock(self->mutex_);
  self->messages_.push_back(message);
  return 0;
}

Window::Window() {
  HANDLE const ready = CreateEventW(nullptr, FALSE, FALSE, nullptr);
  thread_ = std::thread([this, ready] { Run(ready); });
  WaitForSingleObject(ready, INFINITE);
  CloseHandle(ready);
}

Window::~Window() {
  end_ = true;
  thread_.join();
}

std::vector<std::uint32_t> Window::Messages() const {
  const std::scoped_lock lock(mutex_);
  return messages_;
}

// Looks whether something has been sent, and takes nothing.
void Window::LookDeaf() {
  MsgWaitForMultipleObjects(0, nullptr, FALSE, 1, QS_SENDMESSAGE);
  const bool waits = (HIWORD(GetQueueStatus(QS_SENDMESSAGE)) & QS_SENDMESSAGE) != 0;
  if (!waits) {
    waiting_since_ = 0;
  } else if (waiting_since_ == 0) {
    waiting_since_ = GetTickCount64();
  }
}

void Window::Run(HANDLE ready) {
  constexpr const wchar_t* kClassName = L"VexoCheck";
  WNDCLASSW description = {};
  description.lpfnWndProc = Procedure;
  description.hInstance = GetModuleHandleW(nullptr);
  description.lpszClassName = kClassName;
  RegisterClassW(&description);  // refused when there has been a window before this one
  window_ = CreateWindowExW(0, kClassName, L"host", WS_OVERLAPPED, 0, 0, 8, 8, nullptr, nullptr,
                            GetModuleHandleW(nullptr), nullptr);
  SetWindowLongPtrW(window_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
  SetEvent(ready);
  while (!end_) {
    if (deaf) {
      LookDeaf();
      continue;
    }
    MsgWaitForMultipleObjects(0, nullptr, FALSE, 2, QS_ALLINPUT);
    MSG message;
    while (!deaf && PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) DispatchMessageW(&message);
  }
  DestroyWindow(window_);
}

// ---- The worker ---------------------------------------------------------------------------------

WorkerWatch::WorkerWatch() : before_(Threads()) {}

WorkerWatch::~WorkerWatch() {
  if (thread_ != nullptr) CloseHandle(thread_);
}

void WorkerWatch::Find() {
  std::vector<DWORD> news;
  for (const DWORD thread : Threads()) {
    if (std::ranges::find(before_, thread) == before_.end()) news.push_back(thread);
  }
  RequireEqual(news.size(), 1u, "the number of new threads");
  thread_ = OpenThread(THREAD_QUERY_INFORMATION | SYNCHRONIZE, FALSE, news.front());
  Require(thread_ != nullptr, "the worker cannot be opened");
}

bool WorkerWatch::Runs() const { return WaitForSingleObject(thread_, 0) == WAIT_TIMEOUT; }

std::uint32_t WorkerWatch::ExitCode() const {
  DWORD code = 0;
  GetExitCodeThread(thread_, &code);
  return static_cast<std::uint32_t>(code);
}

}  // namespace checks
