// Sending and posting to the host window.
#include "report/host_messages.h"

#include "VexoCtrlSDK.h"
#include "harness/host.h"
#include "report/library_state.h"
#include "tests/api/trace_lines.h"
#include "tests/support/library_test.h"

namespace {

using Texts = std::vector<std::string>;

class HostMessages : public test::LibraryTest {
 protected:
  HostMessages() {
    AttachAndBind();
    Mark();
  }
};

TEST_F(HostMessages, ASentMessageIsHandledDuringTheCall) {
  VideoDetectRecord record = {0x00000102u, {2, 1, 0}};
  VexoSDK_SendHostMessage(VEXO_MSG_VIDEO_INFO, reinterpret_cast<std::uintptr_t>(&record), 0);
  ASSERT_EQ(world().windows.received.size(), 1u);
  const sim::ReceivedMessage& message = world().windows.received.front();
  EXPECT_EQ(message.message, 0x2403u);
  EXPECT_FALSE(message.posted);
  EXPECT_EQ(message.record,
            (sim::Bytes{2, 1, 0, 0, 2, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
  EXPECT_EQ(Debug(), Texts{});
}

TEST_F(HostMessages, BothParametersReachTheHost) {
  ExpectLparams();
  VexoSDK_SendHostMessage(VEXO_MSG_STATUS, 0x2001, 0x55);
  VexoSDK_PostHostMessage(VEXO_MSG_STATUS, 0x1003, 0x66);
  const auto events = MessageEvents();
  ASSERT_EQ(events.size(), 2u);
  EXPECT_EQ(events[0].post, false);
  EXPECT_EQ(events[0].wparam, 0x2001u);
  EXPECT_EQ(events[0].lparam, 0x55u);
  EXPECT_EQ(events[1].post, true);
  EXPECT_EQ(events[1].wparam, 0x1003u);
  EXPECT_EQ(events[1].lparam, 0x66u);
}

TEST_F(HostMessages, APostedMessageIsHandledWhenTheHostPumps) {
  VexoSDK_PostHostMessage(VEXO_MSG_STATUS, VEXO_STATUS_DETECT_ERROR, 0);
  EXPECT_TRUE(world().windows.received.empty());
  EXPECT_EQ(Elapsed(), 0u);
  world().kernel.Pump(1);
  ASSERT_EQ(world().windows.received.size(), 1u);
  EXPECT_TRUE(world().windows.received.front().posted);
  EXPECT_EQ(world().windows.received.front().wparam, 0x1003u);
  EXPECT_EQ(Debug(), Texts{});
}

TEST_F(HostMessages, AFailedSendPrintsMessageAndError) {
  world().faults.Set(sim::Fault::Send, true);
  VexoSDK_SendHostMessage(VEXO_MSG_MOTION_STATUS, 3, 0);
  EXPECT_EQ(world().faults.Hits(sim::Fault::Send), 1u);
  EXPECT_EQ(Debug(),
            (Texts{"[VexoCtrlSDK]: ", ">> SendMessage Error occure 0x00002404 0x00000578 \r\n"}));
  EXPECT_EQ(Messages(), std::vector<std::uint32_t>{});
}

TEST_F(HostMessages, AFailedPostPrintsTheError) {
  world().faults.Set(sim::Fault::Post, true);
  VexoSDK_PostHostMessage(VEXO_MSG_STATUS, 3, 0);
  EXPECT_EQ(world().faults.Hits(sim::Fault::Post), 1u);
  EXPECT_EQ(Debug(), (Texts{"[VexoCtrlSDK]: ", ">> PostMessage Error occure 0x00000578 \r\n"}));
}

TEST_F(HostMessages, ASendThatNobodyAnswersGivesUpAfter5000Ms) {
  world().windows.deaf = true;
  VexoSDK_SendHostMessage(VEXO_MSG_STATUS, 3, 0);
  EXPECT_EQ(Elapsed(), 5000u);
  EXPECT_EQ(Debug(),
            (Texts{"[VexoCtrlSDK]: ", ">> SendMessage Error occure 0x00002401 0x000005B4 \r\n"}));
}

// Holds: Host window messages "The monitor, a thread that VEXO_CMD_INIT starts"
TEST_F(HostMessages, WithoutAWindowBothFail) {
  harness::Uninitialize();
  Mark();
  VexoSDK_SendHostMessage(VEXO_MSG_CHIP_VERSION, 1, 0);
  VexoSDK_PostHostMessage(VEXO_MSG_STATUS, 1, 0);
  EXPECT_EQ(
      test::Texts(world().trace, world().trace.Mark() - 6),
      (Texts{"send 2405 1 failed", "debug [VexoCtrlSDK]: ",
             "debug >> SendMessage Error occure 0x00002405 0x00000578 \\r\\n", "post 2401 1 failed",
             "debug [VexoCtrlSDK]: ", "debug >> PostMessage Error occure 0x00000578 \\r\\n"}));
}

TEST_F(HostMessages, AWindowThatIsGoneFailsBoth) {
  world().windows.Destroy(g_library.g_host_wnd);
  VexoSDK_SendHostMessage(VEXO_MSG_CHIP_VERSION, 1, 0);
  VexoSDK_PostHostMessage(VEXO_MSG_STATUS, 1, 0);
  EXPECT_EQ(DebugText(),
            "[VexoCtrlSDK]: >> SendMessage Error occure 0x00002405 0x00000578 \r\n"
            "[VexoCtrlSDK]: >> PostMessage Error occure 0x00000578 \r\n");
}

TEST_F(HostMessages, FailuresGoByTheOutputMessageSwitch) {
  harness::SetEnableOutputMsg(0);
  world().faults.Set(sim::Fault::Send, true);
  world().faults.Set(sim::Fault::Post, true);
  VexoSDK_SendHostMessage(VEXO_MSG_CHIP_VERSION, 1, 0);
  VexoSDK_PostHostMessage(VEXO_MSG_STATUS, 1, 0);
  EXPECT_EQ(Debug(), Texts{});
}

}  // namespace
