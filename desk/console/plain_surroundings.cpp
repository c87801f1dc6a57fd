#include "desk/console/plain_surroundings.h"

#include "script/listing/register_listing.h"
#include "script/listing/register_writes.h"
#include "sim/picture/terminal.h"
#include "sim/screen/screen.h"
#include "sim/world.h"

namespace desk {
namespace {

constexpr int kColumns = 80;  // of a picture in characters

}  // namespace

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

void PlainSurroundings::ShowAccesses(std::ostream& out,
                                     std::span<const sim::RegisterAccess> accesses) {
  script::PrintAccesses(out, accesses);
}

void PlainSurroundings::ShowScreen(std::ostream& out) {
  out << sim::RenderInCharacters(sim::ComposeScreen(sim::TheWorld().board), kColumns);
}

}  // namespace desk
