// Scripts run on either side: through the library that is linked in, or through the DLL.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "script/parse.h"
#include "sim/trace.h"
#include "sim/world.h"

namespace host {

enum class Side { Linked, Loaded };

// What one action did.
struct ActionResult {
  unsigned line = 0;
  std::string text;
  std::optional<std::int64_t> returned;
  std::size_t first_event = 0;     // in the trace
  std::size_t first_received = 0;  // of the messages
};

struct RunResult {
  std::vector<ActionResult> actions;
  std::vector<std::string> complaints;  // expectations not met, and what ended the run
  unsigned checks = 0;
  sim::Trace trace;
  std::vector<sim::ReceivedMessage> received;
  sim::RegisterSnapshot registers;
  std::vector<sim::Report> reports;
};

RunResult RunOn(Side side, const std::vector<script::Statement>& statements);

}  // namespace host
