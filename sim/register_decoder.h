// Bus cycles to register accesses, a cycle at a time.
#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "sim/trace.h"

namespace sim {

// Host and worker are decoded apart: either may be in the middle of an access of its own.
class RegisterDecoder {
 public:
  // The access that an event makes, none for one that does not reach a register. A table write
  // gives an access for each data byte.
  std::optional<RegisterAccess> Take(const Event& event) {
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
