#include "sim/picture/png.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

#include "tests/support/read_png.h"
#include "tests/support/temp_path.h"

namespace sim {
namespace {

Image SmallImage() {
  Image image = FilledImage(5, 3, {10, 20, 30});
  image.At(0, 0) = {255, 0, 0};
  image.At(4, 2) = {1, 2, 3};
  return image;
}

std::uint32_t BigEndian32(const std::string& bytes, std::size_t at) {
  std::uint32_t value = 0;
  for (std::size_t i = 0; i < 4; ++i) value = value << 8 | static_cast<std::uint8_t>(bytes[at + i]);
  return value;
}

TEST(Png, HoldsTheImagesSizeAndKind) {
  const std::string path = test::TempPath("screen.png");
  WritePng(SmallImage(), path);
  std::ifstream file(path, std::ios::binary);
  const std::string bytes{std::istreambuf_iterator<char>(file), {}};
  std::remove(path.c_str());
  ASSERT_GT(bytes.size(), 40u);
  EXPECT_EQ(bytes.substr(0, 8), "\x89PNG\r\n\x1a\n");
  EXPECT_EQ(bytes.substr(12, 4), "IHDR");
  EXPECT_EQ(BigEndian32(bytes, 16), 5u);
  EXPECT_EQ(BigEndian32(bytes, 20), 3u);
  EXPECT_EQ(bytes[24], 8) << "bits";
  EXPECT_EQ(bytes[25], 2) << "RGB";
}

TEST(Png, ReadsBackAsItWasWritten) {
  const std::string path = test::TempPath("screen.png");
  const Image image = SmallImage();
  WritePng(image, path);
  const Image back = test::ReadPng(path);
  std::remove(path.c_str());
  EXPECT_EQ(back, image);
}

TEST(Png, SaysWhichFileItCouldNotWriteOrRead) {
  const auto message = [](auto&& action) -> std::string {
    try {
      action();
    } catch (const std::runtime_error& error) {
      return error.what();
    }
    return "no exception";
  };
  const std::string nowhere = "/no/such/directory/picture.png";
  EXPECT_EQ(message([&] { WritePng(SmallImage(), nowhere); }),
            "cannot write " + nowhere + ": No such file or directory");
  EXPECT_EQ(message([&] { test::ReadPng(nowhere); }).find(nowhere + ": "), 0u);
  EXPECT_EQ(message([&] { WritePng(SmallImage(), "screen.jpg"); }),
            "expected the name of a picture that ends in .png, found 'screen.jpg'");
  EXPECT_EQ(message([&] { WritePng(SmallImage(), "/dev/full"); }),
            "cannot write /dev/full: No space left on device");
}

TEST(Png, LeavesADeviceThatItCannotFillWhereItIs) {
  EXPECT_ANY_THROW(WritePng(SmallImage(), "/dev/full"));
  EXPECT_TRUE(std::filesystem::is_character_file("/dev/full"));
}

}  // namespace
}  // namespace sim
