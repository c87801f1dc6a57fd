// Register accesses from bus cycles, one after the other.
#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "sim/trace.h"

namespace sim {

// The cycles of host and worker are decoded apart: each thread knows what it selected.
class RegisterDecoder {
 public:
  // The access that this event completes; a table write gives one a data byte.
  std::optional<RegisterAccess> Decode(const Event& event) {
    if (event.kind == Event::Kind::Other) return std::nullopt;
    Bus& bus = buses_[static_cast<std::size_t>(event.by)];
    const bool load = event.kind == Event::Kind::Load;
    if (event.window == BusWindow::Data) {
      return RegisterAccess{load, bus.select, bus.address++, event.value, event.by, event.t};
    }
    if (!load) (event.window == BusWindow::Select ? bus.select : bus.address) = event.value;
    return std::nullopt;
  }

 private:
  struct Bus {
    std::uint8_t select = kSelectIdle;
    std::uint8_t address = 0;
  };
  std::array<Bus, 2> buses_;
};

}  // namespace sim
