// Script lines that show the board: register pages and the screen.
#include <array>
#include <optional>

#include "files/output.h"
#include "script/line.h"

namespace script {
namespace {

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

constexpr LineGroup kOutput = LineGroup::Output;

constexpr std::array kOutputLines = {
    LineKind{kOutput, "registers", "[CHIP [PAGE]]",
             "prints register pages, names, and what changed since attach", ParseRegisters},
    LineKind{kOutput, "picture", "FILE.png", "writes the screen as PNG", ParsePicture},
    LineKind{kOutput, "print", "", "draws the screen in the terminal", ParsePrint},
};

}  // namespace

std::span<const LineKind> OutputLines() { return kOutputLines; }

}  // namespace script
