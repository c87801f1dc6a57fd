#include "tools/vexosim/shell/shell.h"

#include <iostream>
#include <memory>

#include "tools/vexosim/commands/commands.h"
#include "tools/vexosim/commands/options.h"

namespace vexosim {
namespace {

constexpr const char* kIntroduction =
    "Brings a board up and runs a line at a time: text commands (vexo lsplit 6 0), without their\n"
    "header where it is clear (lsplit 6 0), script lines (camera 2 off), and help, writes on,\n"
    "history, quit. Tab completes words and says which number comes next; help lsplit explains a\n"
    "command. Lines are kept in ~/.vexosim_history, or in the folder $XDG_STATE_HOME.\n"
    "Lines from a pipe are run in the same way, one after the other.\n"
    "Exit status: 0.\n";

int Run(const ShellOptions& options) {
  const bool terminal = OnTerminal();
  // What a pipe types is nobody's history.
  LineHistory history(terminal ? HistoryPath() : std::nullopt);
  const auto reader = terminal ? MakeTerminalReader(history) : MakePlainReader(std::cin, std::cout);
  return RunShell(options, history, *reader, std::cout);
}

}  // namespace

void AddShell(CLI::App& app, int& status) {
  struct Arguments {
    ShellOptions shell;
    ColourOption colour;
  };
  const auto arguments = std::make_shared<Arguments>();
  ShellOptions& options = arguments->shell;
  CLI::App* shell = app.add_subcommand("shell", "A console for text commands and script lines");
  shell->add_option("--chips", options.chips, "How many chips are fitted, four channels each")
      ->type_name("N")
      ->transform(WholeNumber(1, kChipsMax))
      ->capture_default_str();
  shell->add_flag("--pal", options.pal, "PAL cameras and stored standard, else NTSC");
  shell->add_flag("--bare", options.bare, "Leaves the library unattached");
  AddSeed(*shell, options.seed);
  AddColour(*shell, arguments->colour);
  shell->footer(kIntroduction);
  shell->callback([arguments, &status] {
    arguments->shell.style = arguments->colour.Style();
    status = Run(arguments->shell);
  });
}

}  // namespace vexosim
