// A linked ELF file for ARM, as far as an image is made of it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "device/ceimage/bytes.h"

namespace ceimage {

// Section flags.
inline constexpr std::uint32_t kElfWritable = 1;
inline constexpr std::uint32_t kElfExecutable = 4;

// Symbol types.
inline constexpr std::uint8_t kElfFunction = 2;

// Relocation types.
inline constexpr std::uint8_t kArmAbs32 = 2;    // a word that holds an address
inline constexpr std::uint8_t kArmCall = 28;    // BL; distances hold wherever the image is
inline constexpr std::uint8_t kArmJump24 = 29;  // B
inline constexpr std::uint8_t kArmV4Bx = 40;    // marks a BX

// A section that takes memory when loaded.
struct ElfSection {
  std::string name;
  std::uint32_t flags = 0;
  std::uint32_t address = 0;
  std::uint32_t size = 0;
  bool has_content = true;  // false: zeros that the file does not hold
  Bytes content;
};

struct ElfSymbol {
  std::string name;
  std::uint32_t value = 0;
  std::uint32_t size = 0;
  std::uint8_t type = 0;
  bool defined = false;
};

struct ElfRelocation {
  std::string section;  // which it is in
  std::uint32_t address = 0;
  std::uint8_t type = 0;
};

struct ElfFile {
  std::uint32_t entry = 0;
  std::vector<ElfSection> sections;  // by address
  std::vector<ElfSymbol> symbols;
  std::vector<ElfRelocation> relocations;  // of these sections, by address
};

// Refuses what is no linked ARM file with its relocations kept.
ElfFile ReadElf(ByteView file);

// The value of a defined symbol; refuses when there is none.
std::uint32_t SymbolValue(const ElfFile& elf, const std::string& name);

}  // namespace ceimage
