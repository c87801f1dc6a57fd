#include "tools/vexosim/cli.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <iostream>
#include <string>
#include <string_view>
#include <vector>

#include "files/exit_status.h"
#include "files/file_error.h"
#include "files/printable.h"
#include "script/grammar/did_you_mean.h"
#include "sim/text.h"
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
    "  vexosim serve                                 the same in real time, in the browser\n"
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

constexpr std::size_t kMostShown = 2000;

int Wrong(const std::string& sentence) {
  std::cerr << "vexosim: " << sentence << std::endl;
  return files::kExitWrong;
}

// The parser would only say that there is no subcommand, or that it did not expect the word.
void CheckSubcommand(const CLI::App& app, const char* word) {
  if (word != nullptr && *word == '-') return;
  const std::vector<const CLI::App*> subcommands =
      app.get_subcommands([](const CLI::App*) { return true; });
  std::vector<std::string> names;
  names.reserve(subcommands.size());
  for (const CLI::App* subcommand : subcommands) names.push_back(subcommand->get_name());
  const std::vector<std::string_view> words(names.begin(), names.end());
  const std::string expected = "expected " + sim::OneOf(words) + ", found ";
  if (word == nullptr) throw CLI::ValidationError(expected + "nothing");
  if (std::find(words.begin(), words.end(), word) != words.end()) return;
  throw CLI::ValidationError(expected + '\'' + word + '\'' + script::DidYouMean(word, words));
}

}  // namespace

int Main(int argc, const char* const* argv) {
  CLI::App app(kDescription, "vexosim");
  app.require_subcommand(1);
  int status = files::kExitDone;
  AddDemo(app, status);
  AddRun(app, status);
  AddShell(app, status);
  AddServe(app, status);
  AddCompare(app, status);
  AddDevice(app, status);
  AddTrace(app, status);
  AddDiff(app, status);
  AddReplay(app, status);
  AddPlan(app, status);
  AddManual(app, status);
  AddCompletion(app, status);
  app.footer(kFooter);  // each subcommand takes what there is when it is added
  try {
    CheckSubcommand(app, argc > 1 ? argv[1] : nullptr);
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    // Help is an exit too, but no mistake.
    if (error.get_exit_code() == 0) return app.exit(error);
    return Wrong(files::Printable(error.what(), kMostShown) + " (vexosim --help tells more)");
  } catch (const files::FileError& error) {
    return Wrong(error.what());
  }
  return status;
}

}  // namespace vexosim
