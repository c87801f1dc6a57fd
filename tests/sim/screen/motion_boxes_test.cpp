#include "sim/screen/motion_boxes.h"

#include <gtest/gtest.h>

#include "tests/sim/screen/screen_bus.h"

namespace sim {
namespace {

constexpr Rgb kGrey{100, 100, 100};
constexpr Rgb kOutlined{162, 162, 162};
constexpr Rgb kTinted{138, 138, 138};
constexpr Rgb kRed{177, 70, 70};

// The box registers of a channel: position in units, cell size, and its 24 mask bytes.
struct Boxes : BoardOnBus {
  void Grid(unsigned channel, unsigned control, unsigned x, unsigned width, unsigned y,
            unsigned height) {
    const unsigned p = channel % 4;
    Write(kChipByPosition[channel / 4], 2, 0x60 + 8 * p, {control, 0, x, width, y, height});
  }
  void Mask(unsigned channel, unsigned byte, unsigned value) {
    Write(kChipByPosition[channel / 4], 2, 0x86 + 0x20 * (channel % 4) + byte, value);
  }
  Image Drawn() const {
    Image image = FilledImage(720, 480, kGrey);
    DrawMotionBoxes(board, image);
    return image;
  }
};

TEST(MotionBoxes, DrawsNothingUnlessTheBoxIsOn) {
  Boxes boxes;
  boxes.Grid(0, 0x20, 4, 0x15, 1, 0x13);
  EXPECT_EQ(boxes.Drawn(), FilledImage(720, 480, kGrey));
}

TEST(MotionBoxes, DrawsNothingForCellsWithoutASize) {
  Boxes boxes;
  boxes.Grid(0, 0x88, 0, 0, 0, 0);
  EXPECT_EQ(boxes.Drawn(), FilledImage(720, 480, kGrey));
}

TEST(MotionBoxes, CoversAFullScreenWindowWithSixteenByTwelveCells) {
  Boxes boxes;
  boxes.Grid(0, 0xA8, 4, 0x15, 1, 0x13);
  const Image image = boxes.Drawn();
  int cells = 0;
  for (int row = 0; row < 12; ++row) {
    for (int column = 0; column < 16; ++column) {
      const int x = 16 + 42 * column;
      const int y = 4 + 38 * row;
      if (image.At(x, y) == kOutlined && image.At(x + 1, y + 1) == kGrey) ++cells;
    }
  }
  EXPECT_EQ(cells, 192);
  EXPECT_EQ(image.At(16 + 16 * 42, 100), kGrey);
  EXPECT_EQ(image.At(100, 4 + 12 * 38), kGrey);
  EXPECT_EQ(image.At(15, 100), kGrey);
  EXPECT_EQ(image.At(100, 3), kGrey);
}

TEST(MotionBoxes, TintsTheCellOfEachMaskBit) {
  struct Case {
    unsigned byte, value;
    int column, row;
  };
  for (const Case& c : {Case{0, 0x01, 8, 0}, Case{0, 0x80, 15, 0}, Case{1, 0x01, 0, 0},
                        Case{1, 0x80, 7, 0}, Case{22, 0x04, 10, 11}, Case{23, 0x20, 5, 11}}) {
    Boxes boxes;
    boxes.Grid(6, 0xA2, 0x2F, 4, 0x1F, 4);
    boxes.Mask(6, c.byte, c.value);
    const Image image = boxes.Drawn();
    for (int row = 0; row < 12; ++row) {
      for (int column = 0; column < 16; ++column) {
        const bool watched = row == c.row && column == c.column;
        EXPECT_EQ(image.At(0x2F * 4 + 8 * column + 4, 0x1F * 4 + 8 * row + 4),
                  watched ? kTinted : kGrey)
            << c.byte << " " << c.value << ": " << column << ", " << row;
      }
    }
  }
}

TEST(MotionBoxes, TurnsWatchedCellsRedWhileTheirChannelHasMotion) {
  Boxes boxes;
  boxes.Grid(1, 0xA1, 0, 4, 0, 4);
  boxes.Mask(1, 1, 0x01);
  boxes.board.SetMotion(1, true);
  const Image image = boxes.Drawn();
  EXPECT_EQ(image.At(4, 4), kRed);
  EXPECT_EQ(image.At(12, 4), kGrey) << "a cell that is not watched";
  boxes.board.SetMotion(1, false);
  boxes.board.SetMotion(0, true);
  EXPECT_EQ(boxes.Drawn().At(4, 4), kTinted);
}

TEST(MotionBoxes, StayWithinTheScreen) {
  Boxes boxes;
  boxes.Grid(0, 0x80, 0xB3, 0xFF, 0x77, 0xFF);
  const Image image = boxes.Drawn();
  EXPECT_EQ(image.At(716, 476), kOutlined);
  EXPECT_EQ(image.At(715, 476), kGrey);
}

TEST(MotionBoxes, AppearOnTheScreenOverThePicture) {
  ScreenOnBus bus(1);
  bus.Show(0, kFullNtsc, kWhole);
  const Image before = bus.Screen();
  bus.Write(kChipMaster, 2, 0x60, {0xA8, 0x32, 4, 0x15, 1, 0x13});
  const Image after = bus.Screen();
  EXPECT_NE(after.At(16 + 42, 50), before.At(16 + 42, 50));
  EXPECT_EQ(after.At(16 + 43, 50), before.At(16 + 43, 50));
}

}  // namespace
}  // namespace sim
