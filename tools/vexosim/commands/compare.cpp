#include "tools/vexosim/compare.h"

#include <iostream>
#include <memory>

#include "tools/vexosim/commands/commands.h"
#include "tools/vexosim/commands/options.h"

namespace vexosim {

void AddCompare(CLI::App& app, int& status) {
  const auto options = std::make_shared<CompareOptions>();
  CLI::App* compare =
      app.add_subcommand("compare", "Runs scripts on the library and on its image for the device");
  compare->add_option("IMAGE", options->image, "VexoCtrlSDK.DLL for Windows CE on ARM")
      ->required()
      ->type_name("")
      ->check(FileName());
  compare->add_option("SCRIPT", options->scripts, "Script files")
      ->required()
      ->type_name("")
      ->check(FileName());
  compare
      ->add_option("--image-base", options->bases,
                   "Where the image is loaded, also several times; default: where it wants, and "
                   "elsewhere")
      ->type_name("ADDRESS")
      ->transform(Address())
      ->allow_extra_args(false);  // what follows is a script
  AddSeed(*compare, options->seed);
  compare->add_flag("--relocations", options->relocations,
                    "Also leaves out one base relocation after the other, and lists those that "
                    "no script misses");
  compare->footer(
      "Each script must give the same trace, the same complaints and the same exit status on all;\n"
      "only the build time in the banner may differ.\n"
      "Exit status: 0 all the same, 1 something differs, 2 a file or the command line is wrong.\n");
  compare->callback([options, &status] { status = CompareImage(*options, std::cout, std::cerr); });
}

}  // namespace vexosim
