#include "script/expect_registers.h"

#include <optional>

#include "script/register_names.h"
#include "script/register_words.h"
#include "sim/text.h"

namespace script {
namespace {

// "0x31 (window 0)"
std::string InWords(RegisterAddress at) {
  std::string text = sim::Hex(at.number);
  if (FindRegister(at.page, at.number) == nullptr) return text;
  return text + " (" + RegisterLabel(at.page, at.number) + ')';
}

// From REG to the end of PAGE.
std::vector<RegisterAddress> ParsePlace(Arguments& arguments) {
  if (!arguments.AtNumber()) {
    arguments.Expected("a page 0 to 2 or a name of registers", RegisterNames());
  }
  const std::uint8_t page = arguments.Page("a page 0 to 2 or a name of registers");
  std::vector<RegisterAddress> registers;
  for (unsigned reg = arguments.Byte("a register"); reg < kRegistersPerPage; ++reg) {
    registers.push_back({page, static_cast<std::uint8_t>(reg)});
  }
  return registers;
}

// What a register should read.
struct Wanted {
  RegisterAddress at;
  std::uint8_t value;
};

// A byte for each register of a name, or for as many of a page as there are bytes; `--` for one
// that is not looked at.
std::vector<Wanted> ParseWanted(Arguments& arguments) {
  std::vector<RegisterAddress> registers = RegistersOf(arguments.Peek());
  const bool named = !registers.empty();
  if (named) {
    arguments.Text("a name");
  } else {
    registers = ParsePlace(arguments);
  }
  const std::string bytes =
      std::to_string(registers.size()) +
      (named ? " bytes for this name" : " bytes at most, to the end of the page");
  std::vector<Wanted> wanted;
  for (const RegisterAddress at : registers) {
    if (arguments.AtEnd()) {
      if (named) arguments.Expected(bytes);
      break;
    }
    if (!arguments.Take("--")) wanted.push_back({at, arguments.RecordByte()});
  }
  if (!arguments.AtEnd()) arguments.Expected(bytes);
  if (wanted.empty()) arguments.Expected("a byte other than --");
  return wanted;
}

// What the chip has instead: "has 0x5A at 0x31 (window 0), ..."; empty when all is as wanted.
std::string Differences(const sim::Board& board, unsigned position,
                        const std::vector<Wanted>& wanted) {
  std::string found;
  for (const auto& [at, value] : wanted) {
    const std::uint8_t has = board.Peek(position, at);
    if (has == value) continue;
    found += (found.empty() ? "has " : ", ") + sim::Hex(has) + " at " + InWords(at);
  }
  return found;
}

// A step that wants no difference on any of the chips; `difference` tells it of one.
template <typename Function>
Step OnEachChip(const std::vector<ChipChoice>& chips, const Function& difference) {
  return [=](Session& session) {
    const sim::Board& board = session.World().board;
    bool any = false;
    std::string found;
    for (const ChipChoice& choice : chips) {
      for (const unsigned position : choice.Fitted(board)) {
        any = true;
        const std::string here = difference(board, position);
        if (here.empty()) continue;
        if (!found.empty()) found += ", ";
        found += std::string(ChipWords()[position]) + (board.Fitted(position) ? " " : " (empty) ") +
                 here;
      }
    }
    if (!any) throw Unmet{"no chip is fitted"};
    if (!found.empty()) throw Unmet{found};
  };
}

}  // namespace

Step ParseRegister(Arguments& arguments) {
  const ChipChoice chips = arguments.Chips();
  const std::uint8_t page = arguments.Page();
  const std::uint8_t reg = arguments.Byte("a register");
  const std::uint8_t wanted = arguments.Byte("a value");
  return OnEachChip({chips}, [=](const sim::Board& board, unsigned position) {
    const std::uint8_t has = board.Peek(position, page, reg);
    return has == wanted ? std::string() : "has " + sim::Hex(has);
  });
}

Step ParseRegisters(Arguments& arguments) {
  const std::vector<ChipChoice> chips = arguments.ChipList();
  const std::vector<Wanted> wanted = ParseWanted(arguments);
  return OnEachChip(chips, [=](const sim::Board& board, unsigned position) {
    return Differences(board, position, wanted);
  });
}

Step ParseField(Arguments& arguments) {
  const ChipChoice chips = arguments.Chips();
  const std::string name = ParseRegisterName(arguments);
  const FieldSetting wanted = ParseFieldSetting(arguments, name);
  return OnEachChip({chips}, [=](const sim::Board& board, unsigned position) {
    std::string found;
    for (const RegisterAddress at : RegistersOf(name)) {
      const std::uint8_t byte = board.Peek(position, at);
      const std::uint8_t has = FieldValue(wanted.field, byte);
      if (has == wanted.value) continue;
      found += (found.empty() ? "has " : ", ") + std::string(wanted.field.name) + ' ' +
               std::to_string(has) + " at " + InWords(at) + " = " + sim::Hex(byte);
    }
    return found;
  });
}

}  // namespace script
