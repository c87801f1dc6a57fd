// The chips' fill engine: how long it stays busy, and what it draws.
#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <tuple>

#include "sim/screen/bitmap_layer.h"
#include "tests/sim/screen/screen_bus.h"

namespace {

using sim::BoardOnBus;

constexpr std::uint8_t kFill = 0x0A;

TEST(FillEngine, HasFinishedAtOnceUnlessItIsToldToStayBusy) {
  BoardOnBus bus;
  bus.Write(kChipMaster, 2, kFill, 0xC0);
  EXPECT_EQ(bus.Read(kChipMaster, 2, kFill), 0x40);
}

TEST(FillEngine, StaysBusyForSoManyReadsAfterEachStart) {
  BoardOnBus bus;
  bus.board.SetFillBusy(2);
  for (int fill = 0; fill < 2; ++fill) {
    bus.Write(kChipMaster, 2, kFill, 0xC0);
    EXPECT_EQ(bus.board.Peek(0, 2, kFill), 0xC0) << "looking counts for no read";
    EXPECT_EQ(bus.Read(kChipMaster, 2, kFill), 0xC0);
    EXPECT_EQ(bus.Read(kChipMaster, 2, kFill), 0xC0);
    EXPECT_EQ(bus.Read(kChipMaster, 2, kFill), 0x40);
    EXPECT_EQ(bus.Read(kChipMaster, 2, kFill), 0x40);
  }
}

TEST(FillEngine, IsBusyOnTheChipThatWasStartedAlone) {
  BoardOnBus bus;
  bus.board.SetFillBusy(1);
  bus.Write(kChipSlave2, 2, kFill, 0x80);
  EXPECT_EQ(bus.Read(kChipMaster, 2, kFill), 0x00);
  EXPECT_EQ(bus.Read(kChipSlave1, 2, kFill), 0x00);
  EXPECT_EQ(bus.Read(kChipSlave2, 2, kFill), 0x80);
  EXPECT_EQ(bus.Read(kChipSlave2, 2, kFill), 0x00);
}

TEST(FillEngine, IsStartedByBit7OfItsControlRegisterOnly) {
  BoardOnBus bus;
  bus.board.SetFillBusy(3);
  bus.Write(kChipMaster, 2, kFill, 0x7F);
  EXPECT_EQ(bus.Read(kChipMaster, 2, kFill), 0x7F);
  bus.Write(kChipMaster, 2, 0x09, 0xFF);
  bus.Write(kChipMaster, 1, kFill, 0xFF);
  bus.Write(kChipMaster, 0, kFill, 0xFF);
  EXPECT_EQ(bus.Read(kChipMaster, 2, kFill), 0x7F);
  EXPECT_EQ(bus.Read(kChipMaster, 1, kFill), 0xFF);
}

TEST(FillEngine, IsNotStartedFromTheBackSide) {
  BoardOnBus bus;
  bus.board.SetFillBusy(3);
  bus.board.Poke(0, 2, kFill, 0xC0);
  EXPECT_EQ(bus.Read(kChipMaster, 2, kFill), 0x40);
}

TEST(FillEngine, LosesAStartWhileItIsBusy) {
  sim::ScreenOnBus bus(1);
  const sim::Image empty = bus.Screen();
  bus.board.SetFillBusy(1);
  bus.Write(kChipMaster, 2, kFill, 0x80);  // column 0 of line 0
  const sim::Image first = bus.Screen();
  EXPECT_NE(first, empty) << "a fill is drawn at once";
  bus.Write(kChipMaster, 2, 0x05, {7, 7});
  bus.Write(kChipMaster, 2, kFill, 0x80);
  EXPECT_EQ(bus.Screen(), first);
  EXPECT_EQ(bus.Read(kChipMaster, 2, kFill), 0x80);
  EXPECT_EQ(bus.Read(kChipMaster, 2, kFill), 0x00);
  EXPECT_EQ(bus.Screen(), first) << "it was not put off";
  bus.Write(kChipMaster, 2, kFill, 0x80);
  EXPECT_NE(bus.Screen(), first);
}

// ---- What it draws ------------------------------------------------------------------------------

using sim::BitmapColor;
using sim::FilledImage;
using sim::Image;
using sim::kScreenBackground;
using sim::Rgb;

constexpr unsigned kGreen = 0x1C;
constexpr unsigned kRed = 0xE0;

struct FillOnBus : sim::ScreenOnBus {
  using ScreenOnBus::ScreenOnBus;

  void Data(std::uint8_t chip, unsigned byte) { Write(chip, 2, 0x00, {byte, byte, byte, byte}); }
  void Range(std::uint8_t chip, unsigned left, unsigned right, unsigned top, unsigned bottom) {
    const unsigned high = (((top >> 6) & 0xFC) + (bottom >> 8)) | 0x02;
    Write(chip, 2, 0x05, {left, right, top & 0xFF, bottom & 0xFF, high});
  }
  void Start(std::uint8_t chip) { Write(chip, 2, kFill, 0xC0); }
  void Fill(std::uint8_t chip, unsigned byte, unsigned left, unsigned right, unsigned top,
            unsigned bottom) {
    Data(chip, byte);
    Range(chip, left, right, top, bottom);
    Start(chip);
  }
  void FillScreen(std::uint8_t chip, unsigned byte) {
    Fill(chip, byte, 0x00, 0xB0, 0, 309);
    Fill(chip, byte, 0xB0, 0xB3, 0, 309);
  }
  void ShowPicture() { Show(0, {0, 0xB4, 0, 0x78}, sim::kWhole); }
};

// An image with a rectangle, in pixels, whose last columns and lines are still part of it.
Image WithRect(Image image, Rgb color, int left, int right, int top, int bottom) {
  for (int y = top; y <= bottom; ++y) {
    for (int x = left; x <= right; ++x) image.At(x, y) = color;
  }
  return image;
}

Image Background(int height = 480) { return FilledImage(720, height, kScreenBackground); }

TEST(FillEngine, DrawsColumnsOfFourPixelsAndFieldLinesTheLastOnesIncluded) {
  struct Case {
    unsigned left, right, top, bottom;
    int x, x_end, y, y_end;  // pixels of the screen
  };
  const Case cases[] = {
      {0, 0, 0, 0, 0, 3, 0, 1},
      {10, 19, 20, 39, 40, 79, 40, 79},
      {0x00, 0x10, 0, 9, 0, 67, 0, 19},
      {0xB3, 0xB3, 239, 239, 716, 719, 478, 479},
  };
  for (const Case& c : cases) {
    FillOnBus bus(1);
    bus.Fill(kChipMaster, kGreen, c.left, c.right, c.top, c.bottom);
    EXPECT_EQ(bus.Screen(), WithRect(Background(), BitmapColor(kGreen), c.x, c.x_end, c.y, c.y_end))
        << c.left << ", " << c.top;
  }
}

TEST(FillEngine, TakesTheHighBitsOfItsLinesFromOneRegister) {
  struct Case {
    unsigned top, bottom, high;  // low bytes of the lines, and the register of the high bits
    int y, y_end;
  };
  const Case cases[] = {
      {0x00, 0x05, 0x07, 512, 523},  // 256 to 261
      {0xFF, 0x00, 0x03, 510, 513},  // 255 to 256
      {0x10, 0x20, 0x02, 32, 65},    // bit 1 is always set ...
      {0x10, 0x20, 0x00, 32, 65},    // ... and is no part of a line
  };
  for (const Case& c : cases) {
    FillOnBus bus(1);
    bus.Write(kChipMaster, 1, 0x00, 0x80);  // PAL: 288 lines a field
    bus.Data(kChipMaster, kRed);
    bus.Write(kChipMaster, 2, 0x05, {0x00, 0xB3, c.top, c.bottom, c.high});
    bus.Start(kChipMaster);
    EXPECT_EQ(bus.Screen(), WithRect(Background(576), BitmapColor(kRed), 0, 719, c.y, c.y_end))
        << c.top << ", " << c.high;
  }
}

TEST(FillEngine, CoversTheWholeScreenWithTwoFills) {
  for (const unsigned system : {0x00u, 0x80u}) {
    FillOnBus bus(1);
    bus.Write(kChipMaster, 1, 0x00, system);
    bus.FillScreen(kChipMaster, kGreen);
    EXPECT_EQ(bus.Screen(), FilledImage(720, system == 0 ? 480 : 576, BitmapColor(kGreen)));
    // The first of the two alone leaves three columns.
    FillOnBus half(1);
    half.Write(kChipMaster, 1, 0x00, system);
    half.Fill(kChipMaster, kGreen, 0x00, 0xB0, 0, 309);
    EXPECT_EQ(half.Screen().At(707, 0), BitmapColor(kGreen));
    EXPECT_EQ(half.Screen().At(708, 0), kScreenBackground);
  }
}

TEST(FillEngine, ClearsWithTransparentData) {
  FillOnBus bus(1);
  bus.ShowPicture();
  const Image picture = bus.Screen();
  bus.FillScreen(kChipMaster, 0xFF);
  EXPECT_EQ(bus.Screen(), picture) << "there was nothing to clear";
  bus.Fill(kChipMaster, kRed, 10, 19, 10, 19);
  EXPECT_EQ(bus.Screen(), WithRect(picture, BitmapColor(kRed), 40, 79, 20, 39));
  bus.Fill(kChipMaster, 0xFF, 15, 17, 0, 14);
  Image cleared = WithRect(picture, BitmapColor(kRed), 40, 79, 20, 39);
  for (int y = 20; y < 30; ++y) {
    for (int x = 60; x < 72; ++x) cleared.At(x, y) = picture.At(x, y);
  }
  EXPECT_EQ(bus.Screen(), cleared);
  bus.FillScreen(kChipMaster, 0xFF);
  EXPECT_EQ(bus.Screen(), picture);
}

TEST(FillEngine, GivesEachPixelOfAColumnAByteOfItsOwn) {
  FillOnBus bus(1);
  bus.Write(kChipMaster, 2, 0x00, {0x03, 0xFF, 0xE0, 0x1C});
  bus.Range(kChipMaster, 5, 6, 0, 0);
  bus.Start(kChipMaster);
  const Image image = bus.Screen();
  for (const int x : {20, 24}) {
    EXPECT_EQ(image.At(x, 0), BitmapColor(0x03));
    EXPECT_EQ(image.At(x + 1, 0), kScreenBackground);
    EXPECT_EQ(image.At(x + 2, 0), BitmapColor(0xE0));
    EXPECT_EQ(image.At(x + 3, 0), BitmapColor(0x1C));
  }
  EXPECT_EQ(image.At(28, 0), kScreenBackground);
}

TEST(FillEngine, HasAVisibleColorForEveryByte) {
  std::set<std::tuple<int, int, int>> colors;
  for (unsigned byte = 0; byte < 0xFF; ++byte) {
    const Rgb color = BitmapColor(static_cast<std::uint8_t>(byte));
    colors.insert({color.r, color.g, color.b});
    EXPECT_GE(std::min({color.r, color.g, color.b}), 40) << byte << " is too dark";
  }
  EXPECT_EQ(colors.size(), 0xFFu);
}

TEST(FillEngine, DrawsNothingOutsideOfItsMemoryOrBackwards) {
  struct Case {
    unsigned left, right, top, bottom;
  };
  for (const Case& c :
       {Case{20, 19, 0, 9}, Case{0, 9, 20, 19}, Case{0xB4, 0xFF, 0, 9}, Case{0, 9, 310, 400}}) {
    FillOnBus bus(1);
    bus.Fill(kChipMaster, kRed, c.left, c.right, c.top, c.bottom);
    EXPECT_EQ(bus.Screen(), Background()) << c.left << ", " << c.top;
  }
  FillOnBus bus(1);
  bus.Fill(kChipMaster, kRed, 0xB0, 0xFF, 235, 511);
  EXPECT_EQ(bus.Screen(), WithRect(Background(), BitmapColor(kRed), 704, 719, 470, 479));
}

TEST(FillEngine, DrawsWhenItIsStartedOnly) {
  FillOnBus bus(1);
  bus.Data(kChipMaster, kRed);
  bus.Range(kChipMaster, 0, 9, 0, 9);
  EXPECT_EQ(bus.Screen(), Background());
  bus.Write(kChipMaster, 2, kFill, 0x40);
  bus.board.Poke(0, 2, kFill, 0xC0);
  EXPECT_EQ(bus.Screen(), Background());
  bus.Start(kChipMaster);
  const Image drawn = WithRect(Background(), BitmapColor(kRed), 0, 39, 0, 19);
  EXPECT_EQ(bus.Screen(), drawn);
  bus.Data(kChipMaster, kGreen);
  bus.Range(kChipMaster, 0, 90, 0, 90);
  EXPECT_EQ(bus.Screen(), drawn) << "the registers are looked at when a fill starts";
}

TEST(FillEngine, DrawsForEachChipWithTheMasterOnTop) {
  FillOnBus bus;
  bus.Fill(kChipMaster, kRed, 0, 9, 0, 9);
  bus.Fill(kChipSlave1, kGreen, 5, 14, 0, 9);
  bus.Fill(kChipSlave3, 0x03, 10, 19, 0, 9);
  const Image slave3 = WithRect(Background(), BitmapColor(0x03), 40, 79, 0, 19);
  const Image slave1 = WithRect(slave3, BitmapColor(kGreen), 20, 59, 0, 19);
  EXPECT_EQ(bus.Screen(), WithRect(slave1, BitmapColor(kRed), 0, 39, 0, 19));
}

TEST(FillEngine, DrawsForAllChipsThatABroadcastStarts) {
  FillOnBus bus;
  bus.Fill(kChipAll, kRed, 0, 9, 0, 9);
  bus.Fill(kChipMaster, 0xFF, 0, 9, 0, 9);
  const Image drawn = WithRect(Background(), BitmapColor(kRed), 0, 39, 0, 19);
  EXPECT_EQ(bus.Screen(), drawn) << "the slaves' bitmaps show through";
  bus.Fill(kChipAll, 0xFF, 0, 9, 0, 9);
  EXPECT_EQ(bus.Screen(), Background());
}

TEST(FillEngine, DrawsNothingOnAnEmptyPosition) {
  FillOnBus bus(1);
  bus.Fill(kChipSlave1, kRed, 0, 9, 0, 9);
  bus.board.FitChips(2);
  EXPECT_EQ(bus.Screen(), Background());
  bus.Fill(kChipSlave1, kRed, 0, 9, 0, 9);
  EXPECT_NE(bus.Screen(), Background());
  bus.board.FitChips(1);
  EXPECT_EQ(bus.Screen(), Background());
}

TEST(FillEngine, DrawsAboveThePictureItsZoomAndTheMotionGrids) {
  FillOnBus bus(1);
  bus.ShowPicture();
  bus.Write(kChipMaster, 2, 0x60, {0x80, 0, 0, 10, 0, 8});
  bus.Write(kChipMaster, 1, 0x06, 0x04);
  bus.Write(kChipMaster, 1, 0x0C, 0x80);
  const Image zoomed = bus.Screen();
  bus.Fill(kChipMaster, kRed, 0, 19, 0, 19);
  EXPECT_EQ(bus.Screen(), WithRect(zoomed, BitmapColor(kRed), 0, 79, 0, 39));
}

TEST(FillEngine, IsHiddenByTheColorBar) {
  FillOnBus bus(1);
  bus.Write(kChipMaster, 1, 0xAB, 0x08);
  const Image bars = bus.Screen();
  bus.FillScreen(kChipMaster, kRed);
  EXPECT_EQ(bus.Screen(), bars);
}

}  // namespace
