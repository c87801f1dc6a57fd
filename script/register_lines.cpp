// Script lines on registers, by name and by field, without a bus cycle.
#include <algorithm>
#include <array>
#include <bit>
#include <stdexcept>

#include "script/grammar/did_you_mean.h"
#include "script/line.h"
#include "script/register_diff.h"
#include "script/register_names.h"
#include "script/register_words.h"
#include "sim/text.h"

namespace script {
namespace {

constexpr std::string_view kIndent = "      ";

// ---- Setting ------------------------------------------------------------------------------------

// A byte for each register, or one for all.
Step PokeBytes(Arguments& arguments, const ChipChoice& chips,
               const std::vector<RegisterAddress>& registers) {
  std::vector<std::uint8_t> values = {arguments.Byte("a value")};
  while (!arguments.AtEnd()) {
    if (values.size() == registers.size()) arguments.Expected("the end of the line");
    values.push_back(arguments.Byte("a value"));
  }
  if (values.size() == 1) values.resize(registers.size(), values.front());
  if (values.size() != registers.size()) {
    arguments.Expected("one value, or " + std::to_string(registers.size()));
  }
  return [=](Session& session) {
    sim::Board& board = session.World().board;
    for (const unsigned position : chips.Fitted(board)) {
      for (std::size_t i = 0; i < registers.size(); ++i) {
        board.Poke(position, registers[i].page, registers[i].number, values[i]);
      }
    }
  };
}

Step PokeField(Arguments& arguments, const ChipChoice& chips, const std::string& name) {
  const FieldSetting setting = ParseFieldSetting(arguments, name);
  return [=](Session& session) {
    sim::Board& board = session.World().board;
    for (const unsigned position : chips.Fitted(board)) {
      for (const RegisterAddress at : RegistersOf(name)) {
        const std::uint8_t old = board.Peek(position, at);
        board.Poke(position, at.page, at.number, WithFieldValue(setting.field, old, setting.value));
      }
    }
  };
}

Step ParsePoke(Arguments& arguments) {
  const ChipChoice chips = arguments.Chips();
  if (arguments.AtNumber()) {
    const std::uint8_t page = arguments.Page();
    const std::uint8_t reg = arguments.Byte("a register");
    return PokeBytes(arguments, chips, {{page, reg}});
  }
  const std::string name = ParseRegisterName(arguments);
  const bool bytes = arguments.AtNumber() || FieldsOf(name).empty();
  return bytes ? PokeBytes(arguments, chips, RegistersOf(name)) : PokeField(arguments, chips, name);
}

// ---- Looking ------------------------------------------------------------------------------------

// "0x30-0x33  window 0 = 04 b0 01 77"
std::string ValuesInWords(std::span<const RegisterAddress> run,
                          const std::vector<std::uint8_t>& bytes) {
  const RegisterAddress first = run.front();
  const std::string label = "  " + RegisterLabel(first.page, first.number) + " = ";
  if (run.size() > 1) {
    return sim::Hex(first.number) + '-' + sim::Hex(run.back().number) + label +
           sim::HexBytes(bytes, " ");
  }
  const std::string fields = FieldsInWords(first.page, first.number, bytes.front());
  return sim::Hex(first.number) + label + sim::Hex(bytes.front()) +
         (fields.empty() ? "" : " (" + fields + ')');
}

// How many of these lie behind each other and have one label; those with fields stand alone.
std::size_t LengthOfRun(std::span<const RegisterAddress> registers) {
  constexpr std::size_t kLongest = 16;
  const RegisterAddress first = registers.front();
  const std::string label = RegisterLabel(first.page, first.number);
  if (!FieldsOf(first.page, first.number).empty()) return 1;
  std::size_t length = 1;
  while (length < std::min(kLongest, registers.size()) &&
         registers[length].number == registers[length - 1].number + 1 &&
         RegisterLabel(first.page, registers[length].number) == label) {
    ++length;
  }
  return length;
}

std::string ChipAndPage(unsigned position, std::uint8_t page) {
  return std::string(kIndent) + std::string(ChipWords()[position]) + " page " +
         std::to_string(page) + "  ";
}

// Runs a step on each chip that is meant; one that is not fitted is a line that says so.
template <typename Function>
Step OnEachFitted(const ChipChoice& chips, const Function& show) {
  return [=](Session& session) {
    const sim::Board& board = session.World().board;
    for (const unsigned position : chips.Fitted(board)) {
      if (board.Fitted(position)) {
        show(session.Out(), board, position);
      } else {
        session.Out() << kIndent << ChipWords()[position] << ": not fitted\n";
      }
    }
  };
}

Step ParsePeek(Arguments& arguments) {
  const ChipChoice chips = arguments.Chips();
  const std::vector<RegisterAddress> registers = ParseRegisterList(arguments);
  return OnEachFitted(chips, [=](std::ostream& out, const sim::Board& board, unsigned position) {
    for (std::span<const RegisterAddress> rest(registers); !rest.empty();) {
      const auto run = rest.first(LengthOfRun(rest));
      std::vector<std::uint8_t> bytes;
      for (const RegisterAddress at : run) bytes.push_back(board.Peek(position, at));
      out << ChipAndPage(position, run.front().page) << ValuesInWords(run, bytes) << '\n';
      rest = rest.subspan(run.size());
    }
  });
}

// "7", "1-0", or the mask of a field with gaps.
std::string BitsOf(const Field& field) {
  const int low = std::countr_zero(field.bits);
  const int high = std::bit_width(field.bits) - 1;
  if (std::popcount(field.bits) != high - low + 1) return sim::Hex(field.bits);
  return high == low ? std::to_string(low) : std::to_string(high) + '-' + std::to_string(low);
}

// "2"; with the bits in their places where those are another number: "5 (0x28)".
std::string ValueOf(const Field& field, std::uint8_t byte) {
  const std::uint8_t value = FieldValue(field, byte);
  const bool plain = std::has_single_bit(field.bits) || value == (byte & field.bits);
  return std::to_string(value) + (plain ? "" : " (" + sim::Hex(byte & field.bits) + ')');
}

// A line each: bits, name, value, meaning.
void PrintFields(std::ostream& out, std::span<const Field> fields, std::uint8_t byte) {
  std::array<std::size_t, 3> columns{};
  std::vector<std::array<std::string, 3>> rows;
  for (const Field& field : fields) {
    rows.push_back({BitsOf(field), field.name, ValueOf(field, byte)});
    for (std::size_t i = 0; i < columns.size(); ++i) {
      columns[i] = std::max(columns[i], rows.back()[i].size() + 2);
    }
  }
  for (std::size_t row = 0; row < rows.size(); ++row) {
    out << kIndent << "  ";
    for (std::size_t i = 0; i < columns.size(); ++i) {
      rows[row][i].resize(columns[i], ' ');
      out << rows[row][i];
    }
    out << fields[row].meaning << '\n';
  }
}

Step ParseFields(Arguments& arguments) {
  const ChipChoice chips = arguments.Chips();
  const std::vector<RegisterAddress> registers = ParseRegisterList(arguments);
  return OnEachFitted(chips, [=](std::ostream& out, const sim::Board& board, unsigned position) {
    for (const RegisterAddress at : registers) {
      const std::uint8_t value = board.Peek(position, at);
      const std::span<const Field> fields = FieldsOf(at.page, at.number);
      out << ChipAndPage(position, at.page) << sim::Hex(at.number) << "  "
          << RegisterLabel(at.page, at.number) << " = " << sim::Hex(value)
          << (fields.empty() ? ", no fields\n" : "\n");
      PrintFields(out, fields, value);
    }
  });
}

// ---- Comparing ----------------------------------------------------------------------------------

sim::RegisterSnapshot SnapshotAt(const Session& session, const std::string& moment) {
  const sim::World& world = session.World();
  if (moment == kNowMoment) return sim::TakeSnapshot(world.board);
  if (moment == kAttachMoment && world.at_attach) return *world.at_attach;
  if (const auto found = session.moments.find(moment); found != session.moments.end()) {
    return found->second;
  }
  std::vector<std::string_view> known = {kNowMoment};
  if (world.at_attach) known.push_back(kAttachMoment);
  for (const auto& [name, snapshot] : session.moments) known.push_back(name);
  throw std::runtime_error("expected a moment, " + sim::OneOf(known) + ", found '" + moment + "'" +
                           DidYouMean(moment, known));
}

void PrintDifferences(std::ostream& out, const std::vector<std::string>& lines) {
  if (lines.empty()) out << kIndent << "no register differs\n";
  for (const std::string& line : lines) out << kIndent << line << '\n';
}

Step DiffChips(unsigned one, unsigned other) {
  return [=](Session& session) {
    const sim::RegisterSnapshot now = sim::TakeSnapshot(session.World().board);
    PrintDifferences(session.Out(), ChipDifferencesInWords(now, one, other));
  };
}

Step DiffMoments(const std::string& before, const std::string& after) {
  return [=](Session& session) {
    const sim::RegisterSnapshot from = SnapshotAt(session, before);
    PrintDifferences(session.Out(), DifferencesInWords(from, SnapshotAt(session, after)));
  };
}

Step ParseDiff(Arguments& arguments) {
  const auto chips = ChipWords().first(kChipsMax);
  if (std::find(chips.begin(), chips.end(), arguments.Peek()) != chips.end()) {
    const auto one = static_cast<unsigned>(arguments.Choice(chips));
    return DiffChips(one, static_cast<unsigned>(arguments.Choice(chips)));
  }
  std::string before(kStartMoment);
  std::string after(kNowMoment);
  if (!arguments.AtEnd()) before = arguments.Text("a moment");
  if (!arguments.AtEnd()) after = arguments.Text("a moment");
  return DiffMoments(before, after);
}

constexpr std::array kRegisterLines = {
    LineKind{LineGroup::Board, "poke",
             "CHIP PAGE REG VALUE | CHIP \"NAME\" VALUE... | "
             "CHIP \"NAME\" FIELD VALUE",
             "sets stored register bytes, or a field of them, no bus cycle", ParsePoke},
    LineKind{LineGroup::Output, "peek", "CHIP \"NAME\" | CHIP page PAGE REG[-REG]",
             "prints registers now, with the fields that are set", ParsePeek},
    LineKind{LineGroup::Output, "fields", "CHIP \"NAME\" | CHIP page PAGE REG[-REG]",
             "prints each field: bits, name, value, meaning", ParseFields},
    LineKind{LineGroup::Output, "diff", "[MOMENT [MOMENT]] | CHIP CHIP",
             "registers that differ between two moments (start, now) or two chips; MOMENT is "
             "attach, start (of the last action), now, or a mark",
             ParseDiff},
};

}  // namespace

std::span<const LineKind> RegisterLines() { return kRegisterLines; }

}  // namespace script
