// The control port over real sockets: answers, events, and those who mean no good.
#include "desk/port/port.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <condition_variable>
#include <memory>
#include <mutex>
#include <set>
#include <thread>

#include "sim/world.h"
#include "tests/desk/port/port_fixture.h"

namespace desk {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using Json = nlohmann::json;

class PortTest : public PortFixture {
 protected:
  void SetUp() override { OpenWith({}); }

  void OpenWith(const PortLimits& limits) {
    Open({.control = std::uint16_t{0}, .page = {}, .limits = limits});
  }

  std::unique_ptr<Client> Connect(std::string_view greeting = "vexo 1\n",
                                  Client::Room room = Client::Room::kUsual) {
    auto client = std::make_unique<Client>(port_->Number(), room);
    client->Send(greeting);
    EXPECT_EQ(client->Json()["vexo"], 1);
    return client;
  }
  // What comes on a connection that begins with these bytes and is not greeted.
  std::vector<std::string> SaidTo(std::string_view bytes) {
    Client client(port_->Number());
    client.Send(bytes);
    return client.AllLines();
  }
};

const Json kNotGreeted = {
    {"error", "the first line must be 'vexo 1', 'vexo 1 events' or 'vexo 1 events cycles'"}};

// ---- Answers ------------------------------------------------------------------------------------

TEST_F(PortTest, EachLineGetsItsAnswerInOrder) {
  Client client(port_->Number());
  client.Send("vexo 1\ncamera 5 off\r\n\nunmet\nthrow\nthrow 5\n");
  EXPECT_EQ(client.Line(), R"({"vexo":1,"events":"none","next":0})");
  EXPECT_EQ(client.Line(),
            R"({"answer":1,"line":"camera 5 off","result":"done","text":"camera 5 off!"})");
  EXPECT_EQ(client.Line(), R"({"answer":2,"line":"","result":"done","text":"!"})");
  EXPECT_EQ(client.Line(), R"({"answer":3,"line":"unmet","result":"unmet","text":"it is not"})");
  EXPECT_EQ(client.Line(), R"({"answer":4,"line":"throw","result":"refused","text":"thrown"})");
  EXPECT_EQ(client.Json()["text"], "the line was ended from outside");
  EXPECT_THAT(Lines(), ElementsAre("camera 5 off", "", "unmet", "throw", "throw 5"));
}

TEST_F(PortTest, WhatIsNoTextIsRefusedInItsPlace) {
  const auto client = Connect();
  client->Send(std::string_view("a\nb\0b\n\xFF\xFE\nd\n", 11));
  EXPECT_EQ(client->Json()["result"], "done");
  const Json zero = client->Json();
  EXPECT_EQ(zero["result"], "refused");
  EXPECT_EQ(zero["line"], "b\\x00b");
  EXPECT_EQ(client->Json()["line"], "\\xFF\\xFE");
  EXPECT_EQ(client->Json()["answer"], 4);
  EXPECT_THAT(Lines(), ElementsAre("a", "d"));
}

TEST_F(PortTest, WhoEndsSendingGetsAllAnswersAndThenTheEnd) {
  Client client(port_->Number());
  client.Send("vexo 1\na\nb\nnot ended");
  client.EndSending();
  EXPECT_EQ(client.AllLines().size(), 3u);
  EXPECT_THAT(Lines(), ElementsAre("a", "b"));
}

TEST_F(PortTest, ALongLineHoldsUpNobodyElse) {
  const auto busy = Connect();
  busy->Send("wait\nafter\n");
  ASSERT_TRUE(Comes("wait"));
  const auto other = Connect();
  other->Send("a\n");
  EXPECT_EQ(other->Json()["text"], "a!");
  LetGo();
  EXPECT_EQ(busy->Json()["text"], "wait!");
  EXPECT_EQ(busy->Json()["text"], "after!");
}

TEST_F(PortTest, TenThousandLinesAtOnceAreAllAnswered) {
  std::string lines = "vexo 1\n";
  for (int i = 0; i < 10'000; ++i) lines += "line " + std::to_string(i) + '\n';
  Client client(port_->Number());
  std::thread sender([&] { EXPECT_TRUE(client.Send(lines)); });
  client.Line();
  for (int i = 1; i <= 10'000; ++i) ASSERT_EQ(client.Json()["answer"], i);
  sender.join();
}

// A flood goes no farther than the buffers of the system and the few lines that the port takes.
TEST_F(PortTest, NoMoreLinesAreReadThanAreAnswered) {
  const auto client = Connect();
  client->Send("wait\n");
  ASSERT_TRUE(Comes("wait"));
  const std::string flood = std::string(4000, 'a') + '\n';
  constexpr std::size_t kEndless = std::size_t{64} << 20;
  std::size_t sent = 0;
  while (sent < kEndless && client->CanSend()) sent += client->SendSome(flood);
  EXPECT_LT(sent, kEndless);
  EXPECT_EQ(Lines().size(), 1u);
  const auto other = Connect();
  other->Send("a\n");
  EXPECT_EQ(other->Json()["text"], "a!");
}

TEST_F(PortTest, AReaderThatNeverReadsStopsNobodyButItself) {
  const auto deaf = Connect("vexo 1 events cycles\n", Client::Room::kLittle);
  for (int i = 0; i < 500; ++i) deaf->SendSome("long\n");
  const auto other = Connect("vexo 1 events\n");
  for (int i = 0; i < 200'000; ++i) Cycle(0x5A);
  Event("told");
  EXPECT_EQ(other->Json()["text"], "told");
  other->Send("a\n");
  EXPECT_EQ(other->Json()["text"], "a!");
  // Of the lines no more are taken than fit into what waits to be sent.
  EXPECT_LT(Lines().size(), 400u);
}

// ---- Events -------------------------------------------------------------------------------------

TEST_F(PortTest, EventsComeToThoseWhoWantThem) {
  const auto all = Connect("vexo 1 events cycles\n");
  const auto most = Connect("vexo 1 events\n");
  const auto none = Connect();
  Event("one");
  Cycle(0x12);
  Event("two");
  EXPECT_EQ(most->Line(), R"({"event":0,"cycle":0,"t":0,"by":"host","ev":"debug","text":"one"})");
  EXPECT_EQ(most->Line(), R"({"event":1,"cycle":1,"t":0,"by":"host","ev":"debug","text":"two"})");
  EXPECT_EQ(all->Json()["text"], "one");
  EXPECT_EQ(all->Line(),
            R"({"event":1,"cycle":0,"t":0,"by":"host","ev":"store","window":"select","value":18})");
  EXPECT_EQ(all->Json()["event"], 2);
  none->Send("a\n");
  EXPECT_EQ(none->Json()["answer"], 1);
}

TEST_F(PortTest, WhatHappensToTheBoardAsAWholeIsToldAmongTheEvents) {
  const auto most = Connect("vexo 1 events\n");
  const auto all = Connect("vexo 1 events cycles\n");
  Cycle(0x12);
  port_->Tell(Port::Tells::Stopped, 20, 1, "break at \"register 0x10\"");
  port_->Tell(Port::Tells::Continued, 20, 1);
  port_->Tell(Port::Tells::Rewound, 0, 0);
  Event("a");
  EXPECT_EQ(most->Line(),
            R"({"event":0,"cycle":1,"t":20,"ev":"stopped","text":"break at \"register 0x10\""})");
  EXPECT_EQ(most->Line(), R"({"event":1,"cycle":1,"t":20,"ev":"continued"})");
  EXPECT_EQ(most->Line(), R"({"event":2,"cycle":0,"t":0,"ev":"rewound"})");
  EXPECT_EQ(most->Json()["event"], 3);
  EXPECT_EQ(all->Json()["ev"], "store");
  EXPECT_EQ(all->Json()["event"], 1);
}

TEST_F(PortTest, TheEventsOfALineComeBeforeItsAnswer) {
  const auto client = Connect("vexo 1 events\n");
  client->Send("event\nevent\n");
  EXPECT_EQ(client->Json()["event"], 0);
  EXPECT_EQ(client->Json()["answer"], 1);
  EXPECT_EQ(client->Json()["event"], 1);
  EXPECT_EQ(client->Json()["answer"], 2);
}

TEST_F(PortTest, WhoComesBackSeesHowManyItMissed) {
  const auto first = Connect("vexo 1 events\n");
  Event("seen");
  EXPECT_EQ(first->Json()["event"], 0);
  first->Close();
  Event("not seen");
  Event("not seen");
  Client again(port_->Number());
  again.Send("vexo 1 events\n");
  EXPECT_EQ(again.Line(), R"({"vexo":1,"events":"all but cycles","next":3})");
}

TEST_F(PortTest, EachOfTenWatchersGetsItsEventsInOrderWithoutGaps) {
  constexpr int kEvents = 2'000;
  std::vector<std::thread> watchers;
  watchers.reserve(10);
  std::mutex mutex;
  int ready = 0;
  std::condition_variable all_ready;
  for (int i = 0; i < 10; ++i) {
    watchers.emplace_back([&, i] {
      const auto client = Connect(i % 2 == 0 ? "vexo 1 events\n" : "vexo 1 events cycles\n");
      {
        const std::lock_guard lock(mutex);
        ++ready;
        all_ready.notify_one();
      }
      const int step = i % 2 == 0 ? 1 : 2;
      for (int event = 0; event < kEvents * step; ++event) {
        const Json json = client->Json();
        ASSERT_EQ(json["event"], event);
        if (event % step == 0) {
          ASSERT_EQ(json["text"], std::to_string(event / step));
        }
      }
    });
  }
  {
    std::unique_lock lock(mutex);
    ASSERT_TRUE(all_ready.wait_for(lock, kPatience, [&] { return ready == 10; }));
  }
  for (int event = 0; event < kEvents; ++event) {
    Event(std::to_string(event));
    Cycle(static_cast<std::uint8_t>(event));
  }
  for (std::thread& watcher : watchers) watcher.join();
}

TEST_F(PortTest, AWatcherThatIsTooSlowIsToldHowManyItMissedAndGoesOn) {
  PortLimits limits;
  limits.kept_bytes = 10'000;
  OpenWith(limits);
  Client slow(port_->Number());
  slow.Send("vexo 1 events\n");
  ASSERT_EQ(slow.Json()["next"], 0);
  constexpr std::uint64_t kEvents = 20'000;  // more than the system's buffers have
  const std::string text(1000, 'a');
  for (std::uint64_t i = 0; i < kEvents; ++i) Event(text);
  std::uint64_t next = 0;
  std::uint64_t missed = 0;
  while (next < kEvents) {
    const Json json = slow.Json();
    ASSERT_FALSE(json.is_null());
    if (json.contains("missed")) {
      missed += json["missed"].get<std::uint64_t>();
      next += json["missed"].get<std::uint64_t>();
    } else {
      ASSERT_EQ(json["event"], next);
      ++next;
    }
  }
  EXPECT_EQ(next, kEvents);
  EXPECT_GT(missed, 0u);
  Event("after");
  EXPECT_EQ(slow.Json()["text"], "after");
}

// ---- Those who are refused ----------------------------------------------------------------------

TEST_F(PortTest, NoRequestOfAWebPageReachesALine) {
  const std::string body = "vexo 1\r\ncamera 5 off\r\n";
  for (const std::string& request :
       {"GET / HTTP/1.1\r\nHost: 127.0.0.1\r\nOrigin: http://bad.example\r\n\r\n" + body,
        "POST / HTTP/1.1\r\nContent-Type: text/plain\r\nContent-Length: 22\r\n\r\n" + body,
        "GET /vexo HTTP/1.1\r\nUpgrade: websocket\r\nConnection: Upgrade\r\n"
        "Sec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ==\r\nSec-WebSocket-Version: 13\r\n\r\n" +
            body,
        "PRI * HTTP/2.0\r\n\r\nSM\r\n\r\n" + body,
        "OPTIONS * HTTP/1.1\r\nAccess-Control-Request-Method: POST\r\n\r\n" + body,
        "\x16\x03\x01\x02" + std::string("\n") + body}) {
    const std::vector<std::string> said = SaidTo(request);
    ASSERT_EQ(said.size(), 1u) << request;
    EXPECT_EQ(Json::parse(said.front()), kNotGreeted);
  }
  EXPECT_THAT(Lines(), IsEmpty());
}

TEST_F(PortTest, GarbageIsRefusedAndHarmsNothing) {
  std::string bytes;
  for (int i = 0; i < 5000; ++i) bytes += static_cast<char>(i * 7919 % 251);
  EXPECT_EQ(SaidTo(bytes + '\n').size(), 1u);
  EXPECT_EQ(SaidTo(std::string(1 << 20, 'a')),
            std::vector<std::string>{R"({"error":"a line has 4096 bytes at most"})"});
  const auto client = Connect();
  client->Send("a\n" + std::string(1 << 20, 'b') + "\nc\n");
  EXPECT_EQ(client->Json()["answer"], 1);
  EXPECT_EQ(client->Json()["error"], "a line has 4096 bytes at most");
  EXPECT_EQ(client->Line(), std::nullopt);
  EXPECT_THAT(Lines(), ElementsAre("a"));
}

TEST_F(PortTest, TheSeventeenthConnectionIsRefusedUntilOneIsClosed) {
  std::vector<std::unique_ptr<Client>> clients;
  clients.reserve(16);
  for (int i = 0; i < 16; ++i) clients.push_back(Connect());
  EXPECT_EQ(SaidTo(""), std::vector<std::string>{
                            R"({"error":"16 connections are open, and there are no more"})"});
  for (const auto& client : clients) {
    client->Send("a\n");
    EXPECT_EQ(client->Json()["text"], "a!");
  }
  clients.pop_back();
  // The port may hear of the end a little later.
  for (bool refused = true; refused;) {
    Client client(port_->Number());
    client.Send("vexo 1\n");
    const Json json = client.Json();
    refused = json.contains("error") || json.is_null();
  }
}

TEST_F(PortTest, WhoIsNotThisMachineUnderItsOneAddressIsTurnedAway) {
  Client client(port_->Number(), "127.0.0.2");
  client.Send("vexo 1\na\n");
  EXPECT_EQ(client.Line(), std::nullopt);
  EXPECT_THAT(Lines(), IsEmpty());
}

TEST_F(PortTest, WhoDoesNotGreetIsClosed) {
  PortLimits limits;
  limits.greeting = std::chrono::milliseconds(300);  // who asks is quicker, on a busy machine too
  OpenWith(limits);
  EXPECT_THAT(SaidTo("vexo"), IsEmpty());
  const auto client = Connect();
  client->Send("a\n");
  EXPECT_EQ(client->Json()["text"], "a!");
}

TEST_F(PortTest, WhoStaysAfterItsEndIsClosed) {
  PortLimits limits;
  limits.goodbye = std::chrono::milliseconds(20);
  OpenWith(limits);
  Client client(port_->Number());
  client.Send("GET / HTTP/1.1\r\n");
  EXPECT_EQ(client.Json(), kNotGreeted);
  EXPECT_EQ(client.Line(), std::nullopt);
  while (client.Send("vexo 1\na\n")) {
  }
  EXPECT_THAT(Lines(), IsEmpty());
}

TEST_F(PortTest, ConnectionsMayBreakAnywhere) {
  for (const char* begin : {"", "ve", "vexo 1\n", "vexo 1\ncame",
                            "vexo 1 events cycles\nlong\nlong\n", "GET /", "GET / HTTP/1.1\n"}) {
    for (const bool reset : {false, true}) {
      Client client(port_->Number());
      client.Send(begin);
      if (reset) client.Reset();
      client.Close();
      Cycle(1);
    }
  }
  const auto busy = Connect();
  busy->Send("wait\nnever\n");
  ASSERT_TRUE(Comes("wait"));
  busy->Reset();
  const auto client = Connect("vexo 1 events\n");
  Event("a");
  EXPECT_EQ(client->Json()["text"], "a");
}

// ---- The port's own life ------------------------------------------------------------------------

TEST_F(PortTest, APortThatIsTakenIsToldInWords) {
  try {
    const Port second({.control = port_->Number()}, [](const std::string&) { return Answer(); });
    FAIL() << "two ports have one number";
  } catch (const std::runtime_error& error) {
    EXPECT_EQ(error.what(),
              "control port " + std::to_string(port_->Number()) + " on 127.0.0.1: it is taken");
  }
}

TEST_F(PortTest, ANumberIsFreeAgainAtOnce) {
  const std::uint16_t number = port_->Number();
  const auto client = Connect();
  port_.reset();
  EXPECT_EQ(client->Line(), std::nullopt);
  port_ = std::make_unique<Port>(PortSettings{.control = number},
                                 [this](const std::string& line) { return Run(line); });
  EXPECT_EQ(port_->Number(), number);
  Connect();
}

TEST_F(PortTest, ThePortEndsWhileLinesRunAndPeersStay) {
  const auto busy = Connect("vexo 1 events\n");
  const auto idle = Connect();
  Client silent(port_->Number());
  Client refused(port_->Number());
  refused.Send("GET / HTTP/1.1\n");
  EXPECT_EQ(refused.Json(), kNotGreeted);
  busy->Send("wait\nnever\n");
  ASSERT_TRUE(Comes("wait"));
  std::thread end([this] { port_.reset(); });
  EXPECT_EQ(idle->Line(), std::nullopt);
  EXPECT_EQ(busy->Line(), std::nullopt);
  EXPECT_EQ(silent.Line(), std::nullopt);
  LetGo();
  end.join();
  EXPECT_THAT(Lines(), ElementsAre("wait"));
}

}  // namespace
}  // namespace desk
