#include "device/plan/plan.h"

#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "files/exit_status.h"
#include "files/input.h"
#include "files/output.h"
#include "tools/vexosim/commands/commands.h"
#include "tools/vexosim/commands/options.h"
#include "tools/vexosim/commands/trace_options.h"
#include "tools/vexosim/plan/maker.h"
#include "tools/vexosim/plan/scope.h"

namespace vexosim {
namespace {

struct PlanArguments {
  std::vector<std::string> scripts;
  std::optional<std::string> variant;
  std::string plan;
};

// The file's script, or the variant of it that was asked for.
script::Script ReadScript(const std::string& path, const std::optional<std::string>& variant) {
  std::ifstream in = files::OpenInput(path);
  std::vector<script::Script> scripts = script::ParseScript(in, path);
  if (scripts.size() == 1) return std::move(scripts.front());
  for (script::Script& script : scripts) {
    if (variant == script.variant) return std::move(script);
  }
  std::string names;
  for (const script::Script& script : scripts)
    names += (names.empty() ? "" : ", ") + script.variant;
  throw NoPlan(path + ": a plan is for one bench: choose a variant of " + names + " (--variant)");
}

int Run(const PlanArguments& arguments) {
  try {
    std::vector<script::Script> scripts;
    for (const std::string& path : arguments.scripts) {
      scripts.push_back(ReadScript(path, arguments.variant));
    }
    const std::string text = plan::PrintPlan(MakePlan(scripts));
    plan::ParsePlan(text, arguments.plan.empty() ? "the plan" : arguments.plan);  // not too long
    if (arguments.plan.empty()) {
      std::cout << text;
      return files::kExitDone;
    }
    files::OutputFile output(arguments.plan, arguments.scripts);
    output.Stream() << text;
    output.Commit();
    return files::kExitDone;
  } catch (const NoPlan& error) {
    std::cerr << error.what() << std::endl;
  } catch (const script::ScriptError& error) {
    std::cerr << error.what() << std::endl;
  } catch (const plan::FormatError& error) {
    std::cerr << error.what() << std::endl;
  }
  return files::kExitWrong;
}

}  // namespace

void AddPlan(CLI::App& app, int& status) {
  const auto arguments = std::make_shared<PlanArguments>();
  CLI::App* plan =
      app.add_subcommand("plan", "Makes a plan of scripts, which VexoCheck.exe plays on a board");
  plan->add_option("SCRIPT", arguments->scripts, "Script files")
      ->required()
      ->type_name("")
      ->check(FileName());
  plan->add_option("--variant", arguments->variant, "Of scripts that have variants, this one")
      ->type_name("NAME");
  plan->add_option("-o,--output", arguments->plan, "Where the plan is written, else printed")
      ->type_name("FILE.plan")
      ->check(FileName());
  plan->footer(
      "The plan has the scripts' calls and waits, and what came of them on the simulated board:\n"
      "results, records, messages and register contents. Each script runs twice, on boards that\n"
      "begin as differently as the script lets them; what differs is not expected of a real "
      "board.\n"
      "Lines that change the board before the first call must hold on the bench; what nobody can\n"
      "do there is refused. The scripts' own expectations must be met.\n"
      "Exit status: 0 done, 2 a file or the command line is wrong, or a script cannot be played "
      "on\n"
      "a board.\n");
  plan->callback([arguments, &status] { status = WithFiles([&] { return Run(*arguments); }); });
}

}  // namespace vexosim
