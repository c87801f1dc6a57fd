// Lines for a board that belongs to a program: what they do, what they answer, and what is refused.
#include "desk/console/console.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <stdexcept>

#include "sim/screen/screen.h"
#include "tests/desk/console/board_access.h"
#include "tests/support/read_png.h"
#include "tests/support/temp_path.h"

namespace desk {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

// Keeps the script lines among the events.
class LineEvents : public sim::TraceListener {
 public:
  LineEvents() { sim::TheWorld().trace.AddListener(*this); }
  ~LineEvents() override { sim::TheWorld().trace.RemoveListener(*this); }
  LineEvents(const LineEvents&) = delete;
  LineEvents& operator=(const LineEvents&) = delete;
  void OnEvent(const sim::Event&, const sim::EventDetail* detail) override {
    if (detail == nullptr) return;
    if (const auto* line = std::get_if<sim::LineEvent>(detail)) texts.push_back(line->text);
  }
  std::vector<std::string> texts;
};

// ---- Lines that are done ------------------------------------------------------------------------

TEST_F(ConsoleTest, ABoardLineChangesTheBoardAndStandsInTheTrace) {
  const LineEvents lines;
  EXPECT_EQ(Done("  camera 5 off  # the cable"), "");
  EXPECT_TRUE(sim::TheWorld().board.Input(5).lost);
  EXPECT_FALSE(sim::TheWorld().board.Input(4).lost);
  EXPECT_THAT(lines.texts, ElementsAre("camera 5 off  # the cable"));
}

TEST_F(ConsoleTest, ALineWithoutWordsDoesNothing) {
  EXPECT_EQ(Done(""), "");
  EXPECT_EQ(Done("  # a comment"), "");
}

TEST_F(ConsoleTest, ACallAnswersWithItsResultInWords) {
  EXPECT_EQ(Done("command live-split mode 9"),
            "= -8: not ready: not attached, no window, or chips not initialized");
  EXPECT_THAT(Done("command init"),
              AllOf(StartsWith("| [VexoCtrlSDK]: "),
                    EndsWith("\n< chip-count 4, video-standard ntsc, chip-id 28 28 28 28\n= 0")));
  EXPECT_EQ(Done("version"), "\"1. 0. 1. 6\"\n= 10");
}

TEST_F(ConsoleTest, TextsAndMessagesStandInFrontOfTheResult) {
  Done("command init");
  EXPECT_EQ(Done("command read-reg chip slave1 page 1 reg 0x6E"),
            "| [VexoCtrlSDK]: >> VEXO READ REG 0x0C 0x01 0x6E 0x00 \n"
            "> 0x2406 register value: slave1 page 1 register 0x6E (record) = 0x00\n"
            "< value 0x00\n= 0");
}

TEST_F(ConsoleTest, ATextCommandMayComeWithoutItsHeaderAndSaysWhatCameOfIt) {
  Done("command init");
  EXPECT_EQ(Done("lsplit 6 0"), "vexo lsplit 6 0\n= 0");
  EXPECT_THAT(Done("vexo lsplit 99 0"), HasSubstr("MODE 99"));
}

TEST_F(ConsoleTest, TimePassesThroughTheAccess) {
  const LineEvents lines;
  Done("command init");
  const std::uint64_t begin = sim::TheWorld().kernel.NowUnwrapped();
  Done("camera 5 off");
  EXPECT_THAT(Done("run 1050"),
              HasSubstr("\n> 0x2403 video info: loss mask 0x0020: channel 5 lost"));
  EXPECT_EQ(sim::TheWorld().kernel.NowUnwrapped() - begin, 1050u);
  EXPECT_THAT(lines.texts, ElementsAre("camera 5 off", "run 1050"));
}

TEST_F(ConsoleTest, OutputLinesAnswerWithoutTheMarginOfASession) {
  Done("command init");
  EXPECT_THAT(Done("peek master \"window 0\""), StartsWith("master page 1  0x30-0x33"));
  EXPECT_THAT(Done("registers slave1 0"), StartsWith("slave1"));
}

TEST_F(ConsoleTest, ThePictureIsDrawnInCharacters) {
  Done("command init");
  const std::string picture = Done("print");
  EXPECT_EQ(std::count(picture.begin(), picture.end(), '\n'), 25);
  EXPECT_EQ(picture.find('\x1b'), std::string::npos);
}

TEST_F(ConsoleTest, APictureIsTheScreenAsItWasAndIsWrittenOutside) {
  Done("command init");
  Done("lsplit 6 0");
  const std::string path = test::TempPath("console.png");
  EXPECT_EQ(Done("picture " + path), "");
  EXPECT_EQ(test::ReadPng(path), sim::ComposeScreen(sim::TheWorld().board));
  std::filesystem::remove(path);
  EXPECT_THAT(Refused("picture /no/such/folder/a.png"), HasSubstr("/no/such/folder/a.png"));
}

TEST_F(ConsoleTest, HelpIsAnswered) {
  EXPECT_THAT(Done("help camera"), HasSubstr("camera CH ntsc|pal|off"));
  EXPECT_THAT(Done("? script"), HasSubstr("Board lines"));
}

TEST_F(ConsoleTest, WhatAConsoleWithoutATerminalAsksForIsAnswered) {
  Done("camera 5 off");
  EXPECT_THAT(Done("board"), HasSubstr("camera 5 off"));
  EXPECT_THAT(Done("complete \"camera 5 o\""), StartsWith("camera 5 off\n# camera CH"));
  const std::uint64_t cycles = sim::TheWorld().trace.Cycles();
  Done("command init");
  EXPECT_THAT(Done("accesses " + std::to_string(cycles + 1) + ' ' + std::to_string(cycles + 100)),
              StartsWith("r master page 0  0xFE      chip identification"));
  EXPECT_THAT(Refused("wait 100"), HasSubstr("time passes by itself"));
  EXPECT_THAT(Refused("save trace a"), HasSubstr("'save trace' is refused"));
}

// ---- Expectations -------------------------------------------------------------------------------

TEST_F(ConsoleTest, AnExpectationIsMetOrSaysWhatWasFound) {
  Done("command init");
  EXPECT_EQ(Done("expect return 0"), "met");
  EXPECT_EQ(Unmet("expect return 1"), "returned 0");
  EXPECT_THAT(Unmet("expect register master 0 0x00 0x5A"), HasSubstr("has 0x"));
  Done("run 1000");
  EXPECT_EQ(Unmet("expect no message 0x2403"), "there was one");
}

TEST_F(ConsoleTest, WhatTheProgramDidBeforeAnyLineCanBeAskedFor) {
  EXPECT_EQ(Unmet("expect return 0"), "'the program' returns nothing");
  EXPECT_EQ(Unmet("expect message 0x2403"), "no message");
  sim::Bytes record;
  harness::CommandProc(0xF001, &record);
  sim::TheWorld().kernel.Pump(1000);
  EXPECT_EQ(Done("expect message 0x2403"), "met");
}

TEST_F(ConsoleTest, WhatTheProgramDoesSinceALineBelongsToIt) {
  Done("command init");
  Done("run 2000");
  Done("run 0");
  EXPECT_EQ(Unmet("expect message 0x2403"), "no message");
  Done("camera 5 off");
  sim::TheWorld().kernel.Pump(1000);
  EXPECT_EQ(Done("expect message 0x2403"), "met");
  Done("run 0");
  EXPECT_EQ(Unmet("expect message 0x2403"), "no message");
}

// ---- Several at a time --------------------------------------------------------------------------

TEST_F(ConsoleTest, OthersRunWhileALineLetsTimePassAndTheirAnswersAreTheirOwn) {
  Done("command init");
  std::string inner;
  access_.meanwhile = [&] {
    inner = Done("lsplit 6 0");
    EXPECT_EQ(Done("expect return 0"), "met");
    Done("camera 5 off");
  };
  EXPECT_THAT(Done("run 2000"), AllOf(HasSubstr("> 0x2403"), Not(HasSubstr("= 0"))));
  EXPECT_EQ(inner, "vexo lsplit 6 0\n= 0");
  EXPECT_EQ(Done("expect return 0"), "met") << "the last that began is the one asked for";
}

TEST_F(ConsoleTest, MessagesReachEachLineThatRuns) {
  Done("command init");
  std::string inner;
  Done("camera 5 off");
  access_.meanwhile = [&] { inner = Done("run 1000"); };
  const std::string outer = Done("run 1000");
  EXPECT_THAT(inner, HasSubstr("> 0x2403"));
  EXPECT_THAT(outer, HasSubstr("> 0x2403"));
  EXPECT_EQ(Done("expect message 0x2403"), "met");
}

TEST_F(ConsoleTest, EventsAreKeptOnlyWhileALineNeedsThem) {
  Done("command init");
  EXPECT_EQ(sim::TheWorld().trace.Mark(), 0u);
  sim::TheWorld().kernel.Pump(5000);
  EXPECT_EQ(sim::TheWorld().trace.Mark(), 0u);
  EXPECT_TRUE(sim::TheWorld().windows.received.empty());
  // A line in the library says what came of it also while another lets time pass.
  std::string inner;
  access_.meanwhile = [&] { inner = Done("vexo mcell 1 99"); };
  Done("run 100");
  EXPECT_EQ(inner, Done("vexo mcell 1 99"));
}

TEST_F(ConsoleTest, OfALongLineTheFirstTextsAreKept) {
  Done("command init");
  access_.meanwhile = [] {
    for (int i = 0; i < 20'000; ++i) {
      sim::TheWorld().Record(sim::DebugEvent{false, "text " + std::to_string(i) + "\n"});
    }
  };
  const std::string text = Done("run 0");
  EXPECT_THAT(text, StartsWith("| text 0\n"));
  EXPECT_THAT(text, EndsWith("\n(there is more, which was not kept)"));
  EXPECT_LT(text.size(), 300'000u);
}

// ---- Refusals -----------------------------------------------------------------------------------

TEST_F(ConsoleTest, AMistypedWordIsRefusedWithWhatItMayHaveMeant) {
  EXPECT_EQ(Refused("camrea 5 off"), "unknown: 'camrea'; did you mean camera?");
  EXPECT_THAT(Refused("camera 16 off"), HasSubstr("camera CH ntsc|pal|off"));
  EXPECT_THAT(Refused("picture a.bmp"), HasSubstr("a.bmp"));
}

TEST_F(ConsoleTest, LinesThatTakeTheLibraryFromTheProgramAreRefused) {
  EXPECT_EQ(Refused("detach"),
            "'detach' is refused: the library is loaded and unloaded by the program's system");
  for (const char* line : {"attach", "entry 0", "window", "window invalid", "unbind", "pump on"}) {
    EXPECT_THAT(Refused(line), HasSubstr("is refused: ")) << line;
  }
  const LineEvents lines;
  Done("window deaf");
  Done("window hearing");
  Done("seed 7");
  EXPECT_EQ(lines.texts.size(), 3u);
  EXPECT_THAT(Done("lowmem"), EndsWith("= 1"));
}

TEST_F(ConsoleTest, EveryLineOfASessionButHelpIsRefusedInWords) {
  for (const char* line : {"undo", "mark a", "back a", "break", "break write page 0 0x10",
                           "break off", "where", "continue", "step", "step call", "writes on",
                           "quiet on", "source a.vexo", "save a.vexo", "history", "quit", "exit"}) {
    EXPECT_THAT(Refused(line), HasSubstr("is refused: ")) << line;
  }
}

TEST_F(ConsoleTest, WhatIsNoLineIsRefused) {
  EXPECT_EQ(Refused("camera 5 off\ncamera 6 off"),
            "expected one line, found a line feed or a byte 00 in it");
  EXPECT_EQ(Refused(std::string_view("camera 5 off\0", 13)),
            "expected one line, found a line feed or a byte 00 in it");
  EXPECT_FALSE(sim::TheWorld().board.Input(5).lost);
  EXPECT_THAT(Refused("\xFF\x1B[2J"), Not(HasSubstr("\x1B")));
}

TEST_F(ConsoleTest, WhatGoesWrongInALineIsToldAndTheBoardIsLeft) {
  access_.failing = [] { throw std::runtime_error("the clock has stopped"); };
  EXPECT_EQ(Refused("run 10"), "the clock has stopped");
  EXPECT_FALSE(access_.inside);
  access_.failing = [] { throw 5; };  // NOLINT(hicpp-exception-baseclass)
  EXPECT_EQ(Refused("run 10"), "the line was ended from outside");
  EXPECT_FALSE(access_.inside);
  EXPECT_EQ(Done("run 10"), "");
}

TEST_F(ConsoleTest, LinesThatLetTimePassEndWhenTheBoardIsAboutToClose) {
  const std::uint64_t begin = sim::TheWorld().kernel.NowUnwrapped();
  access_.meanwhile = [&] { console_->EndLines(); };
  EXPECT_EQ(Refused("run 4000000000"), "the board is about to close");
  EXPECT_LE(sim::TheWorld().kernel.NowUnwrapped() - begin, 100u);
  EXPECT_EQ(Refused("camera 5 off"), "the board is about to close");
}

}  // namespace
}  // namespace desk
