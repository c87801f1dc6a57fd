// The image: a PE32 library or program for Windows CE on ARM.
#pragma once

#include <cstdint>
#include <vector>

#include "device/ceimage/bytes.h"
#include "device/ceimage/elf_file.h"
#include "device/ceimage/link_tables.h"
#include "device/ceimage/resources.h"

namespace ceimage {

// What the image says that its processor is. Both run ARM code; which of them a system asks for
// depends on how it was built.
inline constexpr std::uint16_t kMachineArm = 0x01C0;
inline constexpr std::uint16_t kMachineThumb = 0x01C2;

enum class Kind : std::uint8_t {
  Library,
  Program,  // exports nothing, and lies where the system puts every program: it is never moved
};

Bytes MakeImage(const ElfFile& elf, const std::vector<Resource>& resources, std::uint16_t machine,
                Kind kind = Kind::Library);

// What programs find in the image.
Exports FindExports(const ElfFile& elf);

// The base relocations for words at these offsets, which are in order.
Bytes EncodeFixups(const std::vector<std::uint32_t>& offsets);

}  // namespace ceimage
