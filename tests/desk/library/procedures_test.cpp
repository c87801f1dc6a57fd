// What a window's procedure may do with the library while the sender waits for it.
#include "tests/desk/library/program.h"

namespace desk {
namespace {

using testing::HasSubstr;

class MessageProcedures : public ProgramTest {
 protected:
  MessageProcedures() : trace_(Path("trace.jsonl")) {
    VexoDeskOptions options = VEXODESK_DEFAULTS;
    options.trace = trace_.c_str();
    Open(options);
  }

  // Calls the command in the procedure of the monitor's first message, and says how long it took.
  std::uint64_t InTheFirstMessage(std::uint32_t code) {
    std::uint64_t took = 0;
    on_message = [code, &took](const Message& message) {
      if (message.code != VEXO_MSG_VIDEO_INFO || took != 0) return;
      VexoInitRecord record = {};
      EXPECT_EQ(VEXOAPI_CommandProc(code, &record), VEXO_OK);
      took = VexoDesk_Now() - message.at;
    };
    Start();
    VexoDesk_Pump(1000);
    return took;
  }

  std::string Trace() const { return Content(trace_); }

 private:
  std::string trace_;
};

// The record of the message lies on the stack of the thread that ends.
constexpr const char* kTerminated = R"("ev":"thread","what":"terminate")";

// Holds: Host window messages "Where it ends the monitor"
// Holds: VEXOAPI_CommandProc "That happens where the sync bit was never set"
// Holds: VEXOAPI_CommandProc "The record of a VEXO_MSG_VIDEO_INFO that the window"
TEST_F(MessageProcedures, ThatStopTheMonitorTerminateItInItsSend) {
  EXPECT_EQ(InTheFirstMessage(VEXO_CMD_STOP_MONITOR), 21u);
  EXPECT_THAT(Trace(), HasSubstr(kTerminated));
}

// Holds: Host window messages "Where it ends the monitor"
TEST_F(MessageProcedures, ThatInitializeAgainTerminateTheMonitorInItsSend) {
  EXPECT_EQ(InTheFirstMessage(VEXO_CMD_INIT), 440u + 21u);
  EXPECT_THAT(Trace(), HasSubstr(kTerminated));
}

}  // namespace
}  // namespace desk
