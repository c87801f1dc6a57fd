#include "device/verdict/verdict.h"

#include <iostream>
#include <memory>
#include <string>

#include "files/exit_status.h"
#include "files/input.h"
#include "tools/vexosim/commands/commands.h"
#include "tools/vexosim/commands/options.h"
#include "tools/vexosim/commands/trace_options.h"

namespace vexosim {
namespace {

struct VerdictArguments {
  std::string plan;
  std::string log;
};

int Run(const VerdictArguments& arguments) {
  try {
    const plan::Plan plan =
        plan::ParsePlan(files::ReadText(arguments.plan, plan::kMostBytes), arguments.plan);
    const plan::Log log =
        plan::ParseLog(files::ReadText(arguments.log, plan::kMostLogBytes), arguments.log);
    return verdict::Judge(plan, log, std::cout) ? files::kExitDone : files::kExitUnmet;
  } catch (const plan::FormatError& error) {
    std::cerr << error.what() << std::endl;
  }
  return files::kExitWrong;
}

}  // namespace

void AddVerdict(CLI::App& app, int& status) {
  const auto arguments = std::make_shared<VerdictArguments>();
  CLI::App* verdict = app.add_subcommand(
      "verdict", "Says what a log of VexoCheck.exe tells of a board, and what to try next");
  verdict->add_option("PLAN", arguments->plan, "The plan that VexoCheck.exe played")
      ->required()
      ->type_name("")
      ->check(FileName());
  verdict->add_option("LOG", arguments->log, "The log that it wrote: VexoCheck.log")
      ->required()
      ->type_name("")
      ->check(FileName());
  verdict->footer(
      "Exit status: 0 all is as it should be, 1 something is not, 2 a file or the command line is\n"
      "wrong, or the log is of another plan.\n");
  verdict->callback([arguments, &status] { status = WithFiles([&] { return Run(*arguments); }); });
}

}  // namespace vexosim
