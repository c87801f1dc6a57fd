// What a linker gets for a host that is linked with the image, byte for byte where it reads bytes.
#include "device/ceimage/import_library.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "device/ceimage/archive.h"
#include "device/ceimage/coff_object.h"
#include "device/ceimage/pe_image.h"
#include "tests/device/ceimage/elf_builder.h"

namespace ceimage {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

const Exports kExports = {"Small.DLL", {"?one@@YAHXZ", "two"}};

const std::string kTablesEnd = '\x7F' + std::string("Small_NULL_THUNK_DATA");

std::string Text(ByteView bytes) { return {bytes.begin(), bytes.end()}; }

// Texts as they lie in a directory.
std::string Names(const std::vector<std::string>& names) {
  std::string text;
  for (const std::string& name : names) text += name + '\0';
  return text;
}

std::uint32_t Big32(ByteView bytes, std::size_t at) {
  return static_cast<std::uint32_t>(Get8(bytes, at) << 24 | Get8(bytes, at + 1) << 16 |
                                    Get8(bytes, at + 2) << 8 | Get8(bytes, at + 3));
}

struct Member {
  std::size_t position;
  std::string header;
  Bytes content;
};

std::vector<Member> MembersOf(const Bytes& archive) {
  EXPECT_EQ(Text(Part(archive, 0, 8)), "!<arch>\n");
  std::vector<Member> members;
  for (std::size_t at = 8; at < archive.size();) {
    const ByteView header = Part(archive, at, 60);
    const std::size_t size = std::stoul(Text(header.subspan(48, 10)));
    const ByteView content = Part(archive, at + 60, size);
    members.push_back({at, Text(header), Bytes(content.begin(), content.end())});
    at += 60 + size + size % 2;
  }
  return members;
}

TEST(ImportLibrary, HasDirectoriesThenTheDirectoryEntryItsEndsAndOneMemberToAName) {
  const std::vector<Member> members = MembersOf(MakeImportLibrary(kExports, kMachineArm));
  ASSERT_EQ(members.size(), 7u);
  const auto header = [](const std::string& name, std::size_t size) {
    std::string text = name + std::string(16 - name.size(), ' ');
    text += "0           0     0     0       " + std::to_string(size);
    return text + std::string(58 - text.size(), ' ') + "`\n";
  };
  for (std::size_t i = 0; i < members.size(); ++i) {
    EXPECT_EQ(members[i].header, header(i < 2 ? "/" : "Small.DLL/", members[i].content.size()));
  }
}

TEST(ImportLibrary, NamesEachSymbolsMemberInTheOrderOfTheMembers) {
  const std::vector<Member> members = MembersOf(MakeImportLibrary(kExports, kMachineArm));
  const Bytes& directory = members[0].content;
  std::vector<std::size_t> places;
  for (std::uint32_t i = 0; i < Big32(directory, 0); ++i) {
    places.push_back(Big32(directory, 4 + i * 4));
  }
  EXPECT_THAT(places, ElementsAre(members[2].position, members[3].position, members[4].position,
                                  members[5].position, members[5].position, members[6].position,
                                  members[6].position));
  EXPECT_EQ(Text(ByteView(directory).subspan(32)),
            Names({"__IMPORT_DESCRIPTOR_Small", "__NULL_IMPORT_DESCRIPTOR", kTablesEnd,
                   "__imp_?one@@YAHXZ", "?one@@YAHXZ", "__imp_two", "two"}));
}

TEST(ImportLibrary, NamesEachSymbolsMemberInTheOrderOfTheNames) {
  const std::vector<Member> members = MembersOf(MakeImportLibrary(kExports, kMachineArm));
  Bytes wanted = Words({5});
  for (std::size_t i = 2; i < 7; ++i) {
    Append32(wanted, static_cast<std::uint32_t>(members[i].position));
  }
  Append32(wanted, 7);
  for (const std::uint32_t number : {4u, 1u, 2u, 4u, 5u, 5u, 3u}) Append16(wanted, number);
  const std::string names =
      Names({"?one@@YAHXZ", "__IMPORT_DESCRIPTOR_Small", "__NULL_IMPORT_DESCRIPTOR",
             "__imp_?one@@YAHXZ", "__imp_two", "two", kTablesEnd});
  AppendText(wanted, names, names.size());
  EXPECT_EQ(members[1].content, wanted);
}

TEST(ImportLibrary, SaysOfAnImportItsMachineWhereToLookFirstItsNameAndTheFiles) {
  for (const std::uint16_t machine : {kMachineArm, kMachineThumb}) {
    const std::vector<Member> members = MembersOf(MakeImportLibrary(kExports, machine));
    Bytes wanted = Words({0xFFFF0000, std::uint32_t{machine} << 16, 0, 14, 0x00040001});
    AppendText(wanted, "two", 4);
    AppendText(wanted, "Small.DLL", 10);
    EXPECT_EQ(members[6].content, wanted);
    EXPECT_EQ(Get16(members[5].content, 16), 0u);
  }
}

TEST(ImportLibrary, HasTheFilesEntryOfTheImportDirectory) {
  const Bytes object = MembersOf(MakeImportLibrary(kExports, kMachineThumb))[2].content;
  EXPECT_EQ(Get16(object, 0), kMachineThumb);
  EXPECT_EQ(Get16(object, 2), 2u);        // sections
  EXPECT_EQ(Get16(object, 18), 0x0100u);  // 32 bits
  EXPECT_EQ(GetText(object, 20), ".idata$2");
  EXPECT_EQ(Get32(object, 20 + 36), 0xC0300040u);
  EXPECT_EQ(GetText(object, 60), ".idata$6");
  EXPECT_EQ(Get32(object, 60 + 36), 0xC0200040u);
  EXPECT_EQ(Bytes(object.begin() + 100, object.begin() + 120), Bytes(20));
  // Of the file's name, of the names, of the addresses: each an offset in the image.
  const Bytes relocations = {12, 0, 0, 0, 2, 0,  0, 0, 2, 0, 0, 0, 0, 0, 3,
                             0,  0, 0, 2, 0, 16, 0, 0, 0, 4, 0, 0, 0, 2, 0};
  EXPECT_EQ(Bytes(object.begin() + 120, object.begin() + 150), relocations);
  EXPECT_EQ(GetText(object, 150), "Small.DLL");
  EXPECT_EQ(Get32(object, 8), 160u);  // where the symbols are
  EXPECT_EQ(Get32(object, 12), 7u);
}

TEST(CoffObject, PutsLongNamesIntoTheStringTable) {
  const Bytes object = EncodeObject(
      kMachineArm, {}, {{"short", 0}, {"12345678", 2, Storage::kStatic}, {"123456789", 1}});
  Bytes wanted = Words({kMachineArm, 0, 20, 3, 0x01000000});
  AppendText(wanted, "short", 8);
  for (const std::uint32_t half : {0u, 0u, 0u, 0u, 2u}) Append16(wanted, half);
  AppendText(wanted, "12345678", 8);
  for (const std::uint32_t half : {0u, 0u, 2u, 0u, 3u}) Append16(wanted, half);
  Append32(wanted, 0);
  Append32(wanted, 4);
  for (const std::uint32_t half : {0u, 0u, 1u, 0u, 2u}) Append16(wanted, half);
  Append32(wanted, 14);
  AppendText(wanted, "123456789", 10);
  EXPECT_EQ(object, wanted);
}

TEST(Archive, RefusesWhatItHasNoRoomFor) {
  EXPECT_NO_THROW(EncodeArchive({{std::string(15, 'n'), {"one"}, {}}}));
  EXPECT_THROW(EncodeArchive({{std::string(16, 'n'), {"one"}, {}}}), Refusal);
}

TEST(Archive, RefusesASymbolOfTwoMembers) {
  EXPECT_THROW(EncodeArchive({{"a", {"one"}, {}}, {"b", {"two", "one"}, {}}}), Refusal);
}

TEST(Archive, PutsMembersAtEvenPlaces) {
  const Bytes archive = EncodeArchive({{"a", {"one"}, {1, 2, 3}}, {"b", {"two"}, {4}}});
  const std::vector<Member> members = MembersOf(archive);
  ASSERT_EQ(members.size(), 4u);
  EXPECT_EQ(members[2].content, (Bytes{1, 2, 3}));
  EXPECT_EQ(Get8(archive, members[2].position + 63), '\n');
  EXPECT_EQ(members[3].position, members[2].position + 64);
  EXPECT_EQ(members[3].content, Bytes{4});
}

TEST(Definition, NamesTheLibraryAndItsExports) {
  EXPECT_EQ(MakeDefinition(kExports), "LIBRARY Small.DLL\nEXPORTS\n  ?one@@YAHXZ\n  two\n");
}

TEST(FindExports, NamesWhatTheImageExportsAndItsOwnFile) {
  const Exports exports = FindExports(ReadElf(SmallLibrary().Build()));
  EXPECT_EQ(exports.file, "dll");
  EXPECT_THAT(exports.names, ElementsAre("one", "two"));
}

}  // namespace
}  // namespace ceimage
