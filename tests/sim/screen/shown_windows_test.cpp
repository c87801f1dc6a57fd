// The windows of the screen, one by one.
#include <gtest/gtest.h>

#include "sim/screen/screen.h"
#include "tests/sim/screen/screen_bus.h"

namespace sim {
namespace {

using Shows = ShownWindow::Shows;

constexpr WindowRect kUpperLeft{0x04, 0x5A, 0x01, 0x3C};

TEST(ShownWindows, AreNoneWhileNothingIsProgrammedOrNoMasterIsThere) {
  EXPECT_TRUE(ShownWindows(ScreenOnBus(4).board).empty());
  ScreenOnBus bus(4);
  bus.Show(0, kUpperLeft, kHalf);
  bus.Show(4, kUpperLeft, kHalf);
  EXPECT_EQ(ShownWindows(bus.board).size(), 2u);
  bus.board.SetId(0, 0);
  EXPECT_TRUE(ShownWindows(bus.board).empty());
}

TEST(ShownWindows, LieInPixelsTopmostFirst) {
  ScreenOnBus bus(4);
  bus.Show(5, kUpperLeft, kHalf, 0, 0x80);
  bus.Show(9, Sixteenth(3), kQuarter, 0, 0xC0);
  const std::vector<ShownWindow> windows = ShownWindows(bus.board);
  ASSERT_EQ(windows.size(), 2u);
  EXPECT_EQ(windows[0].channel, 9u);
  EXPECT_TRUE(windows[0].front);
  EXPECT_EQ(windows[0].left, 0x85 * 4);
  EXPECT_EQ(windows[0].right, 0xB0 * 4);
  EXPECT_EQ(windows[0].top, 0x02 * 4);
  EXPECT_EQ(windows[0].bottom, 0x1F * 4);
  EXPECT_EQ(windows[1].channel, 5u);
  EXPECT_FALSE(windows[1].front);
}

TEST(ShownWindows, EndWithTheScreenAndAreNotBeyondIt) {
  ScreenOnBus bus(1);
  bus.Show(0, {0xA0, 0xFF, 0x70, 0xFF}, kWhole);
  bus.Show(1, {0xB4, 0xFF, 0x00, 0x10}, kWhole);
  const std::vector<ShownWindow> windows = ShownWindows(bus.board);
  ASSERT_EQ(windows.size(), 1u);
  EXPECT_EQ(windows[0].left, 640);
  EXPECT_EQ(windows[0].right, 720);
  EXPECT_EQ(windows[0].top, 448);
  EXPECT_EQ(windows[0].bottom, 480);
}

TEST(ShownWindows, AreWhereTheZoomPutsThem) {
  ScreenOnBus bus(1);
  bus.Show(0, {0x10, 0x20, 0x10, 0x20}, kWhole);
  bus.Show(1, {0x40, 0xB4, 0x20, 0x78}, kWhole);
  bus.Write(kChipMaster, 1, 0x06, 0x04);
  bus.Write(kChipMaster, 1, 0x0C, 0x80);
  bus.Write(kChipMaster, 1, 0x0D, {0x20, 0x10});
  const std::vector<ShownWindow> windows = ShownWindows(bus.board);
  ASSERT_EQ(windows.size(), 1u);
  EXPECT_EQ(windows[0].channel, 1u);
  EXPECT_EQ(windows[0].left, 0x20 * 8);
  EXPECT_EQ(windows[0].right, 720);
  EXPECT_EQ(windows[0].top, 0x10 * 8);
  EXPECT_EQ(windows[0].bottom, 480);
}

TEST(ShownWindows, SayWhatTheyShow) {
  ScreenOnBus bus(2);
  bus.Show(0, Sixteenth(0), kQuarter);
  bus.board.SetCamera(0, Camera::Off);
  bus.Show(1, Sixteenth(1), kQuarter);
  bus.Write(kChipMaster, 0, 0x90, 3 << 6);  // its scaler takes another camera
  bus.Show(2, Sixteenth(2), kQuarter);
  bus.Attribute(2, 0x04);
  bus.Play(5, Sixteenth(5), 0x10 | 11);
  const std::vector<ShownWindow> windows = ShownWindows(bus.board);
  ASSERT_EQ(windows.size(), 4u);
  EXPECT_EQ(windows[0].shows, Shows::Camera);
  EXPECT_EQ(windows[0].picture, 0u);
  EXPECT_FALSE(windows[0].signal);
  EXPECT_EQ(windows[1].picture, 3u);
  EXPECT_TRUE(windows[1].signal);
  EXPECT_EQ(windows[2].shows, Shows::Blank);
  EXPECT_EQ(windows[3].channel, 5u);
  EXPECT_EQ(windows[3].shows, Shows::Tape);
  EXPECT_EQ(windows[3].picture, 11u);
  bus.Path(4, 0x10);  // closes the decoded input of the whole chip
  EXPECT_EQ(ShownWindows(bus.board)[3].shows, Shows::Nothing);
}

TEST(ShownWindows, AreNoneUnderAColorBar) {
  ScreenOnBus bus(1);
  bus.Show(0, kUpperLeft, kHalf);
  bus.Write(kChipMaster, 1, 0xAB, 0x08);
  EXPECT_TRUE(ShownWindows(bus.board).empty());
}

TEST(ShownWindows, ThatAreFrozenKeepTheSignalOfThen) {
  ScreenOnBus bus(1);
  bus.Show(0, kUpperLeft, kHalf);
  bus.Attribute(0, 0x40);
  bus.board.SetCamera(0, Camera::Off);
  const std::vector<ShownWindow> windows = ShownWindows(bus.board);
  ASSERT_EQ(windows.size(), 1u);
  EXPECT_TRUE(windows[0].frozen);
  EXPECT_TRUE(windows[0].signal);
}

}  // namespace
}  // namespace sim
