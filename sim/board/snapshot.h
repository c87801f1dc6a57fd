// The registers of the whole board at a moment.
#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "sim/board/board.h"

namespace sim {

// All registers of the board at one moment; an empty position has none.
struct RegisterSnapshot {
  using Pages = std::array<std::array<std::uint8_t, kRegistersPerPage>, kPageCount>;
  std::array<std::optional<Pages>, kChipsMax> chips;
};
// Looks at the board without a bus cycle.
RegisterSnapshot TakeSnapshot(const Board& board);

}  // namespace sim
