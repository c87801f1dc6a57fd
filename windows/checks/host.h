// A host as any other: the library by its exports, a window of the system's, and the board by lines
// of the script language.
#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "VexoCtrlSDK.h"
#include "VexoDesk.h"
#include "windows_api.h"

namespace checks {

// The code behind the last one that there is.
inline constexpr std::uint32_t kUnknownCommand = VEXO_CMD_MOTION_REG + 1;

// A line for the board; its answer. Throws std::runtime_error when it is refused or not met.
std::string Board(const std::string& line);
// Whether an expectation is met.
bool BoardMeets(const std::string& expectation);

// The library, loaded.
class Library {
 public:
  Library();
  ~Library() { FreeLibrary(module_); }
  Library(const Library&) = delete;
  Library& operator=(const Library&) = delete;

  decltype(&VEXOAPI_Initialize) initialize = nullptr;
  decltype(&VEXOAPI_Uninitialize) uninitialize = nullptr;
  decltype(&VEXOAPI_GetVersion) get_version = nullptr;
  decltype(&VEXOAPI_SetEnableDebug) set_enable_debug = nullptr;
  decltype(&VEXOAPI_SetEnableOutputMsg) set_enable_output_msg = nullptr;
  decltype(&VEXOAPI_CommandProc) command_proc = nullptr;
  decltype(&VEXOAPI_TextCommandProc) text_command_proc = nullptr;
  decltype(&VEXOAPI_SetMotionInfo) set_motion_info = nullptr;

 private:
  HMODULE module_;
};

// A host window with a thread of its own, which answers messages unless it is deaf.
class Window {
 public:
  Window();
  ~Window();
  Window(const Window&) = delete;
  Window& operator=(const Window&) = delete;

  HWND Handle() const { return window_; }
  // Of the library, as the procedure got them.
  std::vector<std::uint32_t> Messages() const;
  // Since when a deaf one has been sent something that nobody has taken; 0: nothing.
  ULONGLONG WaitingSince() const { return waiting_since_; }

  std::atomic<bool> deaf = false;

 private:
  static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam);
  void Run(HANDLE ready);
  void LookDeaf();

  HWND window_ = nullptr;
  mutable std::mutex mutex_;
  std::vector<std::uint32_t> messages_;
  std::atomic<ULONGLONG> waiting_since_ = 0;
  std::atomic<bool> end_ = false;
  std::thread thread_;
};

// The thread that the library starts while one of these lives.
class WorkerWatch {
 public:
  WorkerWatch();
  ~WorkerWatch();
  WorkerWatch(const WorkerWatch&) = delete;
  WorkerWatch& operator=(const WorkerWatch&) = delete;
  // Finds the one thread that has come since. Throws when there is another number of them.
  void Find();
  bool Runs() const;
  std::uint32_t ExitCode() const;

 private:
  std::vector<DWORD> before_;
  HANDLE thread_ = nullptr;
};

}  // namespace checks
