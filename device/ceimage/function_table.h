// The table that the system unwinds the stack with (.pdata).
#pragma once

#include <cstdint>
#include <vector>

#include "device/ceimage/bytes.h"
#include "device/ceimage/elf_file.h"
#include "device/ceimage/image_sections.h"

namespace ceimage {

// A function from where it moves the stack. Before that, and where none is moved, there is no need
// of an entry: the caller is in LR.
struct FunctionEntry {
  std::uint32_t offset = 0;  // from the start of the image
  std::uint32_t instructions = 0;
  std::uint32_t prolog = 0;  // instructions at its start that save registers and make room
};

// By offset. Refuses Thumb code, overlapping functions, and functions that make room later on.
std::vector<FunctionEntry> FindFunctions(const ElfFile& elf, const Image& image);

// The table's bytes. The first word of each entry is an address, so it is a fixup of the image.
Bytes EncodeFunctions(const std::vector<FunctionEntry>& functions, std::uint32_t base);

}  // namespace ceimage
