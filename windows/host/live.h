// The library in real time: nothing held back, threads run as the system lets them. Its texts and
// what it asks of the system are noted; only the board and its drivers are simulated.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <thread>
#include <vector>

#include "library.h"
#include "windows_api.h"

namespace host {

// A send by the library, as the system answered it.
struct LiveSend {
  std::uint32_t message = 0;
  std::uint32_t limit_ms = 0;
  std::uint32_t took_ms = 0;
  bool ok = false;
};

// What the library did since it was loaded. Copies: it goes on meanwhile.
std::string LiveTexts();
std::vector<LiveSend> LiveSends();
std::vector<std::uint32_t> LiveLockWaits();     // results of waits for the lock
std::vector<std::uint32_t> LiveTerminations();  // exit codes of threads that it ended
std::vector<std::uint32_t> LiveMessages();      // that the window's procedure got
extern std::atomic<unsigned> g_short_sleeps;    // of 1 ms: the passes of a stop
extern std::atomic<unsigned> g_sends_waiting;   // right now
extern std::atomic<unsigned> g_worker_waits;    // timed waits on the pause event so far

// The library, loaded on a fresh board.
class Live {
 public:
  explicit Live(unsigned chips = 1);
  ~Live();
  Live(const Live&) = delete;
  Live& operator=(const Live&) = delete;

  harness::ExportTable exports;

 private:
  HMODULE library_ = nullptr;
};

// A host window with a thread of its own, which answers messages unless it is deaf.
class LiveWindow {
 public:
  LiveWindow();
  ~LiveWindow();
  LiveWindow(const LiveWindow&) = delete;
  LiveWindow& operator=(const LiveWindow&) = delete;

  HWND Handle() const { return window_; }
  std::atomic<bool> deaf = false;

 private:
  void Run(HANDLE ready);
  HWND window_ = nullptr;
  std::atomic<bool> end_ = false;
  std::thread thread_;
};

}  // namespace host
