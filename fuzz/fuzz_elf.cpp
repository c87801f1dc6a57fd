// Any bytes as a linked file that an image is to be made of: it is refused in words, or the image
// is one that the emulated device reads.
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "device/ceimage/elf_file.h"
#include "device/ceimage/import_library.h"
#include "device/ceimage/pe_image.h"
#include "device/emulator/pe_image.h"
#include "fuzz/require.h"

namespace {

using fuzz::Require;

void Check(ceimage::ByteView file, ceimage::Kind kind, emulator::ImageKind read_as) {
  try {
    const ceimage::ElfFile elf = ceimage::ReadElf(file);
    const ceimage::Bytes made = ceimage::MakeImage(elf, {}, ceimage::kMachineArm, kind);
    const auto image = emulator::PeImage::Parse(made, read_as);
    if (kind == ceimage::Kind::Program) return;
    const ceimage::Exports exports = ceimage::FindExports(elf);
    Require(exports.names.size() == image.Exports().size());
    for (const std::string& name : exports.names) Require(image.Exports().contains(name));
  } catch (const ceimage::Refusal& refusal) {
    Require(!std::string_view(refusal.what()).empty());
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const ceimage::ByteView file(data, size);
  Check(file, ceimage::Kind::Library, emulator::ImageKind::Library);
  Check(file, ceimage::Kind::Program, emulator::ImageKind::Program);
  return 0;
}
