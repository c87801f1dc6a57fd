// What a run leaves: its texts and its trace.
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>

#include "tests/desk/library/program.h"

namespace desk {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class DeskOutputs : public ProgramTest {
 protected:
  void OpenWithFiles(const std::string& name) {
    trace = Path(name + ".jsonl");
    texts = Path(name + ".txt");
    VexoDeskOptions options = VEXODESK_DEFAULTS;
    options.trace = trace.c_str();
    options.texts = texts.c_str();
    options.board = "board chips 3\ncamera 2 pal";
    Open(options);
  }

  // What a program does in a test of its own.
  void UseIt() {
    Start();
    VexoDesk_Pump(500);
    VexoLiveModeRecord live = {};
    live.mode = VEXO_SPLIT_4;
    VEXOAPI_CommandProc(VEXO_CMD_LIVE_MODE, &live);
    VEXOAPI_TextCommandProc("vexo rr 3 0 fe ");
    Line("camera 5 off");
    VexoDesk_Pump(2000);
    VexoDesk_Sleep(700);
    VEXOAPI_CommandProc(VEXO_CMD_STOP_MONITOR, nullptr);
  }

  std::string trace;
  std::string texts;
};

// Holds: VexoDesk.h "VEXODESK_VIRTUAL passes only in VexoDesk_Pump and VexoDesk_Sleep"
TEST_F(DeskOutputs, OfTwoRunsInVirtualTimeAreTheSame) {
  OpenWithFiles("one");
  UseIt();
  ASSERT_EQ(VexoDesk_Close(), VEXODESK_OK) << VexoDesk_Error();
  const std::string one = Content(trace);
  const std::string one_text = Content(texts);
  OpenWithFiles("two");
  UseIt();
  ASSERT_EQ(VexoDesk_Close(), VEXODESK_OK) << VexoDesk_Error();
  EXPECT_GT(one.size(), 100'000u);
  EXPECT_TRUE(Content(trace) == one);
  EXPECT_EQ(Content(texts), one_text);
}

// Holds: VexoDeskOptions "texts: file for the library's texts"
// Holds: VexoDeskOptions "trace: file for the trace as JSON lines"
// Holds: VexoDesk_Close "Unloads the library (its process detach runs"
TEST_F(DeskOutputs, HaveTheWholeRun) {
  OpenWithFiles("run");
  UseIt();
  ASSERT_EQ(VexoDesk_Close(), VEXODESK_OK) << VexoDesk_Error();
  const std::string events = Content(trace);
  EXPECT_THAT(events, StartsWith(R"({"t":0,"by":"host","ev":"line","text":"board chips 3"})"
                                 "\n"
                                 R"({"t":0,"by":"host","ev":"line","text":"camera 2 pal"})"
                                 "\n"
                                 R"({"t":0,"by":"host","ev":"call","fn":"DllMain","args":[1]})"
                                 "\n"));
  EXPECT_THAT(events, HasSubstr(R"("fn":"VEXOAPI_Initialize")"));
  EXPECT_THAT(events, HasSubstr(R"("ev":"line","text":"run 500"})"));
  EXPECT_THAT(events, HasSubstr(R"("ev":"sleep","ms":700})"));
  EXPECT_THAT(events, EndsWith(R"("fn":"DllMain","value":1})"
                               "\n"));
  const std::string text = Content(texts);
  EXPECT_THAT(text, StartsWith("[VexoCtrlSDK]: >> build : "));
  EXPECT_THAT(text, HasSubstr(">> FINISH NTSC CAMERA!!\n"));
  EXPECT_THAT(text, Not(HasSubstr("\r")));
}

TEST_F(DeskOutputs, AreThereWhenTheProgramIsKilled) {
  trace = Path("killed.jsonl");
  texts = Path("killed.txt");
  const pid_t program = fork();
  ASSERT_GE(program, 0);
  if (program == 0) {
    OpenWithFiles("killed");
    Start();
    VEXOAPI_TextCommandProc("vexo rr 3 0 fe ");
    std::raise(SIGKILL);
  }
  int status = 0;
  ASSERT_EQ(waitpid(program, &status, 0), program);
  ASSERT_TRUE(WIFSIGNALED(status));
  EXPECT_THAT(Content(trace), EndsWith(R"("fn":"VEXOAPI_TextCommandProc","value":0})"
                                       "\n"));
  EXPECT_THAT(Content(texts), HasSubstr(">> FINISH NTSC CAMERA!!\n"));
}

// Holds: VexoDesk.h "A program may end with its board open"
TEST_F(DeskOutputs, AreThereWhenTheProgramEndsWithItsBoardOpen) {
  trace = Path("ended.jsonl");
  const pid_t program = fork();
  ASSERT_GE(program, 0);
  if (program == 0) {
    OpenWithFiles("ended");
    Start();
    VexoDesk_Pump(100);
    std::exit(7);
  }
  int status = 0;
  ASSERT_EQ(waitpid(program, &status, 0), program);
  ASSERT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 7);
  EXPECT_THAT(Content(trace), EndsWith("}\n"));
}

// Holds: VexoDesk_Close "VEXODESK_ERROR_SYSTEM when a file could not be written whole"
TEST_F(DeskOutputs, ThatCannotBeWrittenAreToldAtTheEnd) {
  VexoDeskOptions options = VEXODESK_DEFAULTS;
  options.texts = "/dev/full";
  Open(options);
  EXPECT_EQ(VexoDesk_Close(), VEXODESK_ERROR_SYSTEM);
  EXPECT_THAT(VexoDesk_Error(), HasSubstr("cannot write /dev/full: "));
  // It is closed all the same.
  EXPECT_EQ(VexoDesk_Close(), VEXODESK_ERROR_STATE);
}

}  // namespace
}  // namespace desk
