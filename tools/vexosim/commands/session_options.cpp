#include "tools/vexosim/commands/session_options.h"

#include "tools/vexosim/commands/options.h"

namespace vexosim {
namespace {

void AddTime(CLI::App& app, const std::string& name, std::uint64_t& ms, const std::string& help) {
  app.add_option(name, ms, help + ": a number and ms, s, min, h or d")
      ->type_name("TIME")
      ->transform(Duration());
}

// For a sink: empties the file, where that can be.
std::function<void()> RestartOf(files::OutputFile& file) {
  if (!file.CanRestart()) return nullptr;
  return [&file] { file.Restart(); };
}

}  // namespace

script::Limits SessionOptions::Limits() const {
  script::Limits limits;
  if (limit_ms != 0) limits.virtual_ms = limit_ms;
  if (limit_real_ms != 0) limits.real = std::chrono::milliseconds(limit_real_ms);
  return limits;
}

void AddBoard(CLI::App& app, script::BringUpOptions& board) {
  app.add_option("--chips", board.chips, "How many chips are fitted, four channels each")
      ->type_name("N")
      ->transform(WholeNumber(1, kChipsMax))
      ->capture_default_str();
  app.add_flag("--pal", board.pal, "PAL cameras and stored standard, else NTSC");
  app.add_flag("--bare", board.bare, "Leaves the library unattached");
}

void AddSessionOptions(CLI::App& app, SessionOptions& options) {
  app.add_option("--trace", options.trace, "Writes the trace as JSON lines, as it happens")
      ->type_name("FILE")
      ->check(FileName());
  AddVcdFile(app, options.vcd);
  AddCycleTime(app, options.cycle_ns,
               "How long a bus cycle takes: by default none of the board's time, and " +
                   std::to_string(kDefaultCycleNs) + " in the waveform");
  AddTime(app, "--limit", options.limit_ms, "Ends the run when the board's time reaches this");
  AddTime(app, "--limit-real", options.limit_real_ms, "Ends the run after this much real time");
}

std::function<std::unique_ptr<script::TraceSink>(std::ostream&)> WaveformMaker(
    const SessionOptions& options) {
  return [cycle_ns = options.WaveformCycleNs()](std::ostream& out) {
    return std::make_unique<VcdSink>(out, cycle_ns);
  };
}

SessionOutputs::SessionOutputs(const SessionOptions& options,
                               const std::vector<std::string>& inputs) {
  std::vector<std::string> others = inputs;
  if (!options.trace.empty()) {
    trace_file_.emplace(options.trace, others, files::Appears::AsItGrows);
    trace_.emplace(trace_file_->Stream(), RestartOf(*trace_file_));
    others.push_back(options.trace);
  }
  if (!options.vcd.file.empty()) {
    waveform_file_.emplace(options.vcd.file, others, files::Appears::AsItGrows);
    waveform_.emplace(waveform_file_->Stream(), options.WaveformCycleNs(),
                      RestartOf(*waveform_file_));
  }
}

std::vector<script::TraceSink*> SessionOutputs::Sinks() {
  std::vector<script::TraceSink*> sinks;
  if (trace_) sinks.push_back(&*trace_);
  if (waveform_) sinks.push_back(&*waveform_);
  return sinks;
}

void SessionOutputs::Commit() {
  // Of a script that never ran nothing is left.
  if (trace_ && trace_->Begun()) trace_file_->Commit();
  if (waveform_ && waveform_->Begun()) {
    waveform_->Finish();
    waveform_file_->Commit();
  }
}

}  // namespace vexosim
