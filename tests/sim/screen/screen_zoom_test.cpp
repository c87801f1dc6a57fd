// The zoom of the picture.
#include <gtest/gtest.h>

#include "sim/screen/screen.h"
#include "tests/sim/screen/screen_bus.h"

namespace sim {
namespace {

constexpr std::uint8_t kMode = 0x06;
constexpr std::uint8_t kControl = 0x0C;
constexpr std::uint8_t kPosition = 0x0D;

struct ZoomOnBus : ScreenOnBus {
  // The 4x4 layout with every channel in the window of its number.
  explicit ZoomOnBus(unsigned chips = kChipsMax) : ScreenOnBus(chips) {
    for (unsigned n = 0; n < 4 * chips; ++n) Show(n, Sixteenth(n), kQuarter, 0xF);
  }
  void Zoom(std::uint8_t chip) {
    Write(kChipAll, 1, kMode, 0x04);
    Write(chip, 1, kControl, 0x80);
  }
  void Move(std::uint8_t chip, unsigned x, unsigned y) { Write(chip, 1, kPosition, {x, y}); }
};

// The half of an image at a pixel, twice as large.
Image Twice(const Image& image, int left, int top) {
  Image twice = FilledImage(image.width, image.height, {});
  for (int y = 0; y < image.height / 2; ++y) {
    for (int x = 0; x < image.width / 2; ++x) {
      const Rgb pixel = image.At(left + x, top + y);
      twice.At(2 * x, 2 * y) = pixel;
      twice.At(2 * x + 1, 2 * y) = pixel;
      twice.At(2 * x, 2 * y + 1) = pixel;
      twice.At(2 * x + 1, 2 * y + 1) = pixel;
    }
  }
  return twice;
}

TEST(ScreenZoom, FillsTheScreenWithTheHalfAtItsPosition) {
  struct Case {
    unsigned x, y;  // units of four pixels
  };
  for (const Case& c : {Case{0, 0}, Case{45, 30}, Case{1, 0}, Case{0, 1}, Case{90, 60}}) {
    ZoomOnBus bus;
    const Image plain = bus.Screen();
    bus.Zoom(kChipSlave3);
    bus.Move(kChipSlave3, c.x, c.y);
    EXPECT_EQ(bus.Screen(), Twice(plain, 4 * static_cast<int>(c.x), 4 * static_cast<int>(c.y)))
        << c.x << ", " << c.y;
  }
}

TEST(ScreenZoom, EndsAtTheEdgeOfTheScreen) {
  struct Case {
    bool pal;
    unsigned x, y;
    int left, top;  // pixels
  };
  const Case cases[] = {
      {false, 0xB4, 0x78, 360, 240}, {false, 91, 10, 360, 40},     {false, 10, 61, 40, 240},
      {false, 0xFF, 0xFF, 360, 240}, {true, 0xB4, 0x90, 360, 288}, {true, 0, 72, 0, 288},
      {true, 0, 71, 0, 284},
  };
  for (const Case& c : cases) {
    ZoomOnBus bus(1);
    bus.Write(kChipMaster, 1, 0x00, c.pal ? 0x80 : 0x00);
    bus.board.SetCamera(0, c.pal ? Camera::Pal : Camera::Ntsc);
    bus.Show(0, {0, 0xB4, 0, c.pal ? 0x90u : 0x78u}, kWhole);
    const Image plain = bus.Screen();
    bus.Zoom(kChipMaster);
    bus.Move(kChipMaster, c.x, c.y);
    EXPECT_EQ(bus.Screen(), Twice(plain, c.left, c.top)) << c.pal << ": " << c.x << ", " << c.y;
  }
}

TEST(ScreenZoom, IsDoneByOneChipForTheWholeCascade) {
  for (const std::uint8_t chip : kChipByPosition) {
    ZoomOnBus bus;
    bus.Move(kChipAll, 80, 50);
    bus.Move(chip, 20, 10);
    const Image plain = bus.Screen();
    bus.Zoom(chip);
    EXPECT_EQ(bus.Screen(), Twice(plain, 80, 40)) << int{chip};
  }
}

TEST(ScreenZoom, IsDoneByTheLastOfSeveralChips) {
  ZoomOnBus bus;
  const Image plain = bus.Screen();
  bus.Move(kChipMaster, 10, 10);
  bus.Move(kChipSlave2, 20, 20);
  bus.Zoom(kChipMaster);
  bus.Zoom(kChipSlave2);
  EXPECT_EQ(bus.Screen(), Twice(plain, 80, 80));
}

TEST(ScreenZoom, NeedsTheModeOfTheMasterAndTheControlOfAChip) {
  struct Case {
    unsigned mode, control;
    bool zoomed;
  };
  const Case cases[] = {
      {0x04, 0x80, true},  {0xFF, 0xBF, true},  {0x00, 0x80, false},
      {0xFB, 0x80, false}, {0x04, 0x00, false}, {0x04, 0x23, false},  // as initialized
      {0x04, 0x3D, false},                       // the area is set, the zoom not started
      {0x00, 0xC0, false}, {0x04, 0xC0, false},  // a decoded picture in full size
      {0x04, 0x7F, false}, {0x00, 0x00, false},
  };
  for (const Case& c : cases) {
    ZoomOnBus bus(2);
    const Image plain = bus.Screen();
    bus.Write(kChipAll, 1, kMode, c.mode);
    bus.Write(kChipSlave1, 1, kControl, c.control);
    EXPECT_EQ(bus.Screen(), c.zoomed ? Twice(plain, 0, 0) : plain) << c.mode << ", " << c.control;
  }
}

TEST(ScreenZoom, AsksTheMasterAloneForTheMode) {
  ZoomOnBus bus;
  const Image plain = bus.Screen();
  bus.Write(kChipSlave1, 1, kControl, 0x80);
  for (const std::uint8_t slave : {kChipSlave1, kChipSlave2, kChipSlave3}) {
    bus.Write(slave, 1, kMode, 0x04);
  }
  EXPECT_EQ(bus.Screen(), plain);
  bus.Write(kChipMaster, 1, kMode, 0x04);
  EXPECT_EQ(bus.Screen(), Twice(plain, 0, 0));
}

TEST(ScreenZoom, EndsWithoutATrace) {
  ZoomOnBus bus(1);
  const Image plain = bus.Screen();
  bus.Zoom(kChipMaster);
  bus.Move(kChipMaster, 30, 30);
  EXPECT_NE(bus.Screen(), plain);
  bus.Write(kChipAll, 1, kMode, 0x00);
  bus.Write(kChipMaster, 1, kControl, 0x00);
  EXPECT_EQ(bus.Screen(), plain);
}

TEST(ScreenZoom, EnlargesMotionGridsWithTheWindowsThatTheyLieOn) {
  ZoomOnBus bus;
  const Image bare = bus.Screen();
  bus.Write(kChipMaster, 2, 0x60, {0x80, 0, 0x04, 10, 0x02, 8});
  const Image plain = bus.Screen();
  ASSERT_NE(plain, bare);
  bus.Zoom(kChipSlave3);
  EXPECT_EQ(bus.Screen(), Twice(plain, 0, 0));
}

TEST(ScreenZoom, EnlargesBlankedFrozenAndDecodedPicturesAlike) {
  ZoomOnBus bus;
  bus.Attribute(0, 0x04);
  bus.Attribute(1, 0x40);
  bus.Play(4, Sixteenth(4), 0x94);
  bus.board.SetTime(5000);
  const Image plain = bus.Screen();
  bus.Zoom(kChipSlave3);
  EXPECT_EQ(bus.Screen(), Twice(plain, 0, 0));
}

TEST(ScreenZoom, LeavesTheColorBarAlone) {
  ZoomOnBus bus;
  bus.Write(kChipAll, 1, 0xAB, 0x08);
  const Image bars = bus.Screen();
  bus.Zoom(kChipSlave3);
  EXPECT_EQ(bus.Screen(), bars);
}

}  // namespace
}  // namespace sim
