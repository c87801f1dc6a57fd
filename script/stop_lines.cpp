// Script lines that stop a run where something happens, and let it go on.
#include <algorithm>
#include <array>

#include "script/interpreter.h"
#include "script/line.h"
#include "script/message_words.h"
#include "script/register_names.h"
#include "sim/text.h"

namespace script {
namespace {

bool IsChip(std::string_view word) {
  const auto chips = ChipWords();
  return std::find(chips.begin(), chips.end(), word) != chips.end();
}

RegisterSet ParseRegisterSet(Arguments& arguments) {
  RegisterSet set;
  for (const RegisterAddress at : ParseRegisterList(arguments)) set.at(at.page).set(at.number);
  return set;
}

// "page 1 0x30-0x33"
std::string InWords(const RegisterSet& set) {
  for (std::uint8_t page = 0; page < kPageCount; ++page) {
    if (set.at(page).none()) continue;
    std::uint8_t first = 0;
    while (!set.at(page)[first]) ++first;
    const auto last = static_cast<std::uint8_t>(first + set.at(page).count() - 1);
    return "page " + std::to_string(page) + ' ' + sim::Hex(first) +
           (last == first ? "" : '-' + sim::Hex(last));
  }
  return {};
}

Step AddPoint(const StopPoint& point) {
  return [=](Session& session) { session.Runner().Stops().Add(point); };
}

Step ParseAccess(Arguments& arguments, StopPoint::Kind kind) {
  StopPoint point{};
  point.kind = kind;
  point.words = kind == StopPoint::Kind::Read ? "read" : "write";
  if (IsChip(arguments.Peek())) {
    point.words += ' ' + std::string(arguments.Peek());
    point.chips = arguments.Chips();
  }
  const std::string name(arguments.Peek());
  const bool numbered = name == "page";
  point.registers = ParseRegisterSet(arguments);
  point.words += numbered ? " " + InWords(point.registers) : " \"" + name + '"';
  return AddPoint(point);
}

Step ParseWrite(Arguments& arguments) { return ParseAccess(arguments, StopPoint::Kind::Write); }
Step ParseRead(Arguments& arguments) { return ParseAccess(arguments, StopPoint::Kind::Read); }

Step ParseText(Arguments& arguments) {
  StopPoint point{};
  point.kind = StopPoint::Kind::Text;
  point.text = arguments.Text("a text");
  point.words = "text \"" + point.text + '"';
  return AddPoint(point);
}

Step ParseMessage(Arguments& arguments) {
  StopPoint point{};
  point.kind = StopPoint::Kind::Message;
  const std::string name(arguments.Peek());
  const auto named = FindMessage(name);
  if (!named && !arguments.AtNumber()) {
    arguments.Expected("a message's number or name (help messages)", MessageNames());
  }
  point.number = named ? *named : arguments.Number("a message's number");
  if (named) arguments.Text("a message");
  point.words = "message " + sim::Hex(point.number, 4) + (named ? ' ' + name : "");
  return AddPoint(point);
}

Step ParseCycle(Arguments& arguments) {
  StopPoint point{};
  point.kind = StopPoint::Kind::Cycle;
  point.cycle = arguments.Number("the number of a bus cycle", 1);
  point.words = "cycle " + std::to_string(point.cycle);
  return AddPoint(point);
}

Step ParseList(Arguments&) {
  return [](Session& session) {
    const std::vector<std::string> lines = session.Runner().Stops().InWords();
    for (const std::string& line : lines) session.Out() << "      " << line << '\n';
    if (lines.empty()) session.Out() << "      no stops\n";
  };
}

Step ParseOff(Arguments& arguments) {
  if (arguments.AtEnd()) {
    return [](Session& session) { session.Runner().Stops().Clear(); };
  }
  const std::uint32_t number = arguments.Number("the number of a stop", 1);
  return [=](Session& session) {
    if (session.Runner().Stops().Remove(number)) return;
    throw std::runtime_error("there is no stop " + std::to_string(number));
  };
}

Step ParseContinue(Arguments&) {
  return [](Session& session) { session.Runner().Continue(); };
}
Step ParseStep(Arguments&) {
  return [](Session& session) { session.Runner().StepCycle(); };
}
Step ParseStepCall(Arguments&) {
  return [](Session& session) { session.Runner().StepCall(); };
}
Step ParseWhere(Arguments&) {
  return [](Session& session) { session.Runner().ShowWhere(); };
}

constexpr LineGroup kSwitch = LineGroup::Switch;
constexpr LineGroup kTool = LineGroup::Tool;

constexpr std::array kStopLines = {
    LineKind{kSwitch, "break write", "[CHIP] \"NAME\" | [CHIP] page P REG[-REG]",
             "stops at writes of these registers", ParseWrite},
    LineKind{kSwitch, "break read", "[CHIP] \"NAME\" | [CHIP] page P REG[-REG]",
             "stops at reads of these registers", ParseRead},
    LineKind{kSwitch, "break text", "\"TEXT\"", "stops at a debug output with this in it",
             ParseText},
    LineKind{kSwitch, "break message", "CODE|NAME", "stops at a message to the host", ParseMessage},
    LineKind{kSwitch, "break cycle", "N", "stops at the bus cycle of this number since the start",
             ParseCycle},
    LineKind{kTool, "break", "", "lists the stops", ParseList},
    LineKind{kSwitch, "break off", "[N]", "removes a stop, or all", ParseOff},
    LineKind{kTool, "where", "", "says again where the run is stopped", ParseWhere},
    LineKind{kSwitch, "continue", "", "goes on to the next stop", ParseContinue},
    LineKind{kSwitch, "step", "", "goes on for one bus cycle", ParseStep},
    LineKind{kSwitch, "step call", "", "goes on to the end of the call", ParseStepCall},
};

}  // namespace

std::span<const LineKind> StopLines() { return kStopLines; }

}  // namespace script
