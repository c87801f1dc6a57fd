#include "display/window_tables.h"

#include <string>
#include <vector>

#include "chip/video_state.h"
#include "tests/display/display_test.h"

namespace test {
namespace {

class WindowTables : public DisplayTest {
 protected:
  static std::vector<Rect> AllDefaults(bool ntsc) {
    std::vector<Rect> rects;
    for (int mode = 0; mode < 7; ++mode) {
      for (const Rect& rect : DefaultRects(mode, ntsc)) rects.push_back(rect);
    }
    return rects;
  }
};

TEST_F(WindowTables, AreEmptyUntilTheyAreBuilt) {
  for (const WindowTable* table : {&g_layout.live, &g_layout.play}) {
    for (const Rect& rect : RectsOf(*table)) EXPECT_EQ(rect, kHidden);
  }
}

TEST_F(WindowTables, HoldTheNtscRectanglesOfAllModesInOrderOnEveryBoard) {
  ASSERT_EQ(AllDefaults(true).size(), 57u);
  for (const int channels : {0, 4, 8, 12, 16}) {
    SCOPED_TRACE(channels);
    g_layout = {};
    g_video.max_channel = static_cast<std::uint8_t>(channels);
    g_video.video_standard = 0;
    TW_BuildLiveLayout();
    EXPECT_EQ(RectsOf(g_layout.live), AllDefaults(true));
    TW_BuildPlayLayout();
    EXPECT_EQ(RectsOf(g_layout.play), AllDefaults(true));
  }
}

TEST_F(WindowTables, HoldThePalRectanglesForEveryStandardButNtsc) {
  ASSERT_EQ(AllDefaults(false).size(), 57u);
  for (const int channels : {0, 4, 8, 12, 16}) {
    for (const int standard : {1, 2, 3, 255}) {
      SCOPED_TRACE(std::to_string(channels) + " channels, standard " + std::to_string(standard));
      g_layout = {};
      g_video.max_channel = static_cast<std::uint8_t>(channels);
      g_video.video_standard = static_cast<std::uint8_t>(standard);
      TW_BuildLiveLayout();
      EXPECT_EQ(RectsOf(g_layout.live), AllDefaults(false));
      TW_BuildPlayLayout();
      EXPECT_EQ(RectsOf(g_layout.play), AllDefaults(false));
    }
  }
}

TEST_F(WindowTables, AreBuiltEachForItself) {
  g_video.video_standard = 0;
  TW_BuildPlayLayout();
  EXPECT_EQ(RectsOf(g_layout.live), std::vector<Rect>(57, kHidden));
  g_layout = {};
  TW_BuildLiveLayout();
  EXPECT_EQ(RectsOf(g_layout.play), std::vector<Rect>(57, kHidden));
}

TEST_F(WindowTables, BeginFullScreenAndTheNtsc2x2AtLine1AndAllElseAtLine2) {
  for (const bool ntsc : {true, false}) {
    g_video.video_standard = ntsc ? 0 : 1;
    TW_BuildLiveLayout();
    for (std::uint8_t mode = 0; mode < 7; ++mode) {
      SCOPED_TRACE(std::to_string(mode) + (ntsc ? " NTSC" : " PAL"));
      // The topmost window of mode 5 is its second: the first one is the centre.
      const std::uint8_t topmost = mode == 5 ? 1 : 0;
      const int expected = mode == 0 || (mode == 1 && ntsc) ? 0x01 : 0x02;
      EXPECT_EQ(WindowOf(g_layout.live, mode, topmost).y_start, expected);
    }
  }
}

// Holds: Chips: vexo "`WINDOW`: window of the split"
TEST_F(WindowTables, FindAWindowByModeAndNumber) {
  g_video.video_standard = 0;
  TW_BuildLiveLayout();
  for (std::uint8_t mode = 0; mode < 7; ++mode) {
    const std::vector<Rect> rects = DefaultRects(mode, true);
    ASSERT_EQ(rects.size(), kWindowsOfMode[mode]);
    for (std::uint8_t window = 0; window < kWindowsOfMode[mode]; ++window) {
      const WindowRect& found = WindowOf(g_layout.live, mode, window);
      EXPECT_EQ((Rect{found.x_start, found.x_end, found.y_start, found.y_end}), rects[window])
          << "mode " << +mode << ", window " << +window;
    }
  }
}

TEST_F(WindowTables, WriteARectangleAsFourRegisterWrites) {
  UseBoard(16);
  WriteWindow(0x30, 2, {0x11, 0x22, 0x33, 0x44});
  EXPECT_EQ(Accesses(),
            (std::vector<Access>{W(kSlave2, 1, 0x38, 0x11), W(kSlave2, 1, 0x39, 0x22),
                                 W(kSlave2, 1, 0x3A, 0x33), W(kSlave2, 1, 0x3B, 0x44)}));
  EXPECT_EQ(Cycles(), 16u);
}

TEST_F(WindowTables, MoveAWindowOfThePlaybackTableAlone) {
  UseBoard(16);
  const std::vector<Rect> live = RectsOf(g_layout.live);
  SetWindowOffset(g_layout.play, 1, 2, {1, 2, 3, 4});
  EXPECT_EQ(RectsOf(g_layout.play)[3], (Rect{0x05, 0x5D, 0x3E, 0x7B}));
  EXPECT_EQ(RectsOf(g_layout.live), live);
}

}  // namespace
}  // namespace test
