#include "setup/test_patterns.h"

#include <string>

#include "chip/video_state.h"
#include "display/display_state.h"
#include "harness/host.h"
#include "setup/init_tables.h"
#include "tests/display/display_test.h"
#include "tests/support/at_events.h"

namespace test {
namespace {

class TestPatternsTest : public DisplayTest {
 protected:
  static void FillRect(int chip, int x, int y, int w, int h) {
    TW_FillRect(static_cast<std::uint8_t>(chip), static_cast<std::uint8_t>(x),
                static_cast<std::uint8_t>(y), static_cast<std::uint8_t>(w),
                static_cast<std::uint8_t>(h));
  }

  // The fill of a rectangle does what the model says; bus accesses alone.
  void ExpectFill(int chip, int x, int y, int w, int h, int busy_reads = 0) {
    SCOPED_TRACE(std::to_string(x) + ", " + std::to_string(y) + ", " + std::to_string(w) + ", " +
                 std::to_string(h));
    world().trace.Clear();
    Mark();
    ReferenceModel model = Model();
    model.fill_busy = busy_reads;
    model.FillRect(chip, x, y, w, h);
    FillRect(chip, x, y, w, h);
    EXPECT_EQ(Accesses(), model.accesses);
  }
};

// ---- Filling ----------------------------------------------------------------------------------

class FillRectTest : public TestPatternsTest {
 protected:
  FillRectTest() { UseBoard(16); }
};

TEST_F(FillRectTest, OfWidth4IsOneFill) {
  for (const int x : {0, 7, 63, 64, 200}) {
    Mark();
    FillRect(kMaster, x, 0, 4, 1);
    EXPECT_EQ(Accesses(),
              (std::vector<Access>{W(kMaster, 2, 0x00, 0xFF), W(kMaster, 2, 0x01, 0xFF),
                                   W(kMaster, 2, 0x02, 0xFF), W(kMaster, 2, 0x03, 0xFF),
                                   W(kMaster, 2, 0x07, 0x00), W(kMaster, 2, 0x08, 0x09),
                                   W(kMaster, 2, 0x09, 0x02), W(kMaster, 2, 0x05, 4 * x % 256),
                                   W(kMaster, 2, 0x06, (4 * x + 16) % 256),
                                   W(kMaster, 2, 0x0A, 0xC0), R(kMaster, 2, 0x0A, 0x40)}))
        << x;
  }
}

TEST_F(FillRectTest, OfWidth3IsTheSecondFillAlone) {
  for (const int x : {0, 7, 63, 64, 200}) {
    Mark();
    FillRect(kSlave1, x, 2, 3, 0);
    EXPECT_EQ(Accesses(),
              (std::vector<Access>{W(kSlave1, 2, 0x00, 0xFF), W(kSlave1, 2, 0x01, 0xFF),
                                   W(kSlave1, 2, 0x02, 0xFF), W(kSlave1, 2, 0x03, 0xFF),
                                   W(kSlave1, 2, 0x07, 0x14), W(kSlave1, 2, 0x08, 0x13),
                                   W(kSlave1, 2, 0x09, 0x02), W(kSlave1, 2, 0x05, 4 * x % 256),
                                   W(kSlave1, 2, 0x06, (4 * x + 11) % 256),
                                   W(kSlave1, 2, 0x0A, 0xC0), R(kSlave1, 2, 0x0A, 0x40)}))
        << x;
  }
}

TEST_F(FillRectTest, OfWidth0WritesDataAndLinesAndStartsNothing) {
  world().board.SetFillBusy(5);
  FillRect(kMaster, 9, 1, 0, 1);
  EXPECT_EQ(Accesses(), (std::vector<Access>{W(kMaster, 2, 0x00, 0xFF), W(kMaster, 2, 0x01, 0xFF),
                                             W(kMaster, 2, 0x02, 0xFF), W(kMaster, 2, 0x03, 0xFF),
                                             W(kMaster, 2, 0x07, 0x0A), W(kMaster, 2, 0x08, 0x13),
                                             W(kMaster, 2, 0x09, 0x02)}));
}

TEST_F(FillRectTest, OfNoLinesAtTheTopEndsAtLine0) {
  FillRect(kMaster, 0, 0, 0, 0);
  EXPECT_EQ(Register(0, 2, 0x07), 0x00);
  EXPECT_EQ(Register(0, 2, 0x08), 0x00);
  EXPECT_EQ(Register(0, 2, 0x09), 0x02);
}

TEST_F(FillRectTest, SplitsEveryWidthIntoSixteensAndTheRest) {
  for (int w = 0; w < 256; ++w) {
    for (const int x : {0, 1, 13, 44, 62, 63, 64, 128, 255}) {
      ExpectFill(kMaster, x, 3, w, 5);
      if (HasFailure()) return;
    }
  }
}

TEST_F(FillRectTest, TellsEveryFirstAndLastLineInTenBits) {
  for (int y = 0; y < 256; ++y) {
    for (const int h : {0, 1, 2, 25, 26, 31, 51, 100, 102, 103, 128, 254, 255, 255 - y}) {
      ExpectFill(kMaster, 0, y, 0, h);
      if (HasFailure()) return;
    }
  }
}

TEST_F(FillRectTest, TakesEveryMixtureOfOddSizes) {
  for (const int x : {0, 1, 45, 63, 64, 255}) {
    for (const int y : {0, 1, 25, 26, 31, 255}) {
      for (const int w : {0, 1, 2, 3, 4, 5, 7, 8, 44, 45, 63, 64, 65, 252, 255}) {
        for (const int h : {0, 1, 31, 255}) {
          ExpectFill(kMaster, x, y, w, h);
          if (HasFailure()) return;
        }
      }
    }
  }
}

// The literal bytes where sums no longer fit.
TEST_F(FillRectTest, CutsTooLargePositionsToAByte) {
  FillRect(kMaster, 255, 255, 255, 255);
  const std::vector<Access> accesses = Accesses();
  ASSERT_EQ(accesses.size(), 15u);
  EXPECT_EQ(accesses[4], W(kMaster, 2, 0x07, 0xF6));  // line 2550 = 0x9F6
  EXPECT_EQ(accesses[5], W(kMaster, 2, 0x08, 0xEB));  // line 5099 = 0x13EB
  EXPECT_EQ(accesses[6], W(kMaster, 2, 0x09, 0x37));  // 0x24 + 0x13
  EXPECT_EQ(accesses[7], W(kMaster, 2, 0x05, 0xFC));  // column 1020
  EXPECT_EQ(accesses[8], W(kMaster, 2, 0x06, 0xEC));  // column 1020 + 1008 = 0x7EC
  EXPECT_EQ(accesses[11], W(kMaster, 2, 0x05, 0xEC));
  EXPECT_EQ(accesses[12], W(kMaster, 2, 0x06, 0xF7));  // 0x7EC + 11
}

TEST_F(FillRectTest, FillsOnTheChipThatIsNamed) {
  for (const int chip : kChips) ExpectFill(chip, 4, 5, 6, 7);
}

// Holds: Text commands "`lsplit`, `mpip stop` and `bluescr init` wait until the chips"
TEST_F(FillRectTest, ReadsTheControlRegisterUntilItsBusyBitIsClear) {
  const std::uint32_t start = world().kernel.Now();
  for (const int busy : {0, 1, 2, 7, 3000}) {
    world().board.SetFillBusy(static_cast<unsigned>(busy));
    ExpectFill(kMaster, 1, 2, 4, 5, busy);
    ExpectFill(kSlave3, 1, 2, 3, 5, busy);
    ExpectFill(kSlave2, 1, 2, 45, 5, busy);
  }
  EXPECT_EQ(world().kernel.Now(), start) << "no pause between the reads";
}

TEST_F(FillRectTest, OtherBitsOfTheControlRegisterDoNotKeepItWaiting) {
  // The start leaves bit 6 set; the bus makes ones of the others while the first answer comes.
  bool started = false;
  const AtEvents watch([this, &started](const sim::Event& event, const sim::EventDetail*) {
    sim::DataLines lines;
    const bool control = event.window == sim::BusWindow::Address && event.value == 0x0A;
    if (control && started) lines.high = 0x7F;
    started = started != control;
    world().board.SetDataLines(lines);
  });
  FillRect(kMaster, 0, 0, 4, 1);
  EXPECT_EQ(Accesses().back(), R(kMaster, 2, 0x0A, 0x7F));
}

TEST_F(FillRectTest, FullRectIs310LinesOf180ColumnsOnTheMaster) {
  TW_FillFullRect();
  EXPECT_EQ(Accesses(),
            (std::vector<Access>{
                W(kMaster, 2, 0x00, 0xFF), W(kMaster, 2, 0x01, 0xFF), W(kMaster, 2, 0x02, 0xFF),
                W(kMaster, 2, 0x03, 0xFF), W(kMaster, 2, 0x07, 0x00), W(kMaster, 2, 0x08, 0x35),
                W(kMaster, 2, 0x09, 0x03), W(kMaster, 2, 0x05, 0x00), W(kMaster, 2, 0x06, 0xB0),
                W(kMaster, 2, 0x0A, 0xC0), R(kMaster, 2, 0x0A, 0x40), W(kMaster, 2, 0x05, 0xB0),
                W(kMaster, 2, 0x06, 0xB3), W(kMaster, 2, 0x0A, 0xC0), R(kMaster, 2, 0x0A, 0x40)}));
  EXPECT_EQ(DebugText(), "");
  EXPECT_TRUE(KernelDebug().empty());
}

// ---- Colour bar and test screen ---------------------------------------------------------------

class TestPatterns : public TestPatternsTest, public ::testing::WithParamInterface<BoardCase> {
 protected:
  void SetUp() override { UseBoard(GetParam().channels, GetParam().standard); }
};

TEST_P(TestPatterns, ColorBarIsAnnouncedOnTheKernelOutputAndWrittenToAllChipsWhole) {
  struct Case {
    void (*run)();
    int value;
    const char* text;
  };
  for (const Case& c : {Case{TW_ColorBarOn, 0x08, "==>> TW2835 COLOR BAR ON\r\n"},
                        Case{TW_ColorBarOff, 0x00, "==>> TW2835 COLOR BAR OFF\r\n"}}) {
    Scribble(3);
    ReferenceModel model = Model();
    model.Write(kAll, 1, 0xAB, c.value);
    c.run();
    ExpectLike(model);
    EXPECT_EQ(Accesses(), (std::vector<Access>{W(kAll, 1, 0xAB, c.value)}));
    EXPECT_EQ(KernelDebug(), (std::vector<std::string>{c.text}));
    EXPECT_EQ(DebugText(), "") << "not through the gated output";
    for (int p = 0; p < GetParam().channels / 4; ++p) EXPECT_EQ(Register(p, 1, 0xAB), c.value);
  }
}

// Not on a board without chips: no fill engine would ever finish there.
class BlueScreen : public TestPatterns {};

// Holds: vexo bluescr init "Shows a blank test screen over a full-screen layout"
TEST_P(BlueScreen, InitLaysOutFullScreenBlanksAllAndFillsAndClearsTheOverlay) {
  for (const int busy : {0, 4}) {
    Scribble(static_cast<unsigned>(busy) + 11);
    world().board.SetFillBusy(static_cast<unsigned>(busy));
    world().board.SetSettle(busy);
    g_display.live_split = 6;
    g_display.split_option = 2;
    g_display.selected_channel = 9;
    ReferenceModel model = Model();
    model.busy_polls = busy;
    model.fill_busy = busy;
    model.BlueScreenInit();
    TW_BlueScreenInit();
    ExpectLike(model);
    EXPECT_EQ(g_display.live_split, 0);
    EXPECT_EQ(g_display.split_option, 0);
    EXPECT_EQ(g_display.selected_channel, 0);
    EXPECT_EQ(DebugText(), "");
    EXPECT_TRUE(KernelDebug().empty());
  }
}

// Holds: vexo bluescr clear "Takes the test screen away"
TEST_P(BlueScreen, ClearFillsAgainAndPutsTheInitialAttributesBack) {
  for (const int busy : {0, 4}) {
    Scribble(static_cast<unsigned>(busy) + 21);
    world().board.SetFillBusy(static_cast<unsigned>(busy));
    ReferenceModel model = Model();
    model.fill_busy = busy;
    model.BlueScreenClear();
    TW_BlueScreenClear();
    ExpectLike(model);
    EXPECT_EQ(DebugText(), "");
    EXPECT_TRUE(KernelDebug().empty());
  }
}

INSTANTIATE_TEST_SUITE_P(Boards, TestPatterns,
                         ::testing::Values(BoardCase{0, 0}, BoardCase{4, 0}, BoardCase{4, 1},
                                           BoardCase{8, 0}, BoardCase{8, 1}, BoardCase{12, 0},
                                           BoardCase{12, 1}, BoardCase{16, 0}, BoardCase{16, 1},
                                           BoardCase{16, 2}),
                         NameOf);
INSTANTIATE_TEST_SUITE_P(Boards, BlueScreen,
                         ::testing::Values(BoardCase{4, 0}, BoardCase{4, 1}, BoardCase{8, 0},
                                           BoardCase{8, 1}, BoardCase{12, 0}, BoardCase{12, 1},
                                           BoardCase{16, 0}, BoardCase{16, 1}, BoardCase{16, 2}),
                         NameOf);

class TestPatternsEdges : public TestPatternsTest {};

TEST_F(TestPatternsEdges, ColorBarIsAnnouncedThoughTheGatedOutputIsOff) {
  UseBoard(4);
  harness::SetEnableOutputMsg(0);
  harness::SetEnableDebug(0);
  Mark();
  TW_ColorBarOn();
  TW_ColorBarOff();
  EXPECT_EQ(KernelDebug(), (std::vector<std::string>{"==>> TW2835 COLOR BAR ON\r\n",
                                                     "==>> TW2835 COLOR BAR OFF\r\n"}));
  EXPECT_EQ(Debug(), std::vector<std::string>{});
}

TEST_F(TestPatternsEdges, ColorBarIsAnnouncedBeforeItIsWritten) {
  UseBoard(4);
  const std::size_t from = world().trace.Mark();
  TW_ColorBarOn();
  const sim::Trace& trace = world().trace;
  ASSERT_GT(trace.Events().size(), from + 1);
  EXPECT_NE(trace.As<sim::DebugEvent>(trace.Events()[from]), nullptr);
}

// "clrbar 0 " is off; any other number is on.
// Holds: vexo clrbar "Shows the chips' colour bar"
// Holds: Chips: vexo "`ON`: 0 off"
TEST_F(TestPatternsEdges, TheColorBarCommandIsOffFor0AndOnForEveryOtherNumber) {
  UseBoard(16);
  for (int number = 1; number < 256; ++number) {
    ASSERT_EQ(harness::TextCommandProc("vexo clrbar " + std::to_string(number) + " "), 0);
    for (int p = 0; p < 4; ++p) ASSERT_EQ(Register(p, 1, 0xAB), 0x08) << number;
    ASSERT_EQ(harness::TextCommandProc("vexo clrbar 0 "), 0);
    for (int p = 0; p < 4; ++p) ASSERT_EQ(Register(p, 1, 0xAB), 0x00) << number;
  }
}

TEST_F(TestPatternsEdges, TheCommandsAreRefusedWhileTheChipsAreNotReady) {
  UseBoard(16);
  g_video.g_chip_ready = 0;
  Mark();
  for (const char* line :
       {"vexo clrbar 1 ", "vexo clrbar 0 ", "vexo bluescr init ", "vexo bluescr clear "}) {
    EXPECT_EQ(harness::TextCommandProc(line), 0) << line;
    ExpectUntouched();
  }
}

// Holds: vexo bluescr clear "Takes the test screen away"
TEST_F(TestPatternsEdges, BlueScreenClearBringsNeitherTheLayoutNorTheOverlayBack) {
  UseBoard(16);
  TW_BlueScreenInit();
  for (int k = 0; k < 16; ++k) EXPECT_EQ(Register(0, 2, 0x10 + 5 * k), 0x00) << k;
  const RegisterImage shown = Image();
  TW_BlueScreenClear();
  const RegisterImage cleared = Image();
  EXPECT_EQ(cleared[0][0], shown[0][0]);
  for (int p = 0; p < 4; ++p) {
    EXPECT_EQ(cleared.at(static_cast<std::size_t>(p))[2], shown.at(static_cast<std::size_t>(p))[2]);
    for (int n = 0; n < 4; ++n) {
      EXPECT_EQ(Register(p, 1, 0x11 + 8 * n), 0x02) << p << n;
      EXPECT_EQ(Register(p, 1, 0x10 + 8 * n), n == 0 && p == 0 ? 0xC0 : 0x80 + n) << p << n;
    }
  }
  EXPECT_EQ(g_display.live_split, 0);
}

TEST_F(TestPatternsEdges, OnlyTheMastersOverlayEntriesAreCleared) {
  UseBoard(16);
  const RegisterImage before = Image();
  TW_BlueScreenInit();
  const RegisterImage after = Image();
  for (std::size_t p = 1; p < 4; ++p) EXPECT_EQ(after[p][2], before[p][2]) << p;
  for (std::size_t reg = 0x0B; reg < 256; ++reg) {
    const bool first_of_entry = reg >= 0x10 && reg <= 0x5B && (reg - 0x10) % 5 == 0;
    EXPECT_EQ(after[0][2][reg], first_of_entry ? 0 : before[0][2][reg]) << reg;
  }
}

TEST_F(TestPatternsEdges, BlueScreenClearGivesTheAttributesThatTheDisplayTableHas) {
  for (const int channels : {4, 8, 16}) {
    SCOPED_TRACE(channels);
    UseBoard(channels);
    TW_InitPage1Tables();
    const RegisterImage fresh = Image();
    Scribble(31);
    TW_BlueScreenClear();
    for (int p = 0; p < channels / 4; ++p) {
      for (const int reg : {0x11, 0x19, 0x21, 0x29}) {
        EXPECT_EQ(Register(p, 1, reg), 0x02) << p;
        EXPECT_EQ(Register(p, 1, reg),
                  fresh.at(static_cast<std::size_t>(p))[1][static_cast<std::size_t>(reg)]);
      }
    }
  }
}

}  // namespace
}  // namespace test
