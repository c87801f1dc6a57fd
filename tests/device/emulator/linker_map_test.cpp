// Names of what lies where in the image.
#include "device/emulator/linker_map.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "tests/device/emulator/toy_image.h"
#include "tests/support/temp_path.h"

namespace emulator {
namespace {

constexpr const char* kMap = R"(Discarded input sections

 .text._Z4Gonev
                0x00000000       0x10 gone.cpp.obj

Linker script and memory map

LOAD toy.cpp.obj
                0x10000000                        image_base = IMAGE_BASE

.text           0x10001000     0x1000
 *(.text .text.*)
 .text          0x10001000        0x0 toy.cpp.obj
 .text._Z7SetSkipih
                0x10001000       0x30 toy.cpp.obj
                0x10001000                SetSkip(int, unsigned char)
 *fill*         0x10001030        0x2 
 .text.import.Sleep
                0x10001034       0x10 tables.S.obj
 .rodata._Z7SetSkipih.str2.2
                0x10001100       0x20 toy.cpp.obj
 .rodata._Z7SetSkipih.str1.1
                0x10001120        0x8 toy.cpp.obj
 .rodata.kOrder
                0x10001130        0x4 toy.cpp.obj

.iat            0x10002000       0x10
 .iat           0x10002000       0x10 tables.S.obj
 .bss.g_layout  0x10002100       0x20 toy.cpp.obj
)";

LinkerMap Map() {
  std::istringstream text(kMap);
  return LinkerMap(text);
}

TEST(LinkerMap, KnowsWhatLiesAtAnAddress) {
  struct Row {
    std::uint32_t address;
    const char* words;
  };
  const LinkerMap map = Map();
  for (const Row& row : {Row{0x10001000, "SetSkip(int, unsigned char)"},
                         {0x1000102F, "SetSkip(int, unsigned char)"},
                         {0x10001034, "import.Sleep"},
                         {0x10001100, "SetSkip(int, unsigned char)"},
                         {0x10001133, "kOrder"},
                         {0x1000200F, "iat"},
                         {0x10002100, "g_layout"}}) {
    const LinkedSection* section = map.At(row.address);
    ASSERT_NE(section, nullptr) << std::hex << row.address;
    EXPECT_EQ(section->InWords(), row.words) << std::hex << row.address;
  }
  for (const std::uint32_t address : {0x0u, 0x10000000u, 0x10001030u, 0x10001134u, 0x10002010u}) {
    EXPECT_EQ(map.At(address), nullptr) << std::hex << address;
  }
}

TEST(LinkerMap, FindsAFunctionByTheNameThatTheSourceCallsIt) {
  const LinkerMap map = Map();
  const LinkedSection* const function = map.FindPlain("SetSkip");
  ASSERT_NE(function, nullptr);
  EXPECT_EQ(function->address, 0x10001000u);
  EXPECT_NE(map.FindPlain("import.Sleep"), nullptr);  // not decorated
  for (const char* other : {"Set", "SetSkip(int, unsigned char)", "kOrder", "Gone"}) {
    EXPECT_EQ(map.FindPlain(other), nullptr) << other;
  }
}

TEST(LinkerMap, LeavesOutWhatIsNoSection) {
  for (const char* line : {" .text 0x 0x10", " .text 0xZZ 0x10", " .text 0x1 0x123456789A",
                           " .text 0x1 -0x10", " .text 0x1 0x10x"}) {
    std::istringstream text("Linker script and memory map\n" + std::string(line) + "\n");
    EXPECT_EQ(LinkerMap(text).At(1), nullptr) << line;
  }
}

TEST(LinkerMap, IsNoneBesideAnImageWhenItCannotBeRead) {
  const std::string image = test::TempPath("no_map.DLL");
  EXPECT_FALSE(LinkerMap::Beside(image));
  const std::string map = std::filesystem::path(image).replace_extension(".map").string();
  std::filesystem::create_directory(map);
  EXPECT_FALSE(LinkerMap::Beside(image));
  std::filesystem::remove(map);
  std::filesystem::create_symlink("/dev/zero", map);
  EXPECT_FALSE(LinkerMap::Beside(image));
  std::filesystem::remove(map);
}

TEST(LinkerMap, FindsAFunctionOrAVariableByItsDecoratedName) {
  const LinkerMap map = Map();
  ASSERT_NE(map.Find("_Z7SetSkipih"), nullptr);
  EXPECT_EQ(map.Find("_Z7SetSkipih")->address, 0x10001000u);
  EXPECT_EQ(map.Find("_Z7SetSkipih")->bytes, 0x30u);
  EXPECT_EQ(map.Find("_Z4Gonev"), nullptr);
  EXPECT_EQ(map.Find("kOrder"), nullptr);
  ASSERT_NE(map.Find("g_layout"), nullptr);
  EXPECT_EQ(map.Find("g_layout")->address, 0x10002100u);
}

TEST(LinkerMap, TellsTextsFromOtherData) {
  const LinkerMap map = Map();
  EXPECT_EQ(map.At(0x10001100)->TextUnit(), 2u);
  EXPECT_EQ(map.At(0x10001120)->TextUnit(), 1u);
  EXPECT_EQ(map.At(0x10001130)->TextUnit(), 0u);
  EXPECT_EQ(map.At(0x10001000)->TextUnit(), 0u);
}

TEST(LinkerMap, NamesARelocationByItsHolderAndWhatItPointsTo) {
  ToyImage toy;
  toy.code.resize(0x130 / 4);
  const auto put = [&toy](std::uint32_t offset, std::uint32_t value) {
    toy.code.at(offset / 4) = value;
    toy.relocations.push_back(ToyImage::kCode + offset);
  };
  put(0x10, 0x10001102);
  put(0x14, 0x10001121);
  put(0x18, 0x10002104);
  put(0x34, 0x10002000);
  put(0x40, 0x10003F00);
  put(0x60, 0x10001000);
  toy.code.at(0x100 / 4) = 0x003E0020;  // " >"
  toy.code.at(0x104 / 4) = 0x000D0041;  // "A\r"
  toy.code.at(0x120 / 4) = 0x006B6F2D;  // "-ok"
  const PeImage image = PeImage::Parse(toy.Bytes());
  const LinkerMap map = Map();
  const char* const names[] = {"SetSkip(int, unsigned char) -> \">A\"",
                               "SetSkip(int, unsigned char) -> \"ok\"",
                               "SetSkip(int, unsigned char) -> g_layout",
                               "import.Sleep -> iat",
                               "import.Sleep -> 0x10003F00",
                               "0x1060 -> SetSkip(int, unsigned char)"};
  ASSERT_EQ(image.Relocations().size(), std::size(names));
  for (std::size_t i = 0; i < std::size(names); ++i) {
    EXPECT_EQ(NameOfRelocation(map, image, i), names[i]);
  }
}

TEST(LinkerMap, IsReadFromTheFileBesideTheImage) {
  const std::string path = test::TempPath("beside.map");
  EXPECT_FALSE(LinkerMap::Beside(test::TempPath("beside.DLL")));
  std::ofstream(path) << kMap;
  const auto map = LinkerMap::Beside(test::TempPath("beside.DLL"));
  ASSERT_TRUE(map);
  EXPECT_NE(map->Find("_Z7SetSkipih"), nullptr);
  std::remove(path.c_str());
}

}  // namespace
}  // namespace emulator
