#include "tools/vexosim/demo.h"

#include <iostream>
#include <memory>

#include "files/output.h"
#include "tools/vexosim/commands/commands.h"
#include "tools/vexosim/commands/options.h"

namespace vexosim {

void AddDemo(CLI::App& app, int& status) {
  struct Arguments {
    DemoOptions demo;
    ImageOptions image;
    ColourOption colour;
  };
  const auto arguments = std::make_shared<Arguments>();
  CLI::App* demo = app.add_subcommand(
      "demo", "Brings a recorder with sixteen cameras up and shows what it does");
  demo->add_option(
          "--picture", arguments->demo.picture,
          "Where the 4 x 4 live picture is written; the one of playback is written beside it")
      ->type_name("FILE.png")
      ->check(PictureName())
      ->capture_default_str();
  AddImage(*demo, arguments->image);
  AddColour(*demo, arguments->colour);
  demo->footer(
      "Brings the board up, draws its live picture, changes the layout, unplugs a camera, shows\n"
      "motion, goes through playback and back, and dumps a register page; each message to the "
      "host\n"
      "is printed in words as it arrives.\n"
      "Exit status: 0 done, 1 something answered as no healthy board would, 2 a file or the\n"
      "command line is wrong.\n");
  demo->callback([arguments, &status] {
    const std::vector<std::string> image = {arguments->image.file};
    files::OutputFile::Check(arguments->demo.picture, image);
    files::OutputFile::Check(PlaybackPicture(arguments->demo.picture), image);
    status = WithImage(arguments->image, [&](const emulator::Machine* machine) {
      arguments->demo.style = arguments->colour.Style();
      arguments->demo.machine = machine;
      return RunDemo(arguments->demo, std::cout, std::cerr);
    });
  });
}

}  // namespace vexosim
