// The pictures of the page over real sockets.
#include "desk/port/monitor.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <thread>

#include "desk/port/port.h"
#include "tests/desk/page/picture_reader.h"
#include "tests/desk/port/browser.h"
#include "tests/sim/screen/screen_bus.h"

namespace desk {
namespace {

// Becomes true soon.
template <typename Condition>
bool Soon(const Condition& condition) {
  const auto end = std::chrono::steady_clock::now() + kPatience;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > end) return false;
    std::this_thread::yield();
  }
  return true;
}

class MonitorTest : public testing::Test {
 protected:
  MonitorTest() {
    for (unsigned n = 0; n < 16; ++n) bus.Show(n, sim::Sixteenth(n), sim::kQuarter);
  }

  std::unique_ptr<Socket> Watch(Client::Room room = Client::Room::kUsual) const {
    auto socket = std::make_unique<Socket>(port.PageNumber(), "/monitor", room);
    EXPECT_EQ(socket->Status(), 101);
    return socket;
  }
  // Shows the board once somebody wants it.
  void Show(std::uint64_t time_ms) {
    ASSERT_TRUE(Soon([this] { return port.WantsMoment(); }));
    bus.board.SetTime(static_cast<std::uint32_t>(time_ms));
    port.Show({.board = bus.board, .time_ms = time_ms});
  }
  static ReadPicture Next(Socket& socket) {
    const auto frame = socket.Next();
    EXPECT_TRUE(frame.has_value());
    EXPECT_EQ(frame.value_or(Socket::Frame{}).kind, Socket::kBytes);
    return frame ? ReadMessage(frame->bytes) : ReadPicture{};
  }

  // These watchers only look: on a slow machine they would be asked whether they are there.
  static PortSettings Settings() {
    PortSettings settings{.page = PageSettings{}};
    settings.limits.silence = 20 * kPatience;
    return settings;
  }

  sim::ScreenOnBus bus;
  Port port{Settings(), [](const std::string&) { return Answer(); }};
};

TEST_F(MonitorTest, SendsTheBoardAsItIs) {
  const auto socket = Watch();
  for (std::uint64_t i = 0; i < 5; ++i) {
    Show(1000 + i);
    const ReadPicture picture = Next(*socket);
    EXPECT_EQ(picture.header["moment"], i);
    EXPECT_EQ(picture.header["t"], 1000 + i);
    EXPECT_EQ(picture.image, bus.Screen());
  }
}

TEST_F(MonitorTest, WantsNothingWhileNobodyWatches) {
  EXPECT_FALSE(port.WantsMoment());
  auto socket = Watch();
  EXPECT_TRUE(Soon([this] { return port.WantsMoment(); }));
  socket.reset();
  EXPECT_TRUE(Soon([this] { return !port.WantsMoment(); }));
  const Socket control(port.PageNumber(), "/control");
  EXPECT_EQ(control.Status(), 101);
  EXPECT_FALSE(port.WantsMoment());
}

TEST_F(MonitorTest, EveryWatcherGetsThem) {
  std::vector<std::unique_ptr<Socket>> sockets;
  sockets.reserve(10);
  for (int i = 0; i < 10; ++i) sockets.push_back(Watch());
  Show(1);  // some may come in time for the second only
  Show(2);
  for (const auto& socket : sockets) {
    std::uint64_t t = 0;
    while (t != 2) t = Next(*socket).header["t"];
  }
}

TEST_F(MonitorTest, NothingIsDrawnForAWatcherThatStallsAndNobodyWaitsForIt) {
  const auto stalled = Watch(Client::Room::kLittle);
  const auto wanted = [this] {
    // A picture is on its way for less than this, unless nobody takes it.
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(5);
    while (!port.WantsMoment()) {
      if (std::chrono::steady_clock::now() > end) return false;
      std::this_thread::yield();
    }
    return true;
  };
  std::uint64_t shown = 0;
  while (wanted()) {
    port.Show({.board = bus.board, .time_ms = ++shown});
    ASSERT_LT(shown, 2000u);
  }
  const auto socket = Watch();
  for (std::uint64_t t = shown + 1; t <= shown + 5; ++t) {
    Show(t);
    EXPECT_EQ(Next(*socket).header["t"], t);
  }
  for (std::uint64_t t = 1; t <= shown; ++t) ASSERT_EQ(Next(*stalled).header["t"], t);
  Show(shown + 6);
  EXPECT_EQ(Next(*stalled).header["t"], shown + 6);
}

}  // namespace
}  // namespace desk
