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

// A.exe opens the camera driver, and returns the error.
TEST_F(CardRunTest, MakesTheBoardOfAScript) {
  ToyProgram program;
  const std::uint32_t name = program.Text(u"CAM1:");
  const std::uint32_t error = program.Word();
  program.Begin();
  program.Call("SetLastError", {Number(0)});
  program.Call("CreateFileW", {emulator::AddressOf(name), Number(0xC0000000), Number(0), Number(0),
                               Number(3), Number(0), Number(0)});
  program.Call("GetLastError", {}, error);
  program.Return(emulator::WordAt(error));
  Put("A.exe", program);
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
