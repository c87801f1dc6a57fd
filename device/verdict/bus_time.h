// How long a bus cycle takes on the device, from the times of its calls.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "device/verdict/outcome.h"

namespace verdict {

struct BusTime {
  std::uint32_t cycle_ns = 0;  // with what the library does between two cycles
  unsigned calls = 0;          // that it was measured by
  std::uint64_t cycles = 0;
};

// None when no call took long enough for the device's clock.
std::optional<BusTime> MeasureBus(const std::vector<Outcome>& outcomes, const plan::Log& log);

}  // namespace verdict
