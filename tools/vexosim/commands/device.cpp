#include <iostream>
#include <memory>

#include "tools/vexosim/card_run.h"
#include "tools/vexosim/commands/commands.h"
#include "tools/vexosim/commands/options.h"
#include "tools/vexosim/commands/session_options.h"

namespace vexosim {
namespace {

constexpr const char* kFooter =
    "The folder is the root of the device's file system: FOLDER/DLL/A.DLL is \\DLL\\A.DLL there.\n"
    "Libraries are looked for in the folder of the program, in \\Windows\\ and in the root; the\n"
    "system's own (COREDLL, CEDDK, ExtRtcNVramCtl, netmsg) are there already. The program reads\n"
    "and writes the files of the folder.\n"
    "Its debug output is printed behind |, that of the kernel and its loader behind !, and the\n"
    "titles of windows that are shown behind =.\n"
    "\n"
    "Lines of the script change the board before the program begins; those behind the first of\n"
    "these happen while it runs:\n"
    "  wait MS                    so much of the device's time passes\n"
    "  key KEY                    a key is pressed, at the window that was shown last: a letter,\n"
    "                             a digit, enter, esc, left, up, right or down\n"
    "  start PROGRAM [WORD]...    a further program is started, which ends with the first one;\n"
    "                             the titles of the second one's windows are printed behind =2\n"
    "\n"
    "Exit status: 0 the program ended, and its exit code is told; 1 it could not be loaded, did "
    "what\n"
    "no program may, or had to be ended; 2 a file or the command line is wrong.\n";

struct DeviceArguments {
  CardRun run;
  SessionOptions session;
  std::vector<std::string> lacks;
  std::string machine = "any";
};

int Run(DeviceArguments& arguments) {
  CardRun& run = arguments.run;
  run.limits = arguments.session.Limits();
  run.device.without_imports = {arguments.lacks.begin(), arguments.lacks.end()};
  run.device.thumb_alone = arguments.machine == "thumb";
  run.cycle_ns = arguments.session.cycle_ns;
  SessionOutputs outputs(arguments.session, {run.script});
  run.sinks = outputs.Sinks();
  const InterruptWatch interrupts;
  const int status = RunCard(run, std::cout, std::cerr);
  outputs.Commit();
  return status;
}

}  // namespace

void AddDevice(CLI::App& app, int& status) {
  const auto arguments = std::make_shared<DeviceArguments>();
  CLI::App* device = app.add_subcommand(
      "device", "Runs a program of a card on the emulated device, with the simulated board");
  device->add_option("FOLDER", arguments->run.card, "What stands for the device's file system")
      ->required()
      ->type_name("")
      ->check(FileName());
  device->add_option("PROGRAM", arguments->run.program, "VexoCheck.exe, or a path on the device")
      ->required()
      ->type_name("")
      ->check(FileName());
  device->add_option("ARGUMENTS", arguments->run.arguments, "Of the program")->type_name("");
  device
      ->add_option(
          "--script", arguments->run.script,
          "The board: chips, cameras, NVRAM, drivers, faults; and what happens while it runs")
      ->type_name("BOARD.vexo")
      ->check(FileName());
  AddSessionOptions(*device, arguments->session);
  AddSeed(*device, arguments->run.seed);
  device
      ->add_option(
          "--without-import", arguments->lacks,
          "The system's libraries lack this name (or #8: this ordinal), also several times")
      ->type_name("NAME")
      ->allow_extra_args(false);
  device
      ->add_option("--machine", arguments->machine,
                   "Which machine numbers the loader takes: any of ARM, or thumb: 0x01C2 alone")
      ->type_name("any|thumb")
      ->capture_default_str()
      ->check(CLI::IsMember({"any", "thumb"}));
  device->add_flag("--unshared", arguments->run.device.unshared,
                   "Each process has its own copy of a section that is to be shared");
  device->add_flag("--base-taken", arguments->run.device.base_taken,
                   "Libraries cannot lie where they want and are relocated");
  device->footer(kFooter);
  device->callback([arguments, &status] { status = WithFiles([&] { return Run(*arguments); }); });
}

}  // namespace vexosim
