#include "tools/vexosim/commands/options.h"

#include <algorithm>
#include <charconv>
#include <iostream>
#include <map>
#include <string_view>

#include "device/emulator/exports.h"
#include "files/output.h"
#include "files/printable.h"
#include "script/run.h"

namespace vexosim {
namespace {

const std::map<std::string, ColourChoice> kColourChoices = {
    {"auto", ColourChoice::Auto}, {"always", ColourChoice::Always}, {"never", ColourChoice::Never}};

// A whole number of the script language: decimal or 0x-hexadecimal.
std::optional<std::uint64_t> ReadNumber(std::string_view text) {
  const bool hexadecimal = text.starts_with("0x") || text.starts_with("0X");
  if (hexadecimal) text.remove_prefix(2);
  std::uint64_t value = 0;
  const auto [end, error] = std::from_chars(text.begin(), text.end(), value, hexadecimal ? 16 : 10);
  if (error != std::errc{} || end != text.end()) return std::nullopt;
  return value;
}

}  // namespace

CLI::Validator FileName() {
  return {[](const std::string& text) {
            return text.empty() ? std::string("expected a file name, found ''") : std::string();
          },
          ""};
}

CLI::Validator PictureName() {
  return {[](const std::string& text) {
            return files::HasEnding(text, ".png")
                       ? std::string()
                       : "expected a file name that ends in .png, found '" + text + "'";
          },
          ""};
}

CLI::Validator WholeNumber(std::uint64_t least, std::uint64_t most) {
  return {[=](std::string& text) {
            const auto value = ReadNumber(text);
            if (!value || *value < least || *value > most) {
              return "expected a whole number from " + std::to_string(least) + " to " +
                     std::to_string(most) + ", found '" + text + "'";
            }
            text = std::to_string(*value);
            return std::string();
          },
          ""};
}

CLI::Validator Address() {
  return {[](std::string& text) {
            const auto value = ReadNumber(text);
            if (!value || *value > std::numeric_limits<std::uint32_t>::max()) {
              return "expected an address of 32 bits, found '" + text + "'";
            }
            text = std::to_string(*value);
            return std::string();
          },
          ""};
}

CLI::Validator Duration() {
  return {[](std::string& text) {
            static const std::map<std::string_view, std::uint64_t> kUnits = {
                {"ms", 1}, {"s", 1'000}, {"min", 60'000}, {"h", 3'600'000}, {"d", 86'400'000}};
            const std::string_view word = text;
            const std::size_t digits = std::min(word.find_first_not_of("0123456789"), word.size());
            const auto value = ReadNumber(word.substr(0, digits));
            const auto unit = kUnits.find(word.substr(digits));
            if (!value || unit == kUnits.end() ||
                *value > std::numeric_limits<std::uint64_t>::max() / unit->second) {
              return "expected a time as 10s: a whole number and ms, s, min, h or d, found '" +
                     text + "'";
            }
            text = std::to_string(*value * unit->second);
            return std::string();
          },
          ""};
}

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
          ->type_name("FILE.DLL")
          ->check(FileName());
  app.add_option("--image-base", image.base, "Where the image is loaded; default: where it wants")
      ->type_name("ADDRESS")
      ->transform(Address())
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
    std::cerr << "vexosim: " << files::Printable(error.what()) << std::endl;
    return script::kExitWrong;
  }
}

void AddSeed(CLI::App& app, std::uint64_t& seed) {
  app.add_option("--seed", seed, "Chooses among threads that could run; 0: the fixed order")
      ->type_name("N")
      ->transform(WholeNumber());
}

}  // namespace vexosim
