// Threads of a program beside the one that opened the board.
#include <thread>

#include "tests/desk/library/program.h"

namespace desk {
namespace {

using testing::Contains;
using testing::Each;
using testing::Field;
using testing::Not;

class DeskThreads : public ProgramTest {
 protected:
  DeskThreads() { Open(); }
};

// On either output: what it read, and that a number is too long.
constexpr const char* kThatPrints = R"(text "vexo rr 3 1 0000000ab ")";

// Holds: VEXOAPI_Uninitialize "Any thread."
// Holds: VEXOAPI_SetEnableDebug "Any thread."
// Holds: VEXOAPI_SetEnableOutputMsg "Any thread."
TEST_F(DeskThreads, MayBindForgetAndSwitchWhileAnotherOneIsInACommand) {
  Start();
  VexoDesk_Pump(100);
  Line(kThatPrints);
  Line(R"(expect debug "READ REG")");
  Line(R"(expect debug "string_to_hex")");
  messages.clear();
  // The one in the command waits in its send, until its window is told here.
  std::thread other;
  on_message = [&](const Message& message) {
    if (message.code != VEXO_MSG_REG_VALUE || other.joinable()) return;
    other = std::thread([this] {
      VEXOAPI_SetEnableDebug(0);
      VEXOAPI_SetEnableOutputMsg(0);
      VEXOAPI_Uninitialize();
      EXPECT_EQ(VEXOAPI_CommandProc(VEXO_CMD_RESTORE_BLANK, nullptr), VEXO_ERROR_NOT_READY);
      EXPECT_EQ(VEXOAPI_Initialize(window), VEXO_OK);
      EXPECT_EQ(VEXOAPI_GetVersion(nullptr), 10);
    });
    VexoDesk_Sleep(10);
    other.join();
  };
  VexoRegRecord record = {VEXO_CHIP_MASTER, 0, 0xFE, 0};
  EXPECT_EQ(VEXOAPI_CommandProc(VEXO_CMD_READ_REG, &record), VEXO_OK);
  EXPECT_EQ(record.value, 0x28);
  EXPECT_FALSE(other.joinable());
  EXPECT_THAT(messages, Contains(Field(&Message::code, VEXO_MSG_REG_VALUE)));
  on_message = nullptr;
  Line(kThatPrints);
  Line(R"(expect no debug "READ REG")");
  Line(R"(expect no debug "string_to_hex")");
}

// Holds: VexoDesk.h "With several, a thread that waits in the library lets it pass"
TEST_F(DeskThreads, LoseAtOnceWhatTheySendWhileTheWindowsThreadDoesNotPump) {
  Start();
  VexoDesk_Pump(100);
  ASSERT_EQ(VEXOAPI_CommandProc(VEXO_CMD_STOP_MONITOR, nullptr), VEXO_OK);
  messages.clear();
  const std::uint64_t begin = VexoDesk_Now();
  std::thread([] {
    VexoRegRecord record = {VEXO_CHIP_MASTER, 0, 0xFE, 0};
    EXPECT_EQ(VEXOAPI_CommandProc(VEXO_CMD_READ_REG, &record), VEXO_OK);
    EXPECT_EQ(record.value, 0x28);
  }).join();
  EXPECT_EQ(VexoDesk_Now(), begin + 5000);
  VexoDesk_Pump(100);
  EXPECT_THAT(messages, Each(Field(&Message::code, Not(VEXO_MSG_REG_VALUE))));
}

// Holds: VexoDesk_ControlPort "Any thread."
// Holds: VexoDesk_PagePort "Any thread."
// Holds: VexoDesk_Now "Any thread."
TEST_F(DeskThreads, MayAskForPortsAndTime) {
  ASSERT_EQ(VexoDesk_Sleep(7), VEXODESK_OK);
  std::thread([] {
    EXPECT_EQ(VexoDesk_Now(), 7u);
    EXPECT_EQ(VexoDesk_ControlPort(), 0);
    EXPECT_EQ(VexoDesk_PagePort(), 0);
  }).join();
}

}  // namespace
}  // namespace desk
