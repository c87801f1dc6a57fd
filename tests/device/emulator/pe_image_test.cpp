// Reading an image: what is in it, where it goes, and what is refused.
#include "device/emulator/pe_image.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <functional>

#include "device/emulator/machine.h"
#include "tests/device/emulator/toy_image.h"

namespace emulator {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Pair;

constexpr std::uint32_t kBxLr = 0xE12FFF1E;

// One import by name and one by ordinal, two exports, relocated words in code and data.
ToyImage Toy() {
  ToyImage toy;
  toy.code = {kBxLr, kBxLr, ToyImage::kBase + ToyImage::kWord};
  toy.word = ToyImage::kBase + ToyImage::kCode;
  toy.exports = {{"First", 0}, {"Second", 4}};
  toy.imports = {{"COREDLL.dll", "Sleep"}, {"CEDDK.dll", "", 8}};
  toy.relocations = {ToyImage::kCode + 8, ToyImage::kWord};
  return toy;
}

std::uint32_t WordAt(const std::vector<std::uint8_t>& memory, std::size_t at) {
  std::uint32_t value = 0;
  std::memcpy(&value, &memory.at(at), sizeof(value));
  return value;
}

TEST(EmulatorPeImage, NamesExportsWithTheirPlaces) {
  EXPECT_THAT(PeImage::Parse(Toy().Bytes()).Exports(),
              ElementsAre(Pair("First", 0x1000), Pair("Second", 0x1004)));
}

TEST(EmulatorPeImage, NamesImportsByNameAndByOrdinal) {
  const PeImage image = PeImage::Parse(Toy().Bytes());
  ASSERT_EQ(image.Imports().size(), 2u);
  EXPECT_EQ(image.Imports()[0].InWords(), "coredll.dll Sleep");
  EXPECT_EQ(image.Imports()[0].slot_rva, 0x2000u);
  EXPECT_EQ(image.Imports()[1].InWords(), "ceddk.dll #8");
  EXPECT_EQ(image.Imports()[1].slot_rva, 0x2008u);
}

TEST(EmulatorPeImage, KnowsWhatMayBeWrittenAndRun) {
  const PeImage image = PeImage::Parse(Toy().Bytes());
  ASSERT_EQ(image.Sections().size(), 4u);
  EXPECT_TRUE(image.Sections()[0].executable);
  EXPECT_FALSE(image.Sections()[0].writable);
  EXPECT_EQ(image.Sections()[0].bytes, 12u);
  EXPECT_TRUE(image.Sections()[1].writable);
  EXPECT_FALSE(image.Sections()[1].executable);
  EXPECT_EQ(image.Sections()[1].name, ".data");
  EXPECT_FALSE(image.Sections()[2].writable);
}

TEST(EmulatorPeImage, MovesRelocatedWordsToEachBase) {
  const PeImage image = PeImage::Parse(Toy().Bytes());
  for (const std::uint32_t base : {0x10000000u, 0x01E40000u, 0x20000000u}) {
    const std::vector<std::uint8_t> memory = image.At(base);
    EXPECT_EQ(WordAt(memory, 0x1008), base + 0x2100) << std::hex << base;
    EXPECT_EQ(WordAt(memory, 0x2100), base + 0x1000) << std::hex << base;
    EXPECT_EQ(WordAt(memory, 0x1000), kBxLr) << std::hex << base;
  }
}

TEST(EmulatorPeImage, LeavesOneRelocationOutWhenTold) {
  const PeImage image = PeImage::Parse(Toy().Bytes());
  const std::vector<std::uint8_t> memory = image.At(0x01E40000, 1);
  EXPECT_EQ(WordAt(memory, 0x1008), 0x01E42100u);
  EXPECT_EQ(WordAt(memory, 0x2100), 0x10001000u);
}

TEST(EmulatorPeImage, RefusesAFileThatCannotBeRead) {
  for (const char* path : {"", "/", "/dev/zero", "/nonexistent/VexoCtrlSDK.DLL"}) {
    EXPECT_THROW(PeImage::Load(path), BadImage) << path;
  }
}

using File = std::vector<std::uint8_t>;

struct Refusal {
  const char* name;
  std::function<void(File&)> spoil;
  const char* why;
};

class EmulatorPeImageRefuses : public testing::TestWithParam<Refusal> {};

TEST_P(EmulatorPeImageRefuses, AndSaysWhy) {
  File file = Toy().Bytes();
  ASSERT_NO_THROW(PeImage::Parse(file));
  GetParam().spoil(file);
  try {
    PeImage::Parse(file);
    FAIL() << "accepted";
  } catch (const BadImage& error) {
    EXPECT_THAT(error.what(), HasSubstr(GetParam().why));
  }
}

std::function<void(File&)> Half(std::size_t at, std::uint32_t value) {
  return [=](File& file) { PutHalf(file, at, value); };
}
std::function<void(File&)> Word(std::size_t at, std::uint32_t value) {
  return [=](File& file) { PutWord(file, at, value); };
}
constexpr std::size_t At(std::uint32_t rva) { return ToyImage::InFile(rva); }

const Refusal kRefusals[] = {
    {"NoMz", Half(0, 0), "MZ"},
    {"NoPe", Word(ToyImage::kPe, 0), "PE header"},
    {"HeaderBehindTheEnd", Word(0x3C, 0xFFFFFFF0), "PE header"},
    {"AnotherMachine", Half(ToyImage::kCoff, 0x014C), "not ARM"},
    {"NoDll", Half(ToyImage::kCoff + 18, 0x0002), "no DLL"},
    {"StrippedRelocations", Half(ToyImage::kCoff + 18, 0x2003), "stripped"},
    {"Pe32Plus", Half(ToyImage::kOptional, 0x020B), "not PE32"},
    {"AnotherSubsystem", Half(ToyImage::kOptional + 68, 2), "Windows CE"},
    {"SmallAlignment", Word(ToyImage::kOptional + 32, 0x200), "alignment"},
    {"FileAlignmentTooSmall", Word(ToyImage::kOptional + 36, 0x100), "file alignment"},
    {"FileAlignmentNoPowerOfTwo", Word(ToyImage::kOptional + 36, 0x600), "file alignment"},
    {"HeadersTooShort", Word(ToyImage::kOptional + 60, 0x200), "headers of 512 bytes"},
    {"HeadersNotAligned", Word(ToyImage::kOptional + 60, 0x3FF), "headers of 1023 bytes"},
    {"HeadersTooLong", Word(ToyImage::kOptional + 60, 0x1200), "headers of 4608 bytes"},
    {"SectionContentNotAligned", Word(ToyImage::kSections + 20, 0x480), "is not where a file"},
    {"SectionContentInTheHeaders", Word(ToyImage::kSections + 20, 0x200), "is not where a file"},
    {"OddBase", Word(ToyImage::kOptional + 28, 0x10001000), "64 KB"},
    {"NoSize", Word(ToyImage::kOptional + 56, 0), "image size"},
    {"HugeSize", Word(ToyImage::kOptional + 56, 0xFFFFF000), "image size"},
    {"EntryInData", Word(ToyImage::kOptional + 16, 0x2000), "entry point"},
    {"EntryOutside", Word(ToyImage::kOptional + 16, 0x9000), "entry point"},
    {"EntryInTheMiddleOfAnInstruction", Word(ToyImage::kOptional + 16, 0x1002), "entry point"},
    {"TruncatedFile", [](File& file) { file.resize(0x1000); }, "the file ends"},
    {"TruncatedHeaders", [](File& file) { file.resize(ToyImage::kSections + 30); },
     "the file ends"},
    {"SectionBehindTheImage", Word(ToyImage::kSections + 120 + 12, 0x5000), "does not lie"},
    {"SectionsOverlap", Word(ToyImage::kSections + 40 + 12, 0x1000), "does not lie"},
    {"SectionTooLong", Word(ToyImage::kSections + 120 + 8, 0x1001), "does not lie"},
    {"SectionContentOutside", Word(ToyImage::kSections + 20, 0x00FFFE00), "the file ends"},
    {"SectionInTheHeaders", Word(ToyImage::kSections + 12, 0), "does not lie"},
    {"SectionNotAtAPage", Word(ToyImage::kSections + 12, 0x1004), "does not lie"},
    {"SectionWithoutMemory", Word(ToyImage::kSections + 40 + 8, 0), "does not lie"},
    {"SectionsOutOfOrder",
     [](File& file) {
       PutWord(file, ToyImage::kSections + 40 + 12, 0x3000);
       PutWord(file, ToyImage::kSections + 80 + 12, 0x2000);
     },
     "does not lie"},
    {"MoreInTheFileThanInMemory", Word(ToyImage::kSections + 16, 0x1001), "more in the file"},
    {"WritableCode", Word(ToyImage::kSections + 36, 0xE0000020), "writable and executable"},
    {"UnreadableData", Word(ToyImage::kSections + 40 + 36, 0x80000040), "cannot be read"},
    {"DirectoryOutside", Word(ToyImage::kDirectories + 8, 0x8000), "lies in no section"},
    {"ExportsOutOfOrder", [](File& file) { file[At(0x3B00)] = 'Z'; }, "out of order"},
    {"ExportWithoutFunction", Half(At(0x3A00), 7), "no function"},
    {"ExportInData", Word(At(0x3840), 0x2000), "is no code"},
    {"ForwardedExport", Word(At(0x3840), 0x3A00), "forwarded"},
    {"ImportSlotOutside", Word(At(0x3000) + 16, 0x8000), "slot of"},
    {"ImportNameOutside", Word(At(0x3200), 0x7FFFFFF0), "the image ends"},
    {"ImportWithoutAName", [](File& file) { file[At(0x322A)] = 0; }, "without a name"},
    {"ImportNotAscii", [](File& file) { file[At(0x322A)] = 0xE9; }, "no ASCII text"},
    {"ImportNameTooLong",
     [](File& file) {
       for (std::uint32_t i = 0; i < 256; ++i) file[At(0x322A + i)] = 'n';
     },
     "more than 255 characters"},
    {"ImportedLibraryNameTooLong",
     [](File& file) {
       for (std::uint32_t i = 0; i < 32; ++i) file[At(0x3208 + i)] = 'n';
     },
     "more than 31 characters"},
    {"TooManyExports", Word(At(0x3818), 0x10001), "65537 exported names"},
    {"RelocationOfAnUnknownType", Half(At(0x4008), 0x5008), "type 5"},
    {"RelocationOfNoWord", Half(At(0x4008), 0x3006), "of no word"},
    {"RelocationOutside", Word(At(0x4000), 0x9000), "of no word"},
    {"RelocationOfNoAddress", Half(At(0x4008), 0x3000), "no address"},
    {"RelocationTwice", Half(At(0x400A), 0x3008), "two relocations"},
    {"RelocationBlockTooLong", Word(At(0x4004), 0x100), "relocation block"},
    {"RelocationBlockTooShort", Word(At(0x4004), 4), "relocation block"},
    {"HalfAFunctionTableEntry",
     [](File& file) {
       PutWord(file, ToyImage::kDirectories + 24, 0x3000);
       PutWord(file, ToyImage::kDirectories + 28, 12);
     },
     "function table"},
};

// Reads it, and puts it where the device would; either may refuse it.
void Take(const File& file, unsigned& taken) {
  try {
    const Machine machine(PeImage::Parse(file));
    ++taken;
  } catch (const BadImage&) {
  }
}

TEST(EmulatorPeImage, TakesOrRefusesAFileOfWhichAByteIsDamaged) {
  const File file = Toy().Bytes();
  for (const unsigned mask : {0x01u, 0x80u, 0xFFu}) {
    unsigned taken = 0;
    // Headers, tables and relocations; what lies between is code and zeros.
    for (const auto& [begin, end] : {std::pair<std::size_t, std::size_t>{0, 0x420},
                                     {At(0x2000), At(0x2010)},
                                     {At(0x3000), At(0x3280)},
                                     {At(0x3800), At(0x3B20)},
                                     {At(0x4000), At(0x4020)}}) {
      for (std::size_t at = begin; at < end; ++at) {
        File damaged = file;
        damaged[at] = static_cast<std::uint8_t>(damaged[at] ^ mask);
        EXPECT_NO_THROW(Take(damaged, taken)) << at;
      }
    }
    EXPECT_GT(taken, 100u);
  }
}

TEST(EmulatorPeImage, RefusesAFileCutAtAnyLength) {
  const File file = Toy().Bytes();
  for (std::size_t size = 0; size < file.size(); size += size < 0x420 ? 1 : 61) {
    EXPECT_THROW(
        PeImage::Parse(File(file.begin(), file.begin() + static_cast<std::ptrdiff_t>(size))),
        BadImage)
        << size;
  }
}

INSTANTIATE_TEST_SUITE_P(Files, EmulatorPeImageRefuses, testing::ValuesIn(kRefusals),
                         [](const auto& refusal) { return std::string(refusal.param.name); });

}  // namespace
}  // namespace emulator
