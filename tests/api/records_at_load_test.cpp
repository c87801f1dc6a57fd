// What the library's records hold when a process has loaded it, before anything ran. Those of a
// room that has a test of its own for it are there.
#include <algorithm>

#include "api/worker.h"
#include "chip/register_bus.h"
#include "display/display_state.h"
#include "display/play_layout.h"
#include "display/window_tables.h"
#include "motion/motion_state.h"
#include "setup/video_detection.h"
#include "tests/support/library_test.h"
#include "text/back_end_text.h"

namespace {

class RecordsAtLoad : public test::LibraryTest {
 protected:
  template <typename T, std::size_t N>
  static bool AllZero(const T (&values)[N]) {
    return std::all_of(values, values + N, [](T value) { return value == 0; });
  }
};

TEST_F(RecordsAtLoad, TheBusHasNoWindows) {
  EXPECT_EQ(g_bus.select, nullptr);
  EXPECT_EQ(g_bus.address, nullptr);
  EXPECT_EQ(g_bus.data, nullptr);
}

TEST_F(RecordsAtLoad, ThereIsNoWorker) {
  EXPECT_EQ(g_worker.block.running, 0u);
  EXPECT_EQ(g_worker.block.stop_request, 0u);
  EXPECT_EQ(g_worker.block.thread_id, 0u);
  EXPECT_EQ(g_worker.block.exit_code, 0u);
  EXPECT_EQ(g_worker.block.reserved, 0u);
  EXPECT_EQ(g_worker.thread, kPlatNoHandle);
  EXPECT_EQ(g_worker.thread_id, 0u);
  EXPECT_EQ(g_worker.motion_stamp, 0u);
}

TEST_F(RecordsAtLoad, NoVideoStatusWasRead) {
  EXPECT_EQ(g_video_detect.previous_loss_mask, 0u);
  EXPECT_EQ(g_video_detect.first_read, 1u);
  EXPECT_EQ(g_video_detect.ntsc_count, 0);
  EXPECT_EQ(g_video_detect.pal_count, 0);
  EXPECT_TRUE(AllZero(g_video_detect.channel_standard));
}

TEST_F(RecordsAtLoad, TheDisplayIsLiveWithAllChannelsAndNoSplit) {
  EXPECT_EQ(g_display.view, 1);
  EXPECT_EQ(g_display.live_split, 7);
  EXPECT_EQ(g_display.play_split, 7);
  EXPECT_EQ(g_display.g_view_mode, 0u);
  EXPECT_EQ(g_display.live_mask, 0xFFFFFFFFu);
  EXPECT_EQ(g_display.record_mask, 0xFFFFFFFFu);
  EXPECT_EQ(g_display.play_mask, 0xFFFFFFFFu);
  EXPECT_EQ(g_display.blank_mask.live, 0u);
  EXPECT_EQ(g_display.blank_mask.playback, 0u);
  EXPECT_EQ(g_display.bit0_mask.live, 0u);
  EXPECT_EQ(g_display.bit0_mask.playback, 0u);
  EXPECT_EQ(g_display.split_option, 0);
  EXPECT_EQ(g_display.selected_channel, 0);
  EXPECT_EQ(g_display.bit6_mask, 0);
  EXPECT_EQ(g_display.wait_event, kPlatNoHandle);
}

TEST_F(RecordsAtLoad, NoWindowHasAPlace) {
  for (const WindowTable* const table : {&g_layout.live, &g_layout.play}) {
    for (const WindowRect& rect : *table) {
      EXPECT_EQ(rect.x_start + rect.x_end + rect.y_start + rect.y_end, 0);
    }
  }
}

TEST_F(RecordsAtLoad, NoPictureWasPlayed) {
  EXPECT_EQ(g_playback.full_picture, 0);
  EXPECT_EQ(g_playback.centred_picture, 0);
}

TEST_F(RecordsAtLoad, MotionDetectionIsNotSetUp) {
  for (const auto& mask : g_motion.mask) EXPECT_TRUE(AllZero(mask));
  EXPECT_TRUE(AllZero(g_motion.level));
  EXPECT_EQ(g_motion.ready, 0);
  EXPECT_EQ(g_motion.timing, 0);
}

TEST_F(RecordsAtLoad, TheBackEndIsClosed) { EXPECT_EQ(g_back_end.driver, kPlatNoHandle); }

}  // namespace
