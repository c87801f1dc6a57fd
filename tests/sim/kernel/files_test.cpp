// Files with version resources, and the memory that holds these.
#include "tests/sim/fixture.h"

namespace sim {
namespace {

using VersionFiles = PlatformTest;
const char16_t* const kLibrary = u"\\NAND FLASH\\MDVR\\VexoCtrlSDK.DLL";
const char* const kLibraryPath = "\\NAND FLASH\\MDVR\\VexoCtrlSDK.DLL";

TEST_F(VersionFiles, TheVersionIsReadThroughItsThreeSteps) {
  struct Row {
    const char16_t* path;
    std::uint32_t most, least;
  };
  const Row rows[] = {{kLibrary, 0x00010000, 0x00010006}, {u"\\Windows\\Main.exe", 0x00010000, 0}};
  for (const Row& row : rows) {
    const std::uint32_t size = Plat_VersionInfoSize(row.path);
    ASSERT_NE(size, 0u);
    void* buffer = Plat_Allocate(size);
    PlatFileVersion version{};
    EXPECT_TRUE(Plat_ReadVersionInfo(row.path, size, buffer));
    EXPECT_TRUE(Plat_QueryVersionRoot(buffer, &version));
    EXPECT_EQ(version.most_significant, row.most);
    EXPECT_EQ(version.least_significant, row.least);
    Plat_Free(buffer);
  }
}

TEST_F(VersionFiles, PathsCompareWithoutRegardToCase) {
  EXPECT_NE(Plat_VersionInfoSize(u"\\nand flash\\mdvr\\VEXOCTRLSDK.dll"), 0u);
  world().files.Remove("\\WINDOWS\\main.EXE");
  EXPECT_EQ(Plat_VersionInfoSize(u"\\Windows\\Main.exe"), 0u);
  world().files.Set("\\DLL\\x.dll", {VersionFile::State::Present, {2, 3, 4, 5}});
  ASSERT_NE(world().files.Find("\\dll\\X.DLL"), nullptr);
  EXPECT_EQ(world().files.Find("\\dll\\X.DLL")->version[3], 5);
}

TEST_F(VersionFiles, AnAbsentFileHasNoSize) {
  EXPECT_EQ(Plat_VersionInfoSize(u"\\DLL\\VexoCtrlSDK.DLL"), 0u);
  EXPECT_EQ(Plat_LastError(), 2u);
  Bytes buffer(0x400);
  EXPECT_FALSE(Plat_ReadVersionInfo(u"\\DLL\\VexoCtrlSDK.DLL", 0x400, buffer.data()));
}

TEST_F(VersionFiles, AnUnreadableFileHasASizeButNoContent) {
  world().files.Set(kLibraryPath, {VersionFile::State::Unreadable, {1, 0, 1, 6}});
  EXPECT_NE(Plat_VersionInfoSize(kLibrary), 0u);
  Bytes buffer(0x400);
  EXPECT_FALSE(Plat_ReadVersionInfo(kLibrary, 0x400, buffer.data()));
}

TEST_F(VersionFiles, AFileWithoutARootBlockIsReadInVain) {
  world().files.Set(kLibraryPath, {VersionFile::State::NoRoot, {1, 0, 1, 6}});
  Bytes buffer(Plat_VersionInfoSize(kLibrary));
  PlatFileVersion version{7, 8};
  EXPECT_TRUE(
      Plat_ReadVersionInfo(kLibrary, static_cast<std::uint32_t>(buffer.size()), buffer.data()));
  EXPECT_FALSE(Plat_QueryVersionRoot(buffer.data(), &version));
  EXPECT_EQ(version.most_significant, 7u);
}

TEST_F(VersionFiles, ABufferThatWasNeverReadIntoHasNoRoot) {
  const Bytes buffer(0x400);
  PlatFileVersion version{};
  EXPECT_FALSE(Plat_QueryVersionRoot(buffer.data(), &version));
  EXPECT_FALSE(Plat_QueryVersionRoot(nullptr, &version));
}

TEST_F(VersionFiles, ABufferIsNotWrittenBeyondItsSize) {
  Bytes buffer(8, 0x55);
  EXPECT_FALSE(Plat_ReadVersionInfo(kLibrary, 8, buffer.data()));
  EXPECT_FALSE(Plat_ReadVersionInfo(kLibrary, 0x400, nullptr));
  EXPECT_EQ(buffer, Bytes(8, 0x55));
}

TEST_F(VersionFiles, EachPathThatWasAskedIsKept) {
  Plat_VersionInfoSize(u"\\DLL\\a.dll");
  Plat_VersionInfoSize(kLibrary);
  EXPECT_EQ(world().files.asked, (Lines{"\\DLL\\a.dll", kLibraryPath}));
}

TEST_F(VersionFiles, AllocationsAreCounted) {
  void* first = Plat_Allocate(10);
  void* second = Plat_Allocate(10);
  EXPECT_EQ(world().allocations, 2u);
  Plat_Free(first);
  Plat_Free(nullptr);
  EXPECT_EQ(world().allocations, 1u);
  Plat_Free(second);
  EXPECT_EQ(world().allocations, 0u);
}

TEST_F(VersionFiles, TheAllocationFaultFires) {
  world().faults.Set(Fault::Allocate, true);
  EXPECT_EQ(Plat_Allocate(10), nullptr);
  EXPECT_EQ(Plat_LastError(), 8u);
  EXPECT_EQ(world().faults.Hits(Fault::Allocate), 1u);
  EXPECT_EQ(world().allocations, 0u);
}

}  // namespace
}  // namespace sim
