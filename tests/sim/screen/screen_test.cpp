#include "sim/screen/screen.h"

#include <gtest/gtest.h>

#include "tests/sim/screen/screen_bus.h"

namespace sim {
namespace {

constexpr WindowRect kUpperLeft{0x04, 0x5A, 0x01, 0x3C};
constexpr WindowRect kUpperRight{0x5A, 0xB0, 0x01, 0x3C};

// The 4x4 layout with every channel in the window of its number.
ScreenOnBus Sixteen() {
  ScreenOnBus bus;
  for (unsigned n = 0; n < 16; ++n) bus.Show(n, Sixteenth(n), kQuarter, 0xF);
  return bus;
}

TEST(Screen, IsBackgroundWhileNothingIsProgrammed) {
  for (const unsigned chips : {0u, 4u}) {
    EXPECT_EQ(ScreenOnBus(chips).Screen(), FilledImage(720, 480, kScreenBackground)) << chips;
  }
}

TEST(Screen, ShowsAFullScreenCard) {
  ScreenOnBus bus(1);
  bus.Show(2, kFullNtsc, kWhole);
  const Image image = bus.Screen();
  EXPECT_EQ(image.width, 720);
  EXPECT_EQ(image.height, 480);
  EXPECT_EQ(WrongPixels(image, kFullNtsc, 2, 1, 1), 0);
  EXPECT_EQ(image.At(15, 100), kScreenBackground);
  EXPECT_EQ(image.At(100, 3), kScreenBackground);
  EXPECT_EQ(image.At(704, 100), kScreenBackground);
  EXPECT_EQ(image.At(100, 476), kScreenBackground);
}

TEST(Screen, Has576LinesOnPal) {
  ScreenOnBus bus(1);
  bus.Write(kChipMaster, 1, 0x00, 0x80);
  bus.board.SetCamera(0, Camera::Pal);
  const WindowRect full{0x04, 0xB0, 0x01, 0x8E};
  bus.Show(0, full, kWhole);
  const Image image = bus.Screen();
  EXPECT_EQ(image.height, 576);
  EXPECT_EQ(WrongPixels(image, full, 0, 1, 1, 0, kCardHeightPal), 0);
}

TEST(Screen, LeavesLinesEmptyThatACameraOfTheOtherStandardDoesNotHave) {
  ScreenOnBus bus(1);
  bus.Write(kChipMaster, 1, 0x00, 0x80);
  bus.Show(0, {0, 0xB4, 0, 0x90}, kWhole);
  const Image image = bus.Screen();
  EXPECT_EQ(image.At(300, 479), TestCardPixel(0, 300, 479, kCardHeightNtsc, 0));
  EXPECT_EQ(image.At(300, 480), kScreenNoPicture);
}

TEST(Screen, ShowsSixteenNumberedCardsInTheirPlaces) {
  const Image image = Sixteen().Screen();
  for (unsigned n = 0; n < 16; ++n) {
    EXPECT_EQ(WrongPixels(image, Sixteenth(n), n, 4, 4), 0) << n;
    const unsigned other = (n + 1) % 16;
    EXPECT_GT(WrongPixels(image, Sixteenth(n), other, 4, 4), PixelsOf(Sixteenth(n)) / 2)
        << n << " could be taken for " << other;
  }
}

TEST(Screen, ScalesByAThirdAndByAHalf) {
  ScreenOnBus bus(1);
  const WindowRect third{0x04, 0x3D, 0x02, 0x29};
  bus.Show(0, third, kThird, 0xA);
  bus.Show(1, kUpperRight, kHalf, 0x5);
  const Image image = bus.Screen();
  EXPECT_EQ(WrongPixels(image, third, 0, 3, 3), 0);
  EXPECT_EQ(WrongPixels(image, kUpperRight, 1, 2, 2), 0);
}

TEST(Screen, ScalesWidthAndHeightApart) {
  ScreenOnBus bus(1);
  bus.Show(0, kUpperLeft, kWhole);
  bus.Scale(0, kHalf, kQuarter);
  const Image image = bus.Screen();
  for (int y = 0; y < 236; ++y) {
    for (int x = 0; x < 180; ++x) {
      ASSERT_EQ(image.At(16 + x, 4 + y), TestCardPixel(0, 4 * x, 2 * y, kCardHeightNtsc, 0))
          << x << ", " << y;
    }
  }
  EXPECT_EQ(image.At(16 + 180, 4), kScreenNoPicture);
}

TEST(Screen, FiltersAcrossAndDownApart) {
  struct Case {
    unsigned filter;
    int across, down;  // samples
  };
  for (const Case& c : {Case{0x1, 2, 1}, Case{0x4, 1, 2}, Case{0x2, 3, 1}, Case{0xC, 1, 4}}) {
    ScreenOnBus bus(1);
    bus.Show(0, kUpperLeft, kHalf, c.filter);
    const Image image = bus.Screen();
    const Image card = TestCard(0);
    int wrong = 0;
    for (int y = 0; y < 220; ++y) {
      for (int x = 0; x < 320; ++x) {
        const Rgb expected = Average(card, 2 * x, 2 * y, c.across, c.down);
        if (image.At(16 + x, 4 + y) != expected) ++wrong;
      }
    }
    EXPECT_EQ(wrong, 0) << c.filter;
  }
}

TEST(Screen, LooksWrongWithoutTheFilterOfTheLayoutCode) {
  ScreenOnBus bus = Sixteen();
  bus.Write(kChipSlave1, 0, 0x90, 0x40);
  const Image image = bus.Screen();
  EXPECT_GT(WrongPixels(image, Sixteenth(5), 5, 4, 4), 500);
  EXPECT_EQ(WrongPixels(image, Sixteenth(5), 5, 4, 1), 0);
  EXPECT_EQ(WrongPixels(image, Sixteenth(6), 6, 4, 4), 0);
}

TEST(Screen, LooksWrongWithAScalerCodeThatDoesNotFitTheWindow) {
  ScreenOnBus bus = Sixteen();
  bus.Scale(5, kWhole, kWhole);    // too large: the corner of the picture
  bus.Scale(6, kQuarter, 0x1FFF);  // half as wide as its window
  const Image image = bus.Screen();
  EXPECT_GT(WrongPixels(image, Sixteenth(5), 5, 4, 4), PixelsOf(Sixteenth(5)) / 2);
  const int left = 0x5A * 4;
  const int top = 0x1F * 4;
  EXPECT_NE(image.At(left + 89, top), kScreenNoPicture);
  for (int x = left + 90; x < 0x85 * 4; ++x) EXPECT_EQ(image.At(x, top + 50), kScreenNoPicture);
}

TEST(Screen, ShowsNextToNothingThroughAScalerThatNobodyProgrammed) {
  ScreenOnBus bus(1);
  bus.Show(0, kFullNtsc, 0);
  const Image image = bus.Screen();
  EXPECT_LE(NotOf(image, kFullNtsc, kScreenNoPicture), 1);
}

TEST(Screen, ShowsTheCameraThatTheScalerTakes) {
  ScreenOnBus bus(2);
  bus.Show(4, kUpperLeft, kHalf, 0x1);
  bus.Show(5, kUpperRight, kHalf, 0x1);
  bus.Write(kChipSlave1, 0, 0x80, 0x41);
  bus.Write(kChipSlave1, 0, 0x90, 0x01);
  const Image swapped = bus.Screen();
  ScreenOnBus straight(2);
  straight.Show(4, kUpperRight, kHalf, 0x1);
  straight.Show(5, kUpperLeft, kHalf, 0x1);
  EXPECT_EQ(swapped, straight.Screen());
}

TEST(Screen, ShowsTheScalerThatTheDisplayRegisterNames) {
  ScreenOnBus bus(1);
  bus.Show(0, kUpperLeft, kHalf, 0x5);
  bus.Show(3, {0, 0, 0, 0}, kHalf, 0x5);
  bus.Write(kChipMaster, 1, 0x10, 0xC3);
  EXPECT_EQ(WrongPixels(bus.Screen(), kUpperLeft, 3, 2, 2), 0);
}

TEST(Screen, HidesAnEmptyRectangle) {
  for (const WindowRect rect :
       {WindowRect{0, 0, 0, 0}, WindowRect{0x5A, 0x5A, 0x01, 0x3C},
        WindowRect{0x5A, 0x04, 0x01, 0x3C}, WindowRect{0x04, 0x5A, 0x3C, 0x01}}) {
    ScreenOnBus bus(1);
    bus.Show(0, rect, kHalf);
    EXPECT_EQ(bus.Screen(), FilledImage(720, 480, kScreenBackground));
  }
}

TEST(Screen, CutsAWindowAtItsEdge) {
  ScreenOnBus bus(1);
  const WindowRect corner{0xA0, 0xFF, 0x70, 0xFF};
  bus.Show(0, corner, kWhole);
  const Image image = bus.Screen();
  EXPECT_EQ(image.At(719, 479), TestCardPixel(0, 719 - 640, 479 - 448, kCardHeightNtsc, 0));
}

TEST(Screen, ShowsNothingOfAChannelThatIsNotEnabled) {
  ScreenOnBus bus(1);
  bus.Show(0, kFullNtsc, kWhole, 0, 0x40);
  EXPECT_EQ(bus.Screen(), FilledImage(720, 480, kScreenBackground));
}

TEST(Screen, DarkensABlankedChannelOnly) {
  ScreenOnBus bus = Sixteen();
  bus.Attribute(9, 0x06);
  const Image image = bus.Screen();
  EXPECT_EQ(NotOf(image, Sixteenth(9), kScreenBlanked), 0);
  EXPECT_EQ(WrongPixels(image, Sixteenth(8), 8, 4, 4), 0);
  EXPECT_EQ(WrongPixels(image, Sixteenth(10), 10, 4, 4), 0);
}

TEST(Screen, TurnsBlueWhereACameraIsLostOrWeak) {
  ScreenOnBus bus = Sixteen();
  bus.board.SetCamera(3, Camera::Off);
  bus.board.SetWeak(12, true);
  const Image image = bus.Screen();
  EXPECT_EQ(NotOf(image, Sixteenth(3), kScreenNoSignal), 0);
  EXPECT_EQ(NotOf(image, Sixteenth(12), kScreenNoSignal), 0);
  EXPECT_EQ(WrongPixels(image, Sixteenth(2), 2, 4, 4), 0);
  bus.board.SetCamera(3, Camera::Ntsc);
  EXPECT_EQ(WrongPixels(bus.Screen(), Sixteenth(3), 3, 4, 4), 0);
}

TEST(Screen, TakesNoNoticeOfAHold) {
  ScreenOnBus bus = Sixteen();
  const Image before = bus.Screen();
  bus.Write(kChipSlave2, 1, 0x18, 0xD1);
  EXPECT_EQ(bus.Screen(), before);
}

TEST(Screen, PutsTheFrontLayerAboveAllOtherChannelsOfTheCascade) {
  ScreenOnBus bus;
  bus.Show(0, kFullNtsc, kWhole, 0, 0x80);
  const WindowRect inset{0x78, 0xA2, 0x4B, 0x69};
  bus.Show(15, inset, kQuarter, 0xF, 0xC0);
  EXPECT_EQ(WrongPixels(bus.Screen(), inset, 15, 4, 4), 0);
  bus.Write(kChipSlave3, 1, 0x28, 0x83);
  EXPECT_EQ(WrongPixels(bus.Screen(), kFullNtsc, 0, 1, 1), 0);
}

TEST(Screen, PutsTheLowerChannelOnTopWithinALayer) {
  for (const unsigned display : {0x80u, 0xC0u}) {
    ScreenOnBus bus;
    bus.Show(6, kFullNtsc, kWhole, 0, display);
    bus.Show(5, kFullNtsc, kWhole, 0, display);
    bus.Show(9, kFullNtsc, kWhole, 0, display);
    EXPECT_EQ(WrongPixels(bus.Screen(), kFullNtsc, 5, 1, 1), 0) << display;
  }
}

TEST(Screen, LetsABlankedWindowCoverWhatIsBelow) {
  ScreenOnBus bus(1);
  bus.Show(0, kUpperLeft, kHalf, 0x5);
  bus.Show(1, kFullNtsc, kWhole);
  bus.Attribute(0, 0x04);
  EXPECT_EQ(NotOf(bus.Screen(), kUpperLeft, kScreenBlanked), 0);
}

TEST(Screen, ShowsNothingOfAnEmptyPosition) {
  ScreenOnBus bus = Sixteen();
  bus.board.SetId(2, 0x00);
  const Image image = bus.Screen();
  for (unsigned n = 8; n < 12; ++n) EXPECT_EQ(NotOf(image, Sixteenth(n), kScreenBackground), 0);
  EXPECT_EQ(WrongPixels(image, Sixteenth(12), 12, 4, 4), 0);
}

TEST(Screen, MovesWithTimeAndStandsStillWhileFrozen) {
  ScreenOnBus bus = Sixteen();
  bus.board.SetTime(1000);
  bus.Attribute(7, 0x40);
  bus.board.SetTime(2500);
  const Image image = bus.Screen();
  EXPECT_EQ(WrongPixels(image, Sixteenth(7), 7, 4, 4, 1000), 0);
  EXPECT_EQ(WrongPixels(image, Sixteenth(6), 6, 4, 4, 2500), 0);
  EXPECT_GT(WrongPixels(image, Sixteenth(7), 7, 4, 4, 2500), 500);
  bus.Attribute(7, 0x00);
  EXPECT_EQ(WrongPixels(bus.Screen(), Sixteenth(7), 7, 4, 4, 2500), 0);
}

TEST(Screen, KeepsAFrozenPictureWhenItsCameraGoesAndComes) {
  ScreenOnBus bus = Sixteen();
  bus.Attribute(7, 0x40);
  bus.board.SetCamera(7, Camera::Off);
  EXPECT_EQ(WrongPixels(bus.Screen(), Sixteenth(7), 7, 4, 4), 0);
  bus.Attribute(7, 0x00);
  bus.Attribute(7, 0x40);
  bus.board.SetCamera(7, Camera::Ntsc);
  EXPECT_EQ(NotOf(bus.Screen(), Sixteenth(7), kScreenNoSignal), 0);
}

TEST(Screen, KeepsTheLinesOfAFrozenPictureWhenItsCameraChangesStandard) {
  const WindowRect full{0, 0xB4, 0, 0x90};
  for (const bool to_pal : {true, false}) {
    ScreenOnBus bus(1);
    bus.Write(kChipMaster, 1, 0x00, 0x80);
    bus.board.SetCamera(1, to_pal ? Camera::Ntsc : Camera::Pal);
    bus.Show(1, full, kWhole);
    bus.Attribute(1, 0x40);
    const Image frozen = bus.Screen();
    bus.board.SetCamera(1, to_pal ? Camera::Pal : Camera::Ntsc);
    EXPECT_EQ(bus.Screen(), frozen);
    bus.Attribute(1, 0x00);
    EXPECT_NE(bus.Screen(), frozen);
  }
}

TEST(Screen, ShowsTheMastersColorBarInsteadOfEverything) {
  ScreenOnBus bus = Sixteen();
  const Image live = bus.Screen();
  bus.Write(kChipSlave1, 1, 0xAB, 0x08);
  EXPECT_EQ(bus.Screen(), live);
  bus.Write(kChipMaster, 1, 0xAB, 0x08);
  const Image bars = bus.Screen();
  const Rgb expected[] = {{235, 235, 235}, {235, 235, 16}, {16, 235, 235}, {16, 235, 16},
                          {235, 16, 235},  {235, 16, 16},  {16, 16, 235},  {16, 16, 16}};
  for (int i = 0; i < 8; ++i) {
    EXPECT_EQ(bars.At(90 * i, 0), expected[i]);
    EXPECT_EQ(bars.At(90 * i + 89, 479), expected[i]);
  }
  bus.Write(kChipMaster, 1, 0xAB, 0x00);
  EXPECT_EQ(bus.Screen(), live);
}

}  // namespace
}  // namespace sim
