#include "device/ceimage/coff_object.h"

namespace ceimage {
namespace {

constexpr std::uint32_t kHeaderBytes = 20;
constexpr std::uint32_t kSectionBytes = 40;
constexpr std::uint32_t kRelocationBytes = 10;
constexpr std::uint32_t kLongestName = 8;  // a longer one is in the string table

std::uint32_t Size(const Bytes& bytes) { return static_cast<std::uint32_t>(bytes.size()); }
std::uint32_t RelocationBytes(const ObjectSection& section) {
  return kRelocationBytes * static_cast<std::uint32_t>(section.relocations.size());
}

// Returns where the contents end.
std::uint32_t AppendSectionHeaders(Bytes& bytes, const std::vector<ObjectSection>& sections) {
  auto position = kHeaderBytes + kSectionBytes * static_cast<std::uint32_t>(sections.size());
  for (const ObjectSection& section : sections) {
    const std::uint32_t content = Size(section.content);
    AppendText(bytes, section.name, kLongestName);
    Append32(bytes, 0);  // place and size in memory are an image's
    Append32(bytes, 0);
    Append32(bytes, content);
    Append32(bytes, position);
    Append32(bytes, section.relocations.empty() ? 0 : position + content);
    Append32(bytes, 0);  // no line numbers
    Append16(bytes, static_cast<std::uint32_t>(section.relocations.size()));
    Append16(bytes, 0);
    Append32(bytes, section.flags);
    position += content + RelocationBytes(section);
  }
  return position;
}

void AppendContents(Bytes& bytes, const std::vector<ObjectSection>& sections) {
  constexpr std::uint32_t kOffsetInImage = 2;
  for (const ObjectSection& section : sections) {
    Append(bytes, section.content);
    for (const ObjectRelocation& relocation : section.relocations) {
      Append32(bytes, relocation.offset);
      Append32(bytes, relocation.symbol);
      Append16(bytes, kOffsetInImage);
    }
  }
}

void AppendSymbols(Bytes& bytes, const std::vector<ObjectSymbol>& symbols) {
  Bytes texts(4);  // their size with this word
  for (const ObjectSymbol& symbol : symbols) {
    if (symbol.name.size() <= kLongestName) {
      AppendText(bytes, symbol.name, kLongestName);
    } else {
      Append32(bytes, 0);
      Append32(bytes, Size(texts));
      AppendText(texts, symbol.name, symbol.name.size() + 1);
    }
    Append32(bytes, 0);
    Append16(bytes, symbol.section);
    Append16(bytes, 0);
    bytes.push_back(static_cast<std::uint8_t>(symbol.storage));
    bytes.push_back(0);
  }
  Put32(texts, 0, Size(texts));
  Append(bytes, texts);
}

}  // namespace

Bytes EncodeObject(std::uint16_t machine, const std::vector<ObjectSection>& sections,
                   const std::vector<ObjectSymbol>& symbols) {
  constexpr std::uint32_t k32Bits = 0x0100;
  Bytes headers;
  const std::uint32_t symbol_table = AppendSectionHeaders(headers, sections);
  Bytes bytes;
  Append16(bytes, machine);
  Append16(bytes, static_cast<std::uint32_t>(sections.size()));
  Append32(bytes, 0);  // no time: the same names give the same library
  Append32(bytes, symbol_table);
  Append32(bytes, static_cast<std::uint32_t>(symbols.size()));
  Append16(bytes, 0);
  Append16(bytes, k32Bits);
  Append(bytes, headers);
  AppendContents(bytes, sections);
  AppendSymbols(bytes, symbols);
  return bytes;
}

}  // namespace ceimage
