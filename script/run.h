// Scripts run on a fresh library and a fresh board.
#pragma once

#include <cstdint>
#include <functional>
#include <istream>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "files/exit_status.h"
#include "harness/image_run.h"
#include "script/parse.h"
#include "script/run_watch.h"
#include "script/surroundings.h"
#include "script/trace_sink.h"

namespace script {

using files::kExitDone;
using files::kExitUnmet;
using files::kExitWrong;

struct RunOptions {
  std::optional<std::string> variant;  // of a script that has variants: this one alone
  bool quiet = false;  // only failed expectations, the summary and what the script prints
  std::uint64_t seed = 0;
  std::uint32_t cycle_ns = 0;  // how much of the board's time a bus cycle takes
  Limits limits;
  bool registers = false;              // print all register pages at the end
  std::optional<std::string> picture;  // write the screen at the end
  std::ostream* trace = nullptr;       // JSON lines
  std::vector<TraceSink*> sinks;       // what else listens to the trace
  std::function<std::unique_ptr<TraceSink>(std::ostream&)> waveform;  // as an interpreter has it
  // The machine that runs the library, none for the linked one. A fault of it fails the run.
  const harness::ImageRun* machine = nullptr;
};

// Runs a script, once for each of its variants. `name` stands in messages. The whole script is read
// before its first line runs. A trace or a picture is of one variant: for several it is refused.
// Returns one of kExit....
int RunScript(std::istream& in, const std::string& name, const RunOptions& options,
              Surroundings& around, std::ostream& out, std::ostream& err);

// Runs one that was read.
int RunScript(const Script& script, const RunOptions& options, Surroundings& around,
              std::ostream& out, std::ostream& err);

}  // namespace script
