#include "device/ceimage/image_sections.h"

#include <algorithm>
#include <array>

namespace ceimage {
namespace {

// Where a section of the ELF file goes.
struct Place {
  const char* elf_name;
  const char* image_name;
  std::uint32_t flags;
  bool holds_offsets;  // its words are offsets into the image, not addresses
};

constexpr std::uint32_t kText = kSectionCode | kSectionExecutable | kSectionReadable;
constexpr std::uint32_t kData = kSectionData | kSectionReadable | kSectionWritable;
constexpr std::array kPlaces = {
    Place{".text", ".text", kText, false},
    Place{".tables", ".text", kText, true},
    Place{".iat", ".data", kData, true},
    Place{".data", ".data", kData, false},
    Place{".bss", ".data", kData, false},
    Place{".shared", ".shared", kData | kSectionShared, false},
};

// Half of what a process of this system has for all that it loads.
constexpr std::uint32_t kMostImage = 16u << 20;
// Addresses above are the system's own.
constexpr std::uint32_t kAddressLimit = 0x80000000;

const Place& FindPlace(const std::string& name) {
  const auto* const place = std::find_if(kPlaces.begin(), kPlaces.end(),
                                         [&](const Place& p) { return p.elf_name == name; });
  if (place == kPlaces.end()) throw Refusal("The image has no place for section " + name + ".");
  return *place;
}

void CheckFlags(const ElfSection& section, const Place& place) {
  const bool writable = (place.flags & kSectionWritable) != 0;
  if (!writable && (section.flags & kElfWritable) != 0) {
    throw Refusal("Section " + section.name + " is writable.");
  }
  if (writable && (section.flags & kElfExecutable) != 0) {
    throw Refusal("Section " + section.name + " holds code.");
  }
}

void Place1(Image& image, const ElfSection& elf) {
  const Place& place = FindPlace(elf.name);
  CheckFlags(elf, place);
  const std::uint32_t offset = elf.address - image.base;
  if (elf.address < image.base + kPage || offset > kMostImage || elf.size > kMostImage - offset) {
    throw Refusal("Section " + elf.name + " at " + Hex(elf.address) + " is out of range.");
  }
  if (image.sections.empty() || image.sections.back().name != place.image_name) {
    if (offset % kPage != 0) {
      throw Refusal("Section " + elf.name + " does not begin at a page: " + Hex(elf.address) + ".");
    }
    if (offset != (image.sections.empty() ? kPage : AlignUp(image.End(), kPage))) {
      throw Refusal("There is a gap before section " + elf.name + ", or it overlaps another.");
    }
    image.sections.push_back({place.image_name, place.flags, offset, 0, {}});
  }
  ImageSection& section = image.sections.back();
  if (offset < section.offset + section.size) {
    throw Refusal("Section " + elf.name + " overlaps the one before.");
  }
  if (elf.has_content) {
    if (section.content.size() < section.size) {
      throw Refusal("Section " + elf.name + " lies behind zeros that the file does not hold.");
    }
    section.content.resize(offset - section.offset);
    Append(section.content, elf.content);
  }
  section.size = offset - section.offset + elf.size;
}

// What a relocation of an image asks of the system's loader: true when the word must be moved.
bool IsFixup(const Image& image, const ElfRelocation& relocation) {
  const std::string where = "at " + Hex(relocation.address) + " in " + relocation.section;
  switch (relocation.type) {
    case kArmCall:
    case kArmJump24:
    case kArmV4Bx:
      return false;
    case kArmAbs32:
      break;
    default:
      throw Refusal("Relocation type " + std::to_string(relocation.type) + " " + where +
                    " is unknown.");
  }
  const std::uint32_t offset = relocation.address - image.base;
  if (offset % 4 != 0) throw Refusal("The address " + where + " is not at a whole word.");
  const std::uint32_t value = Get32(ImageBytes(image, offset, 4), 0);
  if (FindPlace(relocation.section).holds_offsets) {
    if (value >= image.End()) {
      throw Refusal("The offset " + Hex(value) + " " + where + " is out of range.");
    }
    return false;
  }
  if (value < image.base || value - image.base > image.End()) {
    throw Refusal("The address " + Hex(value) + " " + where + " is out of range.");
  }
  return true;
}

}  // namespace

std::uint32_t Image::End() const {
  return sections.empty() ? 0 : sections.back().offset + sections.back().size;
}

Image PlaceSections(const ElfFile& elf) {
  Image image;
  image.base = SymbolValue(elf, "image_base");
  if (image.base % 0x10000 != 0) throw Refusal("The base " + Hex(image.base) + " is not at 64 KB.");
  if (image.base == 0 || image.base > kAddressLimit - kMostImage) {
    throw Refusal("The base " + Hex(image.base) + " is no address that a process has.");
  }
  for (const ElfSection& section : elf.sections) Place1(image, section);
  for (std::size_t i = 0; i < image.sections.size(); ++i) {
    for (std::size_t j = 0; j < i; ++j) {
      if (image.sections[i].name == image.sections[j].name) {
        throw Refusal("The parts of " + image.sections[i].name + " do not lie together.");
      }
    }
  }
  for (const ElfRelocation& relocation : elf.relocations) {
    if (!IsFixup(image, relocation)) continue;
    const std::uint32_t offset = relocation.address - image.base;
    // In order, since the relocations are. The loader would move the word twice.
    if (!image.fixups.empty() && image.fixups.back() == offset) {
      throw Refusal("There are two relocations at " + Hex(relocation.address) + ".");
    }
    image.fixups.push_back(offset);
  }
  return image;
}

namespace {

const ImageSection* SectionWithContent(const Image& image, std::uint32_t offset) {
  for (const ImageSection& section : image.sections) {
    if (offset >= section.offset && offset - section.offset < section.content.size()) {
      return &section;
    }
  }
  return nullptr;
}

}  // namespace

ByteView ImageBytes(const Image& image, std::uint32_t offset, std::size_t size) {
  const ImageSection* const section = SectionWithContent(image, offset);
  if (section != nullptr) return Part(section->content, offset - section->offset, size);
  throw Refusal("The offset " + Hex(offset) + " is out of range: no section has content there.");
}

std::string ImageText(const Image& image, std::uint32_t offset) {
  const ImageSection* const section = SectionWithContent(image, offset);
  if (section != nullptr) return GetText(section->content, offset - section->offset);
  throw Refusal("The offset " + Hex(offset) + " is out of range: no text there.");
}

bool IsCode(const Image& image, std::uint32_t offset) {
  const ImageSection* const section = SectionWithContent(image, offset);
  return section != nullptr && (section->flags & kSectionExecutable) != 0;
}

void AppendSection(Image& image, const std::string& name, std::uint32_t flags, Bytes content) {
  if (content.empty()) return;
  const std::uint32_t offset = AlignUp(image.End(), kPage);
  if (content.size() > kMostImage - offset) throw Refusal("The image is too long.");
  const auto size = static_cast<std::uint32_t>(content.size());
  image.sections.push_back({name, flags, offset, size, std::move(content)});
}

}  // namespace ceimage
