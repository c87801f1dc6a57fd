#include "tools/vexosim/cli.h"

#include <CLI/CLI.hpp>
#include <fstream>
#include <iostream>
#include <map>

#include "device/emulator/exports.h"
#include "script/run.h"
#include "tools/vexosim/compare.h"
#include "tools/vexosim/demo.h"
#include "tools/vexosim/grammar/text_help.h"
#include "tools/vexosim/listing/terminal_surroundings.h"
#include "tools/vexosim/shell/shell.h"

namespace vexosim {
namespace {

constexpr const char* kDescription =
    "Runs VexoCtrlSDK on a simulated board: up to four TW2835 chips, sixteen cameras,\n"
    "a host window, and virtual time, so that every run is the same run.";

constexpr const char* kFooter =
    "Examples:\n"
    "  vexosim demo                                  a recorder comes up and shows its cameras\n"
    "  vexosim shell                                 a console on a board of sixteen channels\n"
    "  vexosim run live.vexo --picture live.png      runs a script, writes the screen\n"
    "  vexosim run live.vexo --trace live.jsonl      writes every bus cycle and call as JSON "
    "lines\n"
    "  printf 'lsplit 6 0\\nprint\\n' | vexosim shell  the same from a pipe\n"
    "  printf 'attach\\nwindow\\ncommand 0xF001\\nprint\\n' | vexosim run -\n"
    "\n"
    "Exit status: 0 done, 1 an expectation was not met, 2 the script or the command line is "
    "wrong.\n"
    "vexosim run --help lists the script language.\n";

constexpr const char* kRunIntroduction =
    "By default each line is echoed with the virtual time at which it runs, and below it\n"
    "  | what the library wrote to the debug output (! to the kernel debug output)\n"
    "  > a message to the host window, in words\n"
    "  = the result of the call\n"
    "Expectations that are not met go to standard error as FILE:LINE: EXPECTATION: WHAT WAS "
    "FOUND,\n"
    "and so do warnings of the board: bus contention, accesses to an unmapped window or wider "
    "than\n"
    "a byte, registers that have no name.\n"
    "\n"
    "A script:\n"
    "  board chips 1                  # a recorder with four cameras\n"
    "  attach\n"
    "  window\n"
    "  command 0xF001\n"
    "  expect return 0\n"
    "  camera 2 off\n"
    "  run 100\n"
    "  expect message 0x2403          # the host is told\n"
    "\n";

const std::map<std::string, ColourChoice> kColourChoices = {
    {"auto", ColourChoice::Auto}, {"always", ColourChoice::Always}, {"never", ColourChoice::Never}};

// The image, run instruction by instruction in the place of the linked library.
struct ImageArguments {
  std::string file;  // empty: the linked library
  std::optional<std::uint32_t> base;
};

struct RunArguments {
  ImageArguments image;
  std::string script;
  std::optional<std::string> variant;
  std::string trace;
  std::string picture;
  bool registers = false;
  bool quiet = false;
  std::uint64_t seed = 0;
  std::string colour = "auto";
};

constexpr const char* kShellIntroduction =
    "Brings a board up and runs a line at a time: text commands (vexo lsplit 6 0), without their\n"
    "header where it is clear (lsplit 6 0), script lines (camera 2 off), and help, writes on,\n"
    "history, quit. Tab completes words and says which number comes next; help lsplit explains a\n"
    "command. Lines are kept in ~/.vexosim_history, or in the folder $XDG_STATE_HOME.\n"
    "Lines from a pipe are run in the same way, one after the other.\n"
    "Exit status: 0.\n";

void AddColour(CLI::App& app, std::string& colour) {
  app.add_option("--color,--colour", colour,
                 "Pictures and marks in colour: auto (on a terminal), always or never")
      ->type_name("WHEN")
      ->check([](const std::string& word) {
        return kColourChoices.contains(word) ? "" : "expected auto, always or never, found " + word;
      });
}

void AddImage(CLI::App& app, ImageArguments& image) {
  CLI::Option* file =
      app.add_option(
             "--image", image.file,
             "Runs this image, VexoCtrlSDK.DLL for Windows CE on ARM, on an emulated device\n"
             "instead of the library in this program")
          ->type_name("FILE.DLL");
  app.add_option("--image-base", image.base, "Where the image is loaded; default: where it wants")
      ->type_name("ADDRESS")
      ->needs(file);
}

// Calls `run` with the machine of the image, null when there is none. Returns one of kExit....
template <typename Function>
int WithImage(const ImageArguments& arguments, Function run) {
  if (arguments.file.empty()) return run(nullptr);
  try {
    emulator::MachineOptions options;
    options.base = arguments.base;
    emulator::Machine machine(emulator::PeImage::Load(arguments.file), options);
    const emulator::ImageInUse in_use(machine);
    return run(&machine);
  } catch (const emulator::BadImage& error) {
    std::cerr << "vexosim: " << error.what() << std::endl;
    return script::kExitWrong;
  }
}

int RunCommand(const RunArguments& arguments, const emulator::Machine* machine) {
  script::RunOptions options;
  options.variant = arguments.variant;
  options.machine = machine;
  options.quiet = arguments.quiet;
  options.seed = arguments.seed;
  options.registers = arguments.registers;
  if (!arguments.picture.empty()) options.picture = arguments.picture;

  std::ifstream script;
  const bool standard_input = arguments.script == "-";
  if (!standard_input) {
    script.open(arguments.script);
    if (!script || script.peek() == std::ifstream::traits_type::eof()) {
      // A folder opens but cannot be read; an empty file is an empty script.
      script.clear();
      std::ifstream again(arguments.script);
      std::string line;
      if (!again.is_open() || (!std::getline(again, line) && again.bad())) {
        std::cerr << "vexosim: cannot read " << arguments.script << std::endl;
        return script::kExitWrong;
      }
    }
  }
  std::ofstream trace;
  if (!arguments.trace.empty()) {
    trace.open(arguments.trace);
    if (!trace) {
      std::cerr << "vexosim: cannot write " << arguments.trace << std::endl;
      return script::kExitWrong;
    }
    options.trace = &trace;
  }
  TerminalSurroundings around(StandardOutputStyle(kColourChoices.at(arguments.colour)),
                              Progress::OnTerminal());
  const int status = script::RunScript(standard_input ? std::cin : script,
                                       standard_input ? "<stdin>" : arguments.script, options,
                                       around, std::cout, std::cerr);
  if (trace.is_open() && !trace.flush()) {
    std::cerr << "vexosim: cannot write " << arguments.trace << std::endl;
    return script::kExitWrong;
  }
  return status;
}

int RunShellHere(const ShellOptions& options) {
  const bool terminal = OnTerminal();
  // What a pipe types is nobody's history.
  LineHistory history(terminal ? HistoryPath() : std::nullopt);
  const auto reader = terminal ? MakeTerminalReader(history) : MakePlainReader(std::cin, std::cout);
  return RunShell(options, history, *reader, std::cout);
}

}  // namespace

int Main(int argc, const char* const* argv) {
  CLI::App app(kDescription, "vexosim");
  app.footer(kFooter);
  app.require_subcommand(1);

  DemoOptions demo_options;
  std::string demo_colour = "auto";
  CLI::App* demo = app.add_subcommand(
      "demo", "Brings a recorder with sixteen cameras up and shows what it does");
  demo->add_option(
          "--picture", demo_options.picture,
          "Where the 4 x 4 live picture is written; the one of playback is written beside it")
      ->type_name("FILE.png")
      ->capture_default_str();
  ImageArguments demo_image;
  AddImage(*demo, demo_image);
  AddColour(*demo, demo_colour);
  demo->footer(
      "Brings the board up, draws its live picture, changes the layout, unplugs a camera, shows\n"
      "motion, goes through playback and back, and dumps a register page; each message to the "
      "host\n"
      "is printed in words as it arrives.\n"
      "Exit status: 0 done, 1 something answered as no healthy board would.\n");

  RunArguments run_arguments;
  CLI::App* run = app.add_subcommand("run", "Runs a script");
  run->add_option("SCRIPT", run_arguments.script, "Script file, or - for standard input")
      ->required()
      ->type_name("");
  run->add_option("--variant", run_arguments.variant, "Runs this variant of the script, not all")
      ->type_name("NAME");
  run->add_option("--trace", run_arguments.trace, "Writes the trace as JSON lines")
      ->type_name("FILE");
  run->add_option("--picture", run_arguments.picture, "Writes the screen at the end")
      ->type_name("FILE.png");
  run->add_flag("--registers", run_arguments.registers,
                "Prints all register pages at the end, with the names of registers; * marks what "
                "changed since attach");
  run->add_option("--seed", run_arguments.seed,
                  "Chooses among threads that could run; 0: the fixed order")
      ->type_name("N");
  run->add_flag("--quiet", run_arguments.quiet,
                "Only what the script prints, and the expectations that are not met");
  AddImage(*run, run_arguments.image);
  AddColour(*run, run_arguments.colour);
  run->footer(kRunIntroduction + script::LanguageHelp());

  ShellOptions shell_options;
  std::string shell_colour = "auto";
  CLI::App* shell = app.add_subcommand("shell", "A console for text commands and script lines");
  shell->add_option("--chips", shell_options.chips, "How many chips are fitted, four channels each")
      ->type_name("N")
      ->check(CLI::Range(1, int{kChipsMax}))
      ->capture_default_str();
  shell->add_flag("--pal", shell_options.pal, "PAL cameras and stored standard, else NTSC");
  shell->add_flag("--bare", shell_options.bare, "Leaves the library unattached");
  shell
      ->add_option("--seed", shell_options.seed,
                   "Chooses among threads that could run; 0: the fixed order")
      ->type_name("N");
  AddColour(*shell, shell_colour);
  shell->footer(kShellIntroduction);

  CompareOptions compare_options;
  CLI::App* compare =
      app.add_subcommand("compare", "Runs scripts on the library and on its image for the device");
  compare->add_option("IMAGE", compare_options.image, "VexoCtrlSDK.DLL for Windows CE on ARM")
      ->required()
      ->type_name("");
  compare->add_option("SCRIPT", compare_options.scripts, "Script files")->required()->type_name("");
  compare
      ->add_option("--image-base", compare_options.bases,
                   "Where the image is loaded; default: where it wants, and elsewhere")
      ->type_name("ADDRESS");
  compare
      ->add_option("--seed", compare_options.seed,
                   "Chooses among threads that could run; 0: the fixed order")
      ->type_name("N");
  compare->add_flag("--relocations", compare_options.relocations,
                    "Also leaves out one base relocation after the other, and lists those that "
                    "no script misses");
  compare->footer(
      "Each script must give the same trace, the same complaints and the same exit status on all;\n"
      "only the build time in the banner may differ.\n"
      "Exit status: 0 all the same, 1 something differs, 2 a file or the command line is wrong.\n");

  CLI::App* manual = app.add_subcommand(
      "manual", "Prints the manual page of the text commands, docs/text-commands.md");

  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    // Help is an exit too, but no mistake.
    return app.exit(error) == 0 ? script::kExitDone : script::kExitWrong;
  }
  if (*demo) {
    demo_options.style = StandardOutputStyle(kColourChoices.at(demo_colour));
    return WithImage(demo_image, [&](const emulator::Machine* machine) {
      demo_options.machine = machine;
      return RunDemo(demo_options, std::cout, std::cerr);
    });
  }
  if (*shell) {
    shell_options.style = StandardOutputStyle(kColourChoices.at(shell_colour));
    return RunShellHere(shell_options);
  }
  if (*compare) return CompareImage(compare_options, std::cout, std::cerr);
  if (*manual) {
    std::cout << TextCommandManual() << std::flush;
    return script::kExitDone;
  }
  return WithImage(run_arguments.image, [&](const emulator::Machine* machine) {
    return RunCommand(run_arguments, machine);
  });
}

}  // namespace vexosim
