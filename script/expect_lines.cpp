// Script lines that check what the last action did.
#include <algorithm>
#include <array>

#include "harness/host.h"
#include "script/action_log.h"
#include "script/expect_registers.h"
#include "script/line.h"
#include "sim/text.h"

namespace script {
namespace {

Step ParseReturn(Arguments& arguments) {
  const std::int32_t wanted = arguments.SignedNumber("a number");
  return [=](Session& session) {
    if (!session.returned) throw Unmet{"'" + session.ActionName() + "' returns nothing"};
    if (*session.returned != wanted) throw Unmet{"returned " + std::to_string(*session.returned)};
  };
}

Step ParseDebugText(Arguments& arguments) {
  const std::string wanted = arguments.Text("a text");
  return [=](Session& session) {
    const std::string text = session.DebugText();
    if (text.find(wanted) != std::string::npos) return;
    const std::vector<std::string> lines = sim::TextLines(text);
    if (lines.empty()) throw Unmet{"no debug output"};
    std::string found = "the debug output was";
    for (const std::string& line : lines) found += "\n      | " + line;
    throw Unmet{found};
  };
}

Step ParseMessage(Arguments& arguments) {
  const std::uint32_t message = arguments.Number("a message number");
  std::optional<std::uint32_t> wparam;
  if (!arguments.AtEnd()) wparam = arguments.Number("a wParam");
  return [=](Session& session) {
    if (session.HasMessage(message, wparam)) return;
    const std::vector<std::string> messages = MessagesInWords(session);
    if (messages.empty()) throw Unmet{"no message"};
    std::string found = "the messages were";
    for (const std::string& line : messages) found += "\n      > " + line;
    throw Unmet{found};
  };
}

Step ParseNoDebugText(Arguments& arguments) {
  const std::string unwanted = arguments.Text("a text");
  return [=](Session& session) {
    if (session.DebugText().find(unwanted) != std::string::npos) throw Unmet{"it was printed"};
  };
}

Step ParseNoMessage(Arguments& arguments) {
  const std::uint32_t message = arguments.Number("a message number");
  return [=](Session& session) {
    if (session.HasMessage(message, std::nullopt)) throw Unmet{"there was one"};
  };
}

Step ParseRecord(Arguments& arguments) {
  const std::size_t offset =
      arguments.Number("an offset below 64", 0, harness::kCommandRecordBytes - 1);
  sim::Bytes wanted = {arguments.RecordByte()};
  while (!arguments.AtEnd()) wanted.push_back(arguments.RecordByte());
  return [=](Session& session) {
    const sim::Bytes* record = session.Record();
    if (record == nullptr) throw Unmet{"'" + session.ActionName() + "' has no record"};
    const auto from = static_cast<std::ptrdiff_t>(std::min(offset, record->size()));
    const auto to = static_cast<std::ptrdiff_t>(std::min(offset + wanted.size(), record->size()));
    const sim::Bytes found(record->begin() + from, record->begin() + to);
    if (found != wanted) throw Unmet{"the record has " + sim::HexBytes(found, " ")};
  };
}

Step ParseCycles(Arguments& arguments) {
  const std::uint32_t wanted = arguments.Number("a number of bus cycles");
  return [=](Session& session) {
    if (session.Cycles() != wanted) {
      throw Unmet{std::to_string(session.Cycles()) + " bus cycles"};
    }
  };
}

constexpr LineGroup kCheck = LineGroup::Check;

constexpr std::array kExpectLines = {
    LineKind{kCheck, "expect return", "N", "its result", ParseReturn},
    LineKind{kCheck, "expect register", "CHIP PAGE REG VALUE",
             "a register now; all stands for every fitted chip", ParseRegister},
    LineKind{kCheck, "expect registers", "CHIP PAGE REG BYTE... | CHIP \"NAME\" BYTE...",
             "registers from REG on, or those of a name (\"window\", \"window 2\"); -- leaves one "
             "out; CHIP may be several (master,slave1)",
             ParseRegisters},
    LineKind{kCheck, "expect field", "CHIP \"NAME\" FIELD VALUE",
             "a field of the registers of a name", ParseField},
    LineKind{kCheck, "expect debug", "\"TEXT\"", "occurs in its debug output, all writes joined",
             ParseDebugText},
    LineKind{kCheck, "expect message", "CODE [WPARAM]",
             "it sent or posted such a message, or the window handled one", ParseMessage},
    LineKind{kCheck, "expect no debug", "\"TEXT\"", "does not occur in its debug output",
             ParseNoDebugText},
    LineKind{kCheck, "expect no message", "CODE", "it sent, posted and handled no such message",
             ParseNoMessage},
    LineKind{kCheck, "expect record", "OFFSET BYTE...", "the caller's record after its call",
             ParseRecord},
    LineKind{kCheck, "expect cycles", "N", "its number of bus cycles", ParseCycles},
};

}  // namespace

std::span<const LineKind> ExpectLines() { return kExpectLines; }

}  // namespace script
