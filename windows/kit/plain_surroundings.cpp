#include "plain_surroundings.h"

#include "script/listing/register_listing.h"
#include "script/listing/register_writes.h"
#include "sim/picture/png.h"
#include "sim/picture/terminal.h"
#include "sim/world.h"

namespace kit {

void PlainSurroundings::ShowRegisters(std::ostream& out, script::ChipChoice chips,
                                      std::optional<std::uint8_t> page) {
  const sim::World& world = sim::TheWorld();
  for (unsigned position = 0; position < kChipsMax; ++position) {
    if (!chips.all && chips.position != position) continue;
    out << script::ListRegisters(world.board, position, page, world.at_attach, false);
  }
}

void PlainSurroundings::ShowWrites(std::ostream& out, std::size_t first_event) {
  script::PrintWrites(out, sim::TheWorld().trace, first_event);
}

void PlainSurroundings::ShowScreen(std::ostream& out) {
  constexpr int kColumns = 80;
  out << sim::RenderForTerminal(sim::ComposeScreen(sim::TheWorld().board), kColumns);
}

void PlainSurroundings::SavePicture(const std::string& path) {
  sim::WritePng(sim::ComposeScreen(sim::TheWorld().board), path);
}

}  // namespace kit
