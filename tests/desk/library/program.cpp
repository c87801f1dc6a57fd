#include "tests/desk/library/program.h"

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>

namespace desk {

ProgramTest::ProgramTest() {
  std::string name = (std::filesystem::temp_directory_path() / "vexo-desk-XXXXXX").string();
  EXPECT_NE(mkdtemp(name.data()), nullptr);
  folder_ = name;
}

ProgramTest::~ProgramTest() {
  VexoDesk_Close();  // open or not
  std::error_code ignored;
  std::filesystem::remove_all(folder_, ignored);
}

void ProgramTest::Open(const char* board) {
  VexoDeskOptions options = VEXODESK_DEFAULTS;
  options.board = board;
  Open(options);
}

void ProgramTest::Open(const VexoDeskOptions& options) {
  ASSERT_EQ(VexoDesk_Open(&options), VEXODESK_OK) << VexoDesk_Error();
}

void ProgramTest::Start() {
  window = VexoDesk_CreateWindow(OnMessage, this);
  ASSERT_NE(window, nullptr) << VexoDesk_Error();
  ASSERT_EQ(VEXOAPI_Initialize(window), VEXO_OK);
  VexoInitRecord record = {};
  ASSERT_EQ(VEXOAPI_CommandProc(VEXO_CMD_INIT, &record), VEXO_OK);
}

void ProgramTest::Line(const std::string& line) { Answer(line); }

std::string ProgramTest::Answer(const std::string& line, int result) {
  char answer[1000];
  EXPECT_EQ(VexoDesk_Line(line.c_str(), answer, sizeof answer), result) << answer;
  return answer;
}

std::string ProgramTest::Content(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  EXPECT_TRUE(file) << path;
  return {std::istreambuf_iterator(file), {}};
}

std::intptr_t ProgramTest::OnMessage(VexoWindow of, std::uint32_t code, std::uintptr_t wparam,
                                     std::intptr_t lparam, void* context) {
  auto& test = *static_cast<ProgramTest*>(context);
  EXPECT_EQ(of, test.window);
  EXPECT_EQ(lparam, 0);
  Message message{code, static_cast<std::uint32_t>(wparam), VexoDesk_Now()};
  if (code == VEXO_MSG_VIDEO_INFO) {
    std::memcpy(&message.value, reinterpret_cast<const void*>(wparam), sizeof message.value);
  } else if (code == VEXO_MSG_REG_VALUE) {
    message.value = reinterpret_cast<const VexoRegRecord*>(wparam)->value;
  } else if (code == VEXO_MSG_INIT_RESULT) {
    message.value = reinterpret_cast<const VideoState*>(wparam)->chip_count;
  }
  test.messages.push_back(message);
  if (test.on_message) test.on_message(message);
  return 1;  // dropped
}

}  // namespace desk
