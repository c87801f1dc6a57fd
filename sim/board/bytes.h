// Bytes of a record, as they lie in memory.
#pragma once

#include <cstdint>
#include <vector>

namespace sim {

using Bytes = std::vector<std::uint8_t>;

}  // namespace sim
