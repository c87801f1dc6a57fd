#include <algorithm>
#include <iostream>
#include <limits>
#include <memory>

#include "files/exit_status.h"
#include "files/output.h"
#include "script/register_names.h"
#include "script/words.h"
#include "tools/vexosim/commands/commands.h"
#include "tools/vexosim/commands/options.h"
#include "tools/vexosim/commands/trace_options.h"
#include "tools/vexosim/traces/events.h"
#include "tools/vexosim/traces/show_trace.h"
#include "tools/vexosim/traces/summary.h"

namespace vexosim {
namespace {

constexpr std::uint64_t kLatest = std::numeric_limits<std::uint32_t>::max();

struct TraceArguments {
  std::string file;
  TraceFilter filter;
  bool summary = false;
  CaptureColumns columns;
  VcdOptions vcd;
};

int Waveform(const TraceArguments& arguments, EventSource& source) {
  files::OutputFile output(arguments.vcd.file, {arguments.file});
  VcdWriter writer(output.Stream(), arguments.vcd.cycle_ns);
  ReadAll(source, writer);
  writer.Finish();
  output.Commit();
  return files::kExitDone;
}

int Run(const TraceArguments& arguments) {
  const auto source = OpenEvents(arguments.file, arguments.columns);
  if (!arguments.vcd.file.empty()) return Waveform(arguments, *source);
  if (arguments.summary) {
    TraceSummary summary;
    ReadAll(*source, summary);
    summary.Print(std::cout);
    return files::kExitDone;
  }
  TracePrinter printer(std::cout, arguments.filter, !source->IsCapture());
  try {
    ReadAll(*source, printer);
  } catch (const files::FileError&) {
    printer.Finish();  // what was read until then
    throw;
  }
  printer.Finish();
  return files::kExitDone;
}

std::string SetRegisters(const std::string& text, TraceFilter& filter) {
  try {
    // A name is one word in a script's line, where it stands in quotes.
    const bool name = text.find_first_of("0123456789") != 0 && !text.starts_with("page ");
    const std::vector<std::string> words = name ? std::vector{text} : script::SplitWords(text);
    script::Arguments arguments(words);
    filter.registers = script::ParseRegisterList(arguments);
    arguments.End();
    return {};
  } catch (const script::Malformed& error) {
    return error.what();
  }
}

}  // namespace

void AddTrace(CLI::App& app, int& status) {
  const auto arguments = std::make_shared<TraceArguments>();
  TraceFilter& filter = arguments->filter;
  CLI::App* trace = app.add_subcommand("trace", "Shows a trace, or a capture of a bus, in words");
  trace->add_option("FILE", arguments->file, "Trace (JSON lines), or capture (VCD or CSV)")
      ->required()
      ->type_name("")
      ->check(FileName());
  trace
      ->add_option_function<std::string>(
          "--chip",
          [&filter](const std::string& word) {
            const auto words = script::ChipWords();
            filter.chip = static_cast<std::size_t>(std::find(words.begin(), words.end(), word) -
                                                   words.begin());
          },
          "Only accesses to registers of this chip, or of all at once")
      ->type_name("CHIP")
      ->check(CLI::IsMember(
          std::vector<std::string>(script::ChipWords().begin(), script::ChipWords().end())));
  trace
      ->add_option_function<std::string>(
          "--register",
          [&filter](const std::string& text) {
            const std::string wrong = SetRegisters(text, filter);
            if (!wrong.empty()) throw CLI::ValidationError("--register", wrong);
          },
          "Only accesses to registers of this name (window, \"window 2\") or place (\"1 "
          "0x30-0x3f\")")
      ->type_name("REGISTER");
  trace
      ->add_option_function<std::string>(
          "--thread",
          [&filter](const std::string& word) {
            filter.by = word == "host" ? sim::By::Host : sim::By::Worker;
          },
          "Only what this thread did: host or worker")
      ->type_name("THREAD")
      ->check(CLI::IsMember({"host", "worker"}));
  trace->add_option("--from", filter.from_ms, "Only from this time on")
      ->type_name("MS")
      ->transform(WholeNumber(0, kLatest));
  trace->add_option("--to", filter.to_ms, "Only until this time")
      ->type_name("MS")
      ->transform(WholeNumber(0, kLatest));
  trace->add_flag("--calls", filter.calls, "Only calls and what they returned");
  trace->add_flag("--summary", arguments->summary,
                  "A table instead: bus cycles and register accesses of each kind of call");
  AddVcd(*trace, arguments->vcd);
  AddCaptureColumns(*trace, arguments->columns);
  trace->footer(
      "A line each: time, thread, and what it did: a call with = its result and its bus cycles,\n"
      "w and r an access to a register, | debug output (! to the kernel), > a message to the "
      "host.\n"
      "Neighbouring registers that are accessed one after the other share a line.\n"
      "With --vcd nothing is shown: all of the trace goes into the waveform.\n"
      "Exit status: 0 done, 2 a file or the command line is wrong.\n");
  trace->callback([arguments, &status] { status = WithFiles([&] { return Run(*arguments); }); });
}

}  // namespace vexosim
