#include <iostream>

#include "script/grammar/text_help.h"
#include "script/run.h"
#include "tools/vexosim/commands/commands.h"

namespace vexosim {

void AddManual(CLI::App& app, int& status) {
  app.add_subcommand("manual", "Prints the manual page of the text commands, docs/text-commands.md")
      ->callback([&status] {
        std::cout << script::TextCommandManual() << std::flush;
        status = script::kExitDone;
      });
}

}  // namespace vexosim
