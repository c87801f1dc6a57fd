#include "device/ceimage/cli.h"

#include <CLI/CLI.hpp>
#include <cstdint>
#include <iostream>
#include <map>
#include <string>

#include "device/ceimage/bytes.h"
#include "device/ceimage/elf_file.h"
#include "device/ceimage/pe_image.h"
#include "device/ceimage/resources.h"
#include "files/exit_status.h"
#include "files/input.h"
#include "files/output.h"
#include "files/printable.h"

namespace ceimage {
namespace {

constexpr std::uint64_t kMostInput = std::uint64_t{64} << 20;

constexpr const char* kFooter =
    "Exit status: 0 done, 2 a file or the command line is wrong; then no image is written.\n";

int Wrong(const std::string& sentence) {
  std::cerr << "ceimage: " << files::Printable(sentence, 1000) << std::endl;
  return files::kExitWrong;
}

struct Options {
  std::string elf;
  std::string resources;
  std::string output;
  std::uint16_t machine = kMachineArm;
  bool program = false;
};

void Run(const Options& options) {
  files::OutputFile output(options.output, {options.elf, options.resources});
  const auto read = [](const std::string& path, auto function) {
    const Bytes bytes = files::ReadBytes(path, kMostInput);
    try {
      return function(bytes);
    } catch (const Refusal& refusal) {
      throw Refusal(path + ": " + refusal.what());
    }
  };
  const ElfFile elf = read(options.elf, ReadElf);
  const Bytes image = MakeImage(elf, read(options.resources, ReadResources), options.machine,
                                options.program ? Kind::Program : Kind::Library);
  output.Stream().write(reinterpret_cast<const char*>(image.data()),
                        static_cast<std::streamsize>(image.size()));
  output.Commit();
}

}  // namespace

int Main(int argc, const char* const* argv) {
  Options options;
  CLI::App app("Makes a Windows CE library or program (PE32, ARM) of a linked ELF file.",
               "ceimage");
  app.footer(kFooter);
  app.add_option("elf", options.elf, "Linked with --emit-relocs")->required();
  app.add_option("-r,--resource", options.resources, "Compiled resource file (.res)")->required();
  app.add_option("-o,--output", options.output, "The image to write")->required();
  app.add_option("-m,--machine", options.machine, "What the image calls its processor")
      ->transform(CLI::CheckedTransformer(
          std::map<std::string, std::uint16_t>{{"arm", kMachineArm}, {"thumb", kMachineThumb}}));
  app.add_flag("--program", options.program,
               "Makes a program, which is never moved; else a library");
  try {
    app.parse(argc, argv);
    Run(options);
    return files::kExitDone;
  } catch (const CLI::ParseError& error) {
    // Help is an exit too, but no mistake.
    if (error.get_exit_code() == 0) return app.exit(error);
    return Wrong(std::string(error.what()) + " (ceimage --help tells more)");
  } catch (const Refusal& refusal) {
    return Wrong(refusal.what());
  } catch (const files::FileError& error) {
    return Wrong(error.what());
  }
}

}  // namespace ceimage
