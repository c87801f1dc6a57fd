#include "tools/vexosim/listing/terminal_surroundings.h"

#include "script/listing/register_listing.h"
#include "script/listing/register_writes.h"
#include "sim/picture/png.h"
#include "sim/world.h"
#include "tools/vexosim/listing/picture_text.h"

namespace vexosim {

void TerminalSurroundings::ShowRegisters(std::ostream& out, script::ChipChoice chips,
                                         std::optional<std::uint8_t> page) {
  const sim::World& world = sim::TheWorld();
  for (unsigned position = 0; position < kChipsMax; ++position) {
    if (!chips.all && chips.position != position) continue;
    out << script::ListRegisters(world.board, position, page, world.at_attach, style_.colour);
  }
}

void TerminalSurroundings::ShowWrites(std::ostream& out, std::size_t first_event) {
  script::PrintWrites(out, sim::TheWorld().trace, first_event);
}

void TerminalSurroundings::ShowAccesses(std::ostream& out,
                                        std::span<const sim::RegisterAccess> accesses) {
  script::PrintAccesses(out, accesses);
}

void TerminalSurroundings::ShowScreen(std::ostream& out) {
  out << DrawPicture(sim::ComposeScreen(sim::TheWorld().board), style_);
}

void TerminalSurroundings::SavePicture(const std::string& path) {
  sim::WritePng(sim::ComposeScreen(sim::TheWorld().board), path);
}

}  // namespace vexosim
