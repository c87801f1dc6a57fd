// The image's sections, made of the ELF file's.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "device/ceimage/bytes.h"
#include "device/ceimage/elf_file.h"

namespace ceimage {

inline constexpr std::uint32_t kPage = 0x1000;

// What a section is, as the image says it.
inline constexpr std::uint32_t kSectionCode = 0x20;
inline constexpr std::uint32_t kSectionData = 0x40;
inline constexpr std::uint32_t kSectionDiscardable = 0x02000000;
inline constexpr std::uint32_t kSectionShared = 0x10000000;
inline constexpr std::uint32_t kSectionExecutable = 0x20000000;
inline constexpr std::uint32_t kSectionReadable = 0x40000000;
inline constexpr std::uint32_t kSectionWritable = 0x80000000;

struct ImageSection {
  std::string name;
  std::uint32_t flags = 0;
  std::uint32_t offset = 0;  // from the start of the image in memory
  std::uint32_t size = 0;    // in memory: what the content lacks of it is zeros
  Bytes content;
};

// All addresses are base plus offset.
struct Image {
  std::uint32_t base = 0;
  std::vector<ImageSection> sections;
  std::vector<std::uint32_t> fixups;  // offsets of the words that hold addresses, in order

  std::uint32_t End() const;  // offset of the first byte past all sections
};

// The loaded sections and their fixups. Refuses sections and relocations that it does not know.
Image PlaceSections(const ElfFile& elf);

// Where the image's bytes at an offset are; refuses what no content of a section has.
ByteView ImageBytes(const Image& image, std::uint32_t offset, std::size_t size);
std::string ImageText(const Image& image, std::uint32_t offset);

// Whether a section of code has content there.
bool IsCode(const Image& image, std::uint32_t offset);

// Puts a section behind the others; none that is empty, which the system would not load.
void AppendSection(Image& image, const std::string& name, std::uint32_t flags, Bytes content);

}  // namespace ceimage
