// Events on their way from the board to those who watch: numbered, the last few megabytes of them.
// Whoever is slower than that misses some, and is told how many.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <limits>
#include <mutex>
#include <string>
#include <string_view>

namespace desk {

class EventFeed {
 public:
  static constexpr std::uint64_t kAll = std::numeric_limits<std::uint64_t>::max();

  explicit EventFeed(std::size_t most_bytes = std::size_t{8} << 20) : most_bytes_(most_bytes) {}

  // ---- The board's side: one thread at a time ------------------------------------------------

  // Counts an event. True when somebody watches, who is to get it by Add.
  bool Count() {
    ++end_;
    return watchers_ != 0;
  }
  // The event that was counted last.
  void Add(std::string_view rest);

  // ---- The watchers' side: any thread --------------------------------------------------------

  // Events are kept from now on; gives the number of the first.
  std::uint64_t Watch();
  void Unwatch();
  std::uint64_t End() const { return end_; }
  // Adds the lines of events from `next` to before `until` to `text`, as long as that is shorter
  // than `most`, and moves `next` on.
  void Take(std::uint64_t& next, std::uint64_t until, std::string& text, std::size_t most) const;

 private:
  const std::size_t most_bytes_;
  std::atomic<std::uint64_t> end_{0};  // the number of the next event
  std::atomic<unsigned> watchers_{0};

  mutable std::mutex mutex_;  // for what follows
  std::deque<std::string> lines_;
  std::uint64_t first_ = 0;  // number of the first of them
  std::size_t bytes_ = 0;
};

}  // namespace desk
