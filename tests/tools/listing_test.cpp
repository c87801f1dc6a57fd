// Register listings, plain pictures and texts.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

#include "sim/board.h"
#include "tools/vexosim/picture_text.h"
#include "tools/vexosim/register_listing.h"
#include "tools/vexosim/text.h"

namespace vexosim {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

TEST(RegisterListing, PrintsSixteenBytesALine) {
  sim::Reports reports;
  sim::Board board(reports);
  board.FitChips(2);
  for (unsigned reg = 0x30; reg < 0x40; ++reg) {
    board.Poke(1, kPage1, static_cast<std::uint8_t>(reg), static_cast<std::uint8_t>(reg + 0x70));
  }
  const std::string text = ListRegisters(board, 1, kPage1);
  EXPECT_THAT(text,
              StartsWith("slave1 page 1\n      .0 .1 .2 .3 .4 .5 .6 .7 .8 .9 .a .b .c .d .e .f\n"
                         "  00  "));
  EXPECT_THAT(text, HasSubstr("\n  30  a0 a1 a2 a3 a4 a5 a6 a7 a8 a9 aa ab ac ad ae af\n"));
  EXPECT_EQ(Lines(text).size(), 18U);
  EXPECT_THAT(text, Not(HasSubstr("page 0")));
}

TEST(RegisterListing, PrintsAllPagesOrThatThereIsNoChip) {
  sim::Reports reports;
  sim::Board board(reports);
  board.FitChips(1);
  EXPECT_EQ(Lines(ListRegisters(board, 0, std::nullopt)).size(), 3U * 18U);
  board.SetId(1, 0x55);
  EXPECT_EQ(ListRegisters(board, 1, std::nullopt), "slave1: not fitted, identification 0x55\n");
}

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
  EXPECT_EQ(DrawPicture(image, {false, 10}), " .:-=+*#%@\n");
  EXPECT_EQ(DrawPicture(image, {false, 1000}), "  ..::--==++**##%%@@\n  ..::--==++**##%%@@\n");
}

TEST(PlainPicture, IsNothingForNoImage) { EXPECT_EQ(DrawPicture({}, {false, 80}), ""); }

TEST(ToolTexts, ShowNumbers) {
  EXPECT_EQ(Hex(0), "0x00");
  EXPECT_EQ(Hex(0x2403, 4), "0x2403");
  EXPECT_EQ(Hex(0x12345, 4), "0x12345");
  EXPECT_EQ(HexBytes(std::vector<std::uint8_t>{0, 0xAB, 0x7F}), "00ab7f");
  EXPECT_EQ(HexBytes(std::vector<std::uint8_t>{0, 0xAB}, " "), "00 ab");
}

TEST(ToolTexts, ListBitsAsRanges) {
  EXPECT_EQ(BitList(0, 16), "");
  EXPECT_EQ(BitList(0xFFDF, 16), "0-4,6-15");
  EXPECT_EQ(BitList(0x5, 16), "0,2");
  EXPECT_EQ(BitList(0xFF, 4), "0-3");
  EXPECT_EQ(BitList(std::numeric_limits<std::uint32_t>::max(), 32), "0-31");
}

TEST(ToolTexts, AreCutIntoLines) {
  EXPECT_THAT(Lines("\r\n a\r\nb\n\nc"), ElementsAre(" a", "b", "c"));
  EXPECT_THAT(Lines("\r\n"), IsEmpty());
}

}  // namespace
}  // namespace vexosim
