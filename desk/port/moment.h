// The board as it is at one moment, for those who watch it.
#pragma once

#include <cstdint>
#include <string>

#include "sim/board/board.h"

namespace desk {

struct Moment {
  sim::Board board;           // a copy, made by a thread that is inside
  std::uint64_t time_ms = 0;  // the board's
  std::uint64_t cycles = 0;   // of the bus so far
  std::int64_t lag_ms = 0;    // by which the board's time is behind the clock
  std::string stopped{};      // why it stands still, empty while it does not
};

}  // namespace desk
