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
  void Anchor(std::uint64_t board_ms) { start_ = clock_.Now() - Clock::Time(board_ms); }
  // Where the clock is, for a board that is at `board_ms`. What the board is behind by more than
  // kMostBehind, such as by the sleep of the machine, is given up.
  std::uint64_t Now(std::uint64_t board_ms) {
    constexpr Clock::Time kMostBehind{1000};
    const Clock::Time board(board_ms);
    start_ = std::max(start_, clock_.Now() - board - kMostBehind);
    return static_cast<std::uint64_t>(std::max(clock_.Now() - start_, Clock::Time(0)).count());
  }
  // By how much the board is behind the clock.
  std::int64_t Lag(std::uint64_t board_ms) const {
    return (clock_.Now() - start_ - Clock::Time(board_ms)).count();
  }
  // When the clock will be there.
  Clock::Time When(std::uint64_t board_ms) const { return start_ + Clock::Time(board_ms); }

 private:
  const Clock& clock_;
  Clock::Time start_ = clock_.Now();  // when the board's time was 0
};

}  // namespace desk
