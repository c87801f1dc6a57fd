#include "tools/vexosim/traces/replay.h"

#include <iostream>
#include <memory>
#include <optional>

#include "files/exit_status.h"
#include "files/output.h"
#include "tools/vexosim/commands/commands.h"
#include "tools/vexosim/commands/options.h"
#include "tools/vexosim/commands/trace_options.h"
#include "tools/vexosim/traces/events.h"

namespace vexosim {
namespace {

void Write(EventSource& source, const std::string& file, std::ostream& out) {
  out << "# The calls of " << files::Printable(file) << ", as they were made.\n";
  ReplayWriter writer(out);
  try {
    ReadAll(source, writer);
    writer.Finish();
  } catch (const NotReplayable& error) {
    throw files::FileError(source.Where() + ": " + error.what());
  }
}

int Run(const std::string& file, const std::string& script) {
  const auto source = OpenEvents(file, {});
  if (source->IsCapture()) {
    throw files::FileError(files::Printable(file) +
                           ": expected a trace, found a capture of the bus, which has no calls");
  }
  if (script.empty()) {
    Write(*source, file, std::cout);
  } else {
    files::OutputFile output(script, {file});
    Write(*source, file, output.Stream());
    output.Commit();
  }
  return files::kExitDone;
}

}  // namespace

void AddReplay(CLI::App& app, int& status) {
  struct Arguments {
    std::string file;
    std::string script;
  };
  const auto arguments = std::make_shared<Arguments>();
  CLI::App* replay = app.add_subcommand("replay", "Makes a script that gives a trace again");
  replay->add_option("FILE", arguments->file, "Trace (JSON lines)")
      ->required()
      ->type_name("")
      ->check(FileName());
  replay->add_option("-o,--output", arguments->script, "Where the script is written, else printed")
      ->type_name("FILE.vexo")
      ->check(FileName());
  replay->footer(
      "The script makes the same calls with the same records, changes the board in the same way\n"
      "and lets the same time pass.\n"
      "Exit status: 0 done, 2 a file or the command line is wrong, or the trace cannot be made\n"
      "into a script.\n");
  replay->callback([arguments, &status] {
    status = WithFiles([&] { return Run(arguments->file, arguments->script); });
  });
}

}  // namespace vexosim
