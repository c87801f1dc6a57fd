// The page over real sockets: its files, its WebSockets, and those who mean no good.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <memory>
#include <thread>

#include "desk/page/files.h"
#include "desk/page/language.h"
#include "desk/port/port.h"
#include "sim/world.h"
#include "tests/desk/port/browser.h"
#include "tests/desk/port/port_fixture.h"

namespace desk {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class PageTest : public PortFixture {
 protected:
  void SetUp() override { OpenWith({}); }

  void OpenWith(const PortLimits& limits, const PageSettings& page = {}) {
    Open({.control = {}, .page = page, .limits = limits});
  }
  std::uint16_t Number() const { return port_->PageNumber(); }

  HttpAnswer Ask(std::string_view request) const {
    Client client(Number());
    client.Send(request);
    return ReadAnswer(client);
  }
  HttpAnswer Get(std::string_view target, std::string_view fields = "") const {
    return Ask(Request(target, Number(), fields));
  }
  // A request for a WebSocket, of a page that is the board's unless the origin says otherwise.
  int Upgrade(const std::string& host, const std::string& origin) const {
    return Ask("GET /control HTTP/1.1\r\nHost: " + host + "\r\n" + SocketFields(origin) + "\r\n")
        .status;
  }
  std::string Here(const std::string& name = "127.0.0.1") const {
    return name + ':' + std::to_string(Number());
  }

  std::unique_ptr<Socket> Connect(std::string_view greeting = "vexo 1\n",
                                  Client::Room room = Client::Room::kUsual) const {
    auto socket = std::make_unique<Socket>(Number(), "/control", room);
    EXPECT_EQ(socket->Status(), 101);
    socket->Send(greeting);
    EXPECT_EQ(socket->Json()["vexo"], 1);
    return socket;
  }
};

// ---- Files --------------------------------------------------------------------------------------

TEST_F(PageTest, GivesItsFilesAsTheyAre) {
  EXPECT_GT(PageFiles().size(), 0u);
  Client client(Number());  // one connection for all of them
  for (const PageFile& file : PageFiles()) {
    client.Send(Request('/' + std::string(file.name), Number()));
    const HttpAnswer answer = ReadAnswer(client);
    EXPECT_EQ(answer.status, 200) << file.name;
    EXPECT_EQ(answer.text, file.text) << file.name;
    EXPECT_EQ(answer.fields.at("Content-Type"), file.type);
  }
}

TEST_F(PageTest, BeginsWithItsIndexWhateverTheQuestion) {
  const HttpAnswer index = Get("/index.html");
  EXPECT_THAT(index.text, HasSubstr("<!doctype html>"));
  EXPECT_EQ(Get("/").text, index.text);
  EXPECT_EQ(Get("/?chips=2").text, index.text);
}

TEST_F(PageTest, LetsNoBrowserDoMoreThanThePageNeeds) {
  const HttpAnswer answer = Get("/");
  EXPECT_EQ(answer.fields.at("Content-Security-Policy"),
            "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self' blob: data:; "
            "connect-src 'self' ws://" +
                Here() +
                "; base-uri 'none'; form-action 'none'; frame-ancestors 'none'; "
                "require-trusted-types-for 'script'");
  EXPECT_EQ(answer.fields.at("Cross-Origin-Resource-Policy"), "same-origin");
  EXPECT_EQ(answer.fields.at("Cross-Origin-Opener-Policy"), "same-origin");
  EXPECT_EQ(answer.fields.at("X-Content-Type-Options"), "nosniff");
  EXPECT_EQ(answer.fields.at("X-Frame-Options"), "DENY");
  EXPECT_EQ(answer.fields.at("Referrer-Policy"), "no-referrer");
  EXPECT_EQ(answer.fields.at("Cache-Control"), "no-store");
  EXPECT_FALSE(answer.fields.contains("Access-Control-Allow-Origin"));
}

TEST_F(PageTest, GivesTheLanguageUnderItsTitle) {
  OpenWith({}, {.bench = true, .title = "a \"board\""});
  const HttpAnswer answer = Get("/language.json");
  EXPECT_EQ(answer.fields.at("Content-Type"), "application/json");
  EXPECT_EQ(answer.text, LanguageJson("a \"board\"", true));
}

TEST_F(PageTest, AnswersHeadWithoutTheFile) {
  Client client(Number());
  client.Send("HEAD / HTTP/1.1\r\nHost: " + Here() + "\r\n\r\n" + Request("/", Number()));
  const HttpAnswer head = ReadAnswer(client, true);
  EXPECT_EQ(head.status, 200);
  const HttpAnswer get = ReadAnswer(client);
  EXPECT_EQ(get.status, 200);
  EXPECT_EQ(head.fields, get.fields);
}

TEST_F(PageTest, HasNoOtherFiles) {
  for (const char* target : {"/nothing.js", "//", "/files/index.html", "/../port/port.cpp",
                             "/%2e%2e/", "/index.html/", "/.", "*", "/index", "/\xFF"}) {
    const HttpAnswer answer = Get(target);
    EXPECT_TRUE(answer.status == 404 || answer.status == 400) << target << ' ' << answer.status;
  }
  EXPECT_EQ(Get("/nothing.js").text, "there is no such file");
}

// ---- Those who are refused ----------------------------------------------------------------------

TEST_F(PageTest, IsReadAndNoMore) {
  for (const std::string method : {"POST", "PUT", "DELETE", "OPTIONS", "PATCH", "TRACE", "VEXO"}) {
    const HttpAnswer answer =
        Ask(method + " / HTTP/1.1\r\nHost: " + Here() + "\r\nContent-Length: 9\r\n\r\ncamera 5\n");
    EXPECT_EQ(answer.status, 405) << method;
    EXPECT_EQ(answer.fields.at("Allow"), "GET, HEAD");
  }
  EXPECT_EQ(Get("/", "Content-Length: 1\r\n").status, 400);
  EXPECT_EQ(Get("/", "Transfer-Encoding: chunked\r\n").status, 400);
  EXPECT_THAT(Lines(), IsEmpty());
}

TEST_F(PageTest, IsForNoOtherHost) {
  for (const std::string& host : {Here(), Here("localhost"), Here("LOCALHOST"), Here("[::1]")}) {
    EXPECT_EQ(Ask("GET / HTTP/1.1\r\nHost: " + host + "\r\n\r\n").status, 200) << host;
    EXPECT_EQ(Upgrade(host, "http://" + host), 101) << host;
  }
  for (const std::string& host :
       {Here("evil.example"), Here("127.0.0.1.evil.example"), Here("127.0.0.2"), Here("[::]"),
        std::string("127.0.0.1"), std::string("127.0.0.1:1"), std::string("localhost"),
        Here("localhost") + "0", Here("localhost."), std::string("")}) {
    EXPECT_EQ(Ask("GET / HTTP/1.1\r\nHost: " + host + "\r\n\r\n").status, 403) << host;
    EXPECT_EQ(Upgrade(host, "http://" + host), 403) << host;
  }
  EXPECT_EQ(Ask("GET / HTTP/1.1\r\n\r\n").status, 403);
  EXPECT_EQ(Ask("GET / HTTP/1.0\r\n\r\n").status, 403);
  EXPECT_EQ(Ask("GET / HTTP/1.1\r\nHost: " + Here() + "\r\nHost: evil.example\r\n\r\n").status,
            403);
}

TEST_F(PageTest, IsForNoPageOfAnotherOrigin) {
  EXPECT_EQ(Upgrade(Here(), "http://" + Here()), 101);
  for (const std::string& origin :
       {std::string("http://evil.example"), std::string("null"), std::string(""), Here(),
        "https://" + Here(), "http://" + Here("localhost"), "http://" + Here() + "/",
        std::string("http://127.0.0.1"), "http://" + Here() + "0"}) {
    EXPECT_EQ(Upgrade(Here(), origin), 403) << origin;
    EXPECT_EQ(Get("/", "Origin: " + origin + "\r\n").status, 403) << origin;
  }
  const std::string fields = SocketFields("http://" + Here());
  EXPECT_EQ(Get("/control", fields + "Origin: http://evil.example\r\n").status, 403);
  EXPECT_EQ(Get("/control", fields.substr(fields.find('\n') + 1)).status, 403);  // without any
  EXPECT_THAT(Lines(), IsEmpty());
}

TEST_F(PageTest, NeedsAWebSocketWhereOneIs) {
  EXPECT_EQ(Get("/control").status, 426);
  EXPECT_EQ(Get("/monitor").status, 426);
  EXPECT_EQ(Get("/elsewhere", SocketFields("http://" + Here())).status, 404);
  std::string old = SocketFields("http://" + Here());
  old.replace(old.find("13"), 2, "12");
  EXPECT_NE(Get("/control", old).status, 101);
}

TEST_F(PageTest, RefusesWhatIsNoRequest) {
  for (const std::string& bytes :
       {std::string("vexo 1\r\ncamera 5 off\r\n\r\n"),
        std::string("\x16\x03\x01\x02\x00\x01\r\n\r\n", 10),
        std::string("PRI * HTTP/2.0\r\n\r\nSM\r\n\r\n"),
        "GET / HTTP/1.1\r\nHost " + Here() + "\r\n\r\n", std::string("GET  / HTTP/1.1\r\n\r\n")}) {
    const int status = Ask(bytes).status;
    EXPECT_TRUE(status == 400 || status == 403) << bytes << ' ' << status;
  }
  EXPECT_EQ(Get("/", "X: " + std::string(10'000, 'x') + "\r\n").status, 431);
  EXPECT_EQ(Get('/' + std::string(10'000, 'x')).status, 431);
  EXPECT_THAT(Lines(), IsEmpty());
}

TEST_F(PageTest, ClosesWhoDoesNotAskOrDoesNotRead) {
  PortLimits limits;
  limits.greeting = std::chrono::milliseconds(300);  // who asks is quicker, on a busy machine too
  OpenWith(limits);
  Client silent(Number());
  EXPECT_EQ(silent.Line(), std::nullopt);
  Client half(Number());
  half.Send("GET / HTTP/1.1\r\nHo");
  EXPECT_EQ(half.Line(), std::nullopt);
  Client idle(Number());
  idle.Send(Request("/", Number()));
  EXPECT_EQ(ReadAnswer(idle).status, 200);
  EXPECT_EQ(idle.Line(), std::nullopt);
  Client deaf(Number(), Client::Room::kLittle);
  for (int i = 0; i < 1000; ++i) deaf.SendSome(Request("/language.json", Number()));
  while (deaf.Send("GET")) {
  }
}

TEST_F(PageTest, HasRoomForSoManyConnections) {
  PortLimits limits;
  limits.sessions = 3;
  OpenWith(limits);
  std::vector<std::unique_ptr<Client>> clients;
  for (int i = 0; i < 3; ++i) {
    clients.push_back(std::make_unique<Client>(Number()));
    clients.back()->Send(Request("/", Number()));
    EXPECT_EQ(ReadAnswer(*clients.back()).status, 200);
  }
  Client more(Number());
  EXPECT_EQ(ReadAnswer(more).status, 503);
  EXPECT_EQ(more.Line(), std::nullopt);
  clients.pop_back();
  for (int status = 503; status != 200;) {  // the page may hear of the end a little later
    status = Get("/").status;
    ASSERT_TRUE(status == 200 || status == 503);
  }
}

// ---- Lines and events ---------------------------------------------------------------------------

TEST_F(PageTest, LinesAreTheControlPorts) {
  const auto socket = Connect("vexo 1 events\n");
  Event("told");
  socket->Send("a\nb");
  socket->Send("c\n");
  EXPECT_EQ(socket->Json()["text"], "told");
  EXPECT_EQ(socket->Json()["text"], "a!");
  EXPECT_EQ(socket->Json()["line"], "bc");
  port_->Tell(Port::Tells::Stopped, 7, 9, "<script>");
  EXPECT_EQ(socket->Json(), nlohmann::json::parse(
                                R"({"event":1,"cycle":9,"t":7,"ev":"stopped","text":"<script>"})"));
  EXPECT_THAT(Lines(), ElementsAre("a", "bc"));
}

TEST_F(PageTest, WhoDoesNotGreetIsToldAndClosed) {
  Socket socket(Number(), "/control");
  socket.Send("camera 5 off\n");
  EXPECT_THAT(socket.Json()["error"], HasSubstr("the first line must be"));
  const auto close = socket.Next();
  ASSERT_TRUE(close.has_value());
  EXPECT_EQ(close->kind, Socket::kClose);
  EXPECT_EQ(close->bytes, "\x03\xF0");  // 1008: against the rules
  socket.Send(close->bytes, Socket::kClose);
  EXPECT_EQ(socket.Next(), std::nullopt);
  EXPECT_THAT(Lines(), IsEmpty());
}

TEST_F(PageTest, SocketsThatBreakTheirRulesAreClosed) {
  const auto closed = [](Socket& socket) {
    for (auto frame = socket.Next(); frame; frame = socket.Next()) {
      if (frame->kind == Socket::kClose) socket.Send(frame->bytes, Socket::kClose);
    }
    return true;
  };
  const auto bytes = Connect();
  bytes->Send("a\n", Socket::kBytes);
  EXPECT_TRUE(closed(*bytes));
  const auto long_one = Connect();
  long_one->Send(std::string(70'000, 'a'));
  EXPECT_TRUE(closed(*long_one));
  const auto not_text = Connect();
  not_text->Send("\xFF\xFE\n");
  EXPECT_TRUE(closed(*not_text));
  const auto plain = Connect();
  plain->Raw().Send(
      "\x81\x02"
      "a\n");  // a browser masks what it sends
  EXPECT_TRUE(closed(*plain));
  Socket watcher(Number(), "/monitor");
  watcher.Send("a\n");
  EXPECT_TRUE(closed(watcher));
  EXPECT_THAT(Lines(), IsEmpty());
}

TEST_F(PageTest, NoMoreLinesAreTakenThanAreAnswered) {
  const auto socket = Connect();
  socket->Send("wait\n");
  ASSERT_TRUE(Comes("wait"));
  const std::string flood = Socket::Masked(std::string(4000, 'a') + '\n', Socket::kText);
  constexpr int kMany = 2000;
  int sent = 0;
  while (sent < kMany && socket->Raw().Send(flood)) ++sent;
  EXPECT_LT(sent, kMany);
  EXPECT_EQ(Lines().size(), 1u);
}

TEST_F(PageTest, EachOfTenWatchersGetsItsEventsInOrderWithoutGaps) {
  constexpr int kEvents = 2'000;
  const auto deaf = Connect("vexo 1 events cycles\n", Client::Room::kLittle);
  for (int i = 0; i < 100; ++i) deaf->Send("long\n");
  std::vector<std::unique_ptr<Socket>> sockets;
  sockets.reserve(10);
  for (int i = 0; i < 10; ++i) sockets.push_back(Connect("vexo 1 events\n"));
  std::vector<std::thread> watchers;
  watchers.reserve(10);
  for (const auto& socket : sockets) {
    watchers.emplace_back([&socket] {
      for (int event = 0; event < kEvents; ++event) {
        const nlohmann::json json = socket->Json();
        ASSERT_EQ(json["event"], event);
        ASSERT_EQ(json["text"], std::to_string(event));
      }
    });
  }
  for (int event = 0; event < kEvents; ++event) Event(std::to_string(event));
  for (std::thread& watcher : watchers) watcher.join();
}

TEST_F(PageTest, AWatcherThatIsTooSlowIsToldHowManyItMissedAndGoesOn) {
  PortLimits limits;
  limits.kept_bytes = 10'000;
  OpenWith(limits);
  const auto slow = Connect("vexo 1 events\n");
  constexpr std::uint64_t kEvents = 20'000;  // more than the system's buffers have
  const std::string text(1000, 'a');
  for (std::uint64_t i = 0; i < kEvents; ++i) Event(text);
  std::uint64_t next = 0;
  std::uint64_t missed = 0;
  while (next < kEvents) {
    const nlohmann::json json = slow->Json();
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
}

TEST_F(PageTest, HasRoomForSoManyPages) {
  PortLimits limits;
  limits.watchers = 2;
  OpenWith(limits);
  auto first = Connect();
  const auto second = Connect();
  EXPECT_EQ(Socket(Number(), "/control").Status(), 503);
  const Socket first_watcher(Number(), "/monitor");
  const Socket second_watcher(Number(), "/monitor");
  EXPECT_EQ(second_watcher.Status(), 101);
  for (int status = 101; status != 503;) {  // the second may come to be counted a little later
    status = Socket(Number(), "/monitor").Status();
    ASSERT_TRUE(status == 101 || status == 503);
  }
  EXPECT_EQ(Get("/").status, 200);
  first.reset();
  for (int status = 503; status != 101;) {
    status = Socket(Number(), "/control").Status();
    ASSERT_TRUE(status == 101 || status == 503);
  }
}

TEST_F(PageTest, AsksWhoIsSilentAndClosesWhoDoesNotAnswer) {
  PortLimits limits;
  limits.silence = std::chrono::milliseconds(1000);
  OpenWith(limits);
  const auto alive = Connect();
  const auto dead = Connect();
  const auto asked = alive->Next();
  ASSERT_TRUE(asked.has_value());
  EXPECT_EQ(asked->kind, Socket::kPing);
  alive->Send(asked->bytes, Socket::kPong);
  EXPECT_EQ(dead->Next().value_or(Socket::Frame{}).kind, Socket::kPing);
  EXPECT_EQ(dead->Next(), std::nullopt);
  alive->Send("a\n");
  EXPECT_EQ(alive->Json()["text"], "a!");
}

TEST_F(PageTest, SocketsMayBreakAnywhere) {
  for (const char* target : {"/control", "/monitor"}) {
    const std::string frame = Socket::Masked("vexo 1 events\nlong\nlong\n", Socket::kText);
    for (std::size_t size = 0; size <= frame.size(); ++size) {
      Socket socket(Number(), target);
      socket.Raw().Send(frame.substr(0, size));
      if (size % 2 == 0) socket.Raw().Reset();
    }
    const std::string request = Request(target, Number(), SocketFields("http://" + Here()));
    for (std::size_t size = 0; size < request.size(); size += 7) {
      Client client(Number());
      client.Send(request.substr(0, size));
      if (size % 2 == 0) client.Reset();
    }
  }
  const auto socket = Connect();
  socket->Send("a\n");
  EXPECT_EQ(socket->Json()["text"], "a!");
}

// ---- The page's own life ------------------------------------------------------------------------

TEST_F(PageTest, ThatIsTakenOrHasNoAddressIsToldInWords) {
  const auto refused = [](const PageSettings& page) {
    try {
      const Port second({.page = page}, [](const std::string&) { return Answer(); });
    } catch (const std::runtime_error& error) {
      return std::string(error.what());
    }
    return std::string();
  };
  EXPECT_EQ(refused({.port = Number()}),
            "page " + std::to_string(Number()) + " on 127.0.0.1: it is taken");
  EXPECT_EQ(refused({.address = "board"}), "page 0 on board: expected an address of numbers");
  EXPECT_THAT(refused({.address = "192.0.2.1"}), HasSubstr("page 0 on 192.0.2.1: "));
}

TEST_F(PageTest, IsAtTheAddressThatItIsTold) {
  OpenWith({}, {.address = "127.0.0.5"});
  Client client(Number(), "127.0.0.1", "127.0.0.5");
  client.Send("GET / HTTP/1.1\r\nHost: " + Here("127.0.0.5") + "\r\n\r\n");
  EXPECT_EQ(ReadAnswer(client).status, 200);
}

TEST_F(PageTest, ThePortEndsWhileLinesRunAndPagesStay) {
  const auto busy = Connect("vexo 1 events\n");
  Socket watcher(Number(), "/monitor");
  Client silent(Number());
  busy->Send("wait\nnever\n");
  ASSERT_TRUE(Comes("wait"));
  std::thread end([this] { port_.reset(); });
  EXPECT_EQ(watcher.Next(), std::nullopt);
  EXPECT_EQ(silent.Line(), std::nullopt);
  EXPECT_TRUE(busy->Json().is_null());
  LetGo();
  end.join();
  EXPECT_THAT(Lines(), ElementsAre("wait"));
}

}  // namespace
}  // namespace desk
