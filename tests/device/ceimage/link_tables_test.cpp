// What the system links the image by: tables that it would not take are refused.
#include "device/ceimage/link_tables.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>

#include "device/ceimage/pe_image.h"
#include "device/ceimage/resources.h"
#include "device/emulator/pe_image.h"
#include "tests/device/ceimage/elf_builder.h"

namespace ceimage {
namespace {

using ::testing::HasSubstr;

// Where SmallLibrary has them in .tables, which begins at offset 0x1020 of the image.
constexpr std::uint32_t kTablesOffset = 0x1020;
constexpr std::size_t kLookups = 40;
constexpr std::size_t kExports = 48;
constexpr std::size_t kAddresses = kExports + 40;
constexpr std::size_t kNames = kAddresses + 8;
constexpr std::size_t kOrdinals = kNames + 8;

Bytes Make(const ElfBuilder& elf) {
  return MakeImage(ReadElf(elf.Build()), ReadResources(ResourceFile({{16, 1, 0x409}})),
                   kMachineArm);
}

// Puts a text behind the tables, and with it what lies behind them still in the export directory.
std::uint32_t AddText(ElfBuilder& elf, const std::string& text) {
  Bytes& tables = elf.Get(".tables").content;
  Align(tables, 4);
  const auto at = static_cast<std::uint32_t>(tables.size());
  AppendText(tables, text, text.size() + 1);
  return kTablesOffset + at;
}

// The one import by this name instead of its ordinal.
void ImportByName(ElfBuilder& elf, const std::string& name) {
  const std::uint32_t entry = AddText(elf, "\1\1" + name);
  Put32(elf.Get(".tables").content, kLookups, entry);
  Put32(elf.Get(".iat").content, 0, entry);
}

void NameLibrary(ElfBuilder& elf, const std::string& name) {
  const std::uint32_t at = AddText(elf, name);
  Put32(elf.Get(".tables").content, 12, at);
}

void NameSecondExport(ElfBuilder& elf, const std::string& name) {
  const std::uint32_t at = AddText(elf, name);
  Put32(elf.Get(".tables").content, kNames + 4, at);
}

std::function<void(ElfBuilder&)> Table(std::size_t at, std::uint32_t value) {
  return [=](ElfBuilder& elf) { Put32(elf.Get(".tables").content, at, value); };
}

struct Broken {
  const char* name;
  std::function<void(ElfBuilder&)> change;
  const char* text;
};

void PrintTo(const Broken& broken, std::ostream* out) { *out << broken.name; }

class BrokenTables : public ::testing::TestWithParam<Broken> {};

TEST_P(BrokenTables, AreRefused) {
  ElfBuilder elf = SmallLibrary();
  ASSERT_NO_THROW(Make(elf));
  GetParam().change(elf);
  try {
    Make(elf);
    FAIL() << "was taken";
  } catch (const Refusal& refusal) {
    EXPECT_THAT(refusal.what(), HasSubstr(GetParam().text));
  }
}

INSTANTIATE_TEST_SUITE_P(
    Imports, BrokenTables,
    ::testing::Values(
        Broken{"NoName", [](ElfBuilder& e) { ImportByName(e, ""); }, "Import 0 of dll has no name"},
        Broken{"NameTooLong", [](ElfBuilder& e) { ImportByName(e, std::string(256, 'n')); },
               "more than 255 characters"},
        Broken{"NameNotAscii",
               [](ElfBuilder& e) {
                 ImportByName(e,
                              "Sl\xE9"
                              "p");
               },
               "no ASCII text"},
        Broken{"NameWithABlank", [](ElfBuilder& e) { ImportByName(e, "Sle p"); }, "no ASCII text"},
        Broken{"NameWithoutAnEnd",
               [](ElfBuilder& e) {
                 ImportByName(e, "Sleep");
                 e.Get(".tables").content.pop_back();
               },
               "without an end"},
        Broken{"NameOutside",
               [](ElfBuilder& e) {
                 Put32(e.Get(".tables").content, kLookups, 0x7000);
                 Put32(e.Get(".iat").content, 0, 0x7000);
               },
               "out of range"},
        Broken{"NoLibraryName", [](ElfBuilder& e) { NameLibrary(e, ""); },
               "An imported library has no name"},
        Broken{"LibraryNameTooLong", [](ElfBuilder& e) { NameLibrary(e, std::string(32, 'n')); },
               "more than 31 characters"},
        Broken{"LibraryNameNotAscii", [](ElfBuilder& e) { NameLibrary(e, "\x1B[31m.dll"); },
               "no ASCII text"},
        Broken{"TablesDiffer", [](ElfBuilder& e) { Put32(e.Get(".iat").content, 0, 0x80000009); },
               "Import 0 of dll differs"},
        Broken{"LargeOrdinal",
               [](ElfBuilder& e) {
                 Put32(e.Get(".tables").content, kLookups, 0x80010000);
                 Put32(e.Get(".iat").content, 0, 0x80010000);
               },
               "16-bit ordinal"},
        Broken{"AddressesElsewhere", Table(16, 0x2008), "no place of its own"},
        Broken{"AddressesNotAtAWord", Table(16, 0x2002), "no place of its own"},
        Broken{"AddressesTwice",
               [](ElfBuilder& e) {
                 Bytes& tables = e.Get(".tables").content;
                 for (std::size_t i = 0; i < 20; i += 4) {
                   Put32(tables, 20 + i, Get32(tables, i));
                 }
               },
               "no place of its own"},
        Broken{"NoEnd", [](ElfBuilder& e) { e.GetSymbol("import_directory_end").value -= 20; },
               "has no end"}),
    [](const auto& test) { return std::string(test.param.name); });

INSTANTIATE_TEST_SUITE_P(
    Exports, BrokenTables,
    ::testing::Values(
        Broken{"NoLibraryName",
               [](ElfBuilder& e) {
                 Put32(e.Get(".tables").content, kExports + 12, kTablesOffset + 12 + 3);
               },
               "The library has no name"},
        Broken{"NoName", [](ElfBuilder& e) { NameSecondExport(e, ""); }, "Export 1 has no name"},
        Broken{"NameTooLong", [](ElfBuilder& e) { NameSecondExport(e, std::string(256, 'z')); },
               "more than 255 characters"},
        Broken{"NameNotAscii", [](ElfBuilder& e) { NameSecondExport(e, "z\x80"); },
               "no ASCII text"},
        Broken{"TooManyFunctions", Table(kExports + 20, 0x10001),
               "The library exports 65537 functions."},
        Broken{"TooManyNames", Table(kExports + 24, 0x10001), "The library exports 65537 names."},
        Broken{"NoNames", Table(kExports + 24, 0), "The library exports no names."},
        Broken{"FunctionsBeyondTheEnd", Table(kExports + 20, 0xFFFF), "cut off or damaged"},
        Broken{"NoFunction", Table(kOrdinals, 7), "Export one has no function"},
        Broken{"FunctionInData", Table(kAddresses, 0x2008), "is no code"},
        Broken{"FunctionInTheTable", Table(kAddresses, kTablesOffset + kExports), "is no code"},
        Broken{"FunctionNotAtAWord", Table(kAddresses, 0x1002), "is no code"},
        Broken{"FunctionOutside", Table(kAddresses, 0x9000), "is no code"}),
    [](const auto& test) { return std::string(test.param.name); });

TEST(LinkTables, TakeAnImportByName) {
  ElfBuilder elf = SmallLibrary();
  ImportByName(elf, "Sleep");
  const emulator::PeImage image = emulator::PeImage::Parse(Make(elf));
  ASSERT_EQ(image.Imports().size(), 1u);
  EXPECT_EQ(image.Imports()[0].InWords(), "dll Sleep");
}

// ---- Whatever is taken, the loader takes -------------------------------------------------------

// What became of a damaged file: refused, or an image that the emulated device loads.
void MakeAndLoad(const Bytes& elf, const Bytes& resources, unsigned& taken) {
  Bytes image;
  try {
    image = MakeImage(ReadElf(elf), ReadResources(resources), kMachineArm);
  } catch (const Refusal&) {
    return;
  }
  ++taken;
  emulator::PeImage::Parse(image);
}

class DamagedInput : public ::testing::TestWithParam<std::uint8_t> {};

TEST_P(DamagedInput, IsRefusedOrMakesAnImageThatTheLoaderTakes) {
  ElfBuilder library = SmallLibrary();
  ImportByName(library, "Sleep");
  const Bytes elf = library.Build();
  const Bytes resources = ResourceFile({{16, 1, 0x409}, {10, 7, 0}});
  unsigned taken = 0;
  for (std::size_t at = 0; at < elf.size(); ++at) {
    Bytes damaged = elf;
    damaged[at] ^= GetParam();
    EXPECT_NO_THROW(MakeAndLoad(damaged, resources, taken)) << "ELF byte " << at;
  }
  for (std::size_t at = 0; at < resources.size(); ++at) {
    Bytes damaged = resources;
    damaged[at] ^= GetParam();
    EXPECT_NO_THROW(MakeAndLoad(elf, damaged, taken)) << "resource byte " << at;
  }
  EXPECT_GT(taken, 100u);
  EXPECT_LT(taken, elf.size());
}

INSTANTIATE_TEST_SUITE_P(Bits, DamagedInput, ::testing::Values(0x01, 0x04, 0x80, 0xFF),
                         [](const auto& test) { return "Mask" + std::to_string(test.param); });

TEST(CutInput, IsRefusedAtEveryLength) {
  const Bytes elf = SmallLibrary().Build();
  const Bytes resources = ResourceFile({{16, 1, 0x409}});
  for (std::size_t size = 0; size < elf.size(); ++size) {
    EXPECT_THROW(ReadElf(Part(elf, 0, size)), Refusal) << size;
  }
  for (std::size_t size = 0; size < resources.size(); ++size) {
    // The last content is filled up to a whole word, which nobody reads.
    if (size + 3 >= resources.size()) continue;
    EXPECT_THROW(ReadResources(Part(resources, 0, size)), Refusal) << size;
  }
}

}  // namespace
}  // namespace ceimage
