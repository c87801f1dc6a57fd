#include "tools/vexosim/cli.h"

#include "script/run.h"
#include "tools/vexosim/commands/commands.h"

namespace vexosim {
namespace {

constexpr const char* kDescription =
    "Runs VexoCtrlSDK on a simulated board: up to four TW2835 chips, sixteen cameras,\n"
    "a host window, and virtual time, so that every run is the same run.";

constexpr const char* kFooter =
    "Examples:\n"
    "  vexosim demo                                  a recorder comes up and shows its cameras\n"
    "  vexosim shell                                 a console on a board of sixteen channels\n"
    "  vexosim run live.vexo --picture live.png      runs a script, writes the screen\n"
    "  vexosim run live.vexo --trace live.jsonl      writes every bus cycle and call as JSON "
    "lines\n"
    "  vexosim trace live.jsonl --summary            reads it back: bus cycles of each call\n"
    "  vexosim diff good.jsonl bad.jsonl             names the first difference of two\n"
    "  vexosim replay bad.jsonl -o again.vexo        makes a script of one\n"
    "  printf 'lsplit 6 0\\nprint\\n' | vexosim shell  a console's lines from a pipe\n"
    "  printf 'attach\\nwindow\\ncommand 0xF001\\nprint\\n' | vexosim run -\n"
    "\n"
    "Exit status: 0 done; 1 an expectation was not met, something differs, or a run had to be\n"
    "ended; 2 the command line, a file or a script is wrong.\n"
    "vexosim run --help lists the script language.\n";

}  // namespace

int Main(int argc, const char* const* argv) {
  CLI::App app(kDescription, "vexosim");
  app.require_subcommand(1);
  int status = script::kExitDone;
  AddDemo(app, status);
  AddRun(app, status);
  AddShell(app, status);
  AddCompare(app, status);
  AddTrace(app, status);
  AddDiff(app, status);
  AddReplay(app, status);
  AddManual(app, status);
  AddCompletion(app, status);
  app.footer(kFooter);  // each subcommand takes what there is when it is added
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    // Help is an exit too, but no mistake.
    return app.exit(error) == 0 ? script::kExitDone : script::kExitWrong;
  }
  return status;
}

}  // namespace vexosim
