// Where the clock is in the board's time.
#pragma once

#include <algorithm>
#include <cstdint>

#include "desk/bench/clock.h"

namespace desk {

class Pace {
 public:
  explicit Pace(const Clock& clock) : clock_(clock) {}

  // The board's time is this now, whatever was before.
  void Anchor(std::uint64_t board_ms) {
    look_ = clock_.Now();
    start_ = look_ - Clock::Time(board_ms);
  }
  // Where the clock is, for a board that does something next at `due_ms`. What it has gone on by
  // since the last look, such as in the sleep of the machine, and what the board is behind, beyond
  // kMost each, is given up.
  std::uint64_t Now(std::uint64_t due_ms) {
    constexpr Clock::Time kMost{1000};
    const Clock::Time now = clock_.Now();
    start_ += std::max(now - look_ - kMost, Clock::Time(0));
    start_ = std::max(start_, now - Clock::Time(due_ms) - kMost);
    look_ = now;
    return static_cast<std::uint64_t>(std::max(now - start_, Clock::Time(0)).count());
  }
  // By how much the board is behind the clock.
  std::int64_t Lag(std::uint64_t board_ms) const {
    return (clock_.Now() - start_ - Clock::Time(board_ms)).count();
  }
  // When the clock will be there.
  Clock::Time When(std::uint64_t board_ms) const { return start_ + Clock::Time(board_ms); }

 private:
  const Clock& clock_;
  Clock::Time look_ = clock_.Now();
  Clock::Time start_ = look_;  // when the board's time was 0
};

}  // namespace desk
