#include "setup/video_detection.h"

#include <algorithm>
#include <cstring>

#include "chip/video_state.h"
#include "harness/host.h"
#include "motion/motion_state.h"
#include "tests/setup/setup_test.h"
#include "tests/support/at_events.h"

namespace test {
namespace {

using sim::Camera;

class VideoDetection : public SetupTest {
 protected:
  void UseBoard(int channels) {
    harness::Restart();  // a test may use one board after another
    PretendBoard(channels);
    g_video.video_standard = 2;
    Mark();
  }
  void Cameras(const std::vector<Camera>& cameras) {
    for (unsigned n = 0; n < cameras.size(); ++n) world().board.SetCamera(n, cameras[n]);
  }
};

// ---- The decision at initialization -----------------------------------------------------------

TEST_F(VideoDetection, LeavesATieUndecidedAndSaysSo) {
  UseBoard(4);
  Cameras({Camera::Ntsc, Camera::Pal, Camera::Ntsc, Camera::Pal});
  g_video.video_standard = 0;
  TW_DetectVideoStandard();
  EXPECT_EQ(g_video_detect.ntsc_count, 2);
  EXPECT_EQ(g_video_detect.pal_count, 2);
  EXPECT_EQ(g_video.video_standard, 2);
  EXPECT_EQ(Prints(), (std::vector<std::string>{Plain("\r\n VIDEO DET : 2 2 \r\n"),
                                                Plain("\r\n g_vid_loss_mask : 0000 SYSTEM : "),
                                                Plain("[ALL LOSS]\r\n")}));
}

TEST_F(VideoDetection, TellsOfATieBeforeTheStandardIsGivenUp) {
  UseBoard(4);
  Cameras({Camera::Ntsc, Camera::Pal, Camera::Ntsc, Camera::Pal});
  g_video.video_standard = 0;
  std::vector<int> standards;
  const AtEvents watch([&](const sim::Event&, const sim::EventDetail* detail) {
    if (std::get_if<sim::DebugEvent>(detail) != nullptr) {
      standards.push_back(g_video.video_standard);
    }
  });
  TW_DetectVideoStandard();
  EXPECT_EQ(standards, (std::vector<int>{0, 0, 2, 2, 2, 2}));  // three prefixes and texts
}

TEST_F(VideoDetection, TakesTheStandardOfTheMajorityOfChannelsWithVideo) {
  struct Row {
    std::vector<Camera> cameras;
    int ntsc;
    int pal;
    int standard;
    const char* mask;
    const char* text;
  };
  const std::vector<Row> rows = {
      {{Camera::Ntsc, Camera::Ntsc, Camera::Ntsc, Camera::Ntsc}, 4, 0, 0, "0000", "[NTSC]\r\n"},
      {{Camera::Pal, Camera::Pal, Camera::Pal, Camera::Pal}, 0, 4, 1, "0000", "[PAL]\r\n"},
      {{Camera::Ntsc, Camera::Pal, Camera::Pal, Camera::Pal}, 1, 3, 1, "0000", "[PAL]\r\n"},
      {{Camera::Pal, Camera::Ntsc, Camera::Ntsc, Camera::Ntsc}, 3, 1, 0, "0000", "[NTSC]\r\n"},
      {{Camera::Off, Camera::Ntsc, Camera::Pal, Camera::Pal}, 1, 2, 1, "0001", "[PAL]\r\n"},
      {{Camera::Off, Camera::Ntsc, Camera::Off, Camera::Off}, 1, 0, 0, "000D", "[NTSC]\r\n"},
      {{Camera::Off, Camera::Off, Camera::Off, Camera::Pal}, 0, 1, 1, "0007", "[PAL]\r\n"},
  };
  for (const Row& row : rows) {
    UseBoard(4);
    g_video.g_vid_loss_mask = 0;
    Cameras(row.cameras);
    TW_DetectVideoStandard();
    EXPECT_EQ(g_video_detect.ntsc_count, row.ntsc);
    EXPECT_EQ(g_video_detect.pal_count, row.pal);
    EXPECT_EQ(g_video.video_standard, row.standard);
    EXPECT_EQ(Prints(), (std::vector<std::string>{
                            Plain("\r\n g_vid_loss_mask : " + std::string(row.mask) + " SYSTEM : "),
                            Plain(row.text)}));
    for (std::size_t n = 0; n < 4; ++n) {
      EXPECT_EQ(g_video_detect.channel_standard[n], static_cast<int>(row.cameras[n])) << n;
    }
  }
}

TEST_F(VideoDetection, OfABoardWithoutAnyVideoIsAllLoss) {
  UseBoard(4);
  Cameras({Camera::Off, Camera::Off, Camera::Off, Camera::Off});
  TW_DetectVideoStandard();
  EXPECT_EQ(g_video.g_vid_loss_mask, 0x000Fu);
  EXPECT_EQ(g_video.video_standard, 2);
  EXPECT_EQ(Prints(), (std::vector<std::string>{Plain("\r\n VIDEO DET : 0 0 \r\n"),
                                                Plain("\r\n g_vid_loss_mask : 000F SYSTEM : "),
                                                Plain("[ALL LOSS]\r\n")}));
}

TEST_F(VideoDetection, ReadsTheStatusOfEveryChipAndThenTheStandardOfEveryChannelWithVideo) {
  UseBoard(8);
  world().board.SetCamera(1, Camera::Off);
  world().board.SetCamera(6, Camera::Pal);
  TW_DetectVideoStandard();
  EXPECT_EQ(Accesses(), (std::vector<Access>{
                            R(0x03, 1, 0x76, 0x00), R(0x03, 1, 0x78, 0x02), R(0x0C, 1, 0x76, 0x00),
                            R(0x0C, 1, 0x78, 0x00), R(0x03, 0, 0x01, 0x01), R(0x03, 0, 0x21, 0x01),
                            R(0x03, 0, 0x31, 0x01), R(0x0C, 0, 0x01, 0x01), R(0x0C, 0, 0x11, 0x01),
                            R(0x0C, 0, 0x21, 0x00), R(0x0C, 0, 0x31, 0x01)}));
}

TEST_F(VideoDetection, LooksAtBit0OfTheInputStatusAlone) {
  UseBoard(4);
  Cameras({Camera::Pal, Camera::Pal, Camera::Pal, Camera::Pal});
  for (unsigned c = 0; c < 4; ++c) {
    world().board.Poke(0, 0, static_cast<std::uint8_t>(0x01 + 0x10 * c), 0xFE);
  }
  TW_DetectVideoStandard();
  EXPECT_EQ(g_video_detect.pal_count, 4);
}

TEST_F(VideoDetection, PlacesTheFlagsOfEachChipFourBitsApart) {
  UseBoard(16);
  for (const unsigned n : {0u, 5u, 10u, 15u}) world().board.SetCamera(n, Camera::Off);
  TW_DetectVideoStandard();
  EXPECT_EQ(g_video.g_vid_loss_mask, 0x8421u);
  for (unsigned n = 0; n < 16; ++n) {
    EXPECT_EQ(g_video_detect.channel_standard[n], n % 5 == 0 ? 2 : 0) << n;
  }
}

TEST_F(VideoDetection, AtInitializationGoesByTheLowNibbleOnly) {
  UseBoard(4);
  world().board.SetWeak(0, true);
  TW_DetectVideoStandard();
  EXPECT_EQ(g_video.g_vid_loss_mask, 0u);
  EXPECT_EQ(g_video_detect.ntsc_count, 4);
  EXPECT_EQ(g_video_detect.channel_standard[0], 0);
}

TEST_F(VideoDetection, AtInitializationDoesNotClearTheLossMaskFirst) {
  UseBoard(4);
  g_video.g_vid_loss_mask = 0x0102;
  world().board.SetCamera(3, Camera::Off);
  TW_DetectVideoStandard();
  EXPECT_EQ(g_video.g_vid_loss_mask, 0x010Au);
  EXPECT_EQ(Prints().front(), Plain("\r\n g_vid_loss_mask : 010A SYSTEM : "));
  VideoDetectRecord record = {};
  TW_ReadVideoDetect(&record);
  EXPECT_EQ(g_video.g_vid_loss_mask, 0x0008u);  // this one starts anew
}

TEST_F(VideoDetection, StartsItsTalliesAnewEachTime) {
  UseBoard(16);
  TW_DetectVideoStandard();
  TW_DetectVideoStandard();
  EXPECT_EQ(g_video_detect.ntsc_count, 16);
  Cameras(std::vector<Camera>(16, Camera::Pal));
  TW_DetectVideoStandard();
  TW_DetectVideoStandard();
  EXPECT_EQ(g_video_detect.ntsc_count, 0);
  EXPECT_EQ(g_video_detect.pal_count, 16);
}

TEST_F(VideoDetection, WithoutAChipIsAllLossAndReadsNothing) {
  UseBoard(0);
  TW_DetectVideoStandard();
  EXPECT_EQ(Cycles(), 0u);
  EXPECT_EQ(g_video.video_standard, 2);
  EXPECT_EQ(Prints().back(), Plain("[ALL LOSS]\r\n"));
}

// ---- The repeated read ------------------------------------------------------------------------

class VideoRead : public VideoDetection {
 protected:
  VideoDetectRecord Read() {
    VideoDetectRecord record;
    std::memset(&record, 0xEE, sizeof record);
    TW_ReadVideoDetect(&record);
    return record;
  }
};

TEST_F(VideoRead, AsksAnEmptyPositionBetweenChips) {
  UseBoard(12);
  g_video.chip_present[1] = 0;
  world().board.SetCamera(4, Camera::Off);
  world().board.SetCamera(5, Camera::Pal);
  world().board.SetCamera(11, Camera::Off);
  const VideoDetectRecord record = Read();
  EXPECT_EQ(record.loss_mask, 0x0810u);
  EXPECT_EQ(record.standard[5], VEXO_VIDEO_PAL);
}

TEST_F(VideoRead, WithAWeakSignalLosesTheChannelInTheMaskAndInItsStandard) {
  UseBoard(4);
  world().board.SetWeak(0, true);  // 0x78 reads 0x10
  const VideoDetectRecord record = Read();
  EXPECT_EQ(record.loss_mask, 0x0001u);
  EXPECT_EQ(g_video.g_vid_loss_mask, 0x0001u);
  EXPECT_EQ(record.standard[0], 2);
  EXPECT_EQ(record.standard[1], 0);
}

// Holds: VideoDetectRecord "Go by loss_mask"
TEST_F(VideoRead, WithALostSignalLosesTheChannelInTheMaskButStillReadsItsStandard) {
  UseBoard(4);
  Cameras({Camera::Pal, Camera::Pal, Camera::Ntsc, Camera::Ntsc});
  world().board.SetCamera(0, Camera::Off);  // 0x78 reads 0x01
  const VideoDetectRecord record = Read();
  EXPECT_EQ(record.loss_mask, 0x0001u);
  EXPECT_EQ(record.standard[0], 1);  // the register still says PAL
  EXPECT_EQ(record.standard[1], 1);
  EXPECT_EQ(record.standard[2], 0);
}

// Holds: VideoDetectRecord "loss_mask: 0 bit n"
TEST_F(VideoRead, TakesBothNibblesOfEveryChip) {
  UseBoard(16);
  world().board.SetCamera(2, Camera::Off);
  world().board.SetWeak(7, true);
  world().board.SetCamera(8, Camera::Off);
  world().board.SetWeak(8, true);
  world().board.SetWeak(13, true);
  const VideoDetectRecord record = Read();
  EXPECT_EQ(record.loss_mask, 0x2184u);
  for (unsigned n = 0; n < 16; ++n) {
    EXPECT_EQ(record.standard[n], n == 7 || n == 8 || n == 13 ? 2 : 0) << n;
  }
}

TEST_F(VideoRead, ReadsTheStatusOfEveryChipAndThenTheStandardOfEveryChannelThatIsNotWeak) {
  UseBoard(8);
  world().board.SetCamera(0, Camera::Off);
  world().board.SetWeak(5, true);
  Read();
  EXPECT_EQ(Accesses(),
            (std::vector<Access>{
                R(0x03, 1, 0x78, 0x01), R(0x0C, 1, 0x78, 0x20), R(0x03, 0, 0x01, 0x01),
                R(0x03, 0, 0x11, 0x01), R(0x03, 0, 0x21, 0x01), R(0x03, 0, 0x31, 0x01),
                R(0x0C, 0, 0x01, 0x01), R(0x0C, 0, 0x21, 0x01), R(0x0C, 0, 0x31, 0x01)}));
}

TEST_F(VideoRead, LeavesTheEntriesOfMissingChipsAsTheCallerSetThem) {
  for (const int channels : {4, 8, 12}) {
    UseBoard(channels);
    const VideoDetectRecord record = Read();
    for (int n = 0; n < 16; ++n) EXPECT_EQ(record.standard[n], n < channels ? 0 : 0xEE) << n;
  }
}

TEST_F(VideoRead, WithoutAChipGivesAnEmptyMaskAndTouchesNoStandard) {
  UseBoard(0);
  g_video.g_vid_loss_mask = 0x1234;
  const VideoDetectRecord record = Read();
  EXPECT_EQ(record.loss_mask, 0u);
  EXPECT_EQ(g_video.g_vid_loss_mask, 0u);
  for (const std::uint8_t standard : record.standard) EXPECT_EQ(standard, 0xEE);
  EXPECT_EQ(Cycles(), 0u);
}

TEST_F(VideoRead, NeverPrintsTheFirstTime) {
  UseBoard(4);
  world().board.SetWeak(3, true);
  EXPECT_EQ(g_video_detect.first_read, 1u);
  EXPECT_EQ(Read().loss_mask, 0x0008u);
  EXPECT_EQ(g_video_detect.first_read, 0u);
  EXPECT_EQ(DebugText(), "");
}

TEST_F(VideoRead, PrintsAChangedMaskOnce) {
  UseBoard(16);
  Read();
  Mark();
  world().board.SetCamera(15, Camera::Off);
  world().board.SetWeak(0, true);
  Read();
  EXPECT_EQ(Prints(), std::vector<std::string>{Plain(">> VIDEO LOSS DETECT 0x00008001\r\n")});
  Mark();
  Read();
  Read();
  EXPECT_EQ(DebugText(), "");
  world().board.SetCamera(15, Camera::Ntsc);
  world().board.SetWeak(0, false);
  Read();
  EXPECT_EQ(Prints(), std::vector<std::string>{Plain(">> VIDEO LOSS DETECT 0x00000000\r\n")});
}

TEST_F(VideoRead, RemembersTheMaskThatWasThereWhenItStarted) {
  UseBoard(4);
  g_video.g_vid_loss_mask = 0x5;
  Read();
  EXPECT_EQ(g_video_detect.previous_loss_mask, 0x5u);
  Read();
  EXPECT_EQ(g_video_detect.previous_loss_mask, 0x0u);
}

TEST_F(VideoRead, DecidesNoStandardForTheBoard) {
  UseBoard(4);
  Cameras({Camera::Pal, Camera::Pal, Camera::Pal, Camera::Pal});
  g_video_detect.ntsc_count = 9;
  g_video_detect.pal_count = 8;
  g_video_detect.channel_standard[0] = 7;
  Read();
  EXPECT_EQ(g_video.video_standard, 2);
  EXPECT_EQ(g_video_detect.ntsc_count, 9);
  EXPECT_EQ(g_video_detect.pal_count, 8);
  EXPECT_EQ(g_video_detect.channel_standard[0], 7);
}

TEST_F(VideoRead, ThroughTheGuardNeedsReadyChips) {
  UseBoard(4);
  g_video.g_chip_ready = 0;
  VideoDetectRecord record;
  std::memset(&record, 0xEE, sizeof record);
  VexoProc_ReadVideoDetect(&record);
  EXPECT_EQ(record.loss_mask, 0xEEEEEEEEu);
  EXPECT_EQ(record.standard[0], 0xEE);
  EXPECT_EQ(Cycles(), 0u);
  EXPECT_EQ(g_video_detect.first_read, 1u);
  g_video.g_chip_ready = 1;
  VexoProc_ReadVideoDetect(&record);
  EXPECT_EQ(record.loss_mask, 0u);
  EXPECT_EQ(record.standard[3], 0);
}

// ---- Motion and status flags ------------------------------------------------------------------

class MotionStatus : public VideoDetection {};

// Holds: Host window messages "VEXO_MSG_MOTION_STATUS: wParam: 16-bit mask"
TEST_F(MotionStatus, IsTheLowNibbleOfEachChip) {
  UseBoard(16);
  g_motion.ready = 1;
  for (const unsigned n : {1u, 4u, 11u, 14u}) world().board.SetMotion(n, true);
  EXPECT_EQ(TW_ReadMotionStatus(), 0x4812u);
  EXPECT_EQ(Accesses(), (std::vector<Access>{R(0x03, 1, 0x79, 0x02), R(0x0C, 1, 0x79, 0x01),
                                             R(0x30, 1, 0x79, 0x08), R(0xC0, 1, 0x79, 0x04)}));
}

TEST_F(MotionStatus, AsksOnlyTheChipsOfTheBoard) {
  UseBoard(8);
  g_motion.ready = 1;
  for (unsigned n = 0; n < 16; ++n) world().board.SetMotion(n, true);
  EXPECT_EQ(TW_ReadMotionStatus(), 0x00FFu);
  EXPECT_EQ(Cycles(), 8u);
}

// Chips are counted, not placed: an empty position among them is asked like any other.
TEST_F(MotionStatus, AsksAnEmptyPositionBetweenChips) {
  UseBoard(12);
  g_video.chip_present[1] = 0;
  g_motion.ready = 1;
  for (const unsigned n : {1u, 4u, 11u}) world().board.SetMotion(n, true);
  EXPECT_EQ(TW_ReadMotionStatus(), 0x0812u);
}

TEST_F(MotionStatus, Is0WithoutABusCycleBeforeMotionDetectionIsSetUp) {
  UseBoard(4);
  world().board.SetMotion(0, true);
  EXPECT_EQ(TW_ReadMotionStatus(), 0u);
  EXPECT_EQ(Cycles(), 0u);
}

TEST_F(MotionStatus, Is0WithoutAChip) {
  UseBoard(0);
  g_motion.ready = 1;
  EXPECT_EQ(TW_ReadMotionStatus(), 0u);
  EXPECT_EQ(Cycles(), 0u);
}

TEST_F(MotionStatus, ThroughTheGuardIs0WhileTheChipsAreNotReady) {
  UseBoard(4);
  g_motion.ready = 1;
  world().board.SetMotion(2, true);
  g_video.g_chip_ready = 0;
  EXPECT_EQ(VexoProc_ReadMotionStatus(), 0u);
  EXPECT_EQ(Cycles(), 0u);
  g_video.g_chip_ready = 1;
  EXPECT_EQ(VexoProc_ReadMotionStatus(), 0x0004u);
}

class StatusFlags : public VideoDetection {};

TEST_F(StatusFlags, AreTheMastersHighNibble) {
  UseBoard(16);
  world().board.Poke(0, 1, 0xAB, 0x0F);  // the low nibble is not theirs
  world().board.HoldSync(true);
  EXPECT_EQ(TW_ReadStatusFlags(), 0x10);
  world().board.HoldSync(false);
  EXPECT_EQ(TW_ReadStatusFlags(), 0x00);
  EXPECT_EQ(Accesses(), (std::vector<Access>{R(0x03, 1, 0xAB, 0x1F), R(0x03, 1, 0xAB, 0x0F)}));
}

TEST_F(StatusFlags, ReferenceIsTheMastersBit3) {
  UseBoard(16);
  world().board.Poke(0, 1, 0xA4, 0xFF);
  EXPECT_EQ(TW_ReadStatusRef(), 0x08);
  world().board.Poke(0, 1, 0xA4, 0xF7);
  EXPECT_EQ(TW_ReadStatusRef(), 0x00);
  EXPECT_EQ(Accesses(), (std::vector<Access>{R(0x03, 1, 0xA4, 0xFF), R(0x03, 1, 0xA4, 0xF7)}));
}

}  // namespace
}  // namespace test
