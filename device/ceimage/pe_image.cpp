#include "device/ceimage/pe_image.h"

#include <algorithm>
#include <array>

#include "device/ceimage/function_table.h"
#include "device/ceimage/image_sections.h"
#include "device/ceimage/link_tables.h"

namespace ceimage {
namespace {

constexpr std::uint32_t kFileAlignment = 0x200;
constexpr std::uint32_t kProgramBase = 0x10000;

enum DirectoryIndex : std::size_t {
  kExports = 0,
  kImports = 1,
  kResources = 2,
  kExceptions = 3,
  kRelocations = 5,
  kImportAddresses = 12,
  kDirectories = 16,
};
using Directories = std::array<Directory, kDirectories>;

Directory BetweenSymbols(const ElfFile& elf, const Image& image, const std::string& name) {
  const std::uint32_t begin = SymbolValue(elf, name);
  const std::uint32_t end = SymbolValue(elf, name + "_end");
  if (end <= begin) throw Refusal("The table " + name + " is empty.");
  ImageBytes(image, begin - image.base, end - begin);
  return {begin - image.base, end - begin};
}

// Nothing when there is none.
Directory WholeSection(const Image& image, const std::string& name) {
  for (const ImageSection& section : image.sections) {
    if (section.name == name) return {section.offset, section.size};
  }
  return {};
}

Directories FillImage(Image& image, const ElfFile& elf, const std::vector<Resource>& resources,
                      Kind kind) {
  constexpr std::uint32_t kReadOnly = kSectionData | kSectionReadable;
  const std::vector<FunctionEntry> functions = FindFunctions(elf, image);
  const std::uint32_t table = AlignUp(image.End(), kPage);
  AppendSection(image, ".pdata", kReadOnly, EncodeFunctions(functions, image.base));
  constexpr std::uint32_t kFunctionBytes = 8;
  for (std::uint32_t i = 0; i < functions.size(); ++i) {
    image.fixups.push_back(table + i * kFunctionBytes);
  }
  AppendSection(image, ".rsrc", kReadOnly, EncodeResources(resources, AlignUp(image.End(), kPage)));
  const bool library = kind == Kind::Library;
  if (library)
    AppendSection(image, ".reloc", kReadOnly | kSectionDiscardable, EncodeFixups(image.fixups));

  Directories directories;
  if (library) directories[kExports] = BetweenSymbols(elf, image, "export_directory");
  directories[kImports] = BetweenSymbols(elf, image, "import_directory");
  directories[kResources] = WholeSection(image, ".rsrc");
  directories[kExceptions] = WholeSection(image, ".pdata");
  directories[kRelocations] = WholeSection(image, ".reloc");
  directories[kImportAddresses] = BetweenSymbols(elf, image, "import_addresses");
  if (library) ReadExports(image, directories[kExports]);
  CheckImports(image, directories[kImports], directories[kImportAddresses]);
  return directories;
}

std::uint32_t SizeOf(const Image& image, std::uint32_t kind) {
  std::uint32_t size = 0;
  for (const ImageSection& section : image.sections) {
    if ((section.flags & kind) != 0) {
      size += AlignUp(static_cast<std::uint32_t>(section.content.size()), kFileAlignment);
    }
  }
  return size;
}

std::uint32_t FirstOffset(const Image& image, std::uint32_t kind) {
  for (const ImageSection& section : image.sections) {
    if ((section.flags & kind) != 0) return section.offset;
  }
  return 0;
}

void AppendFileHeader(Bytes& bytes, const Image& image, std::uint16_t machine, Kind kind) {
  constexpr std::uint32_t kOptionalHeaderBytes = 96 + 8 * kDirectories;
  // Runnable, no line numbers and local symbols, 32 bits; and a library, or not to be moved.
  constexpr std::uint32_t kBoth = 0x0002 | 0x0004 | 0x0008 | 0x0100;
  const std::uint32_t characteristics = kBoth | (kind == Kind::Library ? 0x2000u : 0x0001u);
  AppendText(bytes, "PE", 4);
  Append16(bytes, machine);
  Append16(bytes, static_cast<std::uint32_t>(image.sections.size()));
  Append32(bytes, 0);  // no time: the same sources give the same image
  Append32(bytes, 0);
  Append32(bytes, 0);
  Append16(bytes, kOptionalHeaderBytes);
  Append16(bytes, characteristics);
}

void AppendOptionalHeader(Bytes& bytes, const Image& image, std::uint32_t entry,
                          std::uint32_t header_bytes, const Directories& directories) {
  constexpr std::uint32_t kMagicPe32 = 0x010B;
  constexpr std::uint32_t kSubsystemCe = 9;
  constexpr std::uint32_t kSystemMajor = 5;
  Append16(bytes, kMagicPe32);
  Append16(bytes, 0);  // the linker's version
  Append32(bytes, SizeOf(image, kSectionCode));
  Append32(bytes, SizeOf(image, kSectionData));
  Append32(bytes, 0);  // there are no sections of zeros alone
  Append32(bytes, entry);
  Append32(bytes, FirstOffset(image, kSectionCode));
  Append32(bytes, FirstOffset(image, kSectionData));
  Append32(bytes, image.base);
  Append32(bytes, kPage);
  Append32(bytes, kFileAlignment);
  for (int i = 0; i < 3; ++i) {  // of the system, of the image, of the subsystem
    Append16(bytes, i == 1 ? 0 : kSystemMajor);
    Append16(bytes, 0);
  }
  Append32(bytes, 0);
  Append32(bytes, AlignUp(image.End(), kPage));
  Append32(bytes, header_bytes);
  Append32(bytes, 0);  // a check sum is for drivers
  Append16(bytes, kSubsystemCe);
  Append16(bytes, 0);
  Append32(bytes, 0x10000);  // stack of a program's first thread
  Append32(bytes, kPage);
  Append32(bytes, 0x100000);  // heap of a program
  Append32(bytes, kPage);
  Append32(bytes, 0);
  Append32(bytes, kDirectories);
  for (const Directory& directory : directories) {
    Append32(bytes, directory.offset);
    Append32(bytes, directory.size);
  }
}

void AppendSectionHeaders(Bytes& bytes, const Image& image, std::uint32_t header_bytes) {
  std::uint32_t position = header_bytes;
  for (const ImageSection& section : image.sections) {
    const std::uint32_t file_bytes =
        AlignUp(static_cast<std::uint32_t>(section.content.size()), kFileAlignment);
    AppendText(bytes, section.name, 8);
    Append32(bytes, section.size);
    Append32(bytes, section.offset);
    Append32(bytes, file_bytes);
    Append32(bytes, file_bytes == 0 ? 0 : position);
    for (int i = 0; i < 3; ++i) Append32(bytes, 0);  // relocations and line numbers of objects
    Append32(bytes, section.flags);
    position += file_bytes;
  }
}

}  // namespace

Exports FindExports(const ElfFile& elf) {
  const Image image = PlaceSections(elf);
  return ReadExports(image, BetweenSymbols(elf, image, "export_directory"));
}

Bytes EncodeFixups(const std::vector<std::uint32_t>& offsets) {
  constexpr std::uint32_t kWholeWord = 3u << 12;
  Bytes bytes;
  for (std::size_t i = 0; i < offsets.size();) {
    const std::uint32_t page = offsets[i] / kPage * kPage;
    const std::size_t block = bytes.size();
    Append32(bytes, page);
    Append32(bytes, 0);
    for (; i < offsets.size() && offsets[i] / kPage * kPage == page; ++i) {
      Append16(bytes, kWholeWord | (offsets[i] - page));
    }
    Align(bytes, 4);  // with an entry that does nothing
    Put32(bytes, block + 4, static_cast<std::uint32_t>(bytes.size() - block));
  }
  return bytes;
}

Bytes MakeImage(const ElfFile& elf, const std::vector<Resource>& resources, std::uint16_t machine,
                Kind kind) {
  Image image = PlaceSections(elf);
  if (kind == Kind::Program && image.base != kProgramBase) {
    throw Refusal("The base " + Hex(image.base) + " is not " + Hex(kProgramBase) +
                  ", where the system puts programs.");
  }
  const std::uint32_t entry = elf.entry - image.base;
  ImageBytes(image, entry, 4);
  if (!IsCode(image, entry) || entry % 4 != 0) {
    throw Refusal("The entry point " + Hex(elf.entry) + " is no code.");
  }
  const Directories directories = FillImage(image, elf, resources, kind);

  constexpr std::uint32_t kStubBytes = 0x80;  // where the PE header begins
  const std::uint32_t header_bytes =
      AlignUp(kStubBytes + 24 + 96 + 8 * kDirectories +
                  40 * static_cast<std::uint32_t>(image.sections.size()),
              kFileAlignment);
  Bytes bytes;
  AppendText(bytes, "MZ", 0x3C);
  Append32(bytes, kStubBytes);
  Align(bytes, kStubBytes);
  AppendFileHeader(bytes, image, machine, kind);
  AppendOptionalHeader(bytes, image, entry, header_bytes, directories);
  AppendSectionHeaders(bytes, image, header_bytes);
  for (const ImageSection& section : image.sections) {
    Align(bytes, kFileAlignment);
    Append(bytes, section.content);
  }
  Align(bytes, kFileAlignment);
  return bytes;
}

}  // namespace ceimage
