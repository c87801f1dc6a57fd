#include "tools/vexosim/commands/options.h"

#include <iostream>
#include <map>

#include "device/emulator/exports.h"
#include "script/run.h"

namespace vexosim {
namespace {

const std::map<std::string, ColourChoice> kColourChoices = {
    {"auto", ColourChoice::Auto}, {"always", ColourChoice::Always}, {"never", ColourChoice::Never}};

}  // namespace

PictureStyle ColourOption::Style() const { return StandardOutputStyle(kColourChoices.at(word)); }

void AddColour(CLI::App& app, ColourOption& colour) {
  app.add_option(
         "--color,--colour", colour.word,
         "Pictures and marks in colour; auto: on a terminal that has it, unless NO_COLOR is set")
      ->type_name("auto|always|never")
      ->capture_default_str()
      ->check([](const std::string& word) {
        return kColourChoices.contains(word) ? "" : "expected auto, always or never, found " + word;
      });
}

void AddImage(CLI::App& app, ImageOptions& image) {
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

int WithImage(const ImageOptions& options,
              const std::function<int(const emulator::Machine*)>& run) {
  if (options.file.empty()) return run(nullptr);
  try {
    emulator::MachineOptions machine_options;
    machine_options.base = options.base;
    emulator::Machine machine(emulator::PeImage::Load(options.file), machine_options);
    const emulator::ImageInUse in_use(machine);
    return run(&machine);
  } catch (const emulator::BadImage& error) {
    std::cerr << "vexosim: " << error.what() << std::endl;
    return script::kExitWrong;
  }
}

void AddSeed(CLI::App& app, std::uint64_t& seed) {
  app.add_option("--seed", seed, "Chooses among threads that could run; 0: the fixed order")
      ->type_name("N");
}

}  // namespace vexosim
