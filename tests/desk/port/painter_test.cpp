// Which moments are drawn, and how many.
#include "desk/port/painter.h"

#include <gtest/gtest.h>

#include <chrono>
#include <future>

#include "sim/world.h"
#include "tests/desk/page/picture_reader.h"

namespace desk {
namespace {

TEST(Painter, DrawsTheLatestMomentOfThoseThatCameMeanwhile) {
  std::promise<void> first;
  std::promise<void> go_on;
  std::promise<std::uint64_t> second;
  sim::Reports reports;
  const sim::Board board(reports);
  std::vector<std::uint64_t> drawn;
  Painter painter([&](const Painter::Picture& picture) {
    drawn.push_back(ReadMessage(*picture).header["t"]);
    if (drawn.size() == 1) {
      first.set_value();
      go_on.get_future().wait();
    }
    if (drawn.size() == 2) second.set_value(drawn[1]);
  });
  EXPECT_TRUE(painter.Idle());
  painter.Show({.board = board, .time_ms = 1});
  EXPECT_FALSE(painter.Idle());
  first.get_future().wait();
  for (std::uint64_t t = 2; t <= 10; ++t) painter.Show({.board = board, .time_ms = t});
  go_on.set_value();
  EXPECT_EQ(second.get_future().get(), 10u);
}

// Whoever shows as fast as it can makes no more of them.
TEST(Painter, DrawsTwentyFiveASecondAtMost) {
  constexpr int kPictures = 12;
  int drawn = 0;
  std::promise<void> all;
  sim::Reports reports;
  const sim::Board board(reports);
  const auto begin = std::chrono::steady_clock::now();
  {
    Painter* shows = nullptr;
    std::promise<void> made;
    std::shared_future<void> is_made = made.get_future().share();
    Painter painter([&](const Painter::Picture&) {
      is_made.wait();
      if (++drawn == kPictures) all.set_value();
      shows->Show({.board = board});
    });
    shows = &painter;
    made.set_value();
    painter.Show({.board = board});
    all.get_future().wait();
  }
  // The second may follow the first at once, when it has been quiet for long before.
  EXPECT_GE(std::chrono::steady_clock::now() - begin,
            std::chrono::milliseconds(40 * (kPictures - 2)));
}

}  // namespace
}  // namespace desk
