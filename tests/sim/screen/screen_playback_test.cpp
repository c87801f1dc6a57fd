#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "sim/screen/motion_boxes.h"
#include "sim/screen/screen.h"
#include "tests/sim/screen/screen_bus.h"
#include "tests/sim/screen/tape_reader.h"

namespace sim {
namespace {

constexpr WindowRect kWholeScreen{0x00, 0xB4, 0x00, 0x78};
constexpr WindowRect kHalfScreen{0x5A, 0xB4, 0x3C, 0x78};     // 360 x 240
constexpr WindowRect kQuarterScreen{0x2D, 0x5A, 0x1E, 0x3C};  // 180 x 120
constexpr std::uint32_t kSomeTime = 4'321'800;                // 01:12:01 and 24 frames

// Window n of sixteen that part the screen evenly.
WindowRect Tile(unsigned n) {
  return {0x2D * (n % 4), 0x2D * (n % 4 + 1), 0x1E * (n / 4), 0x1E * (n / 4 + 1)};
}

// Every channel in its tile, decoded: position 0 of each chip 0x90, 0x94, 0x98, 0x9C and the other
// positions 0x11 to 0x1F, as playback leaves them.
ScreenOnBus Sixteen() {
  ScreenOnBus bus;
  for (unsigned n = 0; n < 16; ++n) bus.Play(n, Tile(n), n % 4 == 0 ? 0x90 | n : 0x10 | n);
  return bus;
}

Image Cut(const Image& image, WindowRect rect) {
  const int left = static_cast<int>(rect.left) * 4;
  const int top = static_cast<int>(rect.top) * 4;
  Image part = FilledImage(static_cast<int>(rect.right) * 4 - left,
                           static_cast<int>(rect.bottom) * 4 - top, {});
  for (int y = 0; y < part.height; ++y) {
    for (int x = 0; x < part.width; ++x) part.At(x, y) = image.At(left + x, top + y);
  }
  return part;
}

TEST(ScreenPlayback, ShowsEveryDecodedChannelInItsPlace) {
  const Image image = Sixteen().Screen();
  for (unsigned n = 0; n < 16; ++n) EXPECT_EQ(WrongTapePixels(image, Tile(n), n), 0) << n;
}

TEST(ScreenPlayback, TakesTheChannelFromThePath) {
  ScreenOnBus bus;
  for (unsigned n = 0; n < 16; ++n) bus.Play(n, Tile(n), 0x90 | (15 - n));
  const Image image = bus.Screen();
  for (unsigned n = 0; n < 16; ++n) EXPECT_EQ(WrongTapePixels(image, Tile(n), 15 - n), 0) << n;
}

TEST(ScreenPlayback, TakesItsOwnChannelWhenThePathNamesNone) {
  ScreenOnBus bus;
  for (unsigned n = 0; n < 16; ++n) bus.Play(n, Tile(n), (n + 5) % 16);
  const Image image = bus.Screen();
  for (unsigned n = 0; n < 16; ++n) EXPECT_EQ(WrongTapePixels(image, Tile(n), n), 0) << n;
}

TEST(ScreenPlayback, LeavesAPositionWithoutTheDecodedBitToItsCamera) {
  ScreenOnBus bus = Sixteen();
  bus.Write(kChipSlave1, 0, 0x90, 0x40 | 0xF);
  bus.Scale(5, kQuarter, kQuarter);
  for (const unsigned display : {0x80u, 0xC0u, 0xD0u}) {
    bus.Write(kChipSlave1, 1, 0x18, display | 1);
    const Image image = bus.Screen();
    EXPECT_EQ(WrongPixels(image, Tile(5), 5, 4, 4), 0) << display;
    EXPECT_EQ(WrongTapePixels(image, Tile(6), 6), 0) << display;
  }
}

TEST(ScreenPlayback, HasNoPictureWhileTheDecodedInputOfTheChipIsOff) {
  ScreenOnBus bus = Sixteen();
  bus.Path(4, 0x14);
  Image image = bus.Screen();
  for (unsigned n = 0; n < 16; ++n) {
    if (n / 4 == 1) {
      EXPECT_EQ(NotOf(image, Tile(n), kScreenNoPicture), 0) << n;
    } else {
      EXPECT_EQ(WrongTapePixels(image, Tile(n), n), 0) << n;
    }
  }
  bus.Path(4, 0x94);
  image = bus.Screen();
  for (unsigned n = 4; n < 8; ++n) EXPECT_EQ(WrongTapePixels(image, Tile(n), n), 0) << n;
}

TEST(ScreenPlayback, LetsOnlyPositionZeroSwitchTheDecodedInputOff) {
  ScreenOnBus bus(1);
  for (unsigned n = 0; n < 4; ++n) bus.Play(n, Tile(n), 0x10 | n);
  bus.Path(0, 0x00);  // as live display leaves it: not a decoded path, so nothing to switch off
  const Image image = bus.Screen();
  for (unsigned n = 0; n < 4; ++n) EXPECT_EQ(WrongTapePixels(image, Tile(n), n), 0) << n;
}

TEST(ScreenPlayback, KeepsShowingCamerasWhileTheDecodedInputIsOff) {
  ScreenOnBus bus(1);
  bus.Show(1, kQuarterScreen, kQuarter, 0xF);
  bus.Path(0, 0x10);
  EXPECT_EQ(WrongPixels(bus.Screen(), kQuarterScreen, 1, 4, 4), 0);
}

TEST(ScreenPlayback, FillsTheWindowWhateverTheScalerHolds) {
  for (const WindowRect rect : {kWholeScreen, kHalfScreen, kQuarterScreen}) {
    for (const unsigned ratio : {0u, kQuarter, kHalf, kWhole}) {
      for (const unsigned control : {0x00u, 0x81u, 0xFFu}) {
        ScreenOnBus bus(1);
        bus.Play(2, rect, 0x12);
        bus.Write(kChipMaster, 0, 0xA0, control);
        bus.Scale(2, ratio, ratio);
        EXPECT_EQ(WrongTapePixels(bus.Screen(), rect, 2), 0) << rect.left << " " << ratio;
      }
    }
  }
}

TEST(ScreenPlayback, FitsThePictureToWindowsOfAnySize) {
  constexpr WindowRect kUpperLeft{0x04, 0x5A, 0x01, 0x3C};  // 344 x 236
  const Image card = TapeCard(7);
  ScreenOnBus bus;
  for (const WindowRect rect :
       {kUpperLeft, Sixteenth(6), WindowRect{0x2C, 0x82, 0x1E, 0x58}, kFullNtsc}) {
    bus.Play(4, rect, 0x97);
    const Image part = Cut(bus.Screen(), rect);
    int difference = 0;
    for (int y = 0; y < part.height; ++y) {
      for (int x = 0; x < part.width; ++x) {
        // The average of the card's area that lies under the pixel, a little grown.
        const int left = x * card.width / part.width;
        const int right = ((x + 1) * card.width - 1) / part.width + 1;
        const int top = y * card.height / part.height;
        const int bottom = ((y + 1) * card.height - 1) / part.height + 1;
        int sum = 0;
        for (int row = top; row < bottom; ++row) {
          for (int column = left; column < right; ++column) sum += card.At(column, row).g;
        }
        difference += std::abs(part.At(x, y).g - sum / ((right - left) * (bottom - top)));
      }
    }
    EXPECT_LT(difference, 3 * part.width * part.height) << rect.left << " " << rect.top;
  }
}

// Each of its pixels is the average of 180 x 120 samples, 180 x 144 on PAL: no window takes more.
TEST(ScreenPlayback, FitsThePictureToTheSmallestWindow) {
  constexpr WindowRect kUnit{0x2C, 0x2D, 0x1E, 0x1F};
  for (const unsigned system : {0x00u, 0x80u}) {
    for (unsigned channel = 0; channel < 16; ++channel) {
      ScreenOnBus bus(1);
      bus.Write(kChipMaster, 1, 0x00, system);
      bus.Play(0, kUnit, 0x90 | channel);
      EXPECT_EQ(WrongTapePixels(bus.Screen(), kUnit, channel), 0) << system << " " << channel;
    }
  }
}

TEST(ScreenPlayback, EnlargesThePictureForAWindowBeyondTheScreen) {
  ScreenOnBus bus(1);
  bus.Play(0, {0x00, 0xF0, 0x00, 0xA0}, 0x90);  // 960 x 640: four pixels from three
  const Image image = bus.Screen();
  const Image card = TapeCard(0);
  for (int y = 0; y < 480; ++y) {
    for (int x = 0; x < 720; ++x) {
      ASSERT_EQ(image.At(x, y), card.At(x * 3 / 4, y * 3 / 4)) << x << ", " << y;
    }
  }
}

TEST(ScreenPlayback, IsReadableInAFourSplit) {
  constexpr WindowRect kLowerRight{0x5A, 0xB0, 0x3C, 0x77};
  ScreenOnBus bus;
  bus.board.SetTime(kSomeTime);
  bus.Play(13, kLowerRight, 0x1D);
  const Image window = Cut(bus.Screen(), kLowerRight);
  EXPECT_EQ(ReadTimeCode(window), "01:12:01:24");
  EXPECT_EQ(ReadNumber(window), "13");
}

TEST(ScreenPlayback, DarkensABlankedChannelOnly) {
  ScreenOnBus bus = Sixteen();
  bus.Attribute(9, 0x04);
  bus.Path(12, 0x1C);
  bus.Attribute(13, 0x04);
  const Image image = bus.Screen();
  EXPECT_EQ(NotOf(image, Tile(9), kScreenBlanked), 0);
  EXPECT_EQ(NotOf(image, Tile(13), kScreenBlanked), 0) << "blanked and the input off";
  EXPECT_EQ(WrongTapePixels(image, Tile(8), 8), 0);
  EXPECT_EQ(WrongTapePixels(image, Tile(10), 10), 0);
}

TEST(ScreenPlayback, ShowsNothingOfAPositionThatIsNotEnabledOrHasNoWindow) {
  ScreenOnBus bus(1);
  bus.Play(0, kWholeScreen, 0x90, 0x54);
  bus.Play(1, {0, 0, 0, 0}, 0x11);
  EXPECT_EQ(bus.Screen(), FilledImage(720, 480, kScreenBackground));
}

TEST(ScreenPlayback, PutsTheFrontChannelOnTopOfAFullPicture) {
  ScreenOnBus bus;
  for (unsigned n = 0; n < 16; ++n) {
    bus.Play(n, kWholeScreen, n % 4 == 0 ? 0x90 | n : 0x10 | n, 0x94);
  }
  EXPECT_EQ(WrongTapePixels(bus.Screen(), kWholeScreen, 0), 0) << "the lowest of one layer";
  bus.Write(kChipSlave2, 1, 0x20, 0xD6);
  EXPECT_EQ(WrongTapePixels(bus.Screen(), kWholeScreen, 10), 0);
}

TEST(ScreenPlayback, LayersCamerasAndDecodedPicturesAlike) {
  ScreenOnBus bus;
  bus.Play(0, kWholeScreen, 0x90, 0x94);
  bus.Show(9, kQuarterScreen, kQuarter, 0xF, 0xC0);
  EXPECT_EQ(WrongPixels(bus.Screen(), kQuarterScreen, 9, 4, 4), 0);
  bus.Write(kChipMaster, 1, 0x10, 0xD4);
  EXPECT_EQ(WrongTapePixels(bus.Screen(), kWholeScreen, 0), 0);
}

TEST(ScreenPlayback, DoesNotCareForTheCameras) {
  ScreenOnBus bus = Sixteen();
  const Image before = bus.Screen();
  bus.board.SetCamera(3, Camera::Off);
  bus.board.SetWeak(6, true);
  bus.board.SetCamera(7, Camera::Pal);
  EXPECT_EQ(bus.Screen(), before);
}

TEST(ScreenPlayback, TakesNoNoticeOfAHold) {
  ScreenOnBus bus = Sixteen();
  const Image before = bus.Screen();
  for (unsigned p = 0; p < 4; ++p) bus.Write(kChipAll, 1, 0x10 + 8 * p, 0xC4 | p);
  EXPECT_EQ(bus.Screen(), before);
}

TEST(ScreenPlayback, RunsWithTimeAndStandsStillWhileFrozen) {
  ScreenOnBus bus = Sixteen();
  bus.board.SetTime(61'000);
  bus.Attribute(7, 0x40);
  bus.board.SetTime(75'500);
  Image image = bus.Screen();
  EXPECT_EQ(WrongTapePixels(image, Tile(7), 7, 61'000), 0);
  EXPECT_EQ(WrongTapePixels(image, Tile(6), 6, 75'500), 0);
  EXPECT_GT(WrongTapePixels(image, Tile(7), 7, 75'500), 50);
  bus.Attribute(7, 0x00);
  EXPECT_EQ(WrongTapePixels(bus.Screen(), Tile(7), 7, 75'500), 0);
}

TEST(ScreenPlayback, FreezesWithoutACamera) {
  ScreenOnBus bus(1);
  bus.board.SetCamera(2, Camera::Off);
  bus.Play(2, kWholeScreen, 0x1D);  // the position freezes, not the channel that it shows
  bus.board.SetTime(3'000);
  bus.Attribute(2, 0x40);
  bus.board.SetTime(9'000);
  EXPECT_EQ(ReadTimeCode(bus.Screen()), "00:00:03:00");
}

TEST(ScreenPlayback, PlaysInTheBoardsStandard) {
  ScreenOnBus bus(1);
  bus.board.SetTime(kSomeTime);
  const WindowRect full{0x00, 0xB4, 0x00, 0x90};
  bus.Play(3, full, 0x13);
  bus.Write(kChipMaster, 1, 0x00, 0x80);
  const Image image = bus.Screen();
  ASSERT_EQ(image.height, 576);
  EXPECT_EQ(WrongTapePixels(image, full, 3, kSomeTime), 0);
  EXPECT_EQ(ReadTimeCode(image), "01:12:01:20") << "25 frames a second";
}

TEST(ScreenPlayback, ShowsAnyDecodedChannelOnABoardOfOneChip) {
  ScreenOnBus bus(1);
  bus.Play(0, kWholeScreen, 0x9E);
  EXPECT_EQ(ReadNumber(bus.Screen()), "14");
}

TEST(ScreenPlayback, ShowsNothingOfAnEmptyPosition) {
  ScreenOnBus bus = Sixteen();
  bus.board.SetId(2, 0x00);
  const Image image = bus.Screen();
  for (unsigned n = 8; n < 12; ++n) EXPECT_EQ(NotOf(image, Tile(n), kScreenBackground), 0) << n;
  EXPECT_EQ(WrongTapePixels(image, Tile(12), 12), 0);
}

TEST(ScreenPlayback, DrawsMotionCellsOverThePicture) {
  ScreenOnBus bus(1);
  bus.Play(0, kWholeScreen, 0x90);
  const Image plain = bus.Screen();
  bus.Write(kChipMaster, 2, 0x60, {0x80, 0x00, 0x00, 0x14, 0x00, 0x14});
  const Image boxed = bus.Screen();
  const Rgb pixel = plain.At(200, 0);
  EXPECT_EQ(boxed.At(200, 0), (Rgb{static_cast<std::uint8_t>((pixel.r + kCellOutline.r) / 2),
                                   static_cast<std::uint8_t>((pixel.g + kCellOutline.g) / 2),
                                   static_cast<std::uint8_t>((pixel.b + kCellOutline.b) / 2)}));
}

TEST(ScreenPlayback, GivesWayToTheMastersColorBar) {
  ScreenOnBus bus = Sixteen();
  bus.Write(kChipMaster, 1, 0xAB, 0x08);
  EXPECT_EQ(bus.Screen().At(0, 0), (Rgb{235, 235, 235}));
}

TEST(ScreenPlayback, ReturnsToTheCamerasUnchanged) {
  ScreenOnBus bus;
  for (unsigned n = 0; n < 16; ++n) bus.Show(n, Sixteenth(n), kQuarter, 0xF);
  const Image live = bus.Screen();
  for (unsigned n = 0; n < 16; ++n) bus.Play(n, Sixteenth(n), 0x90 | n);
  EXPECT_NE(bus.Screen(), live);
  for (unsigned p = 0; p < 4; ++p) {
    bus.Write(kChipAll, 1, 0x10 + 8 * p, 0x80 | p);
    bus.Write(kChipAll, 1, 0x16 + 8 * p, p);
  }
  EXPECT_EQ(bus.Screen(), live);
}

}  // namespace
}  // namespace sim
