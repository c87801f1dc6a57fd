#include "script/run.h"

#include <fstream>
#include <iostream>
#include <memory>
#include <optional>
#include <vector>

#include "files/input.h"
#include "files/output.h"
#include "script/line.h"
#include "tools/vexosim/commands/commands.h"
#include "tools/vexosim/commands/options.h"
#include "tools/vexosim/commands/session_options.h"
#include "tools/vexosim/listing/terminal_surroundings.h"

namespace vexosim {
namespace {

constexpr const char* kRunIntroduction =
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

constexpr const char* kExitStatus =
    "\n"
    "Exit status: 0 done, 1 an expectation was not met or the run had to be ended, 2 the script, "
    "a\n"
    "file or the command line is wrong.\n";

struct RunArguments {
  ImageOptions image;
  std::string script;
  std::optional<std::string> variant;
  std::string picture;
  SessionOptions session;
  bool registers = false;
  bool quiet = false;
  std::uint64_t seed = 0;
  ColourOption colour;
};

int Run(const RunArguments& arguments, const emulator::Machine* machine) {
  script::RunOptions options;
  options.variant = arguments.variant;
  options.machine = machine;
  options.quiet = arguments.quiet;
  options.seed = arguments.seed;
  options.cycle_ns = arguments.session.cycle_ns;
  options.registers = arguments.registers;
  options.limits = arguments.session.Limits();
  const bool standard_input = arguments.script == "-";
  const std::string script_file = standard_input ? "/dev/stdin" : arguments.script;
  std::ifstream script;
  if (standard_input) {
    files::CheckStandardInput();
  } else {
    script = files::OpenInput(script_file);
  }
  const std::vector<std::string> inputs = {script_file, arguments.image.file};
  SessionOutputs outputs(arguments.session, inputs);
  options.sinks = outputs.Sinks();
  options.waveform = WaveformMaker(arguments.session);
  if (!arguments.picture.empty()) {
    options.picture = arguments.picture;
    std::vector<std::string> others = inputs;
    others.insert(others.end(), {arguments.session.trace, arguments.session.vcd.file});
    files::OutputFile::Check(arguments.picture, others);
  }
  const InterruptWatch interrupts;
  TerminalSurroundings around(arguments.colour.Style(), Progress::OnTerminal());
  const int status = script::RunScript(standard_input ? std::cin : script,
                                       standard_input ? "<stdin>" : arguments.script, options,
                                       around, std::cout, std::cerr);
  outputs.Commit();
  return status;
}

}  // namespace

void AddRun(CLI::App& app, int& status) {
  const auto arguments = std::make_shared<RunArguments>();
  CLI::App* run = app.add_subcommand("run", "Runs a script");
  run->add_option("SCRIPT", arguments->script, "Script file, or - for standard input")
      ->required()
      ->type_name("")
      ->check(FileName());
  run->add_option("--variant", arguments->variant, "Runs this variant of the script, not all")
      ->type_name("NAME");
  run->add_option("--picture", arguments->picture, "Writes the screen at the end")
      ->type_name("FILE.png")
      ->check(PictureName());
  run->add_flag("--registers", arguments->registers,
                "Prints all register pages at the end, with the names of registers; * marks what "
                "changed since attach");
  AddSessionOptions(*run, arguments->session);
  AddSeed(*run, arguments->seed);
  run->add_flag("--quiet", arguments->quiet,
                "Only what the script prints, and the expectations that are not met");
  AddImage(*run, arguments->image);
  AddColour(*run, arguments->colour);
  run->footer(kRunIntroduction + script::LanguageHelp() + kExitStatus);
  run->callback([arguments, &status] {
    status = WithFiles([&] {
      return WithImage(arguments->image,
                       [&](const emulator::Machine* machine) { return Run(*arguments, machine); });
    });
  });
}

}  // namespace vexosim
