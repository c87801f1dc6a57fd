#include "device/ceimage/elf_file.h"

#include <algorithm>

namespace ceimage {
namespace {

constexpr std::uint32_t kMagic = 0x464C457F;
constexpr std::uint16_t kMachineArm = 40;
constexpr std::uint16_t kLinked = 2;

constexpr std::uint32_t kTypeContent = 1;
constexpr std::uint32_t kTypeSymbols = 2;
constexpr std::uint32_t kTypeRela = 4;
constexpr std::uint32_t kTypeZeros = 8;
constexpr std::uint32_t kTypeRel = 9;
constexpr std::uint32_t kAllocated = 2;

// Of all sections together; far more than the library has.
constexpr std::size_t kMostContent = std::size_t{16} << 20;
constexpr std::size_t kMostSymbols = std::size_t{1} << 16;
constexpr std::size_t kMostRelocations = std::size_t{1} << 20;

struct Header {
  std::string name;
  std::uint32_t type = 0;
  std::uint32_t flags = 0;
  std::uint32_t address = 0;
  std::uint32_t offset = 0;
  std::uint32_t size = 0;
  std::uint32_t link = 0;
  std::uint32_t info = 0;
};

ByteView Content(ByteView file, const Header& header) {
  return Part(file, header.offset, header.size);
}

void CheckKind(ByteView file) {
  constexpr std::uint8_t k32Bits = 1;
  constexpr std::uint8_t kLittleEndian = 1;
  if (file.size() < 52 || Get32(file, 0) != kMagic) throw Refusal("This is no ELF file.");
  if (Get8(file, 4) != k32Bits || Get8(file, 5) != kLittleEndian ||
      Get16(file, 18) != kMachineArm) {
    throw Refusal("This ELF file is not for little-endian 32-bit ARM.");
  }
  if (Get16(file, 16) != kLinked) throw Refusal("This ELF file is not linked.");
}

std::vector<Header> ReadHeaders(ByteView file) {
  constexpr std::size_t kHeaderBytes = 40;
  const std::size_t table = Get32(file, 32);
  const std::size_t count = Get16(file, 48);
  std::vector<Header> headers;
  std::vector<std::uint32_t> names;
  for (std::size_t i = 0; i < count; ++i) {
    const ByteView raw = Part(file, table + i * kHeaderBytes, kHeaderBytes);
    names.push_back(Get32(raw, 0));
    headers.push_back({"", Get32(raw, 4), Get32(raw, 8), Get32(raw, 12), Get32(raw, 16),
                       Get32(raw, 20), Get32(raw, 24), Get32(raw, 28)});
  }
  const std::size_t texts = Get16(file, 50);
  if (texts >= count) throw Refusal("The ELF file has no section names.");
  for (std::size_t i = 0; i < count; ++i) {
    headers[i].name = GetText(Content(file, headers[texts]), names[i]);
  }
  return headers;
}

std::vector<ElfSection> ReadSections(ByteView file, const std::vector<Header>& headers) {
  std::vector<ElfSection> sections;
  std::size_t bytes = 0;
  for (const Header& header : headers) {
    if ((header.flags & kAllocated) == 0 || header.size == 0) continue;
    ElfSection section = {
        header.name, header.flags, header.address, header.size, header.type == kTypeContent, {}};
    if (header.type == kTypeContent) {
      const ByteView content = Content(file, header);
      bytes += content.size();
      if (bytes > kMostContent) throw Refusal("The sections are too long.");
      section.content.assign(content.begin(), content.end());
    } else if (header.type != kTypeZeros) {
      throw Refusal("Section " + header.name + " has type " + std::to_string(header.type) +
                    ", which the image has no place for.");
    }
    sections.push_back(std::move(section));
  }
  std::sort(sections.begin(), sections.end(),
            [](const ElfSection& a, const ElfSection& b) { return a.address < b.address; });
  return sections;
}

std::vector<ElfSymbol> ReadSymbols(ByteView file, const std::vector<Header>& headers) {
  constexpr std::size_t kSymbolBytes = 16;
  std::vector<ElfSymbol> symbols;
  for (const Header& header : headers) {
    if (header.type != kTypeSymbols) continue;
    if (header.link >= headers.size()) throw Refusal("The symbols have no names.");
    const ByteView table = Content(file, header);
    const ByteView texts = Content(file, headers[header.link]);
    // The first symbol stands for none.
    for (std::size_t at = kSymbolBytes; at < table.size(); at += kSymbolBytes) {
      const ByteView raw = Part(table, at, kSymbolBytes);
      ElfSymbol symbol = {GetText(texts, Get32(raw, 0)), Get32(raw, 4), Get32(raw, 8),
                          static_cast<std::uint8_t>(Get8(raw, 12) & 0xF), Get16(raw, 14) != 0};
      if (!symbol.defined) throw Refusal("Symbol " + symbol.name + " is undefined.");
      if (symbols.size() == kMostSymbols) throw Refusal("There are too many symbols.");
      symbols.push_back(std::move(symbol));
    }
  }
  return symbols;
}

std::vector<ElfRelocation> ReadRelocations(ByteView file, const std::vector<Header>& headers) {
  constexpr std::size_t kRelocationBytes = 8;
  std::vector<ElfRelocation> relocations;
  for (const Header& header : headers) {
    if (header.type != kTypeRel && header.type != kTypeRela) continue;
    if (header.info >= headers.size()) throw Refusal(header.name + " is of no section.");
    const Header& target = headers[header.info];
    if ((target.flags & kAllocated) == 0) continue;
    if (header.type == kTypeRela) throw Refusal(header.name + ": relocations of an unknown form.");
    const ByteView table = Content(file, header);
    for (std::size_t at = 0; at < table.size(); at += kRelocationBytes) {
      const ByteView raw = Part(table, at, kRelocationBytes);
      if (relocations.size() == kMostRelocations) throw Refusal("There are too many relocations.");
      relocations.push_back({target.name, Get32(raw, 0), Get8(raw, 4)});
    }
  }
  if (relocations.empty()) {
    throw Refusal("The ELF file has no relocations: link it with --emit-relocs.");
  }
  std::sort(relocations.begin(), relocations.end(),
            [](const ElfRelocation& a, const ElfRelocation& b) { return a.address < b.address; });
  return relocations;
}

}  // namespace

ElfFile ReadElf(ByteView file) {
  CheckKind(file);
  const std::vector<Header> headers = ReadHeaders(file);
  return {Get32(file, 24), ReadSections(file, headers), ReadSymbols(file, headers),
          ReadRelocations(file, headers)};
}

std::uint32_t SymbolValue(const ElfFile& elf, const std::string& name) {
  for (const ElfSymbol& symbol : elf.symbols) {
    if (symbol.name == name) return symbol.value;
  }
  throw Refusal("There is no symbol " + name + ".");
}

}  // namespace ceimage
