// An object file (COFF), as a linker reads it, made of sections and symbols.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "device/ceimage/bytes.h"

namespace ceimage {

// A word that becomes the offset of a symbol in the image (IMAGE_REL_ARM_ADDR32NB).
struct ObjectRelocation {
  std::uint32_t offset = 0;
  std::uint32_t symbol = 0;  // its place among the object's symbols
};

struct ObjectSection {
  std::string name;  // of 8 characters at most
  std::uint32_t flags = 0;
  Bytes content;
  std::vector<ObjectRelocation> relocations;
};

enum class Storage : std::uint8_t { kExternal = 2, kStatic = 3, kSection = 0x68 };

struct ObjectSymbol {
  std::string name;
  std::uint16_t section = 0;  // from 1; 0: another object has it
  Storage storage = Storage::kExternal;
};

Bytes EncodeObject(std::uint16_t machine, const std::vector<ObjectSection>& sections,
                   const std::vector<ObjectSymbol>& symbols);

}  // namespace ceimage
