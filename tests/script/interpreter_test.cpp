// Sessions: time turned back, stops, switches, files of lines, and what ends a run.
#include "script/interpreter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

#include "harness/host.h"
#include "script/run.h"
#include "sim/trace_json.h"
#include "tests/support/temp_path.h"
#include "tools/vexosim/listing/terminal_surroundings.h"

namespace script {
namespace {

using testing::AllOf;
using testing::ContainsRegex;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

std::string Content(const std::string& path) {
  std::ifstream in(path);
  return {std::istreambuf_iterator<char>(in), {}};
}

constexpr const char* kBringUp = "pump on\nattach\nwindow\ncommand 0xF001\nrun 300\n";

// The lines of a text as if somebody typed them.
class TypedText : public LineSource {
 public:
  explicit TypedText(const std::string& text) : in_(text) {}
  std::optional<Statement> Next() override {
    for (std::string line; std::getline(in_, line);) {
      if (auto statement = ParseLine(line, true)) return statement;
    }
    return std::nullopt;
  }

 private:
  std::istringstream in_;
};

// A session in which somebody types, on the library itself.
class InterpreterTest : public testing::Test {
 protected:
  void SetUp() override { Begin({}); }
  void TearDown() override {
    run_.reset();
    harness::Restart();
  }

  void Begin(InterpreterOptions options, bool stacks = false) {
    options.interactive = true;
    options.stacks = stacks;  // they take long in a program as large as this one
    run_.reset();
    run_.emplace(options, around_, out_, out_);
    Type(kBringUp);
  }
  // What the lines print.
  std::string Type(const std::string& lines) {
    out_.str({});
    TypedText source(lines);
    goes_on_ = run_->Run(source);
    return out_.str();
  }
  // Everything that turning back restores and that can be seen from outside.
  std::string Everything() {
    const sim::World& world = sim::TheWorld();
    std::ostringstream text;
    text << world.kernel.NowUnwrapped() << ' ' << world.trace.Cycles() << ' '
         << world.kernel.LiveThreads() << ' ' << world.kernel.OpenHandles() << ' ';
    for (const auto& chip : sim::TakeSnapshot(world.board).chips) {
      if (!chip) continue;
      for (const auto& page : *chip) text << sim::HexBytes(page);
    }
    return text.str();
  }

  vexosim::TerminalSurroundings around_;
  std::optional<Interpreter> run_;
  bool goes_on_ = true;

 private:
  std::ostringstream out_;
};

// ---- Time turned back --------------------------------------------------------------------------

TEST_F(InterpreterTest, UndoTakesTheLastLineBackThatDidSomething) {
  Type("lsplit 6 0\n");
  const std::string before = Everything();
  Type("camera 3 off\n");
  EXPECT_EQ(Type("peek master \"window 0\"\nundo\n").substr(0, 6), "      ");
  EXPECT_EQ(Everything(), before);
  EXPECT_FALSE(sim::TheWorld().board.Input(3).lost);
  EXPECT_EQ(Type("undo\n"), "      undone: vexo lsplit 6 0\n");
  EXPECT_NE(Everything(), before);
}

TEST_F(InterpreterTest, WhatIsDoneAgainAfterUndoIsTheSame) {
  Type("camera 5 off\nrun 5000\nlsplit 0 3\n");
  const std::string once = Everything();
  Type("undo\nundo\nrun 5000\nlsplit 0 3\n");
  EXPECT_EQ(Everything(), once);
}

TEST_F(InterpreterTest, UndoStopsAtWhatBroughtTheBoardUp) {
  run_->KeepWhatRan();
  EXPECT_EQ(Type("undo\n"), "      there is no line to undo\n");
  Type("mark a\nwrites on\n");
  EXPECT_EQ(Type("undo\n"), "      there is no line to undo\n");
}

TEST_F(InterpreterTest, BackGoesToAMarkAndForgetsLaterOnes) {
  Type("lsplit 1 0\nmark one\n");
  const std::string one = Everything();
  Type("camera 2 off\nrun 1000\nmark two\nlsplit 6 0\n");
  EXPECT_EQ(Type("back one\n"), "");
  EXPECT_EQ(Everything(), one);
  EXPECT_EQ(Type("back two\n"), "      there is no mark 'two'; there are: one\n");
  Type("run 10\n");
  EXPECT_EQ(Type("back one\n"), "");
  EXPECT_EQ(Everything(), one);
}

TEST_F(InterpreterTest, BackPutsSwitchesAndStopsBackToo) {
  Type("mark clean\nwrites on\nbreak message 0x2403\nback clean\n");
  EXPECT_EQ(Type("break\n"), "      no stops\n");
  EXPECT_EQ(Type("pip stop\n"), "      vexo pip stop\n      = 0\n");
}

TEST_F(InterpreterTest, RegistersOfAMomentThatWasLeftCanStillBeComparedWith) {
  Type("mark fork\nlsplit 6 0\nmark sixteen\nback fork\nlsplit 0 0\n");
  EXPECT_THAT(Type("diff sixteen\n"), HasSubstr("window 0"));
  EXPECT_THAT(Type("back sixteen\n"), HasSubstr("there is no mark 'sixteen'"));
  EXPECT_THAT(Type("back fork\nlsplit 6 0\ndiff sixteen\n"),
              AllOf(Not(HasSubstr("window 0")), EndsWith("no register differs\n")));
}

TEST_F(InterpreterTest, AVirtualHourIsTurnedBackExactly) {
  Type("run 3600000\nmark hour\n");
  const std::string hour = Everything();
  Type("lsplit 6 0\nundo\n");
  EXPECT_EQ(Everything(), hour);
}

// A file that can be begun anew, or not.
class FakeSink : public TraceSink {
 public:
  explicit FakeSink(bool again) : again_(again) {}
  void Begin(sim::Trace& trace) override {
    ++begun;
    text.str({});
    writer_.emplace(text);
    trace.AddListener(*writer_);
  }
  void End(sim::Trace& trace) override { trace.RemoveListener(*writer_); }
  bool CanBeginAgain() const override { return again_; }
  unsigned begun = 0;
  std::ostringstream text;

 private:
  bool again_;
  std::optional<sim::TraceWriter> writer_;
};

TEST_F(InterpreterTest, TheTraceIsOfWhatWasNotUndone) {
  FakeSink undone(true);
  FakeSink never(true);
  InterpreterOptions options;
  options.sinks = {&undone};
  Begin(options);
  Type("lsplit 6 0\ncamera 5 off\nrun 100\nundo\nundo\nlsplit 0 1\n");
  EXPECT_EQ(undone.begun, 3u);
  const std::string trace = undone.text.str();
  options.sinks = {&never};
  Begin(options);
  Type("lsplit 6 0\nlsplit 0 1\n");
  EXPECT_EQ(trace, never.text.str());
  EXPECT_THAT(trace, HasSubstr(R"("text":"vexo lsplit 0 1 ")"));
}

TEST_F(InterpreterTest, NothingIsUndoneWhereTheTraceCannotBeBegunAnew) {
  FakeSink pipe(false);
  InterpreterOptions options;
  options.sinks = {&pipe};
  Begin(options);
  EXPECT_THAT(Type("lsplit 6 0\nundo\n"), EndsWith("time cannot be turned back\n"));
  EXPECT_EQ(pipe.begun, 1u);
}

TEST_F(InterpreterTest, TheTraceIsSavedByRunningTheSessionAgain) {
  FakeSink live(true);
  InterpreterOptions options;
  options.sinks = {&live};
  Begin(options);
  Type("lsplit 6 0\ncamera 5 off\nrun 100\nmark here\n");
  const std::string before = Everything();
  const std::string path = test::TempPath("saved.jsonl");
  EXPECT_EQ(Type("save trace \"" + path + "\"\n"), "");
  EXPECT_EQ(Everything(), before);
  EXPECT_EQ(Content(path), live.text.str());
  EXPECT_THAT(Content(path), HasSubstr(R"("text":"vexo lsplit 6 0 ")"));
  Type("lsplit 0 1\n");
  EXPECT_THAT(Content(path), Not(HasSubstr("lsplit 0 1")));
  EXPECT_THAT(Type("back here\nhistory\n"), EndsWith("run 100\n    9  mark here\n"));
  EXPECT_THAT(Type("save trace /no/such/folder/t\n"), HasSubstr("/no/such/folder/t"));
  EXPECT_EQ(run_->Status(), kExitWrong);
  std::filesystem::remove(path);
}

TEST_F(InterpreterTest, TheWaveformIsSavedAsTheProgramDrawsIt) {
  EXPECT_THAT(Type("save waveform a.vcd\n"), EndsWith("this program draws no waveforms\n"));
  EXPECT_THROW(ParseLine("save waveform a.txt", true), Malformed);
  InterpreterOptions options;
  options.waveform = [](std::ostream& out) { return std::make_unique<JsonSink>(out); };
  Begin(options);
  const std::string path = test::TempPath("saved.vcd");
  EXPECT_EQ(Type("camera 5 off\nsave waveform \"" + path + "\"\n"), "");
  EXPECT_THAT(Content(path), HasSubstr(R"("text":"camera 5 off")"));
  std::filesystem::remove(path);
}

TEST_F(InterpreterTest, AtAStopTheTraceIsSavedUpToThere) {
  const std::string path = test::TempPath("stopped.jsonl");
  const std::string text = Type("break write slave1 page 1 0x30\nlsplit 5 0\nsave trace \"" + path +
                                "\"\nexpect register slave1 1 0x30 0x85\ncontinue\n");
  EXPECT_THAT(text, EndsWith("      met\n      = 0\n"));
  EXPECT_THAT(Content(path), HasSubstr(R"("text":"vexo lsplit 5 0 ")"));
  EXPECT_THAT(Content(path), Not(EndsWith("\"value\":0}\n")));
  std::filesystem::remove(path);
}

// ---- Waits --------------------------------------------------------------------------------------

TEST_F(InterpreterTest, WhatHappensInAWaitBelongsToTheActionBefore) {
  EXPECT_THAT(Type("lsplit 6 0\ncamera 5 off\nwait 1000\n"),
              ContainsRegex("      = 0\n(      .*\n)*      > 0x2403 .*channel 5 lost"));
  EXPECT_EQ(Type("expect return 0\nexpect message 0x2403\n"), "      met\n      met\n");
  EXPECT_THAT(Type("diff start now\n"), HasSubstr("loss status"));
  EXPECT_THAT(Type("run 1\nexpect return 0\n"), HasSubstr("not met"));
}

TEST_F(InterpreterTest, AWaitShowsItsOwnWritesAlone) {
  EXPECT_THAT(Type("writes on\nlsplit 6 0\n"), HasSubstr("window 0"));
  EXPECT_THAT(Type("wait 100\n"), Not(HasSubstr("window 0")));
}

TEST_F(InterpreterTest, AWaitIsUndoneWithTheLineBeforeIt) {
  const std::string before = Everything();
  EXPECT_EQ(Type("camera 5 off\nwait 100\nundo\n").substr(0, 6), "      ");
  EXPECT_EQ(Everything(), before);
  EXPECT_THAT(Type("history\n"), Not(HasSubstr("wait")));
}

TEST_F(InterpreterTest, AtAStopThereIsNoWait) {
  EXPECT_THAT(Type("break write slave1 \"window 0\"\nlsplit 5 0\nwait 100\n"),
              HasSubstr("stopped in 'vexo lsplit 5 0': continue or step first"));
}

// ---- Stops --------------------------------------------------------------------------------------

TEST_F(InterpreterTest, StopsAtAWriteOfARegisterByName) {
  const std::string text =
      Type("break write slave1 \"window 0\"\nlsplit 5 0\nregisters slave1 2\n");
  EXPECT_THAT(text, HasSubstr("      stopped: break 1: w slave1 page 1 0x30 window 0 = 0x85\n"
                              "        in 'vexo lsplit 5 0', the host's thread, bus cycle "));
  EXPECT_THAT(text, ContainsRegex("lines end here: 'vexo lsplit 5 0' goes on without stops\n"
                                  "      = 0\n"));
  EXPECT_EQ(run_->Status(), kExitDone);
}

TEST_F(InterpreterTest, AtAStopTheBoardHasWhatWasWritten) {
  Type("lsplit 6 0\n");
  const std::string text =
      Type("break write slave1 page 1 0x30\nlsplit 5 0\nexpect register slave1 1 0x30 0x85\n");
  EXPECT_THAT(text, HasSubstr("      met\n"));
}

TEST_F(InterpreterTest, ShowsTheLibrarysStack) {
  Begin({}, true);
  const std::string text = Type("break write slave1 \"window 0\"\nlsplit 5 0\n");
  EXPECT_THAT(
      text, AllOf(ContainsRegex("        WriteWindow \\(display/window_tables.cpp:[0-9]+\\)\n"),
                  ContainsRegex("        VEXOAPI_TextCommandProc \\(text/[a-z_]+.cpp:[0-9]+\\)\n"),
                  Not(ContainsRegex("VEXOAPI_TextCommandProc .*\n *VEXOAPI_TextCommandProc")),
                  Not(HasSubstr("interpreter"))));
}

TEST_F(InterpreterTest, StopsAtReadsTextsMessagesAndCycles) {
  struct Case {
    const char* stop;
    const char* lines;
    const char* stopped;
  };
  const Case cases[] = {
      {"break read \"loss status\"", "run 100\n",
       "stopped: break 1: r master page 1 0x78 loss status"},
      {"break read slave2 \"loss status\"", "run 100\n",
       "stopped: break 1: r slave2 page 1 0x78 loss"},
      {"break text \"LOSS\"", "camera 1 off\nrun 100\n", "stopped: break 1: text \"LOSS\"\n"},
      {"break message 0x2403", "camera 1 off\nrun 100\n", "stopped: break 1: message 0x2403\n"},
      {"break message video-info", "camera 1 off\nrun 100\n",
       "stopped: break 1: message 0x2403 video-info\n"},
      {"break cycle 6000", "run 5000\n", ", the worker, bus cycle 6000, "},
  };
  for (const Case& each : cases) {
    Begin({});
    EXPECT_THAT(Type(std::string(each.stop) + '\n' + each.lines), HasSubstr(each.stopped))
        << each.stop;
  }
}

TEST_F(InterpreterTest, StepsACycleAndToTheEndOfACall) {
  Type("lsplit 6 0\n");
  const std::string text = Type("step\npip stop\nstep\nstep\nstep call\ncontinue\n");
  EXPECT_THAT(text, HasSubstr("stopped: store to select: "));
  EXPECT_THAT(text, HasSubstr("stopped: store to address: 0x10\n"));
  EXPECT_THAT(text, HasSubstr("stopped: w all page 1 0x10 channel display 0 = 0xC0"));
  EXPECT_THAT(text, HasSubstr("stopped: end of VEXOAPI_TextCommandProc\n"));
  EXPECT_THAT(text, EndsWith("      = 0\n"));
}

TEST_F(InterpreterTest, WhileStoppedTheBoardMayChangeAndTheLibraryIsNotCalled) {
  const std::string text = Type(
      "break write slave1 \"window 0\"\nlsplit 5 0\ncamera 3 off\nlsplit 6 0\nbreak off\n"
      "continue\nrun 1000\n");
  EXPECT_THAT(text, HasSubstr("      stopped in 'vexo lsplit 5 0': continue or step first\n"));
  EXPECT_THAT(text, HasSubstr("channel 3 lost"));
}

TEST_F(InterpreterTest, UndoneAtAStopTheRunStandsAtTheStopAgain) {
  Type("break write slave1 \"window 0\"\n");
  const std::string before = Everything();
  const std::string text = Type("lsplit 5 0\ncamera 3 off\nundo\nexpect no message 0x1\nundo\n");
  EXPECT_THAT(text, HasSubstr("      undone: camera 3 off\n      stopped: break 1: "));
  EXPECT_THAT(text, EndsWith("      undone: vexo lsplit 5 0\n"));
  EXPECT_EQ(Everything(), before);
}

TEST_F(InterpreterTest, TheWorkerCanBeStoppedAndItsRunUndone) {
  const std::string before = Everything();
  Type("break message 0x2403\ncamera 1 off\nrun 1000\nundo\nundo\nbreak off\n");
  EXPECT_EQ(Everything(), before);
  EXPECT_THAT(Type("camera 1 off\nrun 1000\n"), HasSubstr("channel 1 lost"));
}

TEST_F(InterpreterTest, ListsAndRemovesStops) {
  EXPECT_EQ(Type("break write master \"window 2\"\nbreak text \"x y\"\nbreak\n"),
            "      1: write master \"window 2\"\n      2: text \"x y\"\n");
  EXPECT_EQ(Type("break off 1\nbreak\nbreak off 7\n"),
            "      2: text \"x y\"\n      there is no stop 7\n");
  EXPECT_EQ(Type("continue\nwhere\n"), "      nothing is stopped\n      nothing is stopped\n");
}

// ---- What repeats -------------------------------------------------------------------------------

TEST_F(InterpreterTest, QuietFoldsWhatComesAgain) {
  EXPECT_THAT(Type("quiet on\nrun 60000\n"),
              ContainsRegex("^      > 0x2404 motion status: mask 0x0000: no motion, 6[0-9] times, "
                            "the last at [0-9]+ ms\n$"));
  // A text's blank at the end is left out.
  EXPECT_THAT(Type("window deaf\nrun 20000\n"), ContainsRegex("0x000005B4, [0-9] times, the last"));
}

TEST_F(InterpreterTest, MessagesHaveTheTimeAtWhichTheyCame) {
  EXPECT_THAT(Type("camera 1 off\nrun 100\n"),
              ContainsRegex("> 0x2403 video info: .*channel 1 lost.*, at 760 ms\n"));
}

TEST_F(InterpreterTest, ExpectationsOfALongRunAreMetWithoutItsTrace) {
  EXPECT_THAT(Type("camera 1 off\nrun 3600000\nexpect message 0x2403\nexpect message 0x2404 0\n"
                   "expect debug \"LOSS\"\n"),
              EndsWith("      met\n      met\n      met\n"));
  EXPECT_LE(sim::TheWorld().trace.Events().size(), 1'000'000u);
}

// ---- Files of lines -----------------------------------------------------------------------------

TEST_F(InterpreterTest, SaveWritesAScriptThatRunsAndPasses) {
  const std::string path = test::TempPath("saved.vexo");
  Type(
      "lsplit 6 0\nexpect return 0\nexpect return 5\ncamera 3 off\nrun 1000\nmark a\n"
      "break write \"window 0\"\nlsplit 0 1\ncontinue\ncontinue\nundo\nwrites on\nnonsense\n"
      "expect message 0x2403\nsave \"" +
      path + "\"\n");
  const std::string state = Everything();
  std::ifstream saved(path);
  const std::string text{std::istreambuf_iterator<char>(saved), {}};
  EXPECT_EQ(text,
            "pump on\nattach\nwindow\ncommand 0xF001\nrun 300\nvexo lsplit 6 0\n"
            "expect return 0\n# not met: expect return 5\ncamera 3 off\nrun 1000\nmark a\n"
            "break write \"window 0\"\nwrites on\nexpect message 0x2403\n");
  run_.reset();
  std::istringstream again(text);
  std::ostringstream out;
  std::ostringstream err;
  EXPECT_EQ(RunScript(again, "saved", {}, around_, out, err), kExitDone) << err.str();
  EXPECT_EQ(Everything(), state);
  std::remove(path.c_str());
}

TEST_F(InterpreterTest, SourceRunsTheLinesOfAFile) {
  const std::string path = test::TempPath("lines.vexo");
  std::ofstream(path) << "camera 1 off\nrun 100\nexpect message 0x2403\n";
  EXPECT_THAT(Type("source \"" + path + "\"\nhistory\n"), HasSubstr("camera 1 off\n"));
  EXPECT_TRUE(sim::TheWorld().board.Input(1).lost);
  // A wrong one does nothing.
  std::ofstream(path) << "camera 2 off\ncamera 99 off\n";
  EXPECT_THAT(Type("source \"" + path + "\"\n"), HasSubstr("lines.vexo:2: expected "));
  EXPECT_FALSE(sim::TheWorld().board.Input(2).lost);
  // One that names itself ends.
  std::ofstream(path) << "source \"" + path + "\"\n";
  EXPECT_THAT(Type("source \"" + path + "\"\n"), HasSubstr("files name each other without end"));
  std::remove(path.c_str());
  EXPECT_THAT(Type("source \"" + path + "\"\n"), HasSubstr("cannot read " + path));
}

// ---- What ends a run ----------------------------------------------------------------------------

int RunAScript(const std::string& lines, const Limits& limits, std::string& complaints) {
  std::istringstream in(lines);
  std::ostringstream out;
  std::ostringstream err;
  vexosim::TerminalSurroundings around;
  RunOptions options;
  options.limits = limits;
  const int status = RunScript(in, "s", options, around, out, err);
  complaints = err.str();
  return status;
}

TEST(RunWatch, EndsAScriptThatWaitsForWhatNeverComes) {
  struct Case {
    const char* lines;
    const char* said;
  };
  const Case cases[] = {
      {"settle never\nvexo lsplit 1 0", "s:7: vexo lsplit 1 0: waits for chips master, slave1, "},
      {"board chips 1\nvexo lsplit 6 0", "s:7: vexo lsplit 6 0: waits for chips slave1, slave2, "},
      {"board chips 3\nvexo bluescr init", "s:7: vexo bluescr init: waits for chip slave3 to "},
  };
  for (const Case& each : cases) {
    std::string complaints;
    EXPECT_EQ(RunAScript(kBringUp + std::string(each.lines), {}, complaints), kExitUnmet);
    EXPECT_THAT(complaints, StartsWith(each.said)) << each.lines;
  }
  harness::Restart();
}

TEST(RunWatch, LeavesAWaitAloneThatComesToAnEnd) {
  std::string complaints;
  EXPECT_EQ(RunAScript(std::string(kBringUp) + "settle 50000\nvexo lsplit 1 0\nexpect return 0", {},
                       complaints),
            kExitDone)
      << complaints;
  harness::Restart();
}

TEST(RunWatch, EndsARunAtTheLimitOfTheBoardsTime) {
  std::string complaints;
  Limits limits;
  limits.virtual_ms = 90'000;
  EXPECT_EQ(RunAScript(std::string(kBringUp) + "run 4000000000", limits, complaints), kExitUnmet);
  EXPECT_EQ(complaints,
            "s:6: run 4000000000: the limit of 90000 ms of the board's time is reached\n");
  EXPECT_LT(sim::TheWorld().kernel.Now(), 90'100u);
  harness::Restart();
}

TEST(RunWatch, EndsARunAtTheLimitOfRealTime) {
  std::string complaints;
  Limits limits;
  limits.real = std::chrono::milliseconds(1);
  EXPECT_EQ(
      RunAScript(std::string(kBringUp) + "run 4000000000\nrun 4000000000", limits, complaints),
      kExitUnmet);
  EXPECT_THAT(complaints, HasSubstr(": the limit of 1 ms is reached\n"));
  harness::Restart();
}

}  // namespace
}  // namespace script
