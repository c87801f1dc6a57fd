#include "device/ceimage/cli.h"

#include <CLI/CLI.hpp>
#include <cstdint>
#include <iostream>
#include <list>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "device/ceimage/bytes.h"
#include "device/ceimage/elf_file.h"
#include "device/ceimage/import_library.h"
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
    "Exit status: 0 done, 2 a file or the command line is wrong; then nothing is written.\n";

int Wrong(const std::string& sentence) {
  std::cerr << "ceimage: " << files::Printable(sentence, 1000) << std::endl;
  return files::kExitWrong;
}

struct Options {
  std::string elf;
  std::string resources;
  std::string output;
  std::optional<std::string> import_library;
  std::optional<std::string> definition;
  std::uint16_t machine = kMachineArm;
  bool program = false;
};

// All of the files, or none.
void Write(const std::vector<std::pair<std::string, Bytes>>& contents,
           std::vector<std::string> others) {
  std::list<files::OutputFile> outputs;
  for (const auto& [path, content] : contents) {
    files::OutputFile& output = outputs.emplace_back(path, others);
    output.Stream().write(reinterpret_cast<const char*>(content.data()),
                          static_cast<std::streamsize>(content.size()));
    others.push_back(path);
  }
  // What could not be written is told before the first of them appears.
  for (files::OutputFile& output : outputs) {
    if (!output.Stream().flush()) output.Commit();
  }
  for (files::OutputFile& output : outputs) output.Commit();
}

void Run(const Options& options) {
  const auto read = [](const std::string& path, auto function) {
    const Bytes bytes = files::ReadBytes(path, kMostInput);
    try {
      return function(bytes);
    } catch (const Refusal& refusal) {
      throw Refusal(path + ": " + refusal.what());
    }
  };
  const ElfFile elf = read(options.elf, ReadElf);
  std::vector<std::pair<std::string, Bytes>> contents = {
      {options.output, MakeImage(elf, read(options.resources, ReadResources), options.machine,
                                 options.program ? Kind::Program : Kind::Library)}};
  if (options.import_library) {
    contents.emplace_back(*options.import_library,
                          MakeImportLibrary(FindExports(elf), options.machine));
  }
  if (options.definition) {
    const std::string text = MakeDefinition(FindExports(elf));
    contents.emplace_back(*options.definition, Bytes(text.begin(), text.end()));
  }
  Write(contents, {options.elf, options.resources});
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
  app.add_option("-i,--import-library", options.import_library,
                 "The import library to write, for hosts that are linked with the image (.lib)");
  app.add_option("-d,--definition", options.definition,
                 "The same as a text to write, for linkers that make their own (.def)");
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
