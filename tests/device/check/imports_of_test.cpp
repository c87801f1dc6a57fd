// Imports read from an image's file, and files that are none.
#include "device/check/imports_of.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "device/ceimage/elf_file.h"
#include "device/ceimage/pe_image.h"
#include "device/ceimage/resources.h"
#include "tests/device/ceimage/elf_builder.h"

namespace check {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

ceimage::Bytes Image() {
  return ceimage::MakeImage(ceimage::ReadElf(ceimage::SmallLibrary().Build()),
                            ceimage::ReadResources(ceimage::ResourceFile({{16, 1, 0x409}})),
                            ceimage::kMachineThumb);
}

std::vector<std::string> Imports(const ceimage::Bytes& file, std::size_t bytes) {
  ImportReader reader(file.data(), static_cast<unsigned>(bytes));
  std::vector<std::string> found;
  const char* library = nullptr;
  const char* name = nullptr;
  std::uint32_t number = 0;
  while (reader.Next(library, name, number)) {
    found.push_back(std::string(library) + ' ' +
                    (name == nullptr ? '#' + std::to_string(number) : name));
  }
  return found;
}

TEST(ImportReader, NamesEachImportOfAnImage) {
  const ceimage::Bytes image = Image();
  EXPECT_THAT(Imports(image, image.size()), ElementsAre("dll #8"));
}

TEST(ImportReader, TellsProcessorAndBase) {
  const ceimage::Bytes image = Image();
  ImageFacts facts = {};
  EXPECT_TRUE(ImportReader(image.data(), static_cast<unsigned>(image.size())).ReadFacts(facts));
  EXPECT_EQ(facts.machine, 0x1C2u);
  EXPECT_EQ(facts.base, ceimage::Get32(image, 0x80 + 24 + 28));
}

TEST(ImportReader, AFileThatIsCutNowhereLeadsOutOfIt) {
  const ceimage::Bytes image = Image();
  for (std::size_t bytes = 0; bytes < image.size(); bytes += 3) {
    const ceimage::Bytes cut(image.begin(), image.begin() + static_cast<std::ptrdiff_t>(bytes));
    EXPECT_LE(Imports(cut, bytes).size(), 1u);
  }
  EXPECT_THAT(Imports(ceimage::Bytes(4096, 0xFF), 4096), IsEmpty());
  ImageFacts facts = {};
  EXPECT_FALSE(ImportReader(image.data(), 0x80).ReadFacts(facts));
}

}  // namespace
}  // namespace check
