// Any bytes as an image for the emulated device: it is refused in words, or all that is said of it
// lies in it, and it can be loaded.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "device/emulator/loaded_image.h"
#include "device/emulator/pe_image.h"
#include "fuzz/require.h"

namespace {

using emulator::BadImage;
using emulator::ImageKind;
using emulator::PeImage;
using fuzz::Require;

void CheckInside(const PeImage& image) {
  const auto inside = [&image](std::uint32_t rva, std::uint32_t bytes) {
    return std::any_of(image.Sections().begin(), image.Sections().end(), [&](const auto& section) {
      return rva >= section.rva && section.bytes >= bytes &&
             rva - section.rva <= section.bytes - bytes;
    });
  };
  for (const emulator::ImageSection& section : image.Sections()) {
    Require(section.bytes != 0 && section.rva < image.Bytes() &&
            section.bytes <= image.Bytes() - section.rva);
  }
  Require(inside(image.EntryRva(), 4));
  for (const auto& [name, rva] : image.Exports()) Require(!name.empty() && inside(rva, 4));
  for (const emulator::ImageImport& import : image.Imports()) Require(inside(import.slot_rva, 4));
  for (const std::uint32_t rva : image.Relocations()) Require(inside(rva, 4));
  if (image.FunctionCount() != 0) {
    Require(inside(image.FunctionTableRva(), 8 * image.FunctionCount()));
  }
}

// A program that is not to be moved may be for where nothing can be.
std::unique_ptr<emulator::LoadedImage> Load(const PeImage& image) {
  constexpr std::uint32_t kOtherBase = 0x20000000;
  if (image.Relocatable())
    return std::make_unique<emulator::LoadedImage>(image, kOtherBase, "image");
  try {
    return std::make_unique<emulator::LoadedImage>(image, image.PreferredBase(), "image");
  } catch (const BadImage&) {
    return nullptr;
  }
}

void CheckLoaded(const PeImage& image) {
  const auto loaded = Load(image);
  if (loaded == nullptr) return;
  loaded->Fill();
  for (const emulator::ImageImport& import : image.Imports()) {
    loaded->SetWord(import.slot_rva, 0x12345678);
    Require(loaded->Word(import.slot_rva) == 0x12345678);
  }
  for (const emulator::ImageSection& section : image.Sections()) {
    Require(loaded->At(section.rva, section.bytes) != nullptr);
  }
  loaded->FunctionTableFault();
}

std::optional<PeImage> Parse(const std::vector<std::uint8_t>& file, ImageKind kind) {
  try {
    return PeImage::Parse(file, kind);
  } catch (const BadImage& error) {
    Require(!std::string_view(error.what()).empty());
    return std::nullopt;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::vector<std::uint8_t> file(data, data + size);
  for (const ImageKind kind : {ImageKind::Library, ImageKind::Program}) {
    const std::optional<PeImage> image = Parse(file, kind);
    if (!image) continue;
    CheckInside(*image);
    CheckLoaded(*image);
  }
  return 0;
}
