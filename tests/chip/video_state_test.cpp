// What the library believes of the board before anyone looked.
#include "chip/video_state.h"

#include "tests/support/library_test.h"

namespace {

class VideoStateAtLoad : public test::LibraryTest {};

TEST_F(VideoStateAtLoad, KnowsNoChipsAndNoVideo) {
  EXPECT_EQ(g_video.chip_count, 0);
  EXPECT_EQ(g_video.max_channel, 0);
  for (const std::uint8_t present : g_video.chip_present) EXPECT_EQ(present, 0);
  EXPECT_EQ(g_video.video_standard, 2);
  EXPECT_EQ(g_video.g_chip_ready, 0);
  EXPECT_EQ(g_video.g_vid_loss_mask, 0u);
}

TEST_F(VideoStateAtLoad, HasNoSplitsAndWritesTablesToTheMaster) {
  EXPECT_EQ(g_video.default_live_split, 7);
  EXPECT_EQ(g_video.default_play_split, 7);
  EXPECT_EQ(g_video.broadcast_select, 0x03);
}

// Holds: vexo change_vdo auto "Stores 255, which is no standard"
TEST_F(VideoStateAtLoad, EveryStandardButNtscIsLaidOutAsPal) {
  for (const int standard : {0, 1, 2, 3, 255}) {
    g_video.video_standard = static_cast<std::uint8_t>(standard);
    EXPECT_EQ(IsNtsc(), standard == 0) << standard;
  }
}

}  // namespace
