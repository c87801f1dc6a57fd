// Imports, exports and the shared section read from an image's file, and files that are none.
#include "device/check/image_reader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "device/ceimage/elf_file.h"
#include "device/ceimage/pe_image.h"
#include "device/ceimage/resources.h"
#include "tests/device/ceimage/elf_builder.h"
#include "tests/device/emulator/toy_image.h"

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
  ImageReader reader(file.data(), static_cast<unsigned>(bytes));
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

TEST(ImageReader, NamesEachImportOfAnImage) {
  const ceimage::Bytes image = Image();
  EXPECT_THAT(Imports(image, image.size()), ElementsAre("dll #8"));
}

TEST(ImageReader, TellsProcessorAndBase) {
  const ceimage::Bytes image = Image();
  ImageFacts facts = {};
  EXPECT_TRUE(ImageReader(image.data(), static_cast<unsigned>(image.size())).ReadFacts(facts));
  EXPECT_EQ(facts.machine, 0x1C2u);
  EXPECT_EQ(facts.base, ceimage::Get32(image, 0x80 + 24 + 28));
}

TEST(ImageReader, FindsWhereAnExportLies) {
  emulator::ToyImage toy;
  toy.code = {0xE12FFF1E, 0xE12FFF1E, 0xE12FFF1E};
  toy.exports = {{"Begin", 4}, {"Beg", 8}, {"End", 0}};
  const std::vector<std::uint8_t> image = toy.Bytes();
  const ImageReader reader(image.data(), static_cast<unsigned>(image.size()));
  EXPECT_EQ(reader.ExportOffset("Begin"), 0x1004u);
  EXPECT_EQ(reader.ExportOffset("Beg"), 0x1008u);
  EXPECT_EQ(reader.ExportOffset("End"), 0x1000u);
  EXPECT_EQ(reader.ExportOffset("Begi"), 0u);
  EXPECT_EQ(ImageReader(image.data(), 0x200).ExportOffset("Begin"), 0u);
}

TEST(ImageReader, FindsTheSharedSection) {
  emulator::ToyImage toy;
  toy.code = {0xE12FFF1E};
  for (const bool shared : {false, true}) {
    toy.shared_data = shared;
    const std::vector<std::uint8_t> image = toy.Bytes();
    const ImageReader reader(image.data(), static_cast<unsigned>(image.size()));
    EXPECT_EQ(reader.SharedOffset(), shared ? 0x2000u : 0u);
  }
}

TEST(ImageReader, AFileThatIsCutNowhereLeadsOutOfIt) {
  const ceimage::Bytes image = Image();
  for (std::size_t bytes = 0; bytes < image.size(); bytes += 3) {
    const ceimage::Bytes cut(image.begin(), image.begin() + static_cast<std::ptrdiff_t>(bytes));
    EXPECT_LE(Imports(cut, bytes).size(), 1u);
  }
  EXPECT_THAT(Imports(ceimage::Bytes(4096, 0xFF), 4096), IsEmpty());
  ImageFacts facts = {};
  EXPECT_FALSE(ImageReader(image.data(), 0x80).ReadFacts(facts));
}

}  // namespace
}  // namespace check
