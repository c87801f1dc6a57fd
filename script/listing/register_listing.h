// Register pages as text: all bytes, their names, and what changed since the library was attached.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "sim/world.h"

namespace script {

// One page of the chip at a position, or all three: sixteen bytes a line, then the registers that
// have a name. With a snapshot every byte that differs from it is followed by a `*` (in bold with
// colour), and its register is listed with both values; else nothing is marked. An empty position
// is one line that says so.
std::string ListRegisters(const sim::Board& board, unsigned position,
                          std::optional<std::uint8_t> page,
                          const std::optional<sim::RegisterSnapshot>& at_attach, bool colour);

}  // namespace script
