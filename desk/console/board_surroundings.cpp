#include "desk/console/board_surroundings.h"

#include <algorithm>
#include <stdexcept>

#include "script/listing/register_listing.h"
#include "script/listing/register_writes.h"
#include "sim/picture/png.h"
#include "sim/picture/terminal.h"
#include "sim/world.h"

namespace desk {
namespace {

constexpr std::uint32_t kSlice = 100;  // ms, after which a line notices that it is to end
constexpr int kColumns = 80;           // of a picture in characters

}  // namespace

void BoardSurroundings::LetTimePass(std::uint32_t ms) {
  struct Count {
    explicit Count(unsigned& of) : count(of) { ++count; }
    ~Count() { --count; }
    Count(const Count&) = delete;
    Count& operator=(const Count&) = delete;
    unsigned& count;
  };
  const Count passing(passing_);
  const sim::Kernel& kernel = sim::TheWorld().kernel;
  const std::uint64_t end = kernel.NowUnwrapped() + ms;
  do {
    const std::uint64_t left = end - std::min(end, kernel.NowUnwrapped());
    access_.LetTimePass(static_cast<std::uint32_t>(std::min<std::uint64_t>(left, kSlice)));
    RefuseWhenEnding();
  } while (kernel.NowUnwrapped() < end);
}

void BoardSurroundings::RefuseWhenEnding() const {
  if (ending_) throw std::runtime_error("the board is about to close");
}

void BoardSurroundings::ShowRegisters(std::ostream& out, script::ChipChoice chips,
                                      std::optional<std::uint8_t> page) {
  const sim::World& world = sim::TheWorld();
  for (unsigned position = 0; position < kChipsMax; ++position) {
    if (!chips.all && chips.position != position) continue;
    out << script::ListRegisters(world.board, position, page, world.at_attach, false);
  }
}

void BoardSurroundings::ShowWrites(std::ostream& out, std::size_t first_event) {
  script::PrintWrites(out, sim::TheWorld().trace, first_event);
}

void BoardSurroundings::ShowAccesses(std::ostream& out,
                                     std::span<const sim::RegisterAccess> accesses) {
  script::PrintAccesses(out, accesses);
}

void BoardSurroundings::ShowScreen(std::ostream& out) {
  out << sim::RenderInCharacters(sim::ComposeScreen(sim::TheWorld().board), kColumns);
}

void BoardSurroundings::SavePicture(const std::string& path) {
  pictures_.push_back({path, sim::ComposeScreen(sim::TheWorld().board)});
}

}  // namespace desk
