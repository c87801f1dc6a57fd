#include "tools/vexosim/shell/shell.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <optional>
#include <sstream>

#include "harness/host.h"
#include "script/help/first_words.h"
#include "script/run.h"
#include "sim/world.h"

namespace vexosim {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class ShellTest : public testing::Test {
 protected:
  void TearDown() override {
    shell_.reset();
    harness::Restart();
  }

  // What is said at the start.
  std::string Start(const ShellOptions& options = {}) {
    shell_.emplace(options, history_, out_);
    return Taken();
  }
  std::string Run(const std::string& line) {
    EXPECT_TRUE(shell_->Execute(line)) << line;
    return Taken();
  }
  int Register(unsigned position, std::uint8_t page, std::uint8_t reg) {
    return sim::TheWorld().board.Peek(position, page, reg);
  }

  LineHistory history_{std::nullopt};
  std::optional<Shell> shell_;

 private:
  std::string Taken() {
    std::string text = out_.str();
    out_.str({});
    return text;
  }
  std::ostringstream out_;
};

// ---- Start ------------------------------------------------------------------------------------

TEST_F(ShellTest, SaysInTwoLinesWhatThereIsAndHowToGoOn) {
  const std::string text = Start();
  EXPECT_EQ(text,
            "A board of 16 channels with NTSC cameras, initialized; the worker runs.\n"
            "Type a text command (vexo lsplit 6 0), a script line (camera 2 off), or help.\n");
}

TEST_F(ShellTest, LetsTheFirstLineDoSomething) {
  Start();
  // Sixteen windows: every channel is shown in front.
  EXPECT_EQ(Run("vexo lsplit 6 0"), "      = 0\n");
  for (unsigned position = 0; position < 4; ++position) {
    EXPECT_EQ(Register(position, 1, 0x10), 0xC0) << position;
  }
  EXPECT_EQ(Run("vexo lsplit 0 0"), "      = 0\n");
  EXPECT_EQ(Register(3, 1, 0x10), 0x80);
}

TEST_F(ShellTest, FitsTheBoardThatWasAskedFor) {
  ShellOptions options;
  options.chips = 2;
  options.pal = true;
  EXPECT_THAT(Start(options), StartsWith("A board of 8 channels with PAL cameras, initialized"));
  EXPECT_TRUE(sim::TheWorld().board.Fitted(1));
  EXPECT_FALSE(sim::TheWorld().board.Fitted(2));
  EXPECT_EQ(Register(0, 1, 0x00) & 0x80, 0x80);  // the chips run in PAL
}

TEST_F(ShellTest, LeavesABareBoardToTheUser) {
  ShellOptions options;
  options.bare = true;
  EXPECT_THAT(Start(options), StartsWith("A board of 16 channels with NTSC cameras, the library "
                                         "not attached: attach, window, command 0xF001.\n"));
  EXPECT_EQ(sim::TheWorld().trace.Cycles(), 0u);
  EXPECT_EQ(Run("vexo rver"),
            "      = -6\n      the library is not initialized: attach comes first\n");
  EXPECT_THAT(Run("attach"), HasSubstr("      = 1\n"));
  EXPECT_THAT(Run("window"), HasSubstr("      = 0\n"));
  EXPECT_THAT(Run("command 0xF001"), HasSubstr("      = 0\n"));
  EXPECT_EQ(Run("loss 0"), "      vexo loss 0\n      = 0\n");
}

TEST_F(ShellTest, AcceptsExpectationsOnlyAfterAnAction) {
  ShellOptions options;
  options.bare = true;
  Start(options);
  EXPECT_THAT(Run("expect return 0"), HasSubstr("expected an action before the first expectation"));
  Start();
  EXPECT_EQ(Run("expect no message 0x2406"), "      met\n");
}

// ---- Text lines -------------------------------------------------------------------------------

TEST_F(ShellTest, AddsTheBlankAtTheEnd) {
  Start();
  const std::string text = Run("vexo rver");
  EXPECT_THAT(text, AllOf(HasSubstr("      | [VexoCtrlSDK]: >> VEXO CHIP VER : 0x08X\n"),
                          HasSubstr("      > 0x2405 "), EndsWith("      = 0\n")));
  EXPECT_EQ(Run("vexo rver "), text);
  EXPECT_EQ(Run("  vexo rver\t\r"), text);
  EXPECT_EQ(Run("vexo,rver,"), text);
}

TEST_F(ShellTest, RunsAKeywordOfOneFamilyWithoutItsHeader) {
  Start();
  EXPECT_EQ(Run("lsplit 0 5"), "      vexo lsplit 0 5\n      = 0\n");
  EXPECT_EQ(Register(1, 1, 0x18), 0xC1);  // channel 5 is in front
  Run("vpb init");
  EXPECT_EQ(Run("set_bmpwnd 1 2"), "      vpb set_bmpwnd 1 2\n      = 0\n");
}

TEST_F(ShellTest, AsksWhichFamilyIsMeant) {
  Start();
  EXPECT_EQ(Run("uninit"),
            "      several families have uninit; say which:\n      vexo uninit\n"
            "      vpb uninit\n");
  EXPECT_THAT(Run("vexo uninit"), StartsWith("      = 0\n"));
}

struct Refusal {
  const char* line;
  const char* printed;
};

TEST_F(ShellTest, SaysWhyALineWasRefused) {
  Start();
  const Refusal cases[] = {
      {"vexo", "      = -1\n      no keyword\n"},
      {"vexo lspit 6 0",
       "      = -1\n      unknown keyword 'lspit'; did you mean lsplit or psplit?\n"},
      {"vexo qqqqqq", "      = -1\n      unknown keyword 'qqqqqq'\n"},
      {"vexo lsplit 6",
       "      = -1\n      missing: CHANNEL\n      vexo lsplit MODE CHANNEL [BLANK_MASK]\n"},
      {"vexo zoom",
       "      = -1\n      missing: start, stop or pos\n      vexo zoom start [BLANK_MASK]\n"
       "      vexo zoom stop [BLANK_MASK]\n      vexo zoom pos X Y [BLANK_MASK]\n"},
      {"vexo zoom move",
       "      = 0\n      unknown word 'move', expected start, stop or pos: "
       "nothing was done\n"},
      {"vpb trans maybe", "      = -1\n      unknown word 'maybe', expected on or off\n"},
      {"vexo  rver",
       "      = -1\n      two separators in a row end the line: 'rver' is not read\n"},
      {"vexo rr 3  1 ab",
       "      = -1\n      missing: $PAGE; two separators in a row end the line: '1 ab' is not "
       "read\n"
       "      vexo rr $CHIP $PAGE $REGISTER\n"},
  };
  for (const Refusal& refusal : cases)
    EXPECT_EQ(Run(refusal.line), refusal.printed) << refusal.line;
}

TEST_F(ShellTest, SaysWhatBecameOfALineThatSucceeded) {
  Start();
  const Refusal cases[] = {
      {"vexo zoom start  5",
       "      = 0\n      two separators in a row end the line: '5' is not read; BLANK_MASK is 0\n"},
      {"vexo color 17 all 1 2 3 4",
       "      = 0\n      CHANNEL 17 is none of the board's 16: nothing was written\n"},
      {"vpb default",
       "      = 0\n      the driver is closed: nothing was sent (vpb init opens it)\n"},
  };
  for (const Refusal& line : cases) EXPECT_EQ(Run(line.line), line.printed) << line.line;
  // The library is watched through script lines too.
  Run("text \"vpb init \"");
  EXPECT_EQ(Run("vpb default"), "      = 0\n");
}

TEST_F(ShellTest, SaysThatTheChipsAreNotInitialized) {
  ShellOptions options;
  options.bare = true;
  Start(options);
  Run("attach");
  EXPECT_EQ(Run("vexo lsplit 6 0"),
            "      = 0\n      the chips are not initialized: nothing was done\n");
}

TEST_F(ShellTest, SaysThatALineIsTooLong) {
  Start();
  const std::string longest = "vexo rver " + std::string(245, 'x');
  EXPECT_THAT(Run(longest.substr(0, 254)), HasSubstr("      = 0\n"));  // 255 with the blank
  EXPECT_EQ(Run(longest),
            "      | [VexoCtrlSDK]: >> Command Line Too Long!\n      = -1\n"
            "      a line has 255 characters at most\n");
}

TEST_F(ShellTest, NamesTheNearestWordsToAnUnknownOne) {
  Start();
  EXPECT_EQ(Run("lspit 6 0"), "      unknown: 'lspit'; did you mean lsplit or psplit?\n");
  EXPECT_EQ(Run("camra 2 off"), "      unknown: 'camra'; did you mean camera?\n");
  EXPECT_EQ(Run("vexi lsplit 6 0"), "      unknown: 'vexi'; did you mean vexo, text or exit?\n");
  EXPECT_EQ(Run("xyzzy"), "      unknown: 'xyzzy'; help lists what there is\n");
}

// ---- Script lines -----------------------------------------------------------------------------

TEST_F(ShellTest, LetsTimePassOnlyWhenTold) {
  Start();
  const std::uint32_t begin = sim::TheWorld().kernel.Now();
  EXPECT_EQ(Run("camera 5 off"), "");
  EXPECT_EQ(Run("loss 0"), "      vexo loss 0\n      = 0\n");
  EXPECT_EQ(sim::TheWorld().kernel.Now(), begin);
  EXPECT_THAT(Run("run 200"), HasSubstr("      > 0x2403 video info: loss mask 0x0020: channel 5"));
  EXPECT_EQ(sim::TheWorld().kernel.Now(), begin + 200);
}

TEST_F(ShellTest, TellsAPostedMessageOnceAndHandlesItAtOnce) {
  Start();
  const std::string text = Run("vexo init 0");
  EXPECT_THAT(text, HasSubstr(" (posted), at "));
  EXPECT_THAT(text, Not(HasSubstr(" (taken from the queue)")));
  EXPECT_EQ(Run("expect message 0x2402"), "      met\n");
  EXPECT_EQ(Run("run 0"), "");
}

TEST_F(ShellTest, TellsAMessageThatWasPostedBeforeWhenItIsHandled) {
  Start();
  Run("pump off");
  EXPECT_THAT(Run("vexo init 0"), HasSubstr(" (posted), at "));
  EXPECT_THAT(Run("run 0"), HasSubstr(" (taken from the queue)\n"));
}

TEST_F(ShellTest, SaysWhetherAnExpectationIsMet) {
  Start();
  Run("rr 3 1 ab");
  EXPECT_EQ(Run("expect return 0"), "      met\n");
  EXPECT_EQ(Run("expect message 0x2406"), "      met\n");
  EXPECT_EQ(Run("expect return 1"), "      not met: returned 0\n");
  EXPECT_EQ(Run("expect no message 0x2406"), "      not met: there was one\n");
}

TEST_F(ShellTest, SaysWhatIsWrongWithAScriptLine) {
  Start();
  EXPECT_EQ(Run("camera 16 off"),
            "      expected a channel 0 to 15 or all, found '16' (camera CH ntsc|pal|off)\n");
  EXPECT_THAT(Run("run"),
              HasSubstr("expected a number of milliseconds, found the end of the line"));
  EXPECT_THAT(Run("text \"vexo"), HasSubstr("expected a closing quote"));
  EXPECT_THAT(Run("picture /no/such/folder/p.png"), HasSubstr("/no/such/folder/p.png"));
}

TEST_F(ShellTest, RunsScriptTextLinesAsTheyStand) {
  Start();
  EXPECT_EQ(Run("text \"vexo rver\""),
            "      = -1\n      no separator after 'rver', so it is not read\n");
  EXPECT_THAT(Run("registers master 0"), StartsWith("master page 0\n"));
  EXPECT_EQ(Run("# nothing"), "");
  EXPECT_EQ(Run("   "), "");
}

TEST_F(ShellTest, ShowsWhatTheBoardNoticed) {
  Start();
  EXPECT_THAT(Run("command 0xFF04 null"), HasSubstr("      warning: read of MASTER page 1 "));
  EXPECT_THAT(Run("loss 0"), Not(HasSubstr("warning")));
}

// ---- Lines that would not end -------------------------------------------------------------------

TEST_F(ShellTest, TakesBackALineThatWaitsWithoutEnd) {
  struct Case {
    std::vector<const char*> before;
    const char* line;
    const char* said;
  };
  const Case cases[] = {
      {{"settle never"}, "lsplit 1 0", "waits for chips master, slave1, slave2, slave3 to settle"},
      {{"board chips 1"}, "lsplit 6 0", "waits for chips slave1, slave2, slave3 to settle"},
      {{"board chips 3"},
       "lsplit 6 0",
       "waits for chip slave3 to settle, which never happens: "
       "it has read master 0x00, slave1 0x00, slave2 0x00, "
       "slave3 0xFF (not fitted) in settle status over and over"},
      {{"board chips 1"}, "bluescr init", "waits for chips slave1, slave2, slave3 to settle"},
  };
  for (const Case& each : cases) {
    Start();
    for (const char* line : each.before) Run(line);
    const sim::RegisterSnapshot registers = sim::TakeSnapshot(sim::TheWorld().board);
    const std::uint32_t begin = sim::TheWorld().kernel.Now();
    EXPECT_THAT(Run(each.line),
                AllOf(HasSubstr(each.said),
                      EndsWith("      the line is taken back: board, library and time are as "
                               "before it\n")))
        << each.line;
    EXPECT_EQ(sim::TheWorld().kernel.Now(), begin) << each.line;
    EXPECT_EQ(sim::TakeSnapshot(sim::TheWorld().board).chips, registers.chips) << each.line;
    EXPECT_EQ(shell_->Status(), script::kExitUnmet) << each.line;
    Run("settle 0");
    Run("board chips 4");
    EXPECT_EQ(Run("lsplit 6 0"), "      vexo lsplit 6 0\n      = 0\n") << each.line;
  }
}

TEST_F(ShellTest, LeavesALineAloneThatSettlesInTime) {
  Start();
  Run("settle 1000");  // 5 ms a read: 5 s
  const std::uint32_t begin = sim::TheWorld().kernel.Now();
  EXPECT_THAT(Run("lsplit 1 0"), EndsWith("      = 0\n"));
  EXPECT_EQ(sim::TheWorld().kernel.Now() - begin, 5'000u);
  // Another line that waits has its own time.
  EXPECT_THAT(Run("lsplit 1 0"), EndsWith("      = 0\n"));
}

TEST_F(ShellTest, EndsALongRunOnCtrlC) {
  Start();
  const InterruptWatch watch;
  const std::uint32_t begin = sim::TheWorld().kernel.Now();
  sim::TheWorld().kernel.StartHostThread([] {
    sim::TheWorld().kernel.Idle(100'000);
    std::raise(SIGINT);
  });
  Run("run 4000000000");
  const std::uint32_t passed = sim::TheWorld().kernel.Now() - begin;
  EXPECT_GE(passed, 100'000u);
  EXPECT_LT(passed, 100'010u);
  // The next line starts anew.
  Run("run 70000");
  EXPECT_EQ(sim::TheWorld().kernel.Now() - begin, passed + 70'000);
  EXPECT_EQ(Run("loss 0"), "      vexo loss 0\n      = 0\n");
}

// ---- The shell's own commands -----------------------------------------------------------------

TEST_F(ShellTest, ShowsRegisterWritesByNameWhenToldTo) {
  ShellOptions options;
  options.chips = 2;
  Start(options);
  EXPECT_EQ(Run("pip stop"), "      vexo pip stop\n      = 0\n");
  EXPECT_EQ(Run("writes on"), "");
  EXPECT_EQ(Run("pip stop"),
            "      vexo pip stop\n"
            "      w all    page 1  0x10      channel display 0         = 0xC0 (enable, front)\n"
            "      w all    page 1  0x18      channel display 1         = 0xC1 (enable, front, "
            "position 1)\n"
            "      w all    page 1  0x20      channel display 2         = 0xC2 (enable, front, "
            "position 2)\n"
            "      w all    page 1  0x28      channel display 3         = 0xC3 (enable, front, "
            "position 3)\n"
            "      = 0\n");
  EXPECT_EQ(Run("wr c 1 6 4"),
            "      vexo wr c 1 6 4\n"
            "      | [VexoCtrlSDK]: >> VEXO WRITE REG 0x0C 0x01 0x06 0x04 \n"
            "      w slave1 page 1  0x06      display mode              = 0x04 (zoom)\n"
            "      = 0\n");
  // Reads are none.
  EXPECT_THAT(Run("rr 3 1 ab"), Not(HasSubstr(" w ")));
  Run("writes off");
  EXPECT_EQ(Run("pip stop"), "      vexo pip stop\n      = 0\n");
}

TEST_F(ShellTest, PutsNeighbouringRegistersOfOneNameOnOneLine) {
  Start();
  Run("writes on");
  const std::string text = Run("mpip move 2 20 62 10 40 0");
  EXPECT_THAT(text, HasSubstr("      w master page 1  0x38-0x3B window 2                  = "
                              "14 3e 0a 28\n"
                              "      w master page 1  0x20      channel display 2         = "
                              "0xC2 (enable, front, position 2)\n"));
  EXPECT_THAT(Run("mmask change all 0 0"),
              HasSubstr("      w master page 2  0x86-0x9D motion mask 0             = "
                        "ff ff ff ff ff ff ff ff ... (24 bytes)\n"));
}

TEST_F(ShellTest, PutsATableOfManyNamesOnOneLine) {
  Start();
  Run("writes on");
  EXPECT_THAT(Run("command 0xF001"),
              HasSubstr("      w all    page 1  0x01-0x2F display source to display = "));
}

TEST_F(ShellTest, WantsOnOrOffForWrites) {
  Start();
  EXPECT_EQ(Run("writes"), "      expected off or on, found the end of the line (writes on|off)\n");
  Run("writes on");
  EXPECT_EQ(Run("writes maybe"), "      expected off or on, found 'maybe' (writes on|off)\n");
}

TEST_F(ShellTest, ExplainsCommands) {
  Start();
  EXPECT_THAT(Run("help lsplit"), AllOf(StartsWith("vexo lsplit MODE CHANNEL [BLANK_MASK]\n"),
                                        HasSubstr("  MODE: split: 0 one picture")));
  EXPECT_EQ(Run("help vexo lsplit 6"), Run("help lsplit"));
  EXPECT_THAT(Run("help vpb"), AllOf(StartsWith("  vpb init\n"), HasSubstr("  vpb blen on LEVEL\n"),
                                     Not(HasSubstr("vexo"))));
  EXPECT_EQ(Run("help camera"),
            "camera CH ntsc|pal|off\n    signal of a channel; off sets its loss bit (ntsc)\n");
  EXPECT_THAT(Run("help writes"), StartsWith("writes on|off\n"));
  EXPECT_THAT(Run("help script"), HasSubstr("Expectations about the last action:\n"));
  EXPECT_EQ(Run("help lspit"), "      unknown: 'lspit'; did you mean lsplit or psplit?\n");
}

TEST_F(ShellTest, ListsEverythingInItsHelp) {
  Start();
  const std::string text = Run("help");
  for (const std::string_view word : script::ShortKeywords()) {
    EXPECT_THAT(text, HasSubstr(' ' + std::string(word))) << word;
  }
  for (const std::string_view word : script::ScriptWords()) {
    EXPECT_THAT(text, HasSubstr(' ' + std::string(word))) << word;
  }
}

TEST_F(ShellTest, ListsTheSessionSoFar) {
  ShellOptions options;
  options.bare = true;
  Start(options);
  Run("attach");
  Run("  ");
  Run("nonsense");
  Run("loss 0");
  EXPECT_EQ(Run("history"),
            "    1  pump on\n    2  board chips 4\n    3  attach\n    4  vexo loss 0\n");
}

TEST_F(ShellTest, EndsWhenTold) {
  Start();
  EXPECT_FALSE(shell_->Execute("quit"));
  EXPECT_FALSE(shell_->Execute(" exit "));
  EXPECT_TRUE(shell_->Execute("quit_"));
}

TEST_F(ShellTest, RunsLinesUntilTheirEndOrAQuit) {
  struct Input {
    const char* lines;
    const char* shown;
  };
  for (const Input& input : {Input{"loss 0\n\nloss 1", "vexosim> loss 1\n      vexo loss 1\n"},
                             Input{"loss 0\nquit\nloss 1\n", "vexosim> quit\n"}}) {
    std::istringstream in(input.lines);
    std::ostringstream out;
    LineHistory history(std::nullopt);
    const auto reader = MakePlainReader(in, out);
    EXPECT_EQ(RunShell({}, history, *reader, out), script::kExitDone);
    EXPECT_THAT(out.str(), HasSubstr(input.shown));
    EXPECT_EQ(out.str().find("loss 1") != std::string::npos,
              std::string(input.lines).find("quit") == std::string::npos);
  }
}

}  // namespace
}  // namespace vexosim
