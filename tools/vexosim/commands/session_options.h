// Options of the subcommands that run lines: where the trace goes, and when a run must end.
#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "files/output.h"
#include "script/bring_up.h"
#include "script/run_watch.h"
#include "script/trace_sink.h"
#include "tools/vexosim/commands/trace_options.h"
#include "tools/vexosim/traces/vcd_sink.h"

namespace vexosim {

struct SessionOptions {
  std::string trace;  // empty: none is written
  VcdOptions vcd;
  std::uint32_t cycle_ns = 0;       // how long a bus cycle takes; 0: none of the board's time
  std::uint64_t limit_ms = 0;       // of the board's time; 0: none
  std::uint64_t limit_real_ms = 0;  // 0: none

  script::Limits Limits() const;
  std::uint32_t WaveformCycleNs() const { return cycle_ns != 0 ? cycle_ns : vcd.cycle_ns; }
};

// --chips N, --pal, --bare.
void AddBoard(CLI::App& app, script::BringUpOptions& board);

// --trace FILE, --vcd FILE, --cycle-ns N, --limit TIME, --limit-real TIME.
void AddSessionOptions(CLI::App& app, SessionOptions& options);

// What makes the waveforms that lines ask for.
std::function<std::unique_ptr<script::TraceSink>(std::ostream&)> WaveformMaker(
    const SessionOptions& options);

// The files that a run's trace goes to, as it happens.
class SessionOutputs {
 public:
  // inputs: the files that are read. Throws files::FileError.
  SessionOutputs(const SessionOptions& options, const std::vector<std::string>& inputs);

  std::vector<script::TraceSink*> Sinks();
  // Throws files::FileError when not all of it could be written.
  void Commit();

 private:
  std::optional<files::OutputFile> trace_file_;
  std::optional<script::JsonSink> trace_;
  std::optional<files::OutputFile> waveform_file_;
  std::optional<VcdSink> waveform_;
};

}  // namespace vexosim
