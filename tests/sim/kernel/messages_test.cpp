// Messages to the host's window.
#include <array>
#include <numeric>

#include "tests/sim/fixture.h"

namespace sim {
namespace {

class Messages : public PlatformTest {
 protected:
  struct Sent {
    bool ok = true;
    std::uint32_t error = 0;
    std::uint32_t at = 0;
  };

  // A worker that sends one message to the window after `delay` ms.
  void StartSender(std::uint32_t delay) {
    body_ = [this, delay] {
      Plat_Sleep(delay);
      sent.ok = Plat_SendMessage(window, 0x2404, 0x1234, 5, 5000);
      sent.error = Plat_LastError();
      sent.at = kernel().Now();
      return 0u;
    };
    StartWorker(body_);
  }

  const std::vector<ReceivedMessage>& Received() { return world().windows.received; }

  PlatWindow window = world().windows.Create();
  Sent sent;

 private:
  WorkerBody body_;
};

TEST_F(Messages, AWindowExistsUntilItIsDestroyed) {
  EXPECT_TRUE(Plat_IsWindow(window));
  EXPECT_FALSE(Plat_IsWindow(0));
  EXPECT_FALSE(Plat_IsWindow(window + 2));
  const PlatWindow other = world().windows.Create();
  world().windows.Destroy(window);
  EXPECT_FALSE(Plat_IsWindow(window));
  EXPECT_TRUE(Plat_IsWindow(other));
  EXPECT_NE(world().windows.Create(), window);
}

TEST_F(Messages, APumpingHostHandlesASentMessageAtOnce) {
  StartSender(10);
  kernel().Pump(20);
  EXPECT_TRUE(sent.ok);
  EXPECT_EQ(sent.at, 10u);
  ASSERT_EQ(Received().size(), 1u);
  EXPECT_EQ(Received()[0].t, 10u);
  EXPECT_EQ(Received()[0].message, 0x2404u);
  EXPECT_EQ(Received()[0].wparam, 0x1234u);
  EXPECT_FALSE(Received()[0].posted);
  EXPECT_EQ(Nth<MessageEvent>(0).by, By::Worker);
}

TEST_F(Messages, ASendWaitsUntilTheBusyHostPumps) {
  StartSender(10);
  kernel().Idle(200);
  EXPECT_TRUE(Received().empty());
  EXPECT_TRUE(Details<MessageEvent>().empty());
  kernel().Pump(1);
  EXPECT_TRUE(sent.ok);
  EXPECT_EQ(sent.at, 200u);
  ASSERT_EQ(Received().size(), 1u);
  EXPECT_EQ(Received()[0].t, 200u);
  EXPECT_EQ(Nth<MessageEvent>(0).t, 200u);
  EXPECT_EQ(Nth<MessageEvent>(0).by, By::Worker);  // its sender, not the one that handles it
  EXPECT_TRUE(Details<MessageEvent>()[0].ok);
}

TEST_F(Messages, ASendGivesUpAfterItsLimit) {
  StartSender(10);
  kernel().Idle(6000);
  EXPECT_FALSE(sent.ok);
  EXPECT_EQ(sent.error, 1460u);
  EXPECT_EQ(sent.at, 5010u);
  kernel().Pump(10);
  EXPECT_TRUE(Received().empty());
  ASSERT_EQ(Details<MessageEvent>().size(), 1u);
  EXPECT_FALSE(Details<MessageEvent>()[0].ok);
  EXPECT_EQ(Nth<MessageEvent>(0).t, 5010u);
}

TEST_F(Messages, ADeafWindowDoesNotAnswerAPumpingHostsMessages) {
  world().windows.deaf = true;
  StartSender(10);
  kernel().Pump(6000);
  EXPECT_FALSE(sent.ok);
  EXPECT_EQ(sent.error, 1460u);
  EXPECT_EQ(sent.at, 5010u);
}

TEST_F(Messages, AWindowThatHearsAgainAnswersWhatWaits) {
  world().windows.deaf = true;
  StartSender(10);
  kernel().Pump(100);
  world().windows.deaf = false;
  kernel().Pump(1);
  EXPECT_TRUE(sent.ok);
  EXPECT_EQ(sent.at, 100u);
}

TEST_F(Messages, ADestroyedWindowFailsASendThatWaits) {
  StartSender(10);
  kernel().Idle(100);
  world().windows.Destroy(window);
  kernel().Idle(1);
  EXPECT_FALSE(sent.ok);
  EXPECT_EQ(sent.error, 1400u);
  EXPECT_EQ(sent.at, 100u);
  ASSERT_EQ(Details<MessageEvent>().size(), 1u);
  EXPECT_FALSE(Details<MessageEvent>()[0].ok);
}

TEST_F(Messages, AnotherWindowsEndDisturbsNoSend) {
  const PlatWindow other = world().windows.Create();
  StartSender(10);
  kernel().Idle(100);
  world().windows.Destroy(other);
  kernel().Pump(1);
  EXPECT_TRUE(sent.ok);
}

TEST_F(Messages, NoWindowFailsAtOnce) {
  for (const PlatWindow none : {PlatWindow{0}, window + 2}) {
    EXPECT_FALSE(Plat_SendMessage(none, 0x2404, 1, 0, 5000));
    EXPECT_EQ(Plat_LastError(), 1400u);
    EXPECT_FALSE(Plat_PostMessage(none, 0x2401, 0x1003, 0));
    EXPECT_EQ(Plat_LastError(), 1400u);
  }
  EXPECT_EQ(kernel().Now(), 0u);
  EXPECT_EQ(Details<MessageEvent>().size(), 4u);
}

TEST_F(Messages, TheSendAndPostFaultsFire) {
  world().faults.Set(Fault::Send, true);
  EXPECT_FALSE(Plat_SendMessage(window, 0x2404, 1, 0, 5000));
  EXPECT_EQ(Plat_LastError(), 1400u);
  EXPECT_EQ(world().faults.Hits(Fault::Send), 1u);
  EXPECT_TRUE(Plat_PostMessage(window, 0x2404, 1, 0));
  world().faults.Set(Fault::Post, true);
  kernel().SetLastError(0);
  EXPECT_FALSE(Plat_PostMessage(window, 0x2404, 1, 0));
  EXPECT_EQ(Plat_LastError(), 1400u);
  EXPECT_EQ(world().faults.Hits(Fault::Post), 1u);
}

TEST_F(Messages, TheHostsOwnSendIsHandledAtOnce) {
  EXPECT_TRUE(Plat_SendMessage(window, 0x2401, 0x2002, 0, 5000));
  EXPECT_EQ(kernel().Now(), 0u);
  EXPECT_EQ(Received().size(), 1u);
}

TEST_F(Messages, TheHostsOwnSendToItsDeafWindowTimesOut) {
  world().windows.deaf = true;
  EXPECT_FALSE(Plat_SendMessage(window, 0x2401, 0x2002, 0, 5000));
  EXPECT_EQ(Plat_LastError(), 1460u);
  EXPECT_EQ(kernel().Now(), 5000u);
  EXPECT_TRUE(Received().empty());
}

TEST_F(Messages, PostsWaitForThePumpAndKeepTheirOrder) {
  Plat_PostMessage(window, 0x2401, 1, 0);
  Plat_PostMessage(window, 0x2401, 2, 0);
  kernel().Idle(10);
  EXPECT_TRUE(Received().empty());
  kernel().Pump(0);
  ASSERT_EQ(Received().size(), 2u);
  EXPECT_EQ(Received()[0].wparam, 1u);
  EXPECT_EQ(Received()[1].wparam, 2u);
  EXPECT_EQ(Received()[0].t, 10u);
  EXPECT_TRUE(Received()[0].posted);
  EXPECT_EQ(Nth<MessageEvent>(0).t, 0u);  // traced when it was queued
}

TEST_F(Messages, ADeafWindowStillGetsPosts) {
  world().windows.deaf = true;
  Plat_PostMessage(window, 0x2401, 1, 0);
  kernel().Pump(0);
  EXPECT_EQ(Received().size(), 1u);
}

TEST_F(Messages, AWorkersPostIsHandledAtOnceWhileTheHostPumps) {
  const WorkerBody body = [&] {
    Plat_Sleep(5);
    Plat_PostMessage(window, 0x2401, 1, 0);
    return 0u;
  };
  StartWorker(body);
  kernel().Pump(10);
  ASSERT_EQ(Received().size(), 1u);
  EXPECT_EQ(Received()[0].t, 5u);
}

TEST_F(Messages, PostsToADestroyedWindowAreDropped) {
  Plat_PostMessage(window, 0x2401, 1, 0);
  world().windows.Destroy(window);
  kernel().Pump(10);
  EXPECT_TRUE(Received().empty());
}

TEST_F(Messages, SentMessagesGoBeforePostedOnes) {
  Plat_PostMessage(window, 0x2401, 1, 0);
  StartSender(1);
  kernel().Idle(10);
  kernel().Pump(0);
  ASSERT_EQ(Received().size(), 2u);
  EXPECT_FALSE(Received()[0].posted);
  EXPECT_TRUE(Received()[1].posted);
}

TEST_F(Messages, ASecondHostThreadHasNoMessagesToPump) {
  StartSender(1);
  kernel().StartHostThread([&] { kernel().Pump(50); });
  kernel().Idle(100);
  EXPECT_TRUE(Received().empty());
  kernel().Pump(0);
  EXPECT_EQ(Received().size(), 1u);
}

TEST_F(Messages, RecordsAreTakenWhenTheMessageIsHandled) {
  struct Row {
    std::uint32_t message;
    std::size_t bytes;  // 0: wparam is a number
  };
  const Row rows[] = {{0x2401, 0}, {0x2402, 12}, {0x2403, 20},
                      {0x2404, 0}, {0x2405, 0},  {0x2406, 4}};
  for (const Row& row : rows) {
    for (const bool post : {false, true}) {
      world().trace.Clear();
      world().windows.received.clear();
      std::array<std::uint8_t, 20> record{};
      std::iota(record.begin(), record.end(), std::uint8_t{0});
      const auto wparam =
          row.bytes == 0 ? std::uintptr_t{7} : reinterpret_cast<std::uintptr_t>(record.data());
      EXPECT_TRUE(post ? Plat_PostMessage(window, row.message, wparam, 3)
                       : Plat_SendMessage(window, row.message, wparam, 3, 5000));
      record[0] = 0xEE;
      kernel().Pump(0);

      Bytes bytes(record.begin(), record.begin() + static_cast<std::ptrdiff_t>(row.bytes));
      ASSERT_EQ(Received().size(), 1u);
      const ReceivedMessage& received = Received()[0];
      if (!bytes.empty()) bytes[0] = post ? 0xEE : 0;
      EXPECT_EQ(received.record, bytes);
      EXPECT_EQ(received.wparam, row.bytes == 0 ? 7u : 0u);
      EXPECT_EQ(received.posted, post);

      const MessageEvent event = Details<MessageEvent>().at(0);
      EXPECT_EQ(event.post, post);
      EXPECT_EQ(event.message, row.message);
      EXPECT_EQ(event.lparam, 3u);
      EXPECT_TRUE(event.ok);
      EXPECT_EQ(event.wparam.has_value(), row.bytes == 0);
      EXPECT_EQ(event.record.has_value(), row.bytes != 0);
      if (!bytes.empty()) bytes[0] = 0;
      EXPECT_EQ(event.record.value_or(Bytes{}), bytes);
    }
  }
}

TEST_F(Messages, TheWindowsProcedureMayWriteToARecordThatWasTakenBefore) {
  std::array<std::uint8_t, 4> record = {1, 2, 3, 4};
  std::vector<std::uint32_t> seen;
  world().windows.procedure = [&](PlatWindow, std::uint32_t message, std::uintptr_t wparam,
                                  std::intptr_t) {
    seen.push_back(message);
    if (message == 0x2406) reinterpret_cast<std::uint8_t*>(wparam)[3] = 9;
  };
  EXPECT_TRUE(
      Plat_SendMessage(window, 0x2406, reinterpret_cast<std::uintptr_t>(record.data()), 0, 5000));
  EXPECT_TRUE(Plat_PostMessage(window, 0x2404, 1, 0));
  kernel().Pump(1);
  EXPECT_EQ(seen, (std::vector<std::uint32_t>{0x2406, 0x2404}));
  EXPECT_EQ(record, (std::array<std::uint8_t, 4>{1, 2, 3, 9}));
  EXPECT_EQ(Received()[0].record, (Bytes{1, 2, 3, 4}));
}

TEST_F(Messages, ANullRecordIsEmpty) {
  EXPECT_TRUE(Plat_SendMessage(window, 0x2403, 0, 0, 5000));
  EXPECT_EQ(Details<MessageEvent>().at(0).record, Bytes{});
}

TEST_F(Messages, SeveralSendersAreAnsweredInOrder) {
  std::vector<unsigned> order;
  for (unsigned i = 0; i < 3; ++i) {
    kernel().StartHostThread([this, i] { Plat_SendMessage(window, 0x2404, i, 0, 5000); });
  }
  kernel().Idle(10);
  kernel().Pump(1);
  for (const ReceivedMessage& message : Received()) order.push_back(message.wparam);
  EXPECT_EQ(order, (std::vector<unsigned>{0, 1, 2}));
}

// ---- Loops of a program's own -------------------------------------------------------------------

TEST_F(Messages, AThreadThatWaitsForAMessageGoesOnWhenOneIsSent) {
  kernel().LetThreadsWakeOthers();
  StartSender(10);
  kernel().AwaitMessage(kPlatForever);
  EXPECT_EQ(kernel().Now(), 10u);
  EXPECT_TRUE(Received().empty());
  EXPECT_FALSE(kernel().TakeMessage({}).has_value());
  EXPECT_EQ(Received().size(), 1u);
  kernel().Idle(1);
  EXPECT_TRUE(sent.ok);
}

TEST_F(Messages, AThreadThatWaitsForAMessageGoesOnAfterItsTime) {
  kernel().AwaitMessage(30);
  EXPECT_EQ(kernel().Now(), 30u);
}

TEST_F(Messages, ALibrarysThreadWakesNobodyThatWaitsForAMessage) {
  WorkerBody sleeper = [] {
    Plat_Sleep(1000);
    return 0u;
  };
  StartWorker(sleeper);
  EXPECT_THROW(kernel().AwaitMessage(kPlatForever), Deadlock);
  EXPECT_EQ(kernel().Now(), 0u);
}

TEST_F(Messages, AWindowsMessagesAreForTheThreadThatOwnsIt) {
  PlatWindow other = 0;
  kernel().StartHostThread([&] {
    other = world().windows.Create();
    kernel().OwnWindow(other);
    kernel().Idle(20);
    Log("posted " + std::to_string(kernel().TakeMessage({}).value().wparam));
    EXPECT_TRUE(Plat_SendMessage(other, 0x2404, 0, 0, 5000));
    Log("to itself");
  });
  kernel().Idle(10);
  kernel().StartHostThread([&] { Plat_SendMessage(other, 0x2404, 4, 0, 5000); });
  Plat_PostMessage(window, 0x2401, 2, 0);
  Plat_PostMessage(other, 0x2401, 3, 0);
  kernel().Idle(5);
  EXPECT_EQ(kernel().TakeMessage({}).value().wparam, 2u);
  EXPECT_FALSE(kernel().TakeMessage({}).has_value());
  EXPECT_TRUE(Received().size() == 1 && Received()[0].wparam == 2);
  kernel().Idle(10);
  EXPECT_EQ(log, (Lines{"20 posted 3", "20 to itself"}));
  EXPECT_EQ(Received().size(), 4u);
}

}  // namespace
}  // namespace sim
