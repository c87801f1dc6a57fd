// Initialization through the host's command, on every board: all registers of all chips, the state
// that the library keeps, what the host gets back and what is printed.
#include <algorithm>
#include <cstdio>

#include "VexoCtrlSDK.h"
#include "api/worker.h"
#include "chip/video_state.h"
#include "display/display_state.h"
#include "display/window_tables.h"
#include "motion/motion_state.h"
#include "tests/model/reference_model.h"
#include "tests/setup/setup_test.h"

namespace test {
namespace {

enum class Stored { Blank, Failing, Agreeing, Disagreeing };

struct InitCase {
  int chips;
  int cameras;  // 0 NTSC, 1 PAL, 2 off
  Stored stored;
};

void PrintTo(const InitCase& c, std::ostream* out) {
  *out << c.chips << " chips, cameras " << c.cameras << ", stored " << static_cast<int>(c.stored);
}

std::string NameOf(const ::testing::TestParamInfo<InitCase>& info) {
  constexpr std::array<const char*, 3> kCameras = {"Ntsc", "Pal", "NoVideo"};
  constexpr std::array<const char*, 4> kStored = {"Blank", "Failing", "Agreeing", "Disagreeing"};
  return std::to_string(4 * info.param.chips) + "Channels" +
         kCameras.at(static_cast<std::size_t>(info.param.cameras)) + "Nvram" +
         kStored.at(static_cast<std::size_t>(info.param.stored));
}

class InitImage : public SetupTest, public ::testing::WithParamInterface<InitCase> {
 protected:
  int Channels() const { return 4 * GetParam().chips; }

  // The standard that a disagreeing record holds.
  int OtherStandard() const { return GetParam().cameras == 0 ? 1 : 0; }

  // The standard that initialization settles on: the stored one wins, and an unreadable record
  // stands for "no video".
  int Standard() const {
    if (GetParam().stored == Stored::Failing) return 2;
    return GetParam().stored == Stored::Disagreeing ? OtherStandard() : GetParam().cameras;
  }

  void PowerOn() {
    Fit(GetParam().chips, GetParam().cameras);
    const auto channels = static_cast<std::uint8_t>(Channels());
    switch (GetParam().stored) {
      case Stored::Blank:
        world().nvram.SetBlank();
        break;
      case Stored::Failing:
        world().nvram.SetFailure(sim::Nvram::Failure::Read);
        break;
      case Stored::Agreeing:
        world().nvram.SetRecord("MDVR", static_cast<std::uint8_t>(GetParam().cameras), channels);
        break;
      case Stored::Disagreeing:
        world().nvram.SetRecord("MDVR", static_cast<std::uint8_t>(OtherStandard()),
                                channels == 16 ? 4 : 16);
        break;
    }
    world().board.HoldSync(false);  // the worker stays in its first wait
    AttachAndBind();
    Mark();
    ASSERT_EQ(Command(VEXO_CMD_INIT, {0x34, 0x12, 0x78, 0x56, 1, 2, 3, 4, 5, 6, 7, 8}), 0);
  }

  std::vector<std::string> ExpectedPrints() const {
    std::vector<std::string> prints;
    const auto say = [&](const std::string& text) { prints.push_back(Plain(text)); };
    const int cameras = GetParam().cameras;
    if (cameras == 2) say("\r\n VIDEO DET : 0 0 \r\n");
    std::array<char, 5> lost{};
    std::snprintf(lost.data(), lost.size(), "%04X", cameras == 2 ? AllChannels(Channels()) : 0u);
    say(std::string("\r\n g_vid_loss_mask : ") + lost.data() + " SYSTEM : ");
    constexpr std::array<const char*, 3> kDetected = {"[NTSC]\r\n", "[PAL]\r\n", "[ALL LOSS]\r\n"};
    say(kDetected.at(static_cast<std::size_t>(cameras)));

    const Stored stored = GetParam().stored;
    if (stored == Stored::Failing) say(" ERROR READ NVRAM DATA!!!\r\n\r\n");
    if (stored == Stored::Blank) {
      say("[TW2835] ERROR WRITE DATA NVRAM DRIVER 0x########\r\n\r\n");
    }
    if (stored == Stored::Failing || stored == Stored::Disagreeing) {
      say(">>Invalide MAX CHANNEL INFO!\r\n");
      if (Standard() != cameras) say(">>Invalide VIDEO SIGNAL INFO!\r\n");
    }
    prints.push_back(Levelled("APP Ver : Ver 1. 0. 0. 0\r\n"));
    say(">> TW2835 Initialize Complete!\r\n");
    constexpr std::array<const char*, 3> kFinish = {
        ">> FINISH NTSC CAMERA!!\r\n", ">> FINISH PAL CAMERA!!\r\n", ">> FINISH LOSS CAMERA!!\r\n"};
    say(kFinish.at(static_cast<std::size_t>(Standard())));
    say(">> TW_SetLiveModeInfo ALREADY LIVE MODE\r\n");
    std::array<char, 96> worker{};
    std::snprintf(worker.data(), worker.size(),
                  ">> [THREAD_ID 0x%08x] check worker thread set run flag!\r\n",
                  g_worker.thread_id);
    prints.push_back(Levelled(worker.data()));
    return prints;
  }
};

// Holds: VexoInitRecord "Read: bytes 0-3."
// Holds: VexoInitRecord "reserved1: 0"
// Holds: VexoInitRecord "reserved2: 2"
TEST_P(InitImage, LeavesEveryRegisterAsTheTablesAndTheLiveSwitchSay) {
  ASSERT_NO_FATAL_FAILURE(PowerOn());
  ReferenceModel model = ReferenceModel::AtPowerOn(GetParam().chips, GetParam().cameras);
  model.Initialize(Standard());
  const RegisterImage actual = Image();
  for (std::size_t p = 0; p < 4; ++p) {
    for (std::size_t page = 0; page < 3; ++page) {
      for (std::size_t reg = 0; reg < 256; ++reg) {
        EXPECT_EQ(+actual[p][page][reg], +model.image[p][page][reg])
            << "chip " << p << ", page " << page << ", register 0x" << std::hex << reg;
      }
    }
  }
}

TEST_P(InitImage, LeavesTheStateOfALiveBoard) {
  g_display.selected_channel = 3;  // not the business of initialization
  ASSERT_NO_FATAL_FAILURE(PowerOn());
  const int chips = GetParam().chips;
  EXPECT_EQ(g_video.chip_count, chips);
  EXPECT_EQ(g_video.max_channel, Channels());
  for (int p = 0; p < 4; ++p) {
    EXPECT_EQ(g_video.chip_present[p], p < chips ? 1 : 0) << p;
    EXPECT_EQ(g_video.report.chip_id[p], p < chips ? 0x28 : 0x00) << p;
  }
  EXPECT_EQ(g_video.video_standard, Standard());
  EXPECT_EQ(g_video.report.chip_count, static_cast<unsigned>(chips));
  EXPECT_EQ(g_video.report.video_standard, static_cast<unsigned>(Standard()));
  EXPECT_EQ(g_video.broadcast_select, 0xFF);
  EXPECT_EQ(g_video.default_live_split, DefaultSplitOf(Channels()));
  EXPECT_EQ(g_video.default_play_split, DefaultSplitOf(Channels()));
  EXPECT_EQ(g_video.g_chip_ready, 1);
  EXPECT_EQ(g_video.g_vid_loss_mask, GetParam().cameras == 2 ? AllChannels(Channels()) : 0u);

  EXPECT_EQ(g_display.view, 1);
  // A board of 12 channels has no split of its own.
  EXPECT_EQ(g_display.live_split, Channels() == 12 ? 7 : DefaultSplitOf(Channels()));
  EXPECT_EQ(g_display.play_split, 7);
  EXPECT_EQ(g_display.selected_channel, 3);

  EXPECT_EQ(g_display.split_option, 0);
  EXPECT_EQ(g_display.blank_mask.live, 0u);
  EXPECT_EQ(g_display.blank_mask.playback, 0u);
  EXPECT_EQ(g_display.live_mask, 0xFFFFFFFFu);
  EXPECT_EQ(g_display.record_mask, 0xFFFFFFFFu);
  // Both tables go by the standard that was settled on.
  for (const WindowTable* table : {&g_layout.live, &g_layout.play}) {
    std::size_t at = 0;
    for (int mode = 0; mode < 7; ++mode) {
      for (const Rect& rect : DefaultRects(mode, Standard() == 0)) {
        const WindowRect& window = table->at(at++);
        EXPECT_EQ((Rect{window.x_start, window.x_end, window.y_start, window.y_end}), rect) << at;
      }
    }
    EXPECT_EQ(at, table->size());
  }

  for (const auto& level : g_motion.level) EXPECT_EQ(level, 1);
  for (const auto& mask : g_motion.mask) {
    for (const std::uint8_t cells : mask) EXPECT_EQ(cells, 0xFF);
  }
  EXPECT_EQ(g_motion.timing, 0x33);
  EXPECT_EQ(g_motion.ready, 1);
}

// Holds: VexoInitRecord "Written: bytes 12-23 (all zero when initialization fails)."
TEST_P(InitImage, TellsTheHostChipsStandardAndIdentificationAndTouchesNoOtherByte) {
  ASSERT_NO_FATAL_FAILURE(PowerOn());
  std::vector<std::uint8_t> expected = {0x34, 0x12, 0x78, 0x56, 1, 2, 3, 4, 5, 6, 7, 8};
  const std::vector<int> results = {GetParam().chips, 0, 0, 0, Standard(), 0, 0, 0};
  for (const int byte : results) expected.push_back(static_cast<std::uint8_t>(byte));
  for (int p = 0; p < 4; ++p) expected.push_back(p < GetParam().chips ? 0x28 : 0x00);
  expected.resize(64, 0);
  EXPECT_EQ(last_record, expected);
}

TEST_P(InitImage, PrintsWhatItFoundInOrder) {
  ASSERT_NO_FATAL_FAILURE(PowerOn());
  std::vector<std::string> prints = Prints();
  // The number in the text about a record that is none has no meaning.
  const std::string no_record = Plain("[TW2835] ERROR WRITE DATA NVRAM DRIVER 0x");
  for (std::string& print : prints) {
    if (!print.starts_with(no_record)) continue;
    for (std::size_t i = no_record.size(); i < print.size() && std::isxdigit(print[i]) != 0; ++i) {
      print[i] = '#';
    }
  }
  EXPECT_EQ(prints, ExpectedPrints());
}

TEST_P(InitImage, ReadsTheStoredRecordOnceAndWritesNothingThere) {
  ASSERT_NO_FATAL_FAILURE(PowerOn());
  const auto requests = Events<sim::NvramEvent>();
  ASSERT_EQ(requests.size(), 1u);
  EXPECT_EQ(requests[0].op, "read");
  EXPECT_EQ(requests[0].block, 1u);
  EXPECT_EQ(requests[0].offset, 0u);
  EXPECT_EQ(requests[0].length, 6u);
  EXPECT_EQ(requests[0].ok, GetParam().stored != Stored::Failing);
  EXPECT_EQ(world().nvram.Hits(), GetParam().stored == Stored::Failing ? 1u : 0u);
}

std::vector<InitCase> AllCases() {
  std::vector<InitCase> cases;
  for (int chips = 1; chips <= 4; ++chips) {
    for (int cameras = 0; cameras <= 2; ++cameras) {
      for (const Stored stored :
           {Stored::Blank, Stored::Failing, Stored::Agreeing, Stored::Disagreeing}) {
        cases.push_back({chips, cameras, stored});
      }
    }
  }
  return cases;
}
INSTANTIATE_TEST_SUITE_P(Boards, InitImage, ::testing::ValuesIn(AllCases()), NameOf);

}  // namespace
}  // namespace test
