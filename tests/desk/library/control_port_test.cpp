// The control port and the page of a program's board.
#include <netinet/in.h>

#include "tests/desk/library/program.h"
#include "tests/desk/port/browser.h"

namespace desk {
namespace {

using testing::HasSubstr;

class DeskPort : public ProgramTest {
 protected:
  DeskPort() {
    VexoDeskOptions options = VEXODESK_DEFAULTS;
    options.control_port = VEXODESK_ANY_PORT;
    options.time = VEXODESK_REAL;
    Open(options);
  }

  // The board's port; 0 is none.
  static std::uint16_t Number() { return static_cast<std::uint16_t>(VexoDesk_ControlPort()); }
};

// Holds: The board "VEXODESK_ANY_PORT: one that is free"
// Holds: VexoDeskOptions "control_port: on 127.0.0.1"
// Holds: VexoDesk_ControlPort "The control port's number"
TEST_F(DeskPort, PullsACableOfTheProgramsBoard) {
  ASSERT_NE(Number(), 0);
  Start();
  Client client(Number());
  client.Send("vexo 1 events\ncamera 5 off\n");
  bool done = false;
  bool event = false;
  while (!done || !event) {
    const nlohmann::json line = client.Json();
    ASSERT_TRUE(line.is_object());
    done = done || line.value("result", "") == "done";
    event = event || (line.value("ev", "") == "line" && line.value("text", "") == "camera 5 off");
  }
  const auto told = [this] { return !messages.empty() && messages.back().value == 1u << 5; };
  const std::uint64_t begin = VexoDesk_Now();
  while (!told() && VexoDesk_Now() < begin + 20'000) VexoDesk_Pump(1);
  EXPECT_TRUE(told());
}

// Holds: VexoDesk_Close "Ends the lines and connections of both ports."
TEST_F(DeskPort, GoesWithItsBoardAlsoWhileALineLetsTimePass) {
  Client client(Number());
  client.Send("vexo 1\nrun 3600000\n");
  EXPECT_EQ(client.Json().value("vexo", 0), 1);
  VexoDesk_Pump(50);
  EXPECT_EQ(VexoDesk_Close(), VEXODESK_OK) << VexoDesk_Error();
  EXPECT_THAT(client.AllLines(), testing::Each(testing::Not(HasSubstr("done"))));
}

// Holds: Results "VEXODESK_ERROR_SYSTEM: a file"
// Holds: VexoDeskOptions "control_port: on 127.0.0.1"
TEST_F(DeskPort, ThatIsTakenIsToldAndNothingIsOpened) {
  const int listener = socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  ASSERT_EQ(bind(listener, reinterpret_cast<const sockaddr*>(&address), size), 0);
  ASSERT_EQ(listen(listener, 1), 0);
  ASSERT_EQ(getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size), 0);
  ASSERT_EQ(VexoDesk_Close(), VEXODESK_OK);

  VexoDeskOptions options = VEXODESK_DEFAULTS;
  const std::string trace = Path("trace.jsonl");
  options.trace = trace.c_str();
  options.control_port = ntohs(address.sin_port);
  EXPECT_EQ(VexoDesk_Open(&options), VEXODESK_ERROR_SYSTEM);
  EXPECT_THAT(VexoDesk_Error(),
              HasSubstr(std::to_string(options.control_port) + " on 127.0.0.1: it is taken"));
  EXPECT_FALSE(std::filesystem::exists(trace));
  EXPECT_EQ(VexoDesk_Close(), VEXODESK_ERROR_STATE);
  close(listener);
}

class DeskPage : public ProgramTest {
 protected:
  DeskPage() {
    VexoDeskOptions options = VEXODESK_DEFAULTS;
    options.page_port = VEXODESK_ANY_PORT;
    options.time = VEXODESK_REAL;
    Open(options);
  }

  static std::uint16_t Number() { return static_cast<std::uint16_t>(VexoDesk_PagePort()); }
  static nlohmann::json Picture(Socket& socket) {
    const auto frame = socket.Next();
    if (!frame || frame->kind != Socket::kBytes) return {};
    const std::size_t length = static_cast<std::uint8_t>(frame->bytes[0]) +
                               std::size_t{static_cast<std::uint8_t>(frame->bytes[1])} * 256;
    return nlohmann::json::parse(frame->bytes.substr(4, length));
  }
};

// Holds: VexoDeskOptions "page_port: the same for the page"
// Holds: VexoDesk_PagePort "The same for the page"
TEST_F(DeskPage, ShowsTheProgramsBoardUnderItsName) {
  EXPECT_EQ(VexoDesk_ControlPort(), 0);
  Client client(Number());
  client.Send(Request("/language.json", Number()));
  const nlohmann::json language = nlohmann::json::parse(ReadAnswer(client).text);
  EXPECT_EQ(language["board"], "program");
  EXPECT_EQ(language["title"], "desk_tests");
  Start();
  Socket monitor(Number(), "/monitor");
  const nlohmann::json first = Picture(monitor);
  EXPECT_EQ(first["width"], 720);
  EXPECT_GT(first["cycles"], 1000);
  Socket control(Number(), "/control");
  control.Send("vexo 1\nboard chips 2\n");
  EXPECT_EQ(control.Json()["vexo"], 1);
  EXPECT_EQ(control.Json()["result"], "done");
  nlohmann::json later = Picture(monitor);
  while (later.is_object() && later["fitted"][2] == true) later = Picture(monitor);
  EXPECT_EQ(later["fitted"], nlohmann::json({true, true, false, false}));
  EXPECT_GT(later["t"], first["t"]);
}

// Holds: VexoDesk_Close "Ends the lines and connections of both ports."
TEST_F(DeskPage, GoesWithItsBoardWhileItIsWatched) {
  Socket monitor(Number(), "/monitor");
  EXPECT_TRUE(Picture(monitor).is_object());
  EXPECT_EQ(VexoDesk_Close(), VEXODESK_OK) << VexoDesk_Error();
  while (monitor.Next()) {
  }
  EXPECT_EQ(VexoDesk_PagePort(), VEXODESK_ERROR_STATE);
}

}  // namespace
}  // namespace desk
