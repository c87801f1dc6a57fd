#include "device/emulator/loaded_image.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "sim/text.h"

namespace emulator {

LoadedImage::LoadedImage(PeImage file, std::uint32_t base, std::string name,
                         const SharedPages& shared)
    : file_(std::move(file)), base_(base), name_(std::move(name)), pages_(file_.Bytes()) {
  constexpr std::uint32_t kGranule = 0x10000;
  if (base_ % kGranule != 0 || base_ < kLeastImageBase || base_ >= kImageLimit ||
      file_.Bytes() > kImageLimit - base_) {
    throw BadImage("the image cannot be loaded at " + sim::Hex(base_, 8));
  }
  for (std::size_t i = 0; i < file_.Sections().size(); ++i) {
    const ImageSection& section = file_.Sections()[i];
    shared_.push_back(section.shared && shared ? shared(i) : nullptr);
    std::uint8_t* const host =
        shared_[i] == nullptr ? pages_.Data() + section.rva : shared_[i]->Data();
    sections_.push_back(
        {{base_ + section.rva, section.bytes, host, section.writable}, section.executable});
  }
}

void LoadedImage::Fill(std::optional<std::size_t> without) {
  const std::vector<std::uint8_t> memory = file_.At(base_, without);
  std::memcpy(pages_.Data(), memory.data(), memory.size());
}

std::uint8_t* LoadedImage::At(std::uint32_t rva, std::uint32_t bytes) const {
  for (const MappedSection& section : sections_) {
    if (section.extent.Holds(base_ + rva, bytes)) {
      return section.extent.host + (base_ + rva - section.extent.address);
    }
  }
  throw BadImage(name_ + " has nothing at " + sim::Hex(rva, 4));
}

std::uint32_t LoadedImage::Word(std::uint32_t rva) const {
  std::uint32_t value = 0;
  std::memcpy(&value, At(rva, sizeof(value)), sizeof(value));
  return value;
}

void LoadedImage::SetWord(std::uint32_t rva, std::uint32_t value) {
  std::memcpy(At(rva, sizeof(value)), &value, sizeof(value));
}

std::optional<std::string> LoadedImage::FunctionTableFault() const {
  constexpr std::uint32_t kEntryBytes = 8;
  constexpr std::uint32_t kPrologBits = 8;
  constexpr std::uint32_t kPrologMask = (1u << kPrologBits) - 1;
  constexpr std::uint32_t k32BitInstructions = 1u << 30;
  constexpr std::uint32_t kLengthMask = (1u << 22) - 1;
  std::uint32_t end = 0;  // of the function before
  for (std::uint32_t i = 0; i < file_.FunctionCount(); ++i) {
    const std::uint32_t rva = file_.FunctionTableRva() + i * kEntryBytes;
    const std::uint32_t begin = Word(rva);
    const std::uint32_t packed = Word(rva + 4);
    const std::uint32_t bytes = 4 * (packed >> kPrologBits & kLengthMask);
    const bool sound =
        (packed & k32BitInstructions) != 0 && begin % 4 == 0 && 4 * (packed & kPrologMask) <= bytes;
    const bool code = std::any_of(sections_.begin(), sections_.end(), [=](const auto& section) {
      return section.executable && section.extent.Holds(begin, bytes);
    });
    if (!code || !sound || bytes == 0 || begin < end) {
      return "entry " + std::to_string(i) + " of the function table: " + std::to_string(bytes) +
             " bytes at " +
             (Holds(begin) ? name_ + '+' + sim::Hex(begin - base_, 4) : sim::Hex(begin, 8));
    }
    end = begin + bytes;
  }
  return std::nullopt;
}

}  // namespace emulator
