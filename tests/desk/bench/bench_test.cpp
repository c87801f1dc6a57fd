// A board in real time: what lines do, how time passes between them, and what the session keeps.
#include "desk/bench/bench.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "script/run.h"
#include "sim/screen/screen.h"
#include "tests/desk/bench/bench_fixture.h"
#include "tests/support/read_png.h"
#include "tests/support/temp_path.h"
#include "tools/vexosim/listing/terminal_surroundings.h"

namespace desk {
namespace {

using testing::AllOf;
using testing::ContainsRegex;
using testing::ElementsAre;
using testing::EndsWith;
using testing::Ge;
using testing::HasSubstr;
using testing::Le;
using testing::Not;
using testing::StartsWith;

std::string Content(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

// ---- Lines --------------------------------------------------------------------------------------

TEST_F(BenchTest, ALineIsAnsweredWithWhatASessionPrintsForIt) {
  Open();
  EXPECT_EQ(Done("lsplit 6 0"), "vexo lsplit 6 0\n= 0");
  EXPECT_EQ(Done("command read-reg chip slave1 page 1 reg 0x6E"),
            "| [VexoCtrlSDK]: >> VEXO READ REG 0x0C 0x01 0x6E 0x00 \n"
            "> 0x2406 register value: slave1 page 1 register 0x6E (record) = 0x00\n"
            "< value 0x00\n= 0");
  EXPECT_THAT(Done("peek master \"window 0\""), StartsWith("master page 1  0x30-0x33"));
  EXPECT_EQ(Done("camera 5 off  # the cable"), "");
  EXPECT_EQ(Done(" # a comment"), "");
}

TEST_F(BenchTest, AnExpectationIsMetOrNotAndALineThatIsNoneIsRefused) {
  Open();
  Done("lsplit 6 0");
  EXPECT_EQ(Done("expect return 0"), "met");
  EXPECT_EQ(Unmet("expect return 1"), "not met: returned 0");
  EXPECT_THAT(Refused("kamera 5 off"), HasSubstr("unknown: 'kamera'"));
  EXPECT_THAT(Refused("run"), HasSubstr("expected a number of milliseconds"));
  EXPECT_THAT(Refused("camera 5 off\ncamera 6 off"), HasSubstr("expected one line"));
  EXPECT_EQ(Refused("break off 7"), "there is no stop 7");
  EXPECT_EQ(Done("expect return 0"), "met");
}

TEST_F(BenchTest, WhatTheLibraryAndTheSessionCanDoIsNotRefused) {
  BenchOptions options;
  options.board.bare = true;
  Open(options);
  for (const char* line : {"attach", "window", "command 0xF001", "unbind", "detach", "mark here",
                           "writes on", "back here", "where_is_it"}) {
    EXPECT_EQ(RunSlow(line).result == Answer::Result::Refused, std::string(line) == "where_is_it")
        << line;
  }
}

TEST_F(BenchTest, AFileIsRunAndAPictureAndTheSessionAreWritten) {
  Open();
  const std::string script = test::TempPath("bench.vexo");
  const std::string picture = test::TempPath("bench.png");
  std::ofstream(script) << "lsplit 6 0\nrun 100\nexpect return 7\ncamera 3 off\n";
  const Answer answer = RunSlow("source \"" + script + '"');
  EXPECT_EQ(answer.result, Answer::Result::Unmet);
  EXPECT_THAT(answer.text, HasSubstr("not met: 'run 100' returns nothing"));
  EXPECT_EQ(Done("picture " + picture), "");
  EXPECT_GT(std::filesystem::file_size(picture), 1000U);
  EXPECT_EQ(Done("save \"" + script + '"'), "");
  EXPECT_THAT(Content(script), HasSubstr("vexo lsplit 6 0\nrun 100\n# not met: expect return 7\n"
                                         "camera 3 off\n"));
  std::filesystem::remove(script);
  std::filesystem::remove(picture);
}

// ---- Time between lines -------------------------------------------------------------------------

TEST_F(BenchTest, TimePassesAsTheClocksDoesAndIsOneLineOfTheSession) {
  Open();
  Done("lsplit 6 0");
  clock_.Advance(517);
  EXPECT_THAT(WaitedSince(1), AllOf(Ge(517), Le(527)));
  clock_.Advance(1000);
  Done("complete \"camera \"");
  Refused("no line");
  clock_.Advance(500);
  EXPECT_THAT(WaitedSince(1), AllOf(Ge(2017), Le(2037)));
  EXPECT_THAT(History().back(), StartsWith("wait 20"));
  Done("camera 5 off");
  clock_.Advance(100);
  EXPECT_THAT(WaitedSince(2), AllOf(Ge(100), Le(110)));
  EXPECT_THAT(Lines(), ElementsAre("vexo lsplit 6 0", "camera 5 off"));
}

TEST_F(BenchTest, WhatHappensBetweenLinesBelongsToTheActionBefore) {
  Open();
  Done("lsplit 6 0");
  Done("camera 5 off");
  clock_.Advance(1000);
  EXPECT_EQ(Done("expect message 0x2403"), "met");
  EXPECT_EQ(Done("expect return 0"), "met");
  EXPECT_THAT(Done("diff start now"), HasSubstr("loss status"));
  Done("loss 0");
  EXPECT_THAT(Unmet("expect message 0x2403"), HasSubstr("no message"));
}

TEST_F(BenchTest, ASleepInTheMiddleOfACallTakesTheClocksTime) {
  Open();
  auto init = Send("vexo init 0");
  EXPECT_EQ(init.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout);
  EXPECT_THAT(Pass(std::move(init)).text, HasSubstr("Initialize Complete!"));
}

TEST_F(BenchTest, OfTheMachinesSleepASecondIsCaughtUp) {
  Open();
  Done("camera 5 off");
  clock_.Advance(3'600'000);
  EXPECT_THAT(WaitedSince(1), AllOf(Ge(1000), Le(1010)));
}

TEST_F(BenchTest, TimePassesWhereNothingHappens) {
  BenchOptions options;
  options.board.bare = true;
  Open(options);
  Done("camera 5 off");
  PassSlowly(5000);
  EXPECT_GE(WaitedSince(1), 5000);
  EXPECT_EQ(RunSlow("attach").result, Answer::Result::Done);
}

TEST_F(BenchTest, TimeThatNobodyEndsIsAMinuteALine) {
  Open();
  Done("camera 5 off");
  PassSlowly(61'000);
  EXPECT_THAT(History(), testing::Contains("wait 60000"));
}

// ---- Waits --------------------------------------------------------------------------------------

TEST_F(BenchTest, ARunIsAWaitOfItsOwnAndOthersGoOn) {
  Open();
  auto run = Send("run 1000");
  AwaitLine("run ");
  EXPECT_EQ(Done("camera 5 off"), "");
  EXPECT_EQ(Done("lsplit 6 0"), "vexo lsplit 6 0\n= 0");
  EXPECT_EQ(run.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout);
  const Answer answer = Pass(std::move(run));
  EXPECT_EQ(answer.result, Answer::Result::Done);
  EXPECT_THAT(answer.text, HasSubstr("> 0x2403 video info: loss mask 0x0020: channel 5 lost"));
  EXPECT_THAT(Lines(),
              ElementsAre(ContainsRegex("^run [0-9]{1,2}$"), "camera 5 off", "vexo lsplit 6 0"));
  EXPECT_GE(WaitedSince(3), 900);
}

TEST_F(BenchTest, ARunHasWhatOthersCallsSayMeanwhile) {
  Open();
  auto run = Send("run 1000");
  AwaitLine("run ");
  Done("command read-reg chip slave1 page 1 reg 0x6E");
  EXPECT_THAT(Pass(std::move(run)).text,
              AllOf(HasSubstr("> 0x2406 register value"), Not(HasSubstr("\n= 0"))));
}

TEST_F(BenchTest, ARunThatNobodyCutsStandsAsItWasTyped) {
  Open();
  EXPECT_EQ(RunSlow("run 1000").result, Answer::Result::Done);
  clock_.Advance(300);
  EXPECT_THAT(Lines(), ElementsAre("run 1000"));
  EXPECT_GE(WaitedSince(1), 300);
  EXPECT_EQ(Done("run 0"), "");
}

TEST_F(BenchTest, TimeTurnedBackEndsWaits) {
  Open();
  Done("camera 5 off");
  auto run = Send("run 1000");
  AwaitLine("run ");
  EXPECT_THAT(Done("undo"), StartsWith("undone: run "));
  const Answer answer = run.get();
  EXPECT_EQ(answer.result, Answer::Result::Refused);
  EXPECT_THAT(answer.text, EndsWith("time was turned back, and the wait is over"));
}

// ---- Time turned back ---------------------------------------------------------------------------

TEST_F(BenchTest, UndoTakesTheTimeBehindALineBackToo) {
  Open();
  Done("camera 5 off");
  clock_.Advance(100);
  Done("camera 6 off");
  clock_.Advance(700);
  EXPECT_EQ(Done("undo"), "undone: camera 6 off");
  EXPECT_THAT(Lines(), ElementsAre("camera 5 off"));
  EXPECT_THAT(WaitedSince(1), AllOf(Ge(100), Le(120)));
  EXPECT_THAT(told_.News(), ElementsAre(EndsWith(" rewound")));
}

TEST_F(BenchTest, WhatRunsAgainIsNotToldAndTakesNoTimeOfTheClock) {
  Open();
  Done("camera 5 off");
  for (int i = 0; i < 20; ++i) {
    clock_.Advance(500);
    Done("help");
  }
  Done("camera 6 off");
  EXPECT_THAT(told_.Lines(), ElementsAre("camera 5 off", "camera 6 off"));
  const std::size_t events = told_.Events();
  EXPECT_GT(events, 100U);
  Done("undo");
  EXPECT_LT(told_.Events(), events + 100);
  clock_.Advance(500);
  Done("camera 7 off");
  EXPECT_GT(told_.Events(), events + 100);
  EXPECT_THAT(told_.Lines(), ElementsAre("camera 5 off", "camera 6 off", "camera 7 off"));
}

TEST_F(BenchTest, APollThatNeverEndsIsTakenBack) {
  Open();
  Done("settle never");
  const Answer answer = RunSlow("lsplit 6 0");
  EXPECT_EQ(answer.result, Answer::Result::Refused);
  const std::string& said = answer.text;
  EXPECT_THAT(said, HasSubstr("to settle, which never happens"));
  EXPECT_THAT(said, HasSubstr("the line is taken back"));
  EXPECT_THAT(Lines(), ElementsAre("settle never"));
  Done("settle 0");
  EXPECT_EQ(Done("lsplit 6 0"), "vexo lsplit 6 0\n= 0");
}

// ---- Stops --------------------------------------------------------------------------------------

TEST_F(BenchTest, ALineThatRunsIntoAStopIsAnsweredThere) {
  Open();
  Done("break write slave1 page 1 0x30");
  EXPECT_THAT(Done("lsplit 5 0"),
              AllOf(StartsWith("vexo lsplit 5 0\nstopped: break 1: w slave1 page 1 0x30 window 0"),
                    Not(HasSubstr("\n= 0"))));
  EXPECT_THAT(told_.News(), ElementsAre(HasSubstr(" stopped: break 1: w slave1 page 1")));
  EXPECT_EQ(Done("expect register slave1 1 0x30 0x85"), "met");
  EXPECT_EQ(Done("camera 3 off"), "");
  EXPECT_THAT(Refused("lsplit 6 0"), HasSubstr("stopped in 'vexo lsplit 5 0'"));
  EXPECT_THAT(Refused("run 100"), HasSubstr("stopped in 'vexo lsplit 5 0'"));
  EXPECT_THAT(Done("step"), StartsWith("stopped: "));
  EXPECT_EQ(Done("continue"), "= 0");
  EXPECT_THAT(told_.News().back(), EndsWith(" continued"));
}

TEST_F(BenchTest, WhileItIsStoppedNoTimePassesAndNoneIsCaughtUp) {
  Open();
  told_.wants_moments = true;
  Done("break write slave1 page 1 0x30");
  Done("lsplit 5 0");
  const std::uint64_t before = told_.Last() ? told_.Last()->time_ms : 0;
  clock_.Advance(700);
  Await([&] { return told_.Last() && !told_.Last()->stopped.empty(); });
  EXPECT_THAT(told_.Last()->stopped, StartsWith("break 1: w slave1"));
  EXPECT_GE(told_.Last()->time_ms, before);
  EXPECT_EQ(told_.Last()->lag_ms, 0);
  Done("break off");
  Done("continue");
  clock_.Advance(90);
  Await([&] { return told_.Last()->stopped.empty(); });
  EXPECT_THAT(Lines(), ElementsAre("break write slave1 page 1 0x30", "vexo lsplit 5 0", "break off",
                                   "continue"));
  EXPECT_THAT(WaitedSince(4), AllOf(Ge(90), Le(110)));
}

TEST_F(BenchTest, TheWorkerStopsBetweenLinesAndWhoeverWaitsIsTold) {
  Open();
  Done("break message 0x2403");
  auto run = Send("run 5000");
  AwaitLine("run ");
  Done("camera 5 off");
  const Answer answer = Pass(std::move(run));
  EXPECT_EQ(answer.result, Answer::Result::Done);
  EXPECT_THAT(answer.text, HasSubstr("stopped: break 1: message 0x2403"));
  EXPECT_THAT(told_.News(), ElementsAre(HasSubstr("stopped: break 1: message 0x2403")));
  EXPECT_EQ(Done("expect message 0x2403"), "met");
  EXPECT_EQ(Done("break off"), "");
  EXPECT_EQ(Done("continue"), "");
  EXPECT_EQ(Done("lsplit 6 0"), "vexo lsplit 6 0\n= 0");
}

TEST_F(BenchTest, TimeIsTurnedBackOutOfAStopBetweenLines) {
  Open();
  Done("break message 0x2403");
  Done("camera 5 off");
  clock_.Advance(900);
  Await([&] { return !told_.News().empty(); });
  EXPECT_EQ(Done("undo"), "undone: camera 5 off");
  EXPECT_THAT(told_.News(), ElementsAre(HasSubstr(" stopped: "), EndsWith(" rewound")));
  clock_.Advance(900);
  EXPECT_EQ(Done("lsplit 6 0"), "vexo lsplit 6 0\n= 0");
}

// ---- What is kept -------------------------------------------------------------------------------

// The trace so far, as it is written while it goes on.
struct LiveTrace {
  std::ostringstream text;
  script::JsonSink sink{text, [this] { text.str({}); }};
};

class SavedSession : public BenchTest, public testing::WithParamInterface<std::uint64_t> {
 protected:
  void Work();
};

void SavedSession::Work() {
  RunSlow("lsplit 6 0");
  clock_.Advance(517);
  RunSlow("help");
  clock_.Advance(333);
  RunSlow("expect return 0");
  clock_.Advance(77);
  RunSlow("camera 5 off");
  auto run = Send("run 700");
  clock_.Advance(250);
  RunSlow("motion 3 on");
  clock_.Advance(700);
  Pass(std::move(run));
  RunSlow("break message 0x2403");
  RunSlow("camera 6 off");
  clock_.Advance(900);
  RunSlow("expect message 0x2403");
  RunSlow("camera 5 ntsc");
  RunSlow("break off");  // first: the camera's message would stop it again
  RunSlow("continue");
  clock_.Advance(640);
  RunSlow("window deaf");
  clock_.Advance(999);
  RunSlow("loss 3");
  clock_.Advance(451);
  RunSlow("window hearing");
  RunSlow("loss 0");
  clock_.Advance(60);
  RunSlow("pip start 1 2");
}

// Of two traces up to the last call, behind which time went on between the lines that wrote them.
std::string FirstDifference(const std::string& one, const std::string& other) {
  const auto cut = [](const std::string& trace) {
    const std::size_t call = trace.find("pip start");
    EXPECT_NE(call, std::string::npos);
    const std::size_t wait = trace.find(R"("text":"wait )", call);
    return std::istringstream(
        wait == std::string::npos ? trace : trace.substr(0, trace.rfind('\n', wait) + 1));
  };
  std::istringstream a = cut(one);
  std::istringstream b = cut(other);
  for (std::string from_a, from_b;;) {
    const bool more_a = static_cast<bool>(std::getline(a, from_a));
    const bool more_b = static_cast<bool>(std::getline(b, from_b));
    if (more_a != more_b) return "one is shorter";
    if (!more_a) return {};
    if (from_a != from_b) return from_a.append("\n").append(from_b);
  }
}

// The trace of a script that was saved.
std::string TraceOf(const std::string& script, std::uint64_t seed) {
  std::istringstream in(Content(script));
  std::ostringstream trace;
  std::ostringstream out;
  std::ostringstream err;
  vexosim::TerminalSurroundings around;
  script::RunOptions how;
  how.quiet = true;
  how.seed = seed;
  how.trace = &trace;
  EXPECT_EQ(script::RunScript(in, script, how, around, out, err), script::kExitDone)
      << err.str() << Content(script);
  EXPECT_THAT(trace.str(), HasSubstr(R"("text":"wait )"));
  harness::Restart();
  return trace.str();
}

TEST_P(SavedSession, RunAsAScriptIsTheTraceThatWasWrittenAsItHappened) {
  LiveTrace live;
  BenchOptions options;
  options.run.seed = GetParam();
  options.run.sinks = {&live.sink};
  Open(options);
  Work();
  const std::string saved = test::TempPath("bench_saved.vexo");
  Done("save \"" + saved + '"');
  Close();
  EXPECT_EQ(FirstDifference(live.text.str(), TraceOf(saved, GetParam())), "") << Content(saved);
  std::filesystem::remove(saved);
}

TEST_P(SavedSession, RunAsAScriptIsTheTraceThatALineWrites) {
  LiveTrace live;
  BenchOptions options;
  options.run.seed = GetParam();
  options.run.sinks = {&live.sink};
  Open(options);
  Work();
  const std::string saved = test::TempPath("bench_saved.vexo");
  const std::string trace = test::TempPath("bench_saved.jsonl");
  Done("save \"" + saved + '"');
  Done("save trace \"" + trace + '"');
  Close();
  const std::string again = TraceOf(saved, GetParam());
  EXPECT_EQ(FirstDifference(Content(trace), again), "") << Content(saved);
  EXPECT_EQ(FirstDifference(live.text.str(), again), "") << Content(saved);
  std::filesystem::remove(saved);
  std::filesystem::remove(trace);
}

INSTANTIATE_TEST_SUITE_P(Seeds, SavedSession, testing::Values(0, 1, 2));

TEST_F(BenchTest, ATraceThatIsWrittenOnTheSideChangesNothing) {
  Open();
  Done("camera 5 off");
  clock_.Advance(300);
  auto run = Send("run 1000");
  AwaitLine("run ");
  const std::string trace = test::TempPath("bench.jsonl");
  EXPECT_EQ(Done("save trace \"" + trace + '"'), "");
  EXPECT_THAT(Content(trace), HasSubstr(R"("text":"wait 30)"));
  EXPECT_THAT(Refused("save waveform a.vcd"), HasSubstr("draws no waveforms"));
  EXPECT_THAT(Refused("save trace /no/such/folder/a"), HasSubstr("/no/such/folder/a"));
  EXPECT_TRUE(told_.News().empty());
  EXPECT_EQ(Pass(std::move(run)).result, Answer::Result::Done);
  std::filesystem::remove(trace);
}

// ---- Who looks on -------------------------------------------------------------------------------

TEST_F(BenchTest, MomentsAreShownWhileTheyAreWantedAndNotMoreOften) {
  Open();
  clock_.Advance(500);
  Done("camera 5 off");
  EXPECT_EQ(told_.Moments(), 0U);
  told_.wants_moments = true;
  Await([&] { return told_.Moments() == 1; });
  EXPECT_TRUE(told_.Last()->board.Input(5).lost);
  EXPECT_EQ(told_.Last()->stopped, "");
  const std::uint64_t first = told_.Last()->time_ms;
  for (int i = 0; i < 10; ++i) Done("registers master 0");
  EXPECT_EQ(told_.Moments(), 1U);
  clock_.Advance(60);
  Await([&] { return told_.Moments() == 2; });
  EXPECT_GT(told_.Last()->time_ms, first);
  EXPECT_GT(told_.Last()->cycles, 5000U);
  told_.wants_moments = false;
  clock_.Advance(500);
  Done("camera 5 ntsc");
  EXPECT_EQ(told_.Moments(), 2U);
}

TEST_F(BenchTest, MomentsAreShownInTheMiddleOfACallThatSleeps) {
  Open();
  auto init = Send("vexo init 0");
  EXPECT_EQ(init.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout);
  told_.wants_moments = true;
  Await([&] { return told_.Moments() == 1; });
  EXPECT_EQ(init.wait_for(std::chrono::milliseconds(0)), std::future_status::timeout);
  Pass(std::move(init));
}

// ---- The end ------------------------------------------------------------------------------------

TEST_F(BenchTest, QuitEndsTheSessionAndAnswersWhoeverWaits) {
  Open();
  auto run = Send("run 100000");
  AwaitLine("run ");
  EXPECT_EQ(Done("quit"), "");
  const Answer answer = run.get();
  EXPECT_EQ(answer.result, Answer::Result::Refused);
  EXPECT_EQ(answer.text, "the session is over");
  EXPECT_EQ(AwaitEnd(), "");
}

TEST_F(BenchTest, AnEndFromOutsideComesSoonWhateverRuns) {
  Open();
  auto run = Send("run 100000000");
  AwaitLine("run ");
  auto init = Send("vexo init 0");
  bench_->End();
  EXPECT_EQ(run.get().text, "the session is over");
  init.wait();
  EXPECT_EQ(Refused("camera 5 off"), "the session is over");
  EXPECT_EQ(AwaitEnd(), "");
}

TEST_F(BenchTest, AStoppedBoardEndsToo) {
  Open();
  Done("break write slave1 page 1 0x30");
  Done("lsplit 5 0");
  bench_->End();
  EXPECT_EQ(AwaitEnd(), "");
}

TEST_F(BenchTest, ALimitEndsTheSessionAndSaysWhy) {
  BenchOptions options;
  options.run.limits.virtual_ms = 2000;
  Open(options);
  Done("help");  // from here on the board keeps to the clock
  clock_.Advance(1000);
  Done("help");
  clock_.Advance(1000);
  EXPECT_EQ(AwaitEnd(), "the limit of 2000 ms of the board's time is reached");
}

}  // namespace
}  // namespace desk
