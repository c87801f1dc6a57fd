// Options that several subcommands have.
#pragma once

#include <CLI/CLI.hpp>
#include <cstdint>
#include <functional>
#include <limits>
#include <optional>
#include <string>

#include "device/emulator/machine.h"
#include "tools/vexosim/terminal.h"

namespace vexosim {

// What an option may be; each says what was expected and what was found.
CLI::Validator FileName();     // not empty
CLI::Validator PictureName();  // FILE.png
// Numbers are decimal or 0x-hexadecimal; these are transforms.
CLI::Validator WholeNumber(std::uint64_t least = 0,
                           std::uint64_t most = std::numeric_limits<std::uint64_t>::max());
CLI::Validator Address();
CLI::Validator Duration();  // becomes milliseconds

// --color auto|always|never.
struct ColourOption {
  std::string word = "auto";
  PictureStyle Style() const;
};
void AddColour(CLI::App& app, ColourOption& colour);

// --image FILE.DLL: the image, run instruction by instruction in the place of the linked library.
struct ImageOptions {
  std::string file;  // empty: the linked library
  std::optional<std::uint32_t> base;
};
void AddImage(CLI::App& app, ImageOptions& image);

// Calls `run` with the machine of the image, null when there is none. Returns its exit status.
int WithImage(const ImageOptions& options, const std::function<int(const emulator::Machine*)>& run);

// --seed N.
void AddSeed(CLI::App& app, std::uint64_t& seed);

}  // namespace vexosim
