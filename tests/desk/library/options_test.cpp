// What a board is opened with.
#include <cstring>

#include "tests/desk/library/program.h"

namespace desk {
namespace {

using testing::HasSubstr;

using DeskOptions = ProgramTest;

// Holds: VexoDesk_Open "Options are read during the call only."
TEST_F(DeskOptions, AreReadDuringTheCallOnly) {
  std::string board = "board chips 2";
  std::string texts = Path("texts.txt");
  const std::string path = texts;
  VexoDeskOptions options = VEXODESK_DEFAULTS;
  options.board = board.c_str();
  options.texts = texts.c_str();
  Open(options);
  board.assign(board.size(), '?');
  texts.assign(texts.size(), '?');
  std::memset(&options, 0xFF, sizeof options);
  Start();
  VexoRegRecord record = {VEXO_CHIP_SLAVE2, 0, 0xFE, 0x55};
  EXPECT_EQ(VEXOAPI_CommandProc(VEXO_CMD_READ_REG, &record), VEXO_OK);
  EXPECT_EQ(record.value, 0);  // nothing is fitted there
  EXPECT_EQ(VexoDesk_Close(), VEXODESK_OK) << VexoDesk_Error();
  EXPECT_THAT(Content(path), HasSubstr(">> FINISH NTSC CAMERA!!\n"));
}

// Holds: VexoDeskOptions "texts: file for the library's texts"
TEST_F(DeskOptions, SendTheTextsToStandardErrorForADash) {
  VexoDeskOptions options = VEXODESK_DEFAULTS;
  options.texts = "-";
  testing::internal::CaptureStderr();
  Open(options);
  Start();
  EXPECT_EQ(VexoDesk_Close(), VEXODESK_OK) << VexoDesk_Error();
  EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr(">> FINISH NTSC CAMERA!!\n"));
}

// Holds: VexoDeskOptions "texts: file for the library's texts"
TEST_F(DeskOptions, SendTheTextsNowhereForNull) {
  testing::internal::CaptureStderr();
  testing::internal::CaptureStdout();
  Open();
  Start();
  EXPECT_EQ(VexoDesk_Close(), VEXODESK_OK) << VexoDesk_Error();
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

}  // namespace
}  // namespace desk
