#include <iostream>
#include <memory>
#include <string>

#include "script/grammar/text_help.h"
#include "script/run.h"
#include "tools/vexosim/commands/bash_completion.h"
#include "tools/vexosim/commands/commands.h"
#include "tools/vexosim/commands/man_page.h"

namespace vexosim {

void AddManual(CLI::App& app, int& status) {
  CLI::App* manual = app.add_subcommand("manual", "Prints a manual page");
  const auto man = std::make_shared<bool>(false);
  manual->add_flag("--man", *man, "The one of vexosim itself, for man; else that of text commands");
  manual->callback([&app, man, &status] {
    std::cout << (*man ? ManPage(app) : script::TextCommandManual()) << std::flush;
    status = script::kExitDone;
  });
}

void AddCompletion(CLI::App& app, int& status) {
  CLI::App* completion =
      app.add_subcommand("completion", "Prints what completes this command line in a shell");
  const auto shell = std::make_shared<std::string>();
  completion->add_option("SHELL", *shell, "The shell, bash")
      ->required()
      ->type_name("bash")
      ->check([](const std::string& word) {
        return word == "bash" ? "" : "expected bash, found " + word;
      });
  completion->callback([&app, shell, &status] {
    std::cout << BashCompletion(app) << std::flush;
    status = script::kExitDone;
  });
}

}  // namespace vexosim
