#include "tests/device/emulator/toy_image.h"

#include <array>
#include <cstring>

namespace emulator {
namespace {

constexpr std::uint32_t kPage = 0x1000;

void PutText(std::vector<std::uint8_t>& bytes, std::size_t at, const std::string& text) {
  std::memcpy(&bytes[at], text.c_str(), text.size() + 1);
}

void PutHeaders(std::vector<std::uint8_t>& file, const ToyImage& toy) {
  const auto code_bytes = static_cast<std::uint32_t>(4 * toy.code.size());
  PutHalf(file, 0, 0x5A4D);
  PutWord(file, 0x3C, ToyImage::kPe);
  PutWord(file, ToyImage::kPe, 0x00004550);
  PutHalf(file, ToyImage::kCoff, toy.machine);
  PutHalf(file, ToyImage::kCoff + 2, 4);             // sections
  PutHalf(file, ToyImage::kCoff + 16, 96 + 16 * 8);  // bytes of the optional header
  PutHalf(file, ToyImage::kCoff + 18, toy.program ? 0x0002 : 0x2002);  // executable, DLL
  PutHalf(file, ToyImage::kOptional, 0x010B);
  PutWord(file, ToyImage::kOptional + 16, ToyImage::kCode);  // entry point
  PutWord(file, ToyImage::kOptional + 28, ToyImage::kBase);
  PutWord(file, ToyImage::kOptional + 32, kPage);
  PutWord(file, ToyImage::kOptional + 36, 0x200);
  PutWord(file, ToyImage::kOptional + 56, 5 * kPage);
  PutWord(file, ToyImage::kOptional + 60,
          static_cast<std::uint32_t>(ToyImage::InFile(ToyImage::kCode)));
  PutHalf(file, ToyImage::kOptional + 68, 9);   // Windows CE
  PutWord(file, ToyImage::kOptional + 92, 16);  // directories
  struct Section {
    const char* name;
    std::uint32_t rva;
    std::uint32_t bytes;
    std::uint32_t flags;
  };
  const std::uint32_t data_flags = 0xC0000040 | (toy.shared_data ? 0x10000000 : 0);
  const std::array<Section, 4> sections = {{{".text", ToyImage::kCode, code_bytes, 0x60000020},
                                            {".data", ToyImage::kData, kPage, data_flags},
                                            {".rdata", ToyImage::kTables, kPage, 0x40000040},
                                            {".reloc", ToyImage::kRelocations, kPage, 0x42000040}}};
  for (std::size_t i = 0; i < sections.size(); ++i) {
    const std::size_t at = ToyImage::kSections + 40 * i;
    PutText(file, at, sections[i].name);
    PutWord(file, at + 8, sections[i].bytes);
    PutWord(file, at + 12, sections[i].rva);
    PutWord(file, at + 16, kPage);
    PutWord(file, at + 20, static_cast<std::uint32_t>(ToyImage::InFile(sections[i].rva)));
    PutWord(file, at + 36, sections[i].flags);
  }
}

void PutDirectory(std::vector<std::uint8_t>& file, std::size_t index, std::uint32_t rva,
                  std::uint32_t bytes) {
  PutWord(file, ToyImage::kDirectories + 8 * index, rva);
  PutWord(file, ToyImage::kDirectories + 8 * index + 4, bytes);
}

// A descriptor, a lookup table of one entry and two texts each.
void PutImports(std::vector<std::uint8_t>& file, const std::vector<ToyImport>& imports) {
  std::uint32_t free = ToyImage::kTables + 0x200;
  for (std::uint32_t i = 0; i < imports.size(); ++i) {
    const std::size_t descriptor = ToyImage::InFile(ToyImage::kTables) + 20 * i;
    const std::uint32_t slot = ToyImage::kData + 8 * i;
    const std::uint32_t lookup = free;
    const std::uint32_t dll = free + 8;
    const std::uint32_t name = dll + 32;
    free = name + 56;
    const std::uint32_t entry = imports[i].name.empty() ? 0x80000000 | imports[i].ordinal : name;
    PutWord(file, descriptor, lookup);
    PutWord(file, descriptor + 12, dll);
    PutWord(file, descriptor + 16, slot);
    PutWord(file, ToyImage::InFile(lookup), entry);
    PutWord(file, ToyImage::InFile(slot), entry);
    PutText(file, ToyImage::InFile(dll), imports[i].dll);
    PutText(file, ToyImage::InFile(name) + 2, imports[i].name);
  }
  PutDirectory(file, 1, ToyImage::kTables, 0x200);
}

void PutExports(std::vector<std::uint8_t>& file,
                const std::map<std::string, std::uint32_t>& exports) {
  constexpr std::uint32_t kAt = ToyImage::kTables + 0x800;
  const std::uint32_t addresses = kAt + 0x40;
  const std::uint32_t names = kAt + 0x100;
  const std::uint32_t ordinals = kAt + 0x200;
  const auto count = static_cast<std::uint32_t>(exports.size());
  PutWord(file, ToyImage::InFile(kAt) + 20, count);
  PutWord(file, ToyImage::InFile(kAt) + 24, count);
  PutWord(file, ToyImage::InFile(kAt) + 28, addresses);
  PutWord(file, ToyImage::InFile(kAt) + 32, names);
  PutWord(file, ToyImage::InFile(kAt) + 36, ordinals);
  std::uint32_t text = kAt + 0x300;
  std::uint32_t i = 0;
  for (const auto& [name, offset] : exports) {
    PutWord(file, ToyImage::InFile(addresses) + 4 * i, ToyImage::kCode + offset);
    PutWord(file, ToyImage::InFile(names) + 4 * i, text);
    PutHalf(file, ToyImage::InFile(ordinals) + 2 * i, i);
    PutText(file, ToyImage::InFile(text), name);
    text += static_cast<std::uint32_t>(name.size()) + 1;
    ++i;
  }
  PutDirectory(file, 0, kAt, 0x700);
}

void PutRelocations(std::vector<std::uint8_t>& file, const std::vector<std::uint32_t>& words) {
  std::uint32_t at = ToyImage::kRelocations;
  for (const std::uint32_t rva : words) {  // a block each, the second half padding
    PutWord(file, ToyImage::InFile(at), rva / kPage * kPage);
    PutWord(file, ToyImage::InFile(at) + 4, 12);
    PutHalf(file, ToyImage::InFile(at) + 8, 0x3000 | rva % kPage);
    at += 12;
  }
  PutDirectory(file, 5, ToyImage::kRelocations, at - ToyImage::kRelocations);
}

}  // namespace

void PutHalf(std::vector<std::uint8_t>& bytes, std::size_t at, std::uint32_t value) {
  bytes.at(at) = static_cast<std::uint8_t>(value);
  bytes.at(at + 1) = static_cast<std::uint8_t>(value >> 8);
}

void PutWord(std::vector<std::uint8_t>& bytes, std::size_t at, std::uint32_t value) {
  PutHalf(bytes, at, value);
  PutHalf(bytes, at + 2, value >> 16);
}

std::vector<std::uint8_t> ToyImage::Bytes() const {
  std::vector<std::uint8_t> file(0x400 + 4 * kPage);
  PutHeaders(file, *this);
  for (std::size_t i = 0; i < code.size(); ++i) PutWord(file, InFile(kCode) + 4 * i, code[i]);
  PutWord(file, InFile(kWord), word);
  for (const auto& [rva, text] : texts) {
    for (std::size_t i = 0; i <= text.size(); ++i)
      PutHalf(file, InFile(rva) + 2 * i, text.c_str()[i]);
  }
  PutImports(file, imports);
  PutExports(file, exports);
  PutRelocations(file, relocations);
  return file;
}

}  // namespace emulator
