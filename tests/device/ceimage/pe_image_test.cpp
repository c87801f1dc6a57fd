#include "device/ceimage/pe_image.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "device/ceimage/elf_file.h"
#include "tests/device/ceimage/elf_builder.h"

namespace ceimage {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Pair;

constexpr std::size_t kPe = 0x80;            // where the PE header is
constexpr std::size_t kOptional = kPe + 24;  // the optional header
constexpr std::size_t kSections = kOptional + 224;

Bytes Make(const ElfBuilder& elf, std::uint16_t machine = kMachineArm) {
  return MakeImage(ReadElf(elf.Build()), ReadResources(ResourceFile({{16, 1, 0x409}})), machine);
}

struct Section {
  std::string name;
  std::uint32_t size, offset, file_size, position, flags;
};

std::vector<Section> SectionsOf(const Bytes& image) {
  std::vector<Section> sections;
  for (std::size_t i = 0; i < Get16(image, kPe + 6); ++i) {
    const ByteView raw = Part(image, kSections + i * 40, 40);
    Bytes name(raw.begin(), raw.begin() + 8);
    name.push_back(0);
    sections.push_back({GetText(name, 0), Get32(raw, 8), Get32(raw, 12), Get32(raw, 16),
                        Get32(raw, 20), Get32(raw, 36)});
  }
  return sections;
}

Section SectionOf(const Bytes& image, const std::string& name) {
  for (const Section& section : SectionsOf(image)) {
    if (section.name == name) return section;
  }
  ADD_FAILURE() << "no section " << name;
  return {};
}

std::pair<std::uint32_t, std::uint32_t> DirectoryOf(const Bytes& image, std::size_t index) {
  return {Get32(image, kOptional + 96 + 8 * index), Get32(image, kOptional + 100 + 8 * index)};
}

// The words that the loader moves.
std::vector<std::uint32_t> FixupsOf(const Bytes& image) {
  const Section section = SectionOf(image, ".reloc");
  const ByteView bytes = Part(image, section.position, section.size);
  std::vector<std::uint32_t> offsets;
  for (std::size_t block = 0; block < bytes.size(); block += Get32(bytes, block + 4)) {
    for (std::size_t at = block + 8; at < block + Get32(bytes, block + 4); at += 2) {
      const std::uint16_t entry = Get16(bytes, at);
      if (entry == 0) continue;
      EXPECT_EQ(entry >> 12, 3);
      offsets.push_back(Get32(bytes, block) + (entry & 0xFFFu));
    }
  }
  return offsets;
}

TEST(PeImage, AProgramBeginsWhereTheSystemPutsPrograms) {
  const std::vector<Resource> resources = ReadResources(ResourceFile({{16, 1, 0x409}}));
  try {
    MakeImage(ReadElf(SmallLibrary().Build()), resources, kMachineArm, Kind::Program);
    FAIL() << "it lies elsewhere";
  } catch (const Refusal& refusal) {
    EXPECT_THAT(refusal.what(), HasSubstr("is not 0x10000, where the system puts programs"));
  }
}

TEST(PeImage, IsAWindowsCe5LibraryFor32BitArm) {
  const Bytes image = Make(SmallLibrary());
  EXPECT_EQ(Get16(image, 0), 0x5A4D);
  EXPECT_EQ(Get32(image, 0x3C), kPe);
  EXPECT_EQ(Get32(image, kPe), 0x00004550u);
  EXPECT_EQ(Get16(image, kPe + 4), 0x01C0);
  EXPECT_EQ(Get16(image, kPe + 20), 224);
  EXPECT_EQ(Get16(image, kPe + 22), 0x210E);
  EXPECT_EQ(Get16(image, kOptional), 0x010B);
  EXPECT_EQ(Get32(image, kOptional + 16), 0x1000u);  // entry
  EXPECT_EQ(Get32(image, kOptional + 28), kTestBase);
  EXPECT_EQ(Get32(image, kOptional + 32), 0x1000u);
  EXPECT_EQ(Get32(image, kOptional + 36), 0x200u);
  EXPECT_EQ(Get32(image, kOptional + 40), 5u);  // system
  EXPECT_EQ(Get32(image, kOptional + 48), 5u);  // subsystem's version
  EXPECT_EQ(Get32(image, kOptional + 56), 0x7000u);
  EXPECT_EQ(Get32(image, kOptional + 60), 0x400u);
  EXPECT_EQ(Get16(image, kOptional + 68), 9);
  EXPECT_EQ(Get32(image, kOptional + 92), 16u);
}

TEST(PeImage, CallsItsProcessorThumbWhenAsked) {
  EXPECT_EQ(Get16(Make(SmallLibrary(), kMachineThumb), kPe + 4), 0x01C2);
}

TEST(PeImage, IsTheSameEachTimeAndHasNoTime) {
  const Bytes image = Make(SmallLibrary());
  EXPECT_EQ(image, Make(SmallLibrary()));
  EXPECT_EQ(Get32(image, kPe + 8), 0u);
}

TEST(PeImage, HasItsSectionsInOrderEachAtAPage) {
  std::vector<std::pair<std::string, std::uint32_t>> flags;
  std::uint32_t offset = 0x1000;
  for (const Section& section : SectionsOf(Make(SmallLibrary()))) {
    flags.emplace_back(section.name, section.flags);
    EXPECT_EQ(section.offset, offset) << section.name;
    EXPECT_EQ(section.position % 0x200, 0u) << section.name;
    EXPECT_EQ(section.file_size % 0x200, 0u) << section.name;
    offset += 0x1000;
  }
  EXPECT_THAT(flags, ElementsAre(Pair(".text", 0x60000020), Pair(".data", 0xC0000040),
                                 Pair(".shared", 0xD0000040), Pair(".pdata", 0x40000040),
                                 Pair(".rsrc", 0x40000040), Pair(".reloc", 0x42000040)));
}

TEST(PeImage, PutsTheTablesBehindTheCodeAndLeavesZerosOutOfTheFile) {
  const ElfBuilder elf = SmallLibrary();
  const Bytes image = Make(elf);
  const Section text = SectionOf(image, ".text");
  const Section data = SectionOf(image, ".data");
  EXPECT_EQ(text.size, 0x20 + ElfBuilder(elf).Get(".tables").content.size());
  EXPECT_EQ(Get32(image, text.position), 0xE52DE004u);
  EXPECT_EQ(Get32(image, text.position + 0x20), 0x1048u);
  EXPECT_EQ(data.size, 0x50u);
  EXPECT_EQ(data.file_size, 0x200u);
  EXPECT_EQ(Get32(image, data.position), 0x80000008u);
  EXPECT_EQ(Get32(image, data.position + 8), kTestBase + 0x1000);
}

TEST(PeImage, FillsGapsBetweenThePartsOfASectionWithZeros) {
  ElfBuilder elf = SmallLibrary();
  elf.Get(".data").address += 8;
  elf.Get(".bss").address += 8;
  for (ElfBuilder::Relocation& relocation : elf.relocations) {
    if (relocation.section == ".data") relocation.address += 8;
  }
  const Bytes image = Make(elf);
  const Section data = SectionOf(image, ".data");
  EXPECT_EQ(data.size, 0x58u);
  EXPECT_EQ(Get32(image, data.position + 8), 0u);
  EXPECT_EQ(Get32(image, data.position + 16), kTestBase + 0x1000);
  EXPECT_THAT(FixupsOf(image), ElementsAre(0x1010, 0x2010, 0x4000));
}

TEST(PeImage, MovesEveryAddressAndNothingElse) {
  // The address in the code, the one in the data, and the function's in the function table.
  EXPECT_THAT(FixupsOf(Make(SmallLibrary())), ElementsAre(0x1010, 0x2008, 0x4000));
}

TEST(PeImage, TellsTheLoaderWhereItsTablesAre) {
  const Bytes image = Make(SmallLibrary());
  EXPECT_THAT(DirectoryOf(image, 0), Pair(0x1050, 0x48));
  EXPECT_THAT(DirectoryOf(image, 1), Pair(0x1020, 40));
  EXPECT_EQ(DirectoryOf(image, 2).first, SectionOf(image, ".rsrc").offset);
  EXPECT_THAT(DirectoryOf(image, 3), Pair(0x4000, 8));
  EXPECT_EQ(DirectoryOf(image, 5).first, SectionOf(image, ".reloc").offset);
  EXPECT_EQ(DirectoryOf(image, 5).second, SectionOf(image, ".reloc").size);
  EXPECT_THAT(DirectoryOf(image, 12), Pair(0x2000, 8));
  for (const std::size_t none : {4u, 6u, 7u, 8u, 9u, 10u, 11u, 13u, 14u, 15u}) {
    EXPECT_THAT(DirectoryOf(image, none), Pair(0, 0)) << none;
  }
}

TEST(Fixups, ComeInBlocksOfAPageFilledToWholeWords) {
  EXPECT_EQ(EncodeFixups({0x1004, 0x1FFC, 0x2000, 0x2008, 0x200C}),
            Words({0x1000, 12, 0x3FFC3004, 0x2000, 16, 0x30083000, 0x0000300C}));
  EXPECT_TRUE(EncodeFixups({}).empty());
}

// ---- Refusals -----------------------------------------------------------------------------------

struct Refused {
  const char* name;
  std::function<void(ElfBuilder&)> change;
  const char* text;
};

void PrintTo(const Refused& refused, std::ostream* out) { *out << refused.name; }

class Refusals : public ::testing::TestWithParam<Refused> {};

TEST_P(Refusals, SayWhatIsNotUnderstood) {
  ElfBuilder elf = SmallLibrary();
  GetParam().change(elf);
  try {
    Make(elf);
    FAIL() << "was taken";
  } catch (const Refusal& refusal) {
    EXPECT_THAT(refusal.what(), HasSubstr(GetParam().text));
  }
}

constexpr std::uint32_t kText = kTestBase + 0x1000;
constexpr std::uint32_t kData = kTestBase + 0x2008;

INSTANTIATE_TEST_SUITE_P(
    PeImage, Refusals,
    ::testing::Values(
        Refused{"OtherMachine", [](ElfBuilder& e) { e.machine = 3; }, "not for little-endian"},
        Refused{"NotLinked", [](ElfBuilder& e) { e.kind = 1; }, "not linked"},
        Refused{"NoRelocations", [](ElfBuilder& e) { e.relocations.clear(); }, "--emit-relocs"},
        Refused{"OtherFormOfRelocations", [](ElfBuilder& e) { e.relocation_type = 4; },
                "unknown form"},
        Refused{"UnknownRelocation",
                [](ElfBuilder& e) {
                  e.relocations.push_back({".text", kText, 3});
                },
                "Relocation type 3 at 0x10001000 in .text is unknown"},
        Refused{"NoRelocationType",
                [](ElfBuilder& e) {
                  e.relocations.push_back({".data", kData, 0});
                },
                "Relocation type 0"},
        Refused{"UndefinedSymbol",
                [](ElfBuilder& e) {
                  e.symbols.push_back({"missing", 0, 0, 0, false});
                },
                "missing is undefined"},
        Refused{"AddressBelowTheImage",
                [](ElfBuilder& e) { Put32(e.Get(".data").content, 0, kTestBase - 4); },
                "0xffffffc at 0x10002008 in .data is out of range"},
        Refused{"AddressPastTheImage",
                [](ElfBuilder& e) { Put32(e.Get(".data").content, 0, kTestBase + 0x3005); },
                "0x10003005 at 0x10002008 in .data is out of range"},
        Refused{"OffsetPastTheImage",
                [](ElfBuilder& e) { Put32(e.Get(".tables").content, 12, kTestBase); },
                "offset 0x10000000 at 0x1000102c in .tables is out of range"},
        Refused{"RelocationOutsideOfItsSection",
                [](ElfBuilder& e) {
                  e.relocations.push_back({".data", kData + 0x800, 2});
                },
                "out of range"},
        Refused{"RelocationInZeros",
                [](ElfBuilder& e) {
                  e.relocations.push_back({".bss", kData + 8, 2});
                },
                "out of range"},
        Refused{"AddressNotAtAWord",
                [](ElfBuilder& e) {
                  e.relocations.push_back({".data", kData + 2, 2});
                },
                "not at a whole word"},
        Refused{"UnknownSection",
                [](ElfBuilder& e) {
                  e.sections.push_back(
                      {".init_array", kFlagsData, kTestBase + 0x4000, Words({1}), 0, 0});
                },
                "no place for section .init_array"},
        Refused{"UnknownSectionType", [](ElfBuilder& e) { e.Get(".shared").type = 14; }, "type 14"},
        Refused{"WritableCode", [](ElfBuilder& e) { e.Get(".text").flags |= kElfWritable; },
                ".text is writable"},
        Refused{"CodeInData", [](ElfBuilder& e) { e.Get(".data").flags |= kElfExecutable; },
                ".data holds code"},
        Refused{"SectionWithoutAPage", [](ElfBuilder& e) { e.Get(".shared").address += 4; },
                "does not begin at a page"},
        Refused{"SectionBelowTheBase", [](ElfBuilder& e) { e.Get(".text").address = 0x1000; },
                "out of range"},
        Refused{"SectionLargerThanAProcess",
                [](ElfBuilder& e) { e.Get(".bss").zeros = 0x02000000; }, "out of range"},
        Refused{"SectionBehindTheEnd", [](ElfBuilder& e) { e.Get(".shared").address = 0xFFFFF000; },
                "out of range"},
        Refused{"SectionOverTheHeaders", [](ElfBuilder& e) { e.Get(".text").address = kTestBase; },
                "out of range"},
        Refused{"GapBetweenSections", [](ElfBuilder& e) { e.Get(".shared").address += 0x1000; },
                "gap"},
        Refused{"OverlappingSections", [](ElfBuilder& e) { e.Get(".tables").address -= 4; },
                "overlaps"},
        Refused{"ContentBehindZeros",
                [](ElfBuilder& e) {
                  e.Get(".bss").address = kTestBase + 0x2000;
                  e.Get(".iat").address += 0x40;
                  e.Get(".data").address += 0x40;
                },
                "behind zeros"},
        Refused{"PartsOfASectionApart",
                [](ElfBuilder& e) { e.Get(".bss").address = kTestBase + 0x4000; },
                "do not lie together"},
        Refused{"BaseNotAt64Kb", [](ElfBuilder& e) { e.GetSymbol("image_base").value += 0x1000; },
                "not at 64 KB"},
        Refused{"RelocationTwice",
                [](ElfBuilder& e) {
                  e.relocations.push_back({".data", kData, 2});
                },
                "two relocations at 0x10002008"},
        Refused{"NoBase", [](ElfBuilder& e) { e.GetSymbol("image_base").value = 0; },
                "no address that a process has"},
        Refused{"BaseOfTheSystem",
                [](ElfBuilder& e) { e.GetSymbol("image_base").value = 0x80000000; },
                "no address that a process has"},
        Refused{"EntryInData", [](ElfBuilder& e) { e.entry = kData; }, "is no code"},
        Refused{"EntryNotAtAWord", [](ElfBuilder& e) { e.entry += 2; }, "is no code"},
        Refused{"FunctionInData",
                [](ElfBuilder& e) {
                  e.symbols.push_back({"odd", kData, 8, 2});
                },
                "odd lies in no code"},
        Refused{"EntryOutsideOfTheImage", [](ElfBuilder& e) { e.entry = 0; }, "out of range"},
        Refused{"NoExportDirectory",
                [](ElfBuilder& e) { e.GetSymbol("export_directory").name = "other"; },
                "no symbol export_directory"},
        Refused{
            "EmptyImportDirectory",
            [](ElfBuilder& e) { e.GetSymbol("import_directory_end").value = kTestBase + 0x1020; },
            "import_directory is empty"},
        Refused{"ExportsOutOfOrder",
                [](ElfBuilder& e) {
                  Bytes& tables = e.Get(".tables").content;
                  std::swap(tables[tables.size() - 8], tables[tables.size() - 4]);
                },
                "not in the order"}),
    [](const auto& test) { return test.param.name; });

TEST(Refusals, ComeForEveryPrefixOfAFile) {
  const Bytes file = SmallLibrary().Build();
  for (std::size_t size = 0; size < file.size(); ++size) {
    EXPECT_THROW(ReadElf(Part(file, 0, size)), Refusal) << size;
  }
  EXPECT_NO_THROW(ReadElf(file));
}

}  // namespace
}  // namespace ceimage
