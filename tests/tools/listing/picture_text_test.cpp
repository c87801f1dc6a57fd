// Pictures in plain characters.
#include "tools/vexosim/listing/picture_text.h"

#include <gtest/gtest.h>

namespace vexosim {
namespace {

TEST(PlainPicture, GoesFromDarkToBright) {
  sim::Image image;
  image.width = 20;
  image.height = 4;
  image.pixels.resize(80);
  for (int y = 0; y < 4; ++y) {
    for (int x = 0; x < 20; ++x) {
      const auto level = static_cast<std::uint8_t>(x / 2 * 28);
      image.At(x, y) = {level, level, level};
    }
  }
  EXPECT_EQ(DrawPicture(image, {.columns = 10}), " .:-=+*#%@\n");
  EXPECT_EQ(DrawPicture(image, {.columns = 1000}), "  ..::--==++**##%%@@\n  ..::--==++**##%%@@\n");
}

TEST(PlainPicture, IsNothingForNoImage) { EXPECT_EQ(DrawPicture({}, {}), ""); }

}  // namespace
}  // namespace vexosim
