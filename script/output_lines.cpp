// Script lines that show the board: register pages and the screen.
#include <array>
#include <optional>
#include <stdexcept>

#include "files/output.h"
#include "script/access_log.h"
#include "script/board_state.h"
#include "script/line.h"

namespace script {
namespace {

constexpr std::string_view kIndent = "      ";

Step ParseRegisters(Arguments& arguments) {
  ChipChoice chips{true, 0};
  std::optional<std::uint8_t> page;
  if (!arguments.AtEnd()) chips = arguments.Chips();
  if (!arguments.AtEnd()) page = arguments.Page();
  return [=](Session& session) { session.Around().ShowRegisters(session.Out(), chips, page); };
}

Step ParsePicture(Arguments& arguments) {
  constexpr std::string_view kWhat = "a file name that ends in .png";
  if (!files::HasEnding(std::string(arguments.Peek()), ".png")) arguments.Expected(kWhat);
  const std::string path = arguments.Text(kWhat);
  return [=](Session& session) { session.Around().SavePicture(path); };
}

Step ParsePrint(Arguments&) {
  return [](Session& session) { session.Around().ShowScreen(session.Out()); };
}

Step ParseBoard(Arguments&) {
  return [](Session& session) {
    for (const std::string& line : BoardInLines(session.World())) {
      session.Out() << kIndent << line << '\n';
    }
  };
}

Step ParseAccesses(Arguments& arguments) {
  const std::uint32_t first = arguments.Number("the number of a bus cycle", 1);
  const std::uint32_t last = arguments.Number("the number of a later bus cycle", first);
  return [=](Session& session) {
    if (session.accesses == nullptr) throw std::runtime_error("this program keeps no accesses");
    const AccessLog& log = *session.accesses;
    if (first < log.Known()) {
      session.Out() << kIndent << "those before bus cycle " << log.Known() << " are forgotten\n";
    }
    session.Around().ShowAccesses(session.Out(), log.Between(first, last));
  };
}

constexpr LineGroup kOutput = LineGroup::Output;
// To look at these is no part of the session.
constexpr LineGroup kTool = LineGroup::Tool;

constexpr std::array kOutputLines = {
    LineKind{kOutput, "registers", "[CHIP [PAGE]]",
             "prints register pages, names, and what changed since attach", ParseRegisters},
    LineKind{kOutput, "picture", "FILE.png", "writes the screen as PNG", ParsePicture},
    LineKind{kOutput, "print", "", "draws the screen in the terminal", ParsePrint},
    LineKind{kTool, "board", "",
             "says how the board differs from a fresh one, as lines that make it so", ParseBoard},
    LineKind{kTool, "accesses", "FIRST LAST",
             "shows the register accesses of these bus cycles by name, as far as they are kept: "
             "the last "
             "200000",
             ParseAccesses},
};

}  // namespace

std::span<const LineKind> OutputLines() { return kOutputLines; }

}  // namespace script
