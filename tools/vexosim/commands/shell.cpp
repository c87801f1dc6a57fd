#include "tools/vexosim/shell/shell.h"

#include <iostream>
#include <memory>

#include "script/run.h"
#include "tools/vexosim/commands/commands.h"
#include "tools/vexosim/commands/options.h"
#include "tools/vexosim/commands/session_options.h"

namespace vexosim {
namespace {

constexpr const char* kShellIntroduction =
    "Brings a board up and runs lines of the script language as they are typed: text commands\n"
    "(vexo lsplit 6 0), without their header where it is clear (lsplit 6 0), and all other lines\n"
    "(camera 2 off, break write \"window 0\", undo). Tab completes words and says what comes "
    "next;\n"
    "help lsplit explains a line. Lines are kept in ~/.vexosim_history, or in the folder\n"
    "$XDG_STATE_HOME. Lines from a pipe are run in the same way, one after the other.\n"
    "\n"
    "Exit status: 0 done, 2 the command line or a file is wrong; from a pipe also 1 when an\n"
    "expectation was not met or a line had to be ended, and 2 when a line is none.\n";

struct ShellArguments {
  ShellOptions shell;
  std::string script;
  SessionOptions session;
  ImageOptions image;
  ColourOption colour;
};

int Run(ShellArguments& arguments) {
  ShellOptions& options = arguments.shell;
  options.style = arguments.colour.Style();
  options.run.limits = arguments.session.Limits();
  options.run.cycle_ns = arguments.session.cycle_ns;
  if (!arguments.script.empty()) options.script = arguments.script;
  SessionOutputs outputs(arguments.session, {arguments.script, arguments.image.file});
  options.run.sinks = outputs.Sinks();
  options.run.waveform = WaveformMaker(arguments.session);
  const bool terminal = OnTerminal();
  // What a pipe types is nobody's history.
  LineHistory history(terminal ? HistoryPath() : std::nullopt);
  const auto reader = terminal ? MakeTerminalReader(history) : MakePlainReader(std::cin, std::cout);
  const int status = RunShell(options, history, *reader, std::cout);
  outputs.Commit();
  return terminal ? script::kExitDone : status;  // who types has seen what there was
}

}  // namespace

void AddShell(CLI::App& app, int& status) {
  const auto arguments = std::make_shared<ShellArguments>();
  ShellOptions& options = arguments->shell;
  CLI::App* shell = app.add_subcommand("shell", "A console for lines of the script language");
  shell->add_option("SCRIPT", arguments->script, "Lines to begin with")
      ->type_name("")
      ->check(FileName());
  AddBoard(*shell, options);
  AddSessionOptions(*shell, arguments->session);
  AddSeed(*shell, options.run.seed);
  AddImage(*shell, arguments->image);
  AddColour(*shell, arguments->colour);
  shell->footer(kShellIntroduction);
  shell->callback([arguments, &status] {
    status = WithFiles([&] {
      return WithImage(arguments->image, [&](const emulator::Machine*) { return Run(*arguments); });
    });
  });
}

}  // namespace vexosim
