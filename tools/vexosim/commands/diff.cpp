#include "tools/vexosim/traces/diff.h"

#include <iostream>
#include <memory>

#include "tools/vexosim/commands/commands.h"
#include "tools/vexosim/commands/options.h"
#include "tools/vexosim/commands/trace_options.h"

namespace vexosim {

void AddDiff(CLI::App& app, int& status) {
  const auto options = std::make_shared<DiffOptions>();
  CLI::App* diff = app.add_subcommand("diff", "Names the first difference of two traces in words");
  diff->add_option("A", options->a, "Trace (JSON lines), or capture (VCD or CSV)")
      ->required()
      ->type_name("")
      ->check(FileName());
  diff->add_option("B", options->b, "The other")->required()->type_name("")->check(FileName());
  diff->add_flag("--registers", options->registers,
                 "Accesses to registers alone, whenever and by whichever thread");
  AddCaptureColumns(*diff, options->columns);
  diff->footer(
      "The time of the build, numbers of threads and window handles make no difference. With a\n"
      "capture on either side, accesses to registers alone are compared.\n"
      "Exit status: 0 the same, 1 something differs, 2 a file or the command line is wrong.\n");
  diff->callback(
      [options, &status] { status = WithFiles([&] { return DiffTraces(*options, std::cout); }); });
}

}  // namespace vexosim
