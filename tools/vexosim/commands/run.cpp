#include "script/run.h"

#include <fstream>
#include <iostream>
#include <memory>
#include <optional>

#include "files/output.h"
#include "script/line.h"
#include "tools/vexosim/commands/commands.h"
#include "tools/vexosim/commands/options.h"
#include "tools/vexosim/commands/trace_options.h"
#include "tools/vexosim/listing/terminal_surroundings.h"
#include "tools/vexosim/traces/vcd_sink.h"

namespace vexosim {
namespace {

constexpr const char* kIntroduction =
    "By default each line is echoed with the virtual time at which it runs, and below it\n"
    "  | what the library wrote to the debug output (! to the kernel debug output)\n"
    "  > a message to the host window, in words\n"
    "  = the result of the call\n"
    "Expectations that are not met go to standard error as FILE:LINE: EXPECTATION: WHAT WAS "
    "FOUND,\n"
    "and so do warnings of the board: bus contention, accesses to an unmapped window or wider "
    "than\n"
    "a byte, registers that have no name.\n"
    "\n"
    "A script:\n"
    "  board chips 1                  # a recorder with four cameras\n"
    "  attach\n"
    "  window\n"
    "  command 0xF001\n"
    "  expect return 0\n"
    "  camera 2 off\n"
    "  run 100\n"
    "  expect message 0x2403          # the host is told\n"
    "\n";

struct Arguments {
  ImageOptions image;
  std::string script;
  std::optional<std::string> variant;
  std::string trace;
  std::string picture;
  VcdOptions vcd;
  bool registers = false;
  bool quiet = false;
  std::uint64_t seed = 0;
  ColourOption colour;
};

int Run(const Arguments& arguments, const emulator::Machine* machine) {
  script::RunOptions options;
  options.variant = arguments.variant;
  options.machine = machine;
  options.quiet = arguments.quiet;
  options.seed = arguments.seed;
  options.registers = arguments.registers;
  if (!arguments.picture.empty()) options.picture = arguments.picture;

  std::ifstream script;
  const bool standard_input = arguments.script == "-";
  if (!standard_input) {
    script.open(arguments.script);
    if (!script || script.peek() == std::ifstream::traits_type::eof()) {
      // A folder opens but cannot be read; an empty file is an empty script.
      script.clear();
      std::ifstream again(arguments.script);
      std::string line;
      if (!again.is_open() || (!std::getline(again, line) && again.bad())) {
        std::cerr << "vexosim: cannot read " << arguments.script << std::endl;
        return script::kExitWrong;
      }
    }
  }
  std::ofstream trace;
  if (!arguments.trace.empty()) {
    trace.open(arguments.trace);
    if (!trace) {
      std::cerr << "vexosim: cannot write " << arguments.trace << std::endl;
      return script::kExitWrong;
    }
    options.trace = &trace;
  }
  std::optional<files::OutputFile> waveform;
  std::optional<VcdSink> vcd;
  if (!arguments.vcd.file.empty()) {
    waveform.emplace(arguments.vcd.file, std::vector{arguments.script, arguments.trace},
                     files::Appears::AsItGrows);
    options.sinks.push_back(&vcd.emplace(waveform->Stream(), arguments.vcd.cycle_ns,
                                         [&waveform] { waveform->Restart(); }));
  }
  TerminalSurroundings around(arguments.colour.Style(), Progress::OnTerminal());
  const int status = script::RunScript(standard_input ? std::cin : script,
                                       standard_input ? "<stdin>" : arguments.script, options,
                                       around, std::cout, std::cerr);
  if (vcd && status != script::kExitWrong) {
    vcd->Finish();
    waveform->Commit();
  }
  if (trace.is_open() && !trace.flush()) {
    std::cerr << "vexosim: cannot write " << arguments.trace << std::endl;
    return script::kExitWrong;
  }
  return status;
}

}  // namespace

void AddRun(CLI::App& app, int& status) {
  const auto arguments = std::make_shared<Arguments>();
  CLI::App* run = app.add_subcommand("run", "Runs a script");
  run->add_option("SCRIPT", arguments->script, "Script file, or - for standard input")
      ->required()
      ->type_name("");
  run->add_option("--variant", arguments->variant, "Runs this variant of the script, not all")
      ->type_name("NAME");
  run->add_option("--trace", arguments->trace, "Writes the trace as JSON lines")->type_name("FILE");
  run->add_option("--picture", arguments->picture, "Writes the screen at the end")
      ->type_name("FILE.png");
  run->add_flag("--registers", arguments->registers,
                "Prints all register pages at the end, with the names of registers; * marks what "
                "changed since attach");
  AddVcd(*run, arguments->vcd);
  AddSeed(*run, arguments->seed);
  run->add_flag("--quiet", arguments->quiet,
                "Only what the script prints, and the expectations that are not met");
  AddImage(*run, arguments->image);
  AddColour(*run, arguments->colour);
  run->footer(kIntroduction + script::LanguageHelp());
  run->callback([arguments, &status] {
    status = WithFiles([&] {
      return WithImage(arguments->image,
                       [&](const emulator::Machine* machine) { return Run(*arguments, machine); });
    });
  });
}

}  // namespace vexosim
