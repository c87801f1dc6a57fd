// Register pages as text.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "sim/board.h"

namespace vexosim {

// One page of the chip at a position, or all three: sixteen bytes a line. An empty position is
// one line that says so.
std::string ListRegisters(const sim::Board& board, unsigned position,
                          std::optional<std::uint8_t> page);

}  // namespace vexosim
