// vexosim device: programs of a card, and what the tool tells of them.
#include "tools/vexosim/card_run.h"

#include <gmock/gmock.h>

#include <sstream>

#include "files/exit_status.h"
#include "tests/device/emulator/device_fixture.h"
#include "tools/vexosim/cli.h"

namespace vexosim {
namespace {

using emulator::Number;
using emulator::ToyProgram;
using testing::HasSubstr;
using testing::IsEmpty;

class CardRunTest : public emulator::DeviceTest {
 protected:
  // "A.exe" says its arguments and returns 3.
  void PutSpeaker() {
    ToyProgram program;
    program.Begin();
    program.Call("OutputDebugStringW", {emulator::Given(2)});
    program.Return(Number(3));
    Put("A.exe", program);
  }
  // "W.exe" shows a window "first", whose procedure says each message's number and wParam. It takes
  // two messages, and is called "second" between them.
  void PutWindow() {
    using emulator::AddressOf;
    constexpr std::uint32_t kProcedure = emulator::ToyImage::kCode + 0x800;
    ToyProgram program;
    const std::uint32_t name = program.Text(u"Class");
    const std::uint32_t titles[] = {program.Text(u"first"), program.Text(u"second"),
                                    program.Text(u"hidden")};
    const std::uint32_t record = program.Room(40);
    const std::uint32_t message = program.Room(28);
    const std::uint32_t window = program.Word();
    const std::uint32_t format = program.Text(u"%04X %u");
    const std::uint32_t text = program.Room(64);
    program.Begin();
    program.Store(record + 4, AddressOf(kProcedure));
    program.Store(record + 36, AddressOf(name));
    program.Call("RegisterClassW", {AddressOf(record)});
    program.Call("CreateWindowExW",
                 {Number(0), AddressOf(name), AddressOf(titles[0]), Number(0), Number(0), Number(0),
                  Number(0), Number(0), Number(0), Number(0), Number(0), Number(0)},
                 window);
    for (const std::uint32_t title : {titles[0], titles[1]}) {
      program.Call("SetWindowTextW", {emulator::WordAt(window), AddressOf(title)});
      program.Call("ShowWindow", {emulator::WordAt(window), Number(1)});
      program.Call("SetWindowTextW", {emulator::WordAt(window), AddressOf(title)});  // no news
      program.Call("GetMessageW", {AddressOf(message), Number(0), Number(0), Number(0)});
      program.Call("DispatchMessageW", {AddressOf(message)});
    }
    program.Call("ShowWindow", {emulator::WordAt(window), Number(0)});
    program.Call("SetWindowTextW", {emulator::WordAt(window), AddressOf(titles[2])});
    program.Call("Sleep", {Number(100)});
    program.Return(Number(0));
    program.Image().code.resize(0x800 / 4);
    program.Begin();
    program.Call("wsprintfW",
                 {AddressOf(text), AddressOf(format), emulator::Given(1), emulator::Given(2)});
    program.Call("OutputDebugStringW", {AddressOf(text)});
    program.Return(Number(0));
    Put("W.exe", program);
  }
  int Run(std::vector<const char*> arguments) {
    arguments.insert(arguments.begin(), {"vexosim", "device"});
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    const int status = Main(static_cast<int>(arguments.size()), arguments.data());
    out_ = testing::internal::GetCapturedStdout();
    err_ = testing::internal::GetCapturedStderr();
    return status;
  }
  std::string Script(const std::string& lines) {
    Put("board.vexo", {lines.begin(), lines.end()});
    return card_ + "/board.vexo";
  }

  std::string out_;
  std::string err_;
};

TEST_F(CardRunTest, RunsAProgramAndTellsItsOutputAndItsExitCode) {
  PutSpeaker();
  EXPECT_EQ(Run({card_.c_str(), "A.exe", "one", "two"}), files::kExitDone);
  EXPECT_EQ(out_, "| one two\nA.exe ended with exit code 3\n");
  EXPECT_THAT(err_, IsEmpty());
}

TEST_F(CardRunTest, TellsWhyAProgramWasNotLoaded) {
  PutSpeaker();
  EXPECT_EQ(Run({card_.c_str(), "A.exe", "--without-import", "OutputDebugStringW"}),
            files::kExitUnmet);
  EXPECT_EQ(out_,
            "! loader: A.exe imports coredll.dll OutputDebugStringW, which is not exported: error "
            "127\n");
  EXPECT_EQ(err_,
            "A.exe was not loaded: A.exe imports coredll.dll OutputDebugStringW, which is not "
            "exported (error 127)\n");
  EXPECT_EQ(Run({card_.c_str(), "A.exe", "--machine", "thumb"}), files::kExitUnmet);
  EXPECT_THAT(err_, HasSubstr("takes 0x01C2 alone (error 193)"));
}

TEST_F(CardRunTest, TellsWhatAProgramDidThatNoneMay) {
  ToyProgram program;
  program.Begin();
  program.Store(emulator::ToyImage::kCode, Number(1));
  program.Return(Number(0));
  Put("A.exe", program);
  EXPECT_EQ(Run({card_.c_str(), "A.exe"}), files::kExitUnmet);
  EXPECT_THAT(err_, HasSubstr("A.exe: a store to 0x00011000"));
}

TEST_F(CardRunTest, EndsAProgramAtTheLimitOfTime) {
  ToyProgram program;
  program.Begin();
  program.Call("Sleep", {Number(10'000)});
  program.Call("Sleep", {Number(10'000)});
  program.Return(Number(0));
  Put("A.exe", program);
  EXPECT_EQ(Run({card_.c_str(), "A.exe", "--limit", "5s"}), files::kExitUnmet);
  EXPECT_THAT(err_, HasSubstr("the limit of 5000 ms of the board's time is reached"));
}

// Opens the camera driver after a while, and returns the error.
ToyProgram CameraProgram(std::uint32_t ms) {
  ToyProgram program;
  const std::uint32_t name = program.Text(u"CAM1:");
  const std::uint32_t error = program.Word();
  program.Begin();
  program.Call("Sleep", {Number(ms)});
  program.Call("SetLastError", {Number(0)});
  program.Call("CreateFileW", {emulator::AddressOf(name), Number(0xC0000000), Number(0), Number(0),
                               Number(3), Number(0), Number(0)});
  program.Call("GetLastError", {}, error);
  program.Return(emulator::WordAt(error));
  return program;
}

TEST_F(CardRunTest, MakesTheBoardOfAScript) {
  Put("A.exe", CameraProgram(0));
  EXPECT_EQ(Run({card_.c_str(), "A.exe"}), files::kExitDone);
  EXPECT_EQ(out_, "A.exe ended with exit code 0\n");
  const std::string script = Script("driver CAM1: absent\n");
  EXPECT_EQ(Run({card_.c_str(), "A.exe", "--script", script.c_str()}), files::kExitDone);
  EXPECT_EQ(out_, "A.exe ended with exit code 2\n");
}

TEST_F(CardRunTest, RefusesAScriptThatCallsTheLibrary) {
  PutSpeaker();
  const std::string script = Script("board chips 1\nattach\n");
  EXPECT_EQ(Run({card_.c_str(), "A.exe", "--script", script.c_str()}), files::kExitWrong);
  EXPECT_THAT(err_, HasSubstr("board.vexo:2: expected a line that changes the board, found "
                              "'attach': the program calls the library"));
}

TEST_F(CardRunTest, TellsTheTitlesOfWindowsThatAreShownAndPressesKeys) {
  PutWindow();
  const std::string script = Script("wait 50\nkey 9\nwait 50\nkey Right\n");
  EXPECT_EQ(Run({card_.c_str(), "W.exe", "--script", script.c_str()}), files::kExitDone);
  EXPECT_EQ(out_, "= first\n= second\n| 0001 00100 570100 39\nW.exe ended with exit code 0\n");
  EXPECT_THAT(err_, IsEmpty());
}

TEST_F(CardRunTest, PressesNoKeyWhereTheWindowIsHidden) {
  PutWindow();
  const std::string script = Script("wait 5\nkey 1\nkey 2\nwait 50\nkey 3\n");
  EXPECT_EQ(Run({card_.c_str(), "W.exe", "--script", script.c_str()}), files::kExitUnmet);
  EXPECT_EQ(err_, script + ":5: no window is shown that could take the key\n");
}

TEST_F(CardRunTest, StartsProgramsBesideTheFirstAndGivesKeysToTheLastOneThatIsShown) {
  PutSpeaker();
  PutWindow();
  const std::string script = Script(
      "wait 10\nstart A.exe one two\nstart \\W.exe\nwait 10\nkey a\nkey b\n"
      "wait 500\nkey 1\nkey 2\n");
  EXPECT_EQ(Run({card_.c_str(), "W.exe", "--script", script.c_str()}), files::kExitDone);
  EXPECT_THAT(out_, testing::MatchesRegex("= first\n"
                                          "program 2 \\(A.exe\\) ended with exit code 3\n"
                                          "=3 first\n=3 second\n"
                                          "program 3 \\(W.exe\\) ended with exit code 0\n"
                                          "= second\n"
                                          "\\| .*\n"
                                          "W.exe ended with exit code 0\n"));
}

TEST_F(CardRunTest, TellsWhichProgramsWereRunningStill) {
  PutSpeaker();
  PutWindow();
  ToyProgram program;
  program.Begin();
  program.Call("Sleep", {Number(50)});
  program.Return(Number(0));
  Put("B.exe", program);
  const std::string script = Script("start W.exe\n");
  EXPECT_EQ(Run({card_.c_str(), "B.exe", "--script", script.c_str()}), files::kExitDone);
  EXPECT_THAT(out_, HasSubstr("=2 first\n"));
  EXPECT_THAT(out_,
              HasSubstr("program 2 (W.exe) was running still\nB.exe ended with exit code 0\n"));
}

TEST_F(CardRunTest, TellsTheLineThatCannotBeDoneWhileProgramsRun) {
  PutSpeaker();
  ToyProgram program;
  program.Begin();
  program.Call("Sleep", {Number(50)});
  program.Return(Number(0));
  Put("B.exe", program);
  const auto error = [this](const std::string& lines) {
    const std::string script = Script(lines);
    EXPECT_EQ(Run({card_.c_str(), "B.exe", "--script", script.c_str()}), files::kExitUnmet);
    return err_.substr(card_.size() + 1);
  };
  EXPECT_EQ(error("wait 5\nkey esc\n"),
            "board.vexo:2: no window is shown that could take the key\n");
  EXPECT_EQ(error("start C.exe\n"),
            "board.vexo:1: C.exe was not loaded: \\C.exe is not there (error 2)\n");
}

TEST_F(CardRunTest, ChangesTheBoardWhileProgramsRun) {
  Put("A.exe", CameraProgram(50));
  const auto output = [this](const char* lines) {
    const std::string script = Script(lines);
    EXPECT_EQ(Run({card_.c_str(), "A.exe", "--script", script.c_str()}), files::kExitDone);
    return out_;
  };
  EXPECT_EQ(output("wait 40\ndriver CAM1: absent\n"), "A.exe ended with exit code 2\n");
  EXPECT_EQ(output("wait 60\ndriver CAM1: absent\n"), "A.exe ended with exit code 0\n");
}

TEST_F(CardRunTest, RefusesLinesThatNoDeviceHas) {
  PutSpeaker();
  const auto error = [this](const char* lines) {
    const std::string script = Script(lines);
    EXPECT_EQ(Run({card_.c_str(), "A.exe", "--script", script.c_str()}), files::kExitWrong);
    return err_.substr(card_.size() + 1);
  };
  EXPECT_EQ(error("wait\n"), "board.vexo:1: expected a time in ms, found the end of the line\n");
  EXPECT_EQ(error("wait 5 6\n"), "board.vexo:1: expected the end of the line, found '6'\n");
  EXPECT_EQ(error("\nkey f12\n"),
            "board.vexo:2: expected a letter, a digit, enter, esc, left, up, right or down, found "
            "'f12'\n");
}

TEST_F(CardRunTest, RefusesAFolderThatIsNone) {
  EXPECT_EQ(Run({"/nonexistent", "A.exe"}), files::kExitWrong);
  EXPECT_EQ(err_, "vexosim: /nonexistent is no folder\n");
}

TEST_F(CardRunTest, WritesTheTrace) {
  PutSpeaker();
  const std::string trace = card_ + "/trace.jsonl";
  EXPECT_EQ(Run({card_.c_str(), "A.exe", "x", "--trace", trace.c_str()}), files::kExitDone);
  EXPECT_THAT(Content("trace.jsonl"), HasSubstr(R"("ev":"debug")"));
}

}  // namespace
}  // namespace vexosim
