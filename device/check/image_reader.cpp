#include "device/check/image_reader.h"

namespace check {
namespace {

constexpr std::uint32_t kSignature = 0x00004550;
constexpr std::uint32_t kOptionalHeader = 24;
constexpr std::uint32_t kExportDirectory = kOptionalHeader + 96;
constexpr std::uint32_t kImportDirectory = kExportDirectory + 8;
constexpr std::uint32_t kDescriptorBytes = 20;
constexpr std::uint32_t kSectionBytes = 40;
constexpr std::uint32_t kByNumber = 0x80000000;
constexpr std::uint32_t kSharedAndWritable = 0x90000000;

bool Same(const char* one, const char* other) {
  while (*one != 0 && *one == *other) {
    ++one;
    ++other;
  }
  return *one == *other;
}

}  // namespace

std::uint32_t ImageReader::Half(std::uint32_t position) const {
  if (bytes_ < 2 || position > bytes_ - 2) return 0;
  return file_[position] | static_cast<std::uint32_t>(file_[position + 1]) << 8;
}

std::uint32_t ImageReader::Word(std::uint32_t position) const {
  if (bytes_ < 4 || position > bytes_ - 4) return 0;
  return Half(position) | Half(position + 2) << 16;
}

std::uint32_t ImageReader::Header() const {
  constexpr std::uint32_t kPointer = 0x3C;
  return Word(kPointer);
}

bool ImageReader::ReadFacts(ImageFacts& facts) const {
  constexpr std::uint32_t kMachine = 4;
  constexpr std::uint32_t kBase = kOptionalHeader + 28;
  const std::uint32_t header = Header();
  if (header > bytes_ || Word(header) != kSignature) return false;
  facts = {Half(header + kMachine), Word(header + kBase)};
  return true;
}

std::uint32_t ImageReader::SectionHeader(std::uint32_t index) const {
  const std::uint32_t header = Header();
  if (index >= Half(header + 6)) return 0;
  return header + kOptionalHeader + Half(header + 20) + index * kSectionBytes;
}

std::uint32_t ImageReader::Position(std::uint32_t offset) const {
  std::uint32_t section = 0;
  for (std::uint32_t i = 0; (section = SectionHeader(i)) != 0; ++i) {
    const std::uint32_t begin = Word(section + 12);
    const std::uint32_t file_bytes = Word(section + 16);
    if (offset >= begin && offset - begin < file_bytes) return Word(section + 20) + offset - begin;
  }
  return 0;
}

std::uint32_t ImageReader::SharedOffset() const {
  std::uint32_t section = 0;
  for (std::uint32_t i = 0; (section = SectionHeader(i)) != 0; ++i) {
    if ((Word(section + 36) & kSharedAndWritable) == kSharedAndWritable) return Word(section + 12);
  }
  return 0;
}

std::uint32_t ImageReader::ExportOffset(const char* name) const {
  const std::uint32_t directory = Position(Word(Header() + kExportDirectory));
  if (directory == 0) return 0;
  const std::uint32_t functions = Position(Word(directory + 28));
  const std::uint32_t names = Position(Word(directory + 32));
  const std::uint32_t ordinals = Position(Word(directory + 36));
  const std::uint32_t count = Word(directory + 24);
  for (std::uint32_t i = 0; i < count && i < bytes_; ++i) {
    const char* const text = TextAt(Word(names + i * 4));
    if (text != nullptr && Same(text, name)) return Word(functions + Half(ordinals + i * 2) * 4);
  }
  return 0;
}

const char* ImageReader::TextAt(std::uint32_t offset) const {
  const std::uint32_t position = Position(offset);
  if (position == 0) return nullptr;
  for (std::uint32_t end = position; end < bytes_; ++end) {
    if (file_[end] == 0) return reinterpret_cast<const char*>(file_ + position);
  }
  return nullptr;
}

bool ImageReader::Next(const char*& library, const char*& name, std::uint32_t& number) {
  const std::uint32_t header = Header();
  if (header > bytes_ || Word(header) != kSignature) return false;
  const std::uint32_t directory = Position(Word(header + kImportDirectory));
  if (directory == 0) return false;
  for (;; ++library_, import_ = 0) {
    const std::uint32_t descriptor = directory + library_ * kDescriptorBytes;
    library = TextAt(Word(descriptor + 12));
    if (Word(descriptor + 12) == 0 || library == nullptr) return false;
    const std::uint32_t names = Position(Word(descriptor));
    const std::uint32_t entry = names == 0 ? 0 : Word(names + import_ * 4);
    if (entry == 0) continue;
    ++import_;
    const bool by_number = (entry & kByNumber) != 0;
    number = entry & ~kByNumber;
    name = by_number ? nullptr : TextAt(entry + 2);
    return by_number || name != nullptr;
  }
}

}  // namespace check
