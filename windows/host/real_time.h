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
struct RealTimeSend {
  std::uint32_t message = 0;
  std::uint32_t limit_ms = 0;
  std::uint32_t took_ms = 0;
  bool ok = false;
};

// What the library did since it was loaded. Copies: it goes on meanwhile.
std::string RealTimeTexts();
std::vector<RealTimeSend> RealTimeSends();
std::vector<std::uint32_t> RealTimeLockWaits();     // results of waits for the lock
std::vector<std::uint32_t> RealTimeTerminations();  // exit codes of threads that it ended
std::vector<std::uint32_t> RealTimeMessages();      // that the window's procedure got
extern std::atomic<unsigned> g_short_sleeps;        // of 1 ms: the passes of a stop
extern std::atomic<unsigned> g_sends_waiting;       // right now
extern std::atomic<unsigned> g_worker_waits;        // timed waits on the pause event so far

// The library, loaded on a fresh board.
class RealTimeLibrary {
 public:
  explicit RealTimeLibrary(unsigned chips = 1);
  ~RealTimeLibrary();
  RealTimeLibrary(const RealTimeLibrary&) = delete;
  RealTimeLibrary& operator=(const RealTimeLibrary&) = delete;

  harness::ExportTable exports;

 private:
  HMODULE library_ = nullptr;
};

// A host window with a thread of its own, which answers messages unless it is deaf.
class RealTimeWindow {
 public:
  RealTimeWindow();
  ~RealTimeWindow();
  RealTimeWindow(const RealTimeWindow&) = delete;
  RealTimeWindow& operator=(const RealTimeWindow&) = delete;

  HWND Handle() const { return window_; }
  std::atomic<bool> deaf = false;

 private:
  void Run(HANDLE ready);
  HWND window_ = nullptr;
  std::atomic<bool> end_ = false;
  std::thread thread_;
};

}  // namespace host
