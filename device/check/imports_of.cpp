#include "device/check/imports_of.h"

namespace check {
namespace {

constexpr std::uint32_t kSignature = 0x00004550;
constexpr std::uint32_t kOptionalHeader = 24;
constexpr std::uint32_t kImportDirectory = kOptionalHeader + 96 + 8;
constexpr std::uint32_t kDescriptorBytes = 20;
constexpr std::uint32_t kSectionBytes = 40;
constexpr std::uint32_t kByNumber = 0x80000000;

}  // namespace

std::uint32_t ImportReader::Half(std::uint32_t position) const {
  if (bytes_ < 2 || position > bytes_ - 2) return 0;
  return file_[position] | static_cast<std::uint32_t>(file_[position + 1]) << 8;
}

std::uint32_t ImportReader::Word(std::uint32_t position) const {
  if (bytes_ < 4 || position > bytes_ - 4) return 0;
  return Half(position) | Half(position + 2) << 16;
}

std::uint32_t ImportReader::Header() const {
  constexpr std::uint32_t kPointer = 0x3C;
  return Word(kPointer);
}

bool ImportReader::ReadFacts(ImageFacts& facts) const {
  constexpr std::uint32_t kMachine = 4;
  constexpr std::uint32_t kBase = kOptionalHeader + 28;
  const std::uint32_t header = Header();
  if (header > bytes_ || Word(header) != kSignature) return false;
  facts = {Half(header + kMachine), Word(header + kBase)};
  return true;
}

std::uint32_t ImportReader::Position(std::uint32_t offset) const {
  const std::uint32_t header = Header();
  const std::uint32_t count = Half(header + 6);
  const std::uint32_t first = header + kOptionalHeader + Half(header + 20);
  for (std::uint32_t i = 0; i < count; ++i) {
    const std::uint32_t section = first + i * kSectionBytes;
    const std::uint32_t begin = Word(section + 12);
    const std::uint32_t file_bytes = Word(section + 16);
    if (offset >= begin && offset - begin < file_bytes) return Word(section + 20) + offset - begin;
  }
  return 0;
}

const char* ImportReader::TextAt(std::uint32_t offset) const {
  const std::uint32_t position = Position(offset);
  if (position == 0) return nullptr;
  for (std::uint32_t end = position; end < bytes_; ++end) {
    if (file_[end] == 0) return reinterpret_cast<const char*>(file_ + position);
  }
  return nullptr;
}

bool ImportReader::Next(const char*& library, const char*& name, std::uint32_t& number) {
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
