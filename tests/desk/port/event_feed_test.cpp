// Events with their numbers, for fast and slow watchers.
#include "desk/port/event_feed.h"

#include <gtest/gtest.h>

namespace desk {
namespace {

constexpr std::size_t kMuch = 1 << 20;

void Add(EventFeed& feed, int count) {
  for (int i = 0; i < count; ++i) {
    if (feed.Count()) feed.Add("\"t\":0}\n");
  }
}

std::string Take(const EventFeed& feed, std::uint64_t& next, std::uint64_t until = EventFeed::kAll,
                 std::size_t most = kMuch) {
  std::string text;
  feed.Take(next, until, text, most);
  return text;
}

TEST(EventFeed, EventsAreNumberedAlsoWhileNobodyWatches) {
  EventFeed feed;
  Add(feed, 3);
  std::uint64_t next = feed.Watch();
  EXPECT_EQ(next, 3u);
  Add(feed, 2);
  EXPECT_EQ(Take(feed, next), "{\"event\":3,\"t\":0}\n{\"event\":4,\"t\":0}\n");
  EXPECT_EQ(next, 5u);
  EXPECT_EQ(Take(feed, next), "");
}

TEST(EventFeed, AWatcherTakesUpToAnEventAndNotMuchMoreThanItAsksFor) {
  EventFeed feed;
  std::uint64_t next = feed.Watch();
  Add(feed, 10);
  EXPECT_EQ(Take(feed, next, 1), "{\"event\":0,\"t\":0}\n");
  EXPECT_EQ(Take(feed, next, EventFeed::kAll, 1), "{\"event\":1,\"t\":0}\n");
  EXPECT_EQ(Take(feed, next, 3, 0), "");
  EXPECT_EQ(next, 2u);
}

TEST(EventFeed, WhoIsTooSlowIsToldHowManyItMissed) {
  EventFeed feed(100);  // five events
  std::uint64_t slow = feed.Watch();
  std::uint64_t fast = feed.Watch();
  for (int i = 0; i < 20; ++i) {
    Add(feed, 1);
    EXPECT_EQ(Take(feed, fast), "{\"event\":" + std::to_string(i) + ",\"t\":0}\n");
  }
  const std::string text = Take(feed, slow);
  EXPECT_EQ(text.substr(0, text.find('\n')), "{\"missed\":15}");
  EXPECT_EQ(text.substr(text.find('\n') + 1, 12), "{\"event\":15,");
  EXPECT_EQ(slow, 20u);
}

TEST(EventFeed, WhoComesBackGetsNothingOld) {
  EventFeed feed;
  std::uint64_t next = feed.Watch();
  Add(feed, 4);
  feed.Unwatch();
  Add(feed, 4);
  next = feed.Watch();
  EXPECT_EQ(next, 8u);
  EXPECT_EQ(Take(feed, next), "");
  Add(feed, 1);
  EXPECT_EQ(Take(feed, next), "{\"event\":8,\"t\":0}\n");
}

}  // namespace
}  // namespace desk
