// Images of a few instructions, put together byte by byte.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace emulator {

struct ToyImport {
  std::string dll;
  std::string name;           // empty: by ordinal
  std::uint32_t ordinal = 0;  // when there is no name
};

// Four sections of a page: code, data, tables, relocations.
struct ToyImage {
  static constexpr std::uint32_t kBase = 0x10000000;
  static constexpr std::uint32_t kCode = 0x1000;
  static constexpr std::uint32_t kData = 0x2000;  // slot i at 8 * i
  static constexpr std::uint32_t kWord = 0x2100;  // a word of data
  static constexpr std::uint32_t kTables = 0x3000;
  static constexpr std::uint32_t kRelocations = 0x4000;
  // Where the file's headers are.
  static constexpr std::size_t kPe = 0x80;
  static constexpr std::size_t kCoff = kPe + 4;
  static constexpr std::size_t kOptional = kCoff + 20;
  static constexpr std::size_t kDirectories = kOptional + 96;
  static constexpr std::size_t kSections = kOptional + 96 + 16 * 8;
  // Where the file has a section's content.
  static constexpr std::size_t InFile(std::uint32_t rva) { return rva - kCode + 0x400; }

  std::vector<std::uint32_t> code;
  std::uint32_t word = 0;  // at kWord
  bool program = false;    // an EXE
  std::uint16_t machine = 0x01C0;
  std::uint32_t base = kBase;  // as the header has it; relocated words are those for kBase
  bool shared_data = false;    // the section of the data is one memory for all processes
  std::map<std::uint32_t, std::u16string> texts;  // by RVA, in the data
  std::map<std::string, std::uint32_t> exports;   // name to offset in the code
  std::vector<ToyImport> imports;
  std::vector<std::uint32_t> relocations;  // RVAs, in one page after the other

  std::vector<std::uint8_t> Bytes() const;
};

void PutHalf(std::vector<std::uint8_t>& bytes, std::size_t at, std::uint32_t value);
void PutWord(std::vector<std::uint8_t>& bytes, std::size_t at, std::uint32_t value);

}  // namespace emulator
