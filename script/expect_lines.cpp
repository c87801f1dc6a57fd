// Script lines that check what the last action did.
#include <algorithm>
#include <array>

#include "harness/host.h"
#include "script/command_words.h"
#include "script/expect_registers.h"
#include "script/line.h"
#include "script/message_words.h"
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
    const std::string& text = session.DebugText();
    if (text.find(wanted) != std::string::npos) return;
    const std::vector<std::string> lines = sim::TextLines(text);
    if (lines.empty()) throw Unmet{"no debug output"};
    std::string found = "the debug output was";
    for (const std::string& line : lines) found += "\n      | " + line;
    throw Unmet{found};
  };
}

std::uint32_t ParseMessageNumber(Arguments& arguments) {
  const std::string_view word = arguments.Peek();
  if (const auto message = FindMessage(word)) {
    arguments.Take(word);
    return *message;
  }
  if (!arguments.AtNumber()) {
    arguments.Expected("a message number, or " + sim::OneOf(MessageNames()), MessageNames());
  }
  return arguments.Number("a message number");
}

Step ParseMessage(Arguments& arguments) {
  WantedMessage wanted{.message = ParseMessageNumber(arguments)};
  if (!arguments.AtEnd() && arguments.Peek() != "lparam") {
    wanted.wparam = arguments.Number("a wParam");
  }
  if (arguments.Take("lparam")) wanted.lparam = arguments.Number("an lParam");
  return [=](Session& session) {
    if (session.HasMessage(wanted)) return;
    const std::vector<std::string> messages = session.MessagesInWords();
    if (messages.empty()) throw Unmet{"no message"};
    std::string found;
    if (wanted.lparam && session.HasMessage({wanted.message, wanted.wparam})) {
      found = "its lParam is another; ";
    } else if (wanted.wparam && session.HasMessage({wanted.message})) {
      found = "its wParam is another, or an address; ";
    }
    found += "the messages were";
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
  const std::uint32_t message = ParseMessageNumber(arguments);
  return [=](Session& session) {
    if (session.HasMessage({message})) throw Unmet{"there was one"};
  };
}

const sim::Bytes& RecordOfAction(const Session& session) {
  const sim::Bytes* record = session.Record();
  if (record == nullptr) throw Unmet{"'" + session.ActionName() + "' has no record"};
  return *record;
}

// Any command's fields, each command with those that its record has: which one was called shows
// when the expectation is looked at.
struct WantedFields {
  const CommandKind* command;
  std::vector<FieldBytes> fields;
};

std::vector<WantedFields> ParseWantedFields(Arguments& arguments) {
  std::vector<WantedFields> wanted;
  std::vector<std::string_view> names;
  std::string mistake;
  for (const CommandKind& command : Commands()) {
    for (const RecordField& field : command.fields) {
      const bool known = std::find(names.begin(), names.end(), field.name) != names.end();
      if (!known) names.push_back(field.name);
    }
    if (command.Find(arguments.Peek()) == nullptr) continue;
    Arguments attempt = arguments;
    try {
      wanted.push_back({&command, ParseRecordFields(command, attempt)});
    } catch (const Malformed& error) {
      if (mistake.empty()) mistake = error.what();
    }
  }
  if (wanted.empty() && !mistake.empty()) throw Malformed(mistake);
  if (wanted.empty()) arguments.Expected("an offset below 64 or a field of a record", names);
  arguments = Arguments({});
  return wanted;
}

Step ParseRecordFields(Arguments& arguments) {
  const std::vector<WantedFields> wanted = ParseWantedFields(arguments);
  return [=](Session& session) {
    const sim::Bytes& record = RecordOfAction(session);
    const auto code = session.CommandCode();
    const CommandKind* const command = code ? FindCommand(*code) : nullptr;
    const auto own = std::find_if(wanted.begin(), wanted.end(),
                                  [&](const WantedFields& one) { return one.command == command; });
    if (own == wanted.end()) throw Unmet{"'" + session.ActionName() + "' has no such field"};
    std::string found;
    for (const auto& [field, bytes] : own->fields) {
      const auto from = record.begin() + static_cast<std::ptrdiff_t>(field->offset);
      if (std::equal(bytes.begin(), bytes.end(), from)) continue;
      found += (found.empty() ? "" : ", ") + FieldInWords(*field, record);
    }
    if (!found.empty()) throw Unmet{"the record has " + found};
  };
}

Step ParseRecord(Arguments& arguments) {
  if (!arguments.AtNumber()) return ParseRecordFields(arguments);
  const std::size_t offset =
      arguments.Number("an offset below 64", 0, harness::kCommandRecordBytes - 1);
  sim::Bytes wanted = {arguments.RecordByte()};
  while (!arguments.AtEnd()) wanted.push_back(arguments.RecordByte());
  return [=](Session& session) {
    const sim::Bytes& record = RecordOfAction(session);
    const auto from = static_cast<std::ptrdiff_t>(std::min(offset, record.size()));
    const auto to = static_cast<std::ptrdiff_t>(std::min(offset + wanted.size(), record.size()));
    const sim::Bytes found(record.begin() + from, record.begin() + to);
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

Step ParseFired(Arguments& arguments) {
  const auto fault = static_cast<sim::Fault>(arguments.Choice(FaultWords()));
  const std::uint32_t wanted = arguments.Number("a number of failures");
  return [=](Session& session) {
    const unsigned hits = session.World().faults.Hits(fault);
    if (hits != wanted) throw Unmet{"it has failed " + std::to_string(hits) + " times"};
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
    LineKind{kCheck, "expect message", "MESSAGE [WPARAM] [lparam N]",
             "it sent or posted such a message, or the window handled one", ParseMessage},
    LineKind{kCheck, "expect no debug", "\"TEXT\"", "does not occur in its debug output",
             ParseNoDebugText},
    LineKind{kCheck, "expect no message", "MESSAGE", "it sent, posted and handled no such message",
             ParseNoMessage},
    LineKind{kCheck, "expect record", "OFFSET BYTE... | FIELD VALUE...",
             "the caller's record after its call, by offset or by field", ParseRecord},
    LineKind{kCheck, "expect cycles", "N", "its number of bus cycles", ParseCycles},
    LineKind{kCheck, "expect fault", "FAULT N", "how often it has failed since the board was made",
             ParseFired},
};

}  // namespace

std::span<const LineKind> ExpectLines() { return kExpectLines; }

}  // namespace script
