#include "setup/stored_settings.h"

#include <algorithm>

#include "VexoCtrlSDK.h"
#include "chip/video_state.h"
#include "setup/initialization.h"
#include "tests/model/reference_model.h"
#include "tests/setup/setup_test.h"

namespace test {
namespace {

const std::string kReadError = Plain(" ERROR READ NVRAM DATA!!!\r\n\r\n");
const std::string kWriteError = Plain(" ERROR WRITE NVRAM DATA!!!\r\n\r\n");
const std::string kNoRecord = Plain("[TW2835] ERROR WRITE DATA NVRAM DRIVER 0x");
const std::string kOtherChannels = Plain(">>Invalide MAX CHANNEL INFO!\r\n");
const std::string kOtherStandard = Plain(">>Invalide VIDEO SIGNAL INFO!\r\n");

class StoredSettingsTest : public SetupTest {
 protected:
  void Initialize(int chips, int cameras) {
    Fit(chips, cameras);
    AttachOnce();
    Mark();
    ASSERT_EQ(TW_InitializeSetup(0, 0), 4 * chips);
  }
  bool Printed(const std::string& text) {
    const std::vector<std::string> prints = Prints();
    return std::any_of(prints.begin(), prints.end(),
                       [&](const std::string& print) { return print.starts_with(text); });
  }
  // The register that tells the PAL tables from the NTSC ones.
  bool HasPalTables() { return Register(0, 1, 0x83) == 0x16 && Register(0, 0, 0x8E) == 0x90; }
};

TEST_F(StoredSettingsTest, AreTheTwoBytesBehindTheMagic) {
  AttachAndBind();
  world().nvram.SetRecord("MDVR", 3, 7);
  Mark();
  const StoredSettings stored = ReadStoredSettings({1, 8});
  EXPECT_EQ(stored.video_standard, 3);
  EXPECT_EQ(stored.max_channel, 7);
  EXPECT_EQ(DebugText(), "");
}

TEST_F(StoredSettingsTest, ThatCannotBeReadAreNoVideoAndNoChannels) {
  AttachAndBind();
  world().nvram.SetRecord("MDVR", 0, 8);
  world().faults.Set(sim::Fault::NvramRead, true);
  Mark();
  const StoredSettings stored = ReadStoredSettings({1, 8});
  EXPECT_EQ(world().faults.Hits(sim::Fault::NvramRead), 1u);
  EXPECT_EQ(stored.video_standard, 2);
  EXPECT_EQ(stored.max_channel, 0);
  EXPECT_EQ(Prints(), std::vector<std::string>{kReadError});
}

TEST_F(StoredSettingsTest, WithoutTheMagicAreTheDetectedOnesAndAreToldWithTheNumber0) {
  AttachAndBind();
  world().nvram.SetRecord("MDVS", 0, 4);
  Mark();
  const StoredSettings stored = ReadStoredSettings({1, 8});
  EXPECT_EQ(stored.video_standard, 1);
  EXPECT_EQ(stored.max_channel, 8);
  EXPECT_EQ(Prints(), std::vector<std::string>{kNoRecord + "00000000\r\n\r\n"});
}

TEST_F(StoredSettingsTest, ThatAgreeAreNotMentioned) {
  world().nvram.SetRecord("MDVR", 0, 8);
  Initialize(2, 0);
  EXPECT_FALSE(Printed(kReadError) || Printed(kNoRecord));
  EXPECT_FALSE(Printed(kOtherChannels) || Printed(kOtherStandard));
}

TEST_F(StoredSettingsTest, OfPalOnABoardDetectedAsNtscGiveThePalTables) {
  world().nvram.SetRecord("MDVR", 1, 4);
  Initialize(1, 0);
  EXPECT_TRUE(Printed(kOtherStandard));
  EXPECT_FALSE(Printed(kOtherChannels));
  EXPECT_EQ(g_video.video_standard, 1);
  EXPECT_EQ(g_video.report.video_standard, 1u);
  EXPECT_TRUE(HasPalTables());
  EXPECT_EQ(Register(0, 0, 0x01), 0x89);  // the camera still says NTSC
  EXPECT_EQ(Register(0, 0, 0xC5), 0xF0);
  EXPECT_TRUE(Printed(Plain(">> FINISH PAL CAMERA!!\r\n")));
}

TEST_F(StoredSettingsTest, OfNtscOnABoardDetectedAsPalGiveTheNtscTables) {
  world().nvram.SetRecord("MDVR", 0, 4);
  Initialize(1, 1);
  EXPECT_TRUE(Printed(kOtherStandard));
  EXPECT_EQ(g_video.video_standard, 0);
  EXPECT_FALSE(HasPalTables());
  EXPECT_TRUE(Printed(Plain(">> FINISH NTSC CAMERA!!\r\n")));
}

TEST_F(StoredSettingsTest, DecideWhenAsManyCamerasAreNtscAsPal) {
  Fit(1, 0);
  world().board.SetCamera(2, sim::Camera::Pal);
  world().board.SetCamera(3, sim::Camera::Pal);
  world().nvram.SetRecord("MDVR", 0, 4);
  AttachAndBind();
  Mark();
  TW_InitializeSetup(0, 0);
  EXPECT_TRUE(Printed(Plain("\r\n VIDEO DET : 2 2 \r\n")));
  EXPECT_TRUE(Printed(kOtherStandard));
  EXPECT_EQ(g_video.video_standard, 0);
}

TEST_F(StoredSettingsTest, OfNoVideoOverrideADetectedStandardToo) {
  world().nvram.SetRecord("MDVR", 2, 16);
  Initialize(4, 0);
  EXPECT_TRUE(Printed(kOtherStandard));
  EXPECT_EQ(g_video.video_standard, 2);
  EXPECT_TRUE(HasPalTables());
  EXPECT_TRUE(Printed(Plain(">> FINISH LOSS CAMERA!!\r\n")));
}

// Holds: VexoInitRecord "video_standard: 16 out"
// Holds: VideoState "video_standard: 4 VEXO_VIDEO_..."
// Holds: vexo change_vdo auto "Stores 255, which is no standard"
TEST_F(StoredSettingsTest, OfStandard255AreAdoptedLikeAnyOther) {
  world().nvram.SetRecord("MDVR", 255, 16);
  Initialize(4, 0);
  EXPECT_TRUE(Printed(kOtherStandard));
  EXPECT_EQ(g_video.video_standard, 255);
  EXPECT_EQ(g_video.report.video_standard, 255u);
  EXPECT_TRUE(Printed(Plain(">> FINISH LOSS CAMERA!!\r\n")));
  ReferenceModel model = ReferenceModel::AtPowerOn(4, 0);
  model.Initialize(255);
  EXPECT_EQ(Image(), model.image);
  EXPECT_EQ(Register(0, 0, 0xC5), 0x00);  // PAL's field mode is for the standard PAL alone
}

TEST_F(StoredSettingsTest, WithAnotherChannelCountChangeNothingButSaySo) {
  for (const int stored : {0, 4, 12, 16, 255}) {
    SCOPED_TRACE(stored);
    world().nvram.SetRecord("MDVR", 0, static_cast<std::uint8_t>(stored));
    Initialize(2, 0);
    EXPECT_TRUE(Printed(kOtherChannels));
    EXPECT_FALSE(Printed(kOtherStandard));
    EXPECT_EQ(g_video.max_channel, 8);
    EXPECT_EQ(g_video.default_live_split, 4);
  }
}

TEST_F(StoredSettingsTest, SpeakOfTheChannelsBeforeTheStandard) {
  world().nvram.SetRecord("MDVR", 1, 4);
  Initialize(2, 0);
  const std::vector<std::string> prints = Prints();
  const auto channels = std::find(prints.begin(), prints.end(), kOtherChannels);
  ASSERT_NE(channels, prints.end());
  EXPECT_EQ(*(channels + 1), kOtherStandard);
}

TEST_F(StoredSettingsTest, ThatCannotBeReadStandForNoVideoAndNoChannels) {
  world().nvram.SetRecord("MDVR", 0, 4);
  world().nvram.SetFailure(sim::Nvram::Failure::Read);
  Initialize(1, 0);
  EXPECT_EQ(world().nvram.Hits(), 1u);
  EXPECT_TRUE(Printed(kReadError));
  EXPECT_TRUE(Printed(kOtherChannels));
  EXPECT_TRUE(Printed(kOtherStandard));
  EXPECT_EQ(g_video.video_standard, 2);
  EXPECT_EQ(g_video.max_channel, 4);
  EXPECT_TRUE(HasPalTables());
}

TEST_F(StoredSettingsTest, WithoutTheMagicLeaveTheDetectionAlone) {
  for (const char* magic : {"MDV", "mdvr", "MDVS", "XDVR", "MXVR", "MDXR", ""}) {
    SCOPED_TRACE(magic);
    world().nvram.SetRecord(magic, 1, 16);
    Initialize(1, 0);
    EXPECT_TRUE(Printed(kNoRecord));
    EXPECT_FALSE(Printed(kReadError) || Printed(kOtherChannels) || Printed(kOtherStandard));
    EXPECT_EQ(g_video.video_standard, 0);
    EXPECT_EQ(g_video.max_channel, 4);
  }
}

TEST_F(StoredSettingsTest, WithoutTheMagicPrintEightDigitsOfNoMeaning) {
  world().nvram.SetBlank();
  Initialize(1, 0);
  for (const std::string& print : Prints()) {
    if (!print.starts_with(kNoRecord)) continue;
    ASSERT_EQ(print.size(), kNoRecord.size() + 12);
    const std::string digits = print.substr(kNoRecord.size(), 8);
    EXPECT_EQ(digits.find_first_not_of("0123456789ABCDEF"), std::string::npos);
    EXPECT_EQ(print.substr(kNoRecord.size() + 8), "\r\n\r\n");
    return;
  }
  FAIL() << "not printed";
}

TEST_F(StoredSettingsTest, AreReadWithOneRequestForSixBytesOfBlock1) {
  world().nvram.SetRecord("MDVR", 1, 4);
  Initialize(1, 0);
  const auto requests = Events<sim::NvramEvent>();
  ASSERT_EQ(requests.size(), 1u);
  EXPECT_EQ(requests[0].op, "read");
  EXPECT_EQ(requests[0].block, 1u);
  EXPECT_EQ(requests[0].offset, 0u);
  EXPECT_EQ(requests[0].length, 6u);
  EXPECT_TRUE(requests[0].ok);
  EXPECT_EQ(requests[0].data, (sim::Bytes{'M', 'D', 'V', 'R', 1, 4}));
}

TEST_F(StoredSettingsTest, AreNotWrittenByInitialization) {
  world().nvram.SetRecord("MDVR", 1, 16);
  const sim::Bytes before = world().nvram.Content();
  Initialize(1, 0);
  EXPECT_EQ(world().nvram.Content(), before);
}

// ---- Storing a standard -----------------------------------------------------------------------

class StoreVideoStandard : public SetupTest {
 protected:
  void SetUp() override {
    world().nvram.SetRecord("MDVR", 0, 8);
    AttachAndBind();
    Mark();
  }
};

TEST_F(StoreVideoStandard, WritesByte4AndNoOther) {
  for (const int standard : {1, 0, 2, 255}) {
    TW_StoreVideoStandard(static_cast<std::uint8_t>(standard));
    EXPECT_EQ(world().nvram.Content(),
              (sim::Bytes{'M', 'D', 'V', 'R', static_cast<std::uint8_t>(standard), 8}));
  }
  EXPECT_EQ(DebugText(), "");
  EXPECT_EQ(Cycles(), 0u);
}

TEST_F(StoreVideoStandard, ReadsTheByteFirstAndThenWritesIt) {
  TW_StoreVideoStandard(1);
  const auto requests = Events<sim::NvramEvent>();
  ASSERT_EQ(requests.size(), 2u);
  for (const sim::NvramEvent& request : requests) {
    EXPECT_EQ(request.block, 1u);
    EXPECT_EQ(request.offset, 4u);
    EXPECT_EQ(request.length, 1u);
    EXPECT_TRUE(request.ok);
  }
  EXPECT_EQ(requests[0].op, "read");
  EXPECT_EQ(requests[0].data, sim::Bytes{0});
  EXPECT_EQ(requests[1].op, "write");
  EXPECT_EQ(requests[1].data, sim::Bytes{1});
}

// Holds: vexo change_vdo ntsc "A failure is printed."
TEST_F(StoreVideoStandard, StopsWithAMessageWhenTheByteCannotBeRead) {
  world().nvram.SetFailure(sim::Nvram::Failure::Read);
  TW_StoreVideoStandard(1);
  EXPECT_EQ(world().nvram.Hits(), 1u);
  EXPECT_EQ(Prints(), std::vector<std::string>{kReadError});
  EXPECT_EQ(Events<sim::NvramEvent>().size(), 1u);
  EXPECT_EQ(world().nvram.Content()[4], 0);
}

TEST_F(StoreVideoStandard, TakesAnyResultBut0ForAFailure) {
  for (const std::uint32_t result : {2u, 0x80000000u, 0xFFFFFFFFu}) {
    world().nvram.failed_result = result;
    for (const auto& [failure, text] : {std::pair(sim::Nvram::Failure::Read, kReadError),
                                        std::pair(sim::Nvram::Failure::Write, kWriteError)}) {
      Mark();
      world().nvram.SetFailure(failure);
      TW_StoreVideoStandard(1);
      EXPECT_EQ(Prints(), std::vector<std::string>{text}) << result;
    }
  }
}

// Holds: vexo change_vdo ntsc "A failure is printed."
TEST_F(StoreVideoStandard, SaysWhenTheByteCannotBeWritten) {
  world().nvram.SetFailure(sim::Nvram::Failure::Write);
  TW_StoreVideoStandard(1);
  EXPECT_EQ(world().nvram.Hits(), 1u);
  EXPECT_EQ(Prints(), std::vector<std::string>{kWriteError});
  EXPECT_EQ(Events<sim::NvramEvent>().size(), 2u);
  EXPECT_EQ(world().nvram.Content()[4], 0);
}

TEST_F(StoreVideoStandard, LooksNeitherAtTheMagicNorAtTheChips) {
  world().nvram.SetBlank();
  TW_StoreVideoStandard(1);
  EXPECT_EQ(world().nvram.Content(), (sim::Bytes{0xFF, 0xFF, 0xFF, 0xFF, 1, 0xFF}));
}

// Holds: vexo change_vdo ntsc "Stores NTSC for the next initialization."
// Holds: vexo change_vdo pal "Stores PAL for the next initialization."
TEST_F(StoreVideoStandard, TakesEffectAtTheNextInitialization) {
  // Whatever the cameras say, and whatever was stored before.
  for (const int cameras : {0, 1}) {
    Fit(2, cameras);
    for (const std::uint8_t standard :
         sim::Bytes{VEXO_VIDEO_PAL, VEXO_VIDEO_NTSC, VEXO_VIDEO_PAL}) {
      const std::uint8_t before = g_video.video_standard;
      TW_StoreVideoStandard(standard);
      EXPECT_EQ(g_video.video_standard, before);
      EXPECT_EQ(TW_InitializeSetup(0, 0), 8);
      EXPECT_EQ(g_video.video_standard, standard);
    }
  }
}

}  // namespace
}  // namespace test
