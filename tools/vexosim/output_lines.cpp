// Script lines that show the board: register pages and the screen.
#include <array>

#include "sim/screen.h"
#include "tools/vexosim/picture_text.h"
#include "tools/vexosim/register_listing.h"
#include "tools/vexosim/script_line.h"

namespace vexosim {
namespace {

Step ParseRegisters(Arguments& arguments) {
  ChipChoice chips{true, 0};
  std::optional<std::uint8_t> page;
  if (!arguments.AtEnd()) chips = arguments.Chips();
  if (!arguments.AtEnd()) page = arguments.Page();
  return [=](Session& session) {
    const sim::World& world = session.World();
    for (unsigned position = 0; position < kChipsMax; ++position) {
      if (!chips.all && chips.position != position) continue;
      session.Out() << ListRegisters(world.board, position, page, world.at_attach,
                                     session.Style().colour);
    }
  };
}

Step ParsePicture(Arguments& arguments) {
  const std::string path = arguments.Text("a file name");
  return [=](Session& session) { sim::WritePng(sim::ComposeScreen(session.World().board), path); };
}

Step ParsePrint(Arguments&) {
  return [](Session& session) {
    const sim::Image image = sim::ComposeScreen(session.World().board);
    session.Out() << DrawPicture(image, session.Style());
  };
}

constexpr LineGroup kOutput = LineGroup::Output;

constexpr std::array kOutputLines = {
    LineKind{kOutput, "registers", "[CHIP [PAGE]]",
             "prints register pages, names, and what changed since attach", ParseRegisters},
    LineKind{kOutput, "picture", "FILE.png", "writes the screen as PNG", ParsePicture},
    LineKind{kOutput, "print", "", "draws the screen in the terminal", ParsePrint},
};

}  // namespace

std::span<const LineKind> OutputLines() { return kOutputLines; }

}  // namespace vexosim
