// The board shown to whoever is not at a terminal.
#pragma once

#include <cstdint>
#include <optional>
#include <ostream>
#include <span>

#include "script/surroundings.h"

namespace desk {

class PlainSurroundings : public script::Surroundings {
 public:
  void ShowRegisters(std::ostream& out, script::ChipChoice chips,
                     std::optional<std::uint8_t> page) override;
  void ShowWrites(std::ostream& out, std::size_t first_event) override;
  void ShowAccesses(std::ostream& out, std::span<const sim::RegisterAccess> accesses) override;
  void ShowScreen(std::ostream& out) override;
};

}  // namespace desk
