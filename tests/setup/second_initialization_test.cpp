// A second initialization: what it makes anew, and what it leaves as the host set it.
#include <cstring>

#include "VexoCtrlSDK.h"
#include "chip/video_state.h"
#include "display/channel_masks.h"
#include "display/display_state.h"
#include "display/window_tables.h"
#include "setup/initialization.h"
#include "setup/video_detection.h"
#include "tests/setup/setup_test.h"

namespace test {
namespace {

class SecondInitialization : public SetupTest {
 protected:
  static bool Same(const WindowTable& a, const WindowTable& b) {
    return std::memcmp(a.data(), b.data(), sizeof a) == 0;
  }
  static sim::Bytes BytesOf(const WindowRect& rect) {
    return {rect.x_start, rect.x_end, rect.y_start, rect.y_end};
  }
};

TEST_F(SecondInitialization, BuildsBothLayoutsAnewWithoutTheirOffsets) {
  StartBoard(16);
  const LayoutState built = g_layout;
  for (std::uint8_t mode = 0; mode < kSplitModes; ++mode) {
    for (std::uint8_t window = 0; window < kWindowsOfMode[mode]; ++window) {
      SetWindowOffset(g_layout.live, mode, window, {1, 2, 3, 4});
      SetWindowOffset(g_layout.play, mode, window, {-4, -3, -2, -1});
    }
  }
  ASSERT_FALSE(Same(g_layout.live, built.live));
  ASSERT_FALSE(Same(g_layout.play, built.play));
  ASSERT_EQ(TW_InitializeSetup(0, 0), 16);
  EXPECT_TRUE(Same(g_layout.live, built.live));
  EXPECT_TRUE(Same(g_layout.play, built.play));
}

TEST_F(SecondInitialization, FollowsANewStandardInBothLayouts) {
  StartBoard(16, VEXO_VIDEO_NTSC);
  for (const WindowTable* table : {&g_layout.live, &g_layout.play}) {
    EXPECT_EQ(BytesOf(WindowOf(*table, VEXO_SPLIT_FULL, 0)), (sim::Bytes{0x04, 0xB0, 0x01, 0x77}));
    EXPECT_EQ(BytesOf(WindowOf(*table, VEXO_SPLIT_16, 15)), (sim::Bytes{0x85, 0xB0, 0x59, 0x76}));
  }
  Fit(4, VEXO_VIDEO_PAL);
  world().nvram.SetRecord("MDVR", VEXO_VIDEO_PAL, 16);
  ASSERT_EQ(TW_InitializeSetup(0, 0), 16);
  for (const WindowTable* table : {&g_layout.live, &g_layout.play}) {
    EXPECT_EQ(BytesOf(WindowOf(*table, VEXO_SPLIT_FULL, 0)), (sim::Bytes{0x04, 0xB0, 0x01, 0x8E}));
    EXPECT_EQ(BytesOf(WindowOf(*table, VEXO_SPLIT_16, 15)), (sim::Bytes{0x85, 0xB0, 0x6B, 0x8E}));
  }
}

TEST_F(SecondInitialization, KeepsTheThreeDisplayMasksAndAppliesTheLiveOne) {
  StartBoard(4);
  EXPECT_EQ(Command(VEXO_CMD_CHANNEL_MASKS, {0x03, 0, 0, 0xA0, 0x05, 0, 0, 0xB0, 0x06, 0, 0, 0xC0}),
            0);
  ASSERT_EQ(TW_InitializeSetup(0, 0), 4);
  EXPECT_EQ(g_display.live_mask, 0xA0000003u);
  EXPECT_EQ(g_display.record_mask, 0xB0000005u);
  EXPECT_EQ(g_display.play_mask, 0xC0000006u);
  // Channels 2 and 3 are not shown, 1 and 3 not recorded.
  EXPECT_EQ(g_display.blank_mask.live, ~0xA0000003u);
  for (int n = 0; n < 4; ++n) {
    EXPECT_EQ(Register(0, 1, 0x11 + 8 * n) & 0x04, n >= 2 ? 0x04 : 0x00) << "channel " << n;
  }
}

TEST_F(SecondInitialization, KeepsTheMasksOfTheOtherViewAndThoseOfBits0And6) {
  StartBoard(4);
  g_display.view = kViewPlayback;
  EXPECT_EQ(TW_SetChannelBlankMask(0x10000005), 0);
  EXPECT_EQ(TW_SetChannelBit0Mask(0x20000006), 0);
  g_display.view = kViewLive;
  EXPECT_EQ(TW_SetChannelBit0Mask(0x30000009), 0);
  TW_SetBit6MaskByChip(0x400A);
  ASSERT_EQ(TW_InitializeSetup(0, 0), 4);
  EXPECT_EQ(g_display.blank_mask.playback, 0x10000005u);
  EXPECT_EQ(g_display.bit0_mask.playback, 0x20000006u);
  EXPECT_EQ(g_display.bit0_mask.live, 0x30000009u);
  EXPECT_EQ(g_display.bit6_mask, 0x400A);
}

// Only a load makes a first read, the one that does not tell a changed loss mask.
TEST_F(SecondInitialization, DoesNotMakeTheNextVideoReadAFirstOne) {
  StartBoard(4);
  VideoDetectRecord record = {};
  TW_ReadVideoDetect(&record);
  ASSERT_EQ(TW_InitializeSetup(0, 0), 4);
  world().board.SetCamera(2, sim::Camera::Off);
  Mark();
  TW_ReadVideoDetect(&record);
  EXPECT_EQ(Prints(), std::vector<std::string>{Plain(">> VIDEO LOSS DETECT 0x00000004\r\n")});
}

TEST_F(SecondInitialization, ThatFindsNoChipKeepsTheStandard) {
  StartBoard(4, VEXO_VIDEO_PAL);
  world().board.FitChips(0);
  ASSERT_EQ(TW_InitializeSetup(0, 0), -1);
  EXPECT_EQ(g_video.video_standard, VEXO_VIDEO_PAL);
  EXPECT_EQ(g_video.report.video_standard, std::uint32_t{VEXO_VIDEO_PAL});
}

}  // namespace
}  // namespace test
