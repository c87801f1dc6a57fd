// The subcommands of vexosim. Each adds itself to the command line, and when it is the one that was
// asked for, runs and leaves its exit status, one of script::kExit....
#pragma once

#include <CLI/CLI.hpp>

namespace vexosim {

void AddDemo(CLI::App& app, int& status);
void AddRun(CLI::App& app, int& status);
void AddShell(CLI::App& app, int& status);
void AddServe(CLI::App& app, int& status);
void AddCompare(CLI::App& app, int& status);
void AddDevice(CLI::App& app, int& status);
void AddManual(CLI::App& app, int& status);
void AddCompletion(CLI::App& app, int& status);
void AddTrace(CLI::App& app, int& status);
void AddDiff(CLI::App& app, int& status);
void AddReplay(CLI::App& app, int& status);
void AddPlan(CLI::App& app, int& status);

}  // namespace vexosim
