// Options that several subcommands have.
#pragma once

#include <CLI/CLI.hpp>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "device/emulator/machine.h"
#include "tools/vexosim/terminal.h"

namespace vexosim {

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
