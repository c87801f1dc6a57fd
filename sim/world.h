// The whole simulated PC: the board and everything of the platform around it.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>

#include "sim/board/board.h"
#include "sim/board/bus_windows.h"
#include "sim/board/drivers.h"
#include "sim/board/nvram.h"
#include "sim/board/reports.h"
#include "sim/board/snapshot.h"
#include "sim/faults.h"
#include "sim/kernel/files.h"
#include "sim/kernel/kernel.h"
#include "sim/kernel/windows.h"
#include "sim/polling.h"
#include "sim/text.h"
#include "sim/trace.h"

namespace sim {

class World {
 public:
  World();
  ~World();
  World(const World&) = delete;
  World& operator=(const World&) = delete;

  Reports reports;
  Trace trace;
  Board board;
  Faults faults;
  Nvram nvram;
  Files files;
  Drivers drivers;
  Windows windows;
  BusWindows bus_windows;
  Polling polling;
  // Texts of system error codes; what is not here has no text.
  std::map<std::uint32_t, std::string> system_texts;
  unsigned system_text_asks = 0;  // how often a text was asked for
  unsigned thread_calls_off = 0;  // how often thread notifications were turned off
  unsigned long allocations = 0;  // live allocations
  // The registers when the library was last attached, none before the first attach.
  std::optional<RegisterSnapshot> at_attach;
  Kernel kernel;  // last: its threads use all of the above

  // Adds an event at the current time by the current thread.
  template <typename Detail>
  void Record(Detail&& detail) {
    trace.Add(kernel.Now(), kernel.Current(), std::forward<Detail>(detail));
  }
};

// The one world that platform.h acts on. The thread that resets it is the main host thread.
extern World* g_the_world;  // null before the first use
World& MakeTheWorld();
inline World& TheWorld() { return g_the_world != nullptr ? *g_the_world : MakeTheWorld(); }
// A fresh world: ends left-over threads, forgets everything.
void ResetWorld();

}  // namespace sim
