// What lines show, for programs without a terminal.
#pragma once

#include "script/surroundings.h"

namespace kit {

class PlainSurroundings : public script::Surroundings {
 public:
  void ShowRegisters(std::ostream& out, script::ChipChoice chips,
                     std::optional<std::uint8_t> page) override;
  void ShowWrites(std::ostream& out, std::size_t first_event) override;
  void ShowScreen(std::ostream& out) override;
  void SavePicture(const std::string& path) override;
};

}  // namespace kit
