// A board is opened and closed.
#include <atomic>
#include <cstring>
#include <thread>

#include "tests/desk/library/program.h"

namespace desk {
namespace {

using testing::HasSubstr;
using testing::StartsWith;
using testing::StrEq;

using BoardOpening = ProgramTest;

// Holds: VexoDesk.h "libVexoCtrlSDK.so holds the library and a simulated board."
// Holds: VexoDesk.h "A program calls the exports of VexoCtrlSDK.h as it does"
// Holds: VexoDeskOptions "time: VEXODESK_VIRTUAL or VEXODESK_REAL"
// Holds: VexoDeskOptions "control_port: on 127.0.0.1"
// Holds: VexoDesk_Open "Makes a board and loads the library"
// Holds: VexoDesk_ControlPort "The control port's number"
TEST_F(BoardOpening, AttachesTheLibrary) {
  Open();
  VexoChar16 version[20];
  EXPECT_EQ(VEXOAPI_GetVersion(version), 10);
  EXPECT_EQ(std::u16string(version, version + 11), std::u16string(u"1. 0. 1. 6\0", 11));
  EXPECT_EQ(VexoDesk_Now(), 0u);
  EXPECT_EQ(VexoDesk_ControlPort(), 0);
}

// Holds: VexoDeskOptions "board: lines of the script language that make the board"
// Holds: VexoDesk_Open "Null options are VEXODESK_DEFAULTS."
TEST_F(BoardOpening, TakesNullForTheDefaults) {
  ASSERT_EQ(VexoDesk_Open(nullptr), VEXODESK_OK);
  Start();
  VexoRegRecord record = {VEXO_CHIP_SLAVE3, 0, 0xFE, 0};
  EXPECT_EQ(VEXOAPI_CommandProc(VEXO_CMD_READ_REG, &record), VEXO_OK);
  EXPECT_EQ(record.value, 0x28);
}

// Holds: VexoDeskOptions "board: lines of the script language that make the board"
// Holds: VexoDesk_Open "The board's lines run before it"
TEST_F(BoardOpening, RunsTheBoardsLinesBeforeTheAttach) {
  Open("board chips 2\n\n# none of four\nnvram blank\nfault mutex on\r\ncamera 5 off");
  Line("expect debug \"\"");
  Start();
  VexoDesk_Pump(100);
  ASSERT_FALSE(messages.empty());
  EXPECT_EQ(messages.back(), (Message{VEXO_MSG_VIDEO_INFO, 1u << 5, messages.back().at}));
}

// Holds: VexoDesk.h "Without a board the exports of VexoCtrlSDK.h answer as those"
TEST_F(BoardOpening, WithoutABoardEveryExportAnswersAsUninitialized) {
  EXPECT_EQ(VEXOAPI_Initialize(nullptr), VEXO_ERROR_UNINITIALIZED);
  VEXOAPI_Uninitialize();
  VexoChar16 version[20] = {u'x'};
  EXPECT_EQ(VEXOAPI_GetVersion(version), 0);
  EXPECT_EQ(version[0], u'x');
  VEXOAPI_SetEnableDebug(1);
  VEXOAPI_SetEnableOutputMsg(1);
  VexoRegRecord record = {VEXO_CHIP_MASTER, 0, 0xFE, 0x55};
  EXPECT_EQ(VEXOAPI_CommandProc(VEXO_CMD_READ_REG, &record), VEXO_ERROR_NOT_READY);
  EXPECT_EQ(record.value, 0x55);
  EXPECT_EQ(VEXOAPI_TextCommandProc("vexo rver "), VEXO_ERROR_UNINITIALIZED);
  std::uint8_t mask[24] = {};
  EXPECT_EQ(VEXOAPI_SetMotionInfo(0, 0, mask), VEXO_ERROR_UNINITIALIZED);
}

// Holds: VexoDesk.h "On failure a function returns less than 0 (or null)"
// Holds: Results "VEXODESK_ERROR_STATE: a board is open already"
// Holds: VexoDesk_ControlPort "The control port's number"
// Holds: VexoDesk_Line "Returns VEXODESK_OK; VEXODESK_ERROR_LINE"
// Holds: VexoDesk_CreateWindow "A window for VEXOAPI_Initialize"
// Holds: VexoDesk_Now "Milliseconds since the board was opened"
TEST_F(BoardOpening, WithoutABoardEveryFunctionSaysSo) {
  const auto refused = [](int result) {
    EXPECT_EQ(result, VEXODESK_ERROR_STATE);
    EXPECT_THAT(VexoDesk_Error(), HasSubstr("no board is open"));
  };
  refused(VexoDesk_Close());
  refused(VexoDesk_ControlPort());
  refused(VexoDesk_Pump(1));
  refused(VexoDesk_Sleep(1));
  refused(VexoDesk_DestroyWindow(nullptr));
  refused(VexoDesk_CreateWindow(nullptr, nullptr) == nullptr ? VEXODESK_ERROR_STATE : VEXODESK_OK);
  char answer[100] = "";
  refused(VexoDesk_Line("camera 1 off", answer, sizeof answer));
  EXPECT_THAT(answer, HasSubstr("no board is open"));
  EXPECT_EQ(VexoDesk_Now(), 0u);
}

// Holds: VexoDesk.h "One board a process at a time."
// Holds: Results "VEXODESK_ERROR_STATE: a board is open already"
// Holds: VexoDesk_Open "VEXODESK_ERROR_STATE, _ARGUMENT, _LINE or _SYSTEM."
TEST_F(BoardOpening, IsRefusedASecondTime) {
  Open();
  EXPECT_EQ(VexoDesk_Open(nullptr), VEXODESK_ERROR_STATE);
  EXPECT_STREQ(VexoDesk_Error(), "a board is open already");
  EXPECT_EQ(VEXOAPI_GetVersion(nullptr), 10);
}

// Holds: VexoDesk.h "On failure a function returns less than 0 (or null)"
// Holds: Results "VEXODESK_ERROR_ARGUMENT: an option or argument out of range"
// Holds: Results "VEXODESK_ERROR_SYSTEM: a file"
// Holds: VexoDeskOptions "size: sizeof(VexoDeskOptions)"
// Holds: VexoDeskOptions "time: VEXODESK_VIRTUAL or VEXODESK_REAL"
// Holds: VexoDesk_Open "The board's lines run before it"
// Holds: VexoDesk_Open "VEXODESK_ERROR_STATE, _ARGUMENT, _LINE or _SYSTEM."
TEST_F(BoardOpening, RefusesWhatIsNoOption) {
  const auto refused = [](int result, const VexoDeskOptions& options, const std::string& why) {
    EXPECT_EQ(VexoDesk_Open(&options), result);
    EXPECT_THAT(VexoDesk_Error(), HasSubstr(why));
    EXPECT_EQ(VexoDesk_Close(), VEXODESK_ERROR_STATE) << why;
  };
  VexoDeskOptions options = VEXODESK_DEFAULTS;
  options.size = 8;
  refused(VEXODESK_ERROR_ARGUMENT, options, "expected size to be 40, found 8");
  options = VEXODESK_DEFAULTS;
  options.time = 2;
  refused(VEXODESK_ERROR_ARGUMENT, options, "expected time to be VEXODESK_VIRTUAL");
  options = VEXODESK_DEFAULTS;
  options.control_port = 65536;
  refused(VEXODESK_ERROR_ARGUMENT, options, "expected control_port to be 0 to 65535");
  options = VEXODESK_DEFAULTS;
  options.page_port = 65536;
  refused(VEXODESK_ERROR_ARGUMENT, options,
          "expected page_port to be 0 to 65535 or VEXODESK_ANY_PORT, found 65536");
  options = VEXODESK_DEFAULTS;
  options.texts = "";
  refused(VEXODESK_ERROR_ARGUMENT, options, "expected texts to name a file");
  options = VEXODESK_DEFAULTS;
  options.board = "board chips 2\ncamera 77 off";
  refused(VEXODESK_ERROR_LINE, options, "line 2 of the board: ");
  options.board = "run 100";
  refused(VEXODESK_ERROR_LINE, options,
          "line 1 of the board: expected a line that changes the board");
  options = VEXODESK_DEFAULTS;
  options.trace = "/nowhere/trace.jsonl";
  refused(VEXODESK_ERROR_SYSTEM, options, "cannot write /nowhere/trace.jsonl");
}

TEST_F(BoardOpening, RefusesOneFileForTextsAndTraceAndLeavesIt) {
  VexoDeskOptions options = VEXODESK_DEFAULTS;
  const std::string path = Path("both");
  options.texts = path.c_str();
  options.trace = path.c_str();
  EXPECT_EQ(VexoDesk_Open(&options), VEXODESK_ERROR_SYSTEM);
  EXPECT_FALSE(std::filesystem::exists(path));
}

// Holds: VexoCtrlSDK.h "A host's life"
// Holds: VexoDesk_Close "Unloads the library (its process detach runs"
// Holds: VexoDesk_Close "A new board can be opened afterwards."
TEST_F(BoardOpening, AgainFindsTheLibraryAsItIsAtLoad) {
  Open();
  Start();
  VexoPlayModeRecord play = {};
  ASSERT_EQ(VEXOAPI_CommandProc(VEXO_CMD_PLAY_MODE, &play), VEXO_OK);
  ASSERT_EQ(VEXOAPI_CommandProc(VEXO_CMD_STOP_MONITOR, nullptr), VEXO_OK);
  VexoDesk_Pump(5000);
  ASSERT_EQ(VexoDesk_Close(), VEXODESK_OK) << VexoDesk_Error();
  VexoWindow old = window;
  Open("board chips 1");
  EXPECT_EQ(VexoDesk_Now(), 0u);
  // The old window is none.
  EXPECT_EQ(VexoDesk_DestroyWindow(old), VEXODESK_ERROR_ARGUMENT);
  VexoRegRecord record = {VEXO_CHIP_MASTER, 0, 0xFE, 0x55};
  EXPECT_EQ(VEXOAPI_CommandProc(VEXO_CMD_READ_REG, &record), VEXO_ERROR_NOT_READY);
  messages.clear();
  Start();
  VexoDesk_Pump(100);
  EXPECT_THAT(messages, testing::Contains(testing::Field(&Message::code, VEXO_MSG_VIDEO_INFO)));
}

// Holds: VexoDesk_Open "The calling thread becomes the one that the windows belong to."
// Holds: VexoDesk_Close "The thread that opened the board."
TEST_F(BoardOpening, IsForAnyThreadAndTheWindowsAreItsOwn) {
  int closed = VEXODESK_OK;
  std::thread([&] {
    ASSERT_EQ(VexoDesk_Open(nullptr), VEXODESK_OK);
    EXPECT_NE(VexoDesk_CreateWindow(nullptr, nullptr), nullptr);
    std::thread([&] { closed = VexoDesk_Close(); }).join();
    EXPECT_EQ(closed, VEXODESK_ERROR_THREAD);
    EXPECT_EQ(VexoDesk_Close(), VEXODESK_OK);
  }).join();
}

using BoardClosing = ProgramTest;

// Holds: VexoDesk_Close "Unloads the library (its process detach runs"
TEST_F(BoardClosing, EndsTheMonitor) {
  Open();
  Start();
  VexoDesk_Pump(100);
  const std::size_t told = messages.size();
  EXPECT_EQ(VexoDesk_Close(), VEXODESK_OK) << VexoDesk_Error();
  Open();
  VexoDesk_Pump(5000);
  EXPECT_EQ(messages.size(), told);
}

// Holds: Results "VEXODESK_ERROR_BUSY: a call is still under way"
// Holds: VexoDesk_Close "VEXODESK_ERROR_BUSY while another thread is in a call"
// Holds: VexoDeskProcedure "It may call anything here"
TEST_F(BoardClosing, IsRefusedInAProcedure) {
  Open();
  int closed = VEXODESK_OK;
  on_message = [&](const Message&) { closed = VexoDesk_Close(); };
  Start();
  VexoDesk_Pump(100);
  EXPECT_EQ(closed, VEXODESK_ERROR_BUSY);
  EXPECT_STREQ(VexoDesk_Error(), "a call is still under way");
  EXPECT_EQ(VexoDesk_Close(), VEXODESK_OK);
}

// Holds: VexoDesk_Close "VEXODESK_ERROR_BUSY while another thread is in a call"
TEST_F(BoardClosing, IsRefusedWhileAnotherThreadIsInACall) {
  VexoDeskOptions options = VEXODESK_DEFAULTS;
  options.time = VEXODESK_REAL;
  Open(options);
  std::atomic<bool> enough = false;
  std::thread other([&] {
    while (!enough) VexoDesk_Sleep(20);
  });
  // Between two of its calls it can be closed.
  int closed = VexoDesk_Close();
  while (closed != VEXODESK_ERROR_BUSY) {
    ASSERT_EQ(closed, VEXODESK_OK);
    Open(options);
    closed = VexoDesk_Close();
  }
  enough = true;
  other.join();
  EXPECT_EQ(VexoDesk_Close(), VEXODESK_OK);
}

}  // namespace
}  // namespace desk
