// ceimage: a Windows CE library of a linked ELF file and a compiled resource file.
#include <CLI/CLI.hpp>
#include <cstdint>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <iostream>
#include <iterator>
#include <map>
#include <string>

#include "device/ceimage/bytes.h"
#include "device/ceimage/elf_file.h"
#include "device/ceimage/pe_image.h"
#include "device/ceimage/resources.h"

namespace {

ceimage::Bytes ReadFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw ceimage::Refusal(path + " cannot be read.");
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

void WriteFile(const std::string& path, const ceimage::Bytes& bytes) {
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file.write(reinterpret_cast<const char*>(bytes.data()),
             static_cast<std::streamsize>(bytes.size()));
  file.close();
  if (!file) throw ceimage::Refusal(path + " cannot be written.");
}

int Run(int argc, char** argv) {
  CLI::App app("Makes a Windows CE library (PE32, ARM) of a linked ELF file.");
  std::string input;
  std::string resource;
  std::string output;
  std::uint16_t machine = ceimage::kMachineArm;
  app.add_option("elf", input, "Linked with --emit-relocs")->required();
  app.add_option("-r,--resource", resource, "Compiled resource file (.res)")->required();
  app.add_option("-o,--output", output, "The image to write")->required();
  app.add_option("-m,--machine", machine, "What the image calls its processor")
      ->transform(CLI::CheckedTransformer(std::map<std::string, std::uint16_t>{
          {"arm", ceimage::kMachineArm}, {"thumb", ceimage::kMachineThumb}}));
  CLI11_PARSE(app, argc, argv);
  WriteFile(output, ceimage::MakeImage(ceimage::ReadElf(ReadFile(input)),
                                       ceimage::ReadResources(ReadFile(resource)), machine));
  return EXIT_SUCCESS;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return Run(argc, argv);
  } catch (const std::exception& error) {
    std::cerr << "ceimage: " << error.what() << "\n";
    return EXIT_FAILURE;
  }
}
