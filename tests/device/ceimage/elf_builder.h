// Small linked ELF files and resource files, made from bytes.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "device/ceimage/bytes.h"

namespace ceimage {

inline constexpr std::uint32_t kTestBase = 0x10000000;

inline constexpr std::uint32_t kFlagsCode = 6;  // takes memory, holds code
inline constexpr std::uint32_t kFlagsRead = 2;  // takes memory
inline constexpr std::uint32_t kFlagsData = 3;  // takes memory, is written

// Words as they lie in memory.
Bytes Words(const std::vector<std::uint32_t>& words);

class ElfBuilder {
 public:
  struct Section {
    std::string name;
    std::uint32_t flags = 0;
    std::uint32_t address = 0;
    Bytes content;
    std::uint32_t zeros = 0;  // when there is no content
    std::uint32_t type = 0;   // 0: as the content says
  };
  struct Symbol {
    std::string name;
    std::uint32_t value = 0;
    std::uint32_t size = 0;
    std::uint8_t type = 0;
    bool defined = true;
  };
  struct Relocation {
    std::string section;
    std::uint32_t address = 0;
    std::uint8_t type = 0;
  };

  Section& Get(const std::string& name);
  Symbol& GetSymbol(const std::string& name);
  Bytes Build() const;

  std::uint32_t entry = 0;
  std::vector<Section> sections;
  std::vector<Symbol> symbols;
  std::vector<Relocation> relocations;
  std::uint32_t relocation_type = 9;  // of the sections that hold the relocations
  std::uint16_t machine = 40;
  std::uint16_t kind = 2;
};

// A library with one of everything: an address in code and one in data, a call, tables with an
// import and two exports, zeros, the shared word.
ElfBuilder SmallLibrary();

// A resource file with these entries of 5 bytes each; a name of 0 is a text.
struct TestResource {
  std::uint16_t type = 0;
  std::uint16_t name = 0;
  std::uint16_t language = 0;
};
Bytes ResourceFile(const std::vector<TestResource>& resources);

}  // namespace ceimage
