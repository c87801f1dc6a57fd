// The order in which initialization does things.
#include <algorithm>
#include <functional>

#include "VexoCtrlSDK.h"
#include "chip/video_state.h"
#include "display/display_state.h"
#include "display/window_tables.h"
#include "motion/motion_state.h"
#include "setup/initialization.h"
#include "tests/model/reference_model.h"
#include "tests/setup/setup_test.h"
#include "tests/support/at_events.h"

namespace test {
namespace {

struct SequenceCase {
  int chips;
  int standard;
};
void PrintTo(const SequenceCase& c, std::ostream* out) {
  *out << c.chips << " chips, standard " << c.standard;
}

class InitSequence : public SetupTest {
 protected:
  void PowerOn(int chips, int standard) {
    Fit(chips, standard);
    world().nvram.SetRecord("MDVR", static_cast<std::uint8_t>(standard),
                            static_cast<std::uint8_t>(4 * chips));
    AttachAndBind();
    Mark();
  }
  static std::vector<std::string> Registers(const std::vector<std::string>& flow) {
    std::vector<std::string> lines;
    for (const std::string& line : flow) {
      if (line.starts_with("w ") || line.starts_with("r ")) lines.push_back(line);
    }
    return lines;
  }
};

class InitAccesses : public InitSequence, public ::testing::WithParamInterface<SequenceCase> {};

TEST_P(InitAccesses, FollowTheStepsInOrder) {
  PowerOn(GetParam().chips, GetParam().standard);
  ASSERT_EQ(TW_InitializeSetup(0, 0), 4 * GetParam().chips);
  ReferenceModel model = ReferenceModel::AtPowerOn(GetParam().chips, GetParam().standard);
  model.Initialize(GetParam().standard);
  const std::vector<Access> actual = Accesses();
  for (std::size_t i = 0; i < std::min(actual.size(), model.accesses.size()); ++i) {
    ASSERT_EQ(actual[i], model.accesses[i]) << "access " << i;
  }
  EXPECT_EQ(actual.size(), model.accesses.size());
}

TEST_P(InitAccesses, AreRepeatedByARepeatedInitialization) {
  PowerOn(GetParam().chips, GetParam().standard);
  ASSERT_EQ(TW_InitializeSetup(0, 0), 4 * GetParam().chips);
  const std::vector<Access> first = Writes();
  const RegisterImage image = Image();
  Mark();
  ASSERT_EQ(TW_InitializeSetup(0, 0), 4 * GetParam().chips);
  EXPECT_EQ(Writes(), first);
  EXPECT_EQ(Image(), image);
  EXPECT_EQ(Events<sim::NvramEvent>().size(), 1u);
}

INSTANTIATE_TEST_SUITE_P(Boards, InitAccesses,
                         ::testing::Values(SequenceCase{1, 0}, SequenceCase{1, 1},
                                           SequenceCase{1, 2}, SequenceCase{2, 0},
                                           SequenceCase{2, 1}, SequenceCase{3, 0},
                                           SequenceCase{3, 1}, SequenceCase{4, 0},
                                           SequenceCase{4, 1}, SequenceCase{4, 2}));

TEST_F(InitSequence, PutsTheBusToIdleBeforeItAsksForTheChips) {
  PowerOn(1, 0);
  TW_InitializeSetup(0, 0);
  const std::vector<sim::Event>& events = world().trace.Events();
  const auto first = std::find_if(events.begin(), events.end(), [](const sim::Event& event) {
    return event.kind != sim::Event::Kind::Other;
  });
  ASSERT_NE(first, events.end());
  EXPECT_EQ(first->window, sim::BusWindow::Select);
  EXPECT_EQ(first->value, 0xFF);
  EXPECT_EQ((first + 1)->window, sim::BusWindow::Select);
  EXPECT_EQ((first + 1)->value, 0xFC);
}

TEST_F(InitSequence, WidensTheTableWritesFromTheMasterToAllChips) {
  PowerOn(2, 0);
  EXPECT_EQ(g_video.broadcast_select, 0x03);
  TW_InitializeSetup(0, 0);
  EXPECT_EQ(g_video.broadcast_select, 0xFF);
}

TEST_F(InitSequence, WidensTheTableWritesEvenWhenNoChipAnswers) {
  PowerOn(0, 0);
  TW_InitializeSetup(0, 0);
  EXPECT_EQ(g_video.broadcast_select, 0xFF);
}

// Holds: VexoInitRecord "reserved1: 0"
// Holds: VexoInitRecord "reserved2: 2"
// Holds: vexo init "The number is printed and otherwise ignored."
TEST_F(InitSequence, IgnoresBothArguments) {
  PowerOn(4, 0);
  ASSERT_EQ(TW_InitializeSetup(0, 0), 16);
  const std::vector<Access> first = Writes();
  const std::vector<std::string> prints = Prints();
  for (const int a : {1, 0x1234, 0xFFFF}) {
    Mark();
    ASSERT_EQ(TW_InitializeSetup(static_cast<std::uint16_t>(a), 0xFFFF), 16);
    EXPECT_EQ(Writes(), first);
    EXPECT_EQ(Prints(), prints);
  }
}

TEST_F(InitSequence, ReadsTheStoredRecordAfterTheDetectionAndTheHostVersionAfterTheTables) {
  PowerOn(2, 0);
  world().files.Set("\\Windows\\Main.exe", {sim::VersionFile::State::Present, {1, 5, 0, 0}});
  TW_InitializeSetup(0, 0);
  const std::vector<std::string> flow = Flow();
  const std::size_t detected = PlaceOf(flow, "print [NTSC]\r\n");
  const std::size_t stored = PlaceOf(flow, "nvram read");
  const std::size_t last_table = PlaceOf(flow, "w FF 2 7F 00");
  const std::size_t version = PlaceOf(flow, "print APP Ver : Ver 1. 5. 0. 0\r\n");
  const std::size_t adjusted = PlaceOf(flow, "w 0C 1 0F A3");
  const std::size_t complete = PlaceOf(flow, "print >> TW2835 Initialize Complete!\r\n");
  EXPECT_LT(detected, stored);
  EXPECT_LT(stored, last_table);
  EXPECT_LT(last_table, version);
  EXPECT_LT(version, adjusted);
  EXPECT_LT(adjusted, complete);
  // Between the standard and the record nothing is written.
  for (std::size_t i = 0; i < stored; ++i) EXPECT_FALSE(flow[i].starts_with("w ")) << flow[i];
}

// Chips are counted, not placed.
TEST_F(InitSequence, AdjustsAnEmptyPositionBetweenChipsForTheHostVersion) {
  PowerOn(3, 0);
  world().board.SetId(1, 0);  // not found
  world().files.Set("\\Windows\\Main.exe", {sim::VersionFile::State::Present, {1, 5, 0, 0}});
  ASSERT_EQ(TW_InitializeSetup(0, 0), 8);
  const std::vector<std::string> flow = Flow();
  const std::size_t version = PlaceOf(flow, "print APP Ver : Ver 1. 5. 0. 0\r\n");
  std::vector<std::string> adjusted;
  for (std::size_t i = version; i < flow.size(); ++i) {
    if (flow[i].starts_with("w ") && flow[i].find(" 1 0F ") != std::string::npos) {
      adjusted.push_back(flow[i].substr(0, 4));
    }
  }
  EXPECT_EQ(adjusted, (std::vector<std::string>{"w 03", "w 0C"}));
}

TEST_F(InitSequence, SwitchesTheOutputToLiveAfterTheVerdictAndBeforeTheLiveSwitch) {
  PowerOn(4, 1);
  TW_InitializeSetup(0, 0);
  const std::vector<std::string> flow = Flow();
  const std::size_t verdict = PlaceOf(flow, "print >> FINISH PAL CAMERA!!\r\n");
  const std::size_t output = PlaceOf(flow, "w 03 1 AC 45");
  const std::size_t live = PlaceOf(flow, "print >> TW_SetLiveModeInfo ALREADY LIVE MODE\r\n");
  EXPECT_LT(verdict, output);
  EXPECT_LT(output, live);
  EXPECT_EQ(Register(0, 1, 0xAC), 0x45);
  EXPECT_EQ(Register(1, 1, 0xAC), 0x40);  // the slaves keep the table's byte
}

TEST_F(InitSequence, SleepsOnceFor240MsBetweenTheLiveSwitchAndTheRecordPath) {
  PowerOn(1, 0);
  TW_InitializeSetup(0, 0);
  EXPECT_EQ(Elapsed(), 240u);
  const std::vector<std::string> flow = Flow();
  const std::size_t sleep = PlaceOf(flow, "sleep 240");
  EXPECT_LT(PlaceOf(flow, "print >> TW_SetLiveModeInfo ALREADY LIVE MODE\r\n"), sleep);
  EXPECT_GT(PlaceOf(flow, "w FF 1 51 40"), sleep);  // record mode
  // Live switch: the last thing before the pause is the record bit of channel 3.
  EXPECT_EQ(flow[sleep - 1], "w 03 1 6A 00");
  // After it: the record path and the motion setup again, and not a text.
  for (std::size_t i = sleep + 1; i < flow.size(); ++i) {
    EXPECT_TRUE(flow[i].starts_with("w ")) << flow[i];
  }
}

TEST_F(InitSequence, SetsMotionDetectionUpBeforeAndAfterTheLiveSwitch) {
  PowerOn(1, 0);
  TW_InitializeSetup(0, 0);
  const std::vector<std::string> flow = Flow();
  std::vector<std::size_t> places;
  for (std::size_t i = 0; i < flow.size(); ++i) {
    if (flow[i] == "w FF 2 5F AA") places.push_back(i);
  }
  ASSERT_EQ(places.size(), 2u);
  EXPECT_GT(places[0], PlaceOf(flow, "print >> TW2835 Initialize Complete!\r\n"));
  EXPECT_LT(places[0], PlaceOf(flow, "print >> FINISH NTSC CAMERA!!\r\n"));
  EXPECT_EQ(places[1], flow.size() - 1);
}

TEST_F(InitSequence, MarksTheChipsReadyOnlyAtTheEnd) {
  PowerOn(1, 0);
  int ready = -1;
  world().kernel.StartHostThread([&] { ready = g_video.g_chip_ready; });  // runs in the 240 ms
  TW_InitializeSetup(0, 0);
  EXPECT_EQ(ready, 0);
  EXPECT_EQ(g_video.g_chip_ready, 1);
}

// A thread that looks in between finds each word as its step left it.
TEST_F(InitSequence, ChangesEachWordOfItsStateAtItsStep) {
  PowerOn(1, 1);
  for (unsigned n = 0; n < 4; ++n) world().board.SetCamera(n, sim::Camera::Ntsc);
  struct Word {
    const char* what;
    std::function<bool()> changed;
    std::string at;  // the first bus cycle or text that finds it changed
    std::string seen = "none";
  };
  const char* const standard = ">>Invalide VIDEO SIGNAL INFO!\r\n";
  const char* const complete = ">> TW2835 Initialize Complete!\r\n";
  const char* const verdict = ">> FINISH PAL CAMERA!!\r\n";
  const std::string behind = "cycle 0 behind ";
  std::vector<Word> words = {
      {"wait event", [] { return g_display.wait_event != kPlatNoHandle; }, behind + "the start"},
      {"broadcast", [] { return g_video.broadcast_select == 0xFF; }, "cycle 1 behind the start"},
      {"standard", [] { return g_video.video_standard == 1; }, behind + standard},
      {"motion levels", [] { return g_motion.level[0] == 1; }, behind + complete},
      {"live split", [] { return g_video.default_live_split == 1; }, verdict},
      {"playback split", [] { return g_video.default_play_split == 1; }, verdict},
      {"live windows", [] { return g_layout.live[0].x_end == 0xB0; }, verdict},
      {"playback windows", [] { return g_layout.play[0].x_end == 0xB0; }, verdict},
      {"ready", [] { return g_video.g_chip_ready == 1; }, "none"},
  };
  for (const Word& word : words) EXPECT_FALSE(word.changed()) << word.what;
  std::string text = "the start";
  unsigned cycle = 0;
  const AtEvents watch([&](const sim::Event&, const sim::EventDetail* detail) {
    const auto* print = std::get_if<sim::DebugEvent>(detail);
    if ((detail != nullptr && print == nullptr) ||
        (print != nullptr && (print->text == Plain("") || print->text == Levelled("")))) {
      return;
    }
    if (print != nullptr) text = print->text;
    const std::string now =
        print != nullptr ? text : "cycle " + std::to_string(cycle++) + " behind " + text;
    if (print != nullptr) cycle = 0;
    for (Word& word : words) {
      if (word.seen == "none" && word.changed()) word.seen = now;
    }
  });
  ASSERT_EQ(TW_InitializeSetup(0, 0), 4);
  for (const Word& word : words) {
    EXPECT_EQ(word.seen, word.at) << word.what;
    EXPECT_TRUE(word.changed()) << word.what;
  }
}

TEST_F(InitSequence, EndsInLiveDisplayWhateverHappensInThePause) {
  PowerOn(1, 0);
  world().kernel.StartHostThread([] { g_display.view = kViewPlayback; });
  TW_InitializeSetup(0, 0);
  EXPECT_EQ(g_display.view, kViewLive);
}

TEST_F(InitSequence, ReturnsToLiveDisplayFromPlayback) {
  PowerOn(4, 0);
  g_display.view = kViewPlayback;
  TW_InitializeSetup(0, 0);
  EXPECT_EQ(g_display.view, kViewLive);
  for (const std::string& print : Prints()) {
    EXPECT_NE(print, Plain(">> TW_SetLiveModeInfo ALREADY LIVE MODE\r\n"));
  }
}

TEST_F(InitSequence, SaysThatTheDisplayIsLiveAlreadyWhenItIs) {
  PowerOn(4, 0);
  TW_InitializeSetup(0, 0);
  const std::vector<std::string> prints = Prints();
  EXPECT_EQ(prints.back(), Plain(">> TW_SetLiveModeInfo ALREADY LIVE MODE\r\n"));
}

// ---- The wait event ---------------------------------------------------------------------------

TEST_F(InitSequence, CreatesAWaitEventEachTimeAndNeverClosesTheOneBefore) {
  PowerOn(1, 0);
  const unsigned before = world().kernel.OpenHandles();
  PlatHandle last = g_display.wait_event;
  EXPECT_EQ(last, kPlatNoHandle);
  for (unsigned run = 1; run <= 4; ++run) {
    TW_InitializeSetup(0, 0);
    EXPECT_EQ(world().kernel.OpenHandles(), before + run);
    EXPECT_NE(g_display.wait_event, last);
    last = g_display.wait_event;
  }
}

TEST_F(InitSequence, CreatesTheWaitEventEvenWhenNoChipAnswers) {
  PowerOn(0, 0);
  const unsigned before = world().kernel.OpenHandles();
  TW_InitializeSetup(0, 0);
  EXPECT_EQ(world().kernel.OpenHandles(), before + 1);
  EXPECT_NE(g_display.wait_event, kPlatNoHandle);
}

TEST_F(InitSequence, WaitsOnAnEventThatIsNotSignalledAndResetsItself) {
  PowerOn(1, 0);
  TW_InitializeSetup(0, 0);
  EXPECT_EQ(world().kernel.Wait(g_display.wait_event, 0), kPlatWaitTimeout);
  ASSERT_TRUE(world().kernel.SetEvent(g_display.wait_event));
  EXPECT_EQ(world().kernel.Wait(g_display.wait_event, 0), kPlatWaitSignalled);
  EXPECT_EQ(world().kernel.Wait(g_display.wait_event, 0), kPlatWaitTimeout);
}

TEST_F(InitSequence, PacesTheSettlePollsOfTheFirstSplitWithWaitsOf5Ms) {
  PowerOn(1, 0);
  world().board.SetSettle(2);
  TW_InitializeSetup(0, 0);
  const std::vector<std::string> flow = Flow();
  EXPECT_EQ(std::count(flow.begin(), flow.end(), "wait 5"), 2);
  EXPECT_EQ(Elapsed(), 250u);
}

TEST_F(InitSequence, GoesOnWhenTheChipsNeverSettle) {
  PowerOn(2, 0);
  world().board.SetSettle(-1);
  EXPECT_EQ(TW_InitializeSetup(0, 0), 8);
  EXPECT_EQ(Elapsed(), 199u * 5 + 240);
  EXPECT_EQ(KernelDebug().size(), 1u);
  EXPECT_EQ(g_video.g_chip_ready, 1);
}

// ---- The command around it --------------------------------------------------------------------

// Holds: VEXOAPI_CommandProc "Once it has the lock"
TEST_F(InitSequence, HaltsTheCameraFirstAndResumesItAfterTheWorkerHasStarted) {
  PowerOn(4, 0);
  world().board.HoldSync(false);
  ASSERT_EQ(Command(VEXO_CMD_INIT, {}), 0);
  const std::vector<std::string> flow = Flow();
  const std::vector<std::string> head(flow.begin(), flow.begin() + 5);
  EXPECT_EQ(head, (std::vector<std::string>{"lock", "open CAM1:", "control 220864 ok", "close",
                                            "r 03 0 FE 28"}));
  const std::vector<std::string> tail(flow.end() - 4, flow.end());
  EXPECT_EQ(tail, (std::vector<std::string>{"open CAM1:", "control 220860 ok", "close", "unlock"}));
  const std::size_t worker_up = PlaceOf(flow, "sleep 200");
  EXPECT_GT(PlaceOf(flow, "control 220860 ok"), worker_up);
  EXPECT_EQ(world().kernel.LiveThreads(), 1u);
  EXPECT_FALSE(world().kernel.MutexHeld(u"CS4_GlobalLock"));
  // The command, unlike the text command, leaves messages to its result.
  EXPECT_TRUE(Messages().empty());
}

TEST_F(InitSequence, OfTheCommandTakes240MsAndTheWorkersStart) {
  PowerOn(4, 0);
  ASSERT_EQ(Command(VEXO_CMD_INIT, {}), 0);
  EXPECT_EQ(Elapsed(), 240u + 200u);
}

TEST_F(InitSequence, ResumesTheCameraAndSucceedsWhenTheWorkerCannotStart) {
  PowerOn(1, 0);
  world().faults.Set(sim::Fault::Thread, true);
  EXPECT_EQ(Command(VEXO_CMD_INIT, {}), 0);
  EXPECT_EQ(world().faults.Hits(sim::Fault::Thread), 1u);
  const std::vector<std::string> flow = Flow();
  PlaceOf(flow, "control 220860 ok");
  EXPECT_EQ(flow.back(), "unlock");
}

class InitWithoutCamera : public InitSequence,
                          public ::testing::WithParamInterface<sim::Drivers::State> {};

TEST_P(InitWithoutCamera, GoesOn) {
  world().drivers.Set("CAM1:", GetParam());
  PowerOn(1, 0);
  EXPECT_EQ(Command(VEXO_CMD_INIT, {}), 0);
  EXPECT_EQ(g_video.g_chip_ready, 1);
  const std::vector<std::string> flow = Flow();
  EXPECT_EQ(std::count(flow.begin(), flow.end(), "open CAM1:"), 2);
}

INSTANTIATE_TEST_SUITE_P(Drivers, InitWithoutCamera,
                         ::testing::Values(sim::Drivers::State::Absent, sim::Drivers::State::Null));

}  // namespace
}  // namespace test
