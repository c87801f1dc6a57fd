#include <algorithm>
#include <array>
#include <map>
#include <utility>

#include "VexoCtrlSDK.h"
#include "device/verdict/causes.h"
#include "script/words.h"

namespace verdict {
namespace {

// So many registers must say it before it is said.
constexpr unsigned kLeastRegisters = 8;
constexpr unsigned kDataLines = 8;

struct Reading {
  const plan::ExpectedRegister* expected = nullptr;
  std::uint8_t found = 0;

  bool Differs() const { return ((found ^ expected->value) & expected->mask) != 0; }
};

std::vector<Reading> Readings(const Evidence& evidence) {
  std::vector<Reading> readings;
  for (const Outcome& outcome : evidence.outcomes) {
    for (const plan::ExpectedRegister& one : outcome.step->registers) {
      const auto entry = outcome.values.find(one.line);
      if (entry == outcome.values.end() || entry->second->kind != plan::EntryKind::Value) continue;
      readings.push_back({&one, static_cast<std::uint8_t>(entry->second->numbers.front())});
    }
  }
  return readings;
}

std::string ChipName(unsigned position) { return std::string(script::ChipWords()[position]); }

// ---- A line that is always the same ------------------------------------------------------------

// Whether every reading has the bit so, and many should not.
bool IsStuck(const std::vector<Reading>& readings, unsigned bit, bool high) {
  unsigned others = 0;
  for (const Reading& one : readings) {
    if ((one.expected->mask >> bit & 1) == 0) continue;
    if ((one.found >> bit & 1) != (high ? 1 : 0)) return false;
    if ((one.expected->value >> bit & 1) != (high ? 1 : 0)) ++others;
  }
  return others >= kLeastRegisters;
}

struct StuckBit {
  unsigned bit = 0;
  bool high = false;
};

std::vector<StuckBit> StuckBits(const std::vector<Reading>& readings) {
  std::vector<StuckBit> stuck;
  for (unsigned bit = 0; bit < kDataLines; ++bit) {
    for (const bool high : {false, true}) {
      if (IsStuck(readings, bit, high)) stuck.push_back({bit, high});
    }
  }
  return stuck;
}

std::optional<Cause> Stuck(const std::vector<Reading>& readings, const std::string& where,
                           const std::string& advice) {
  const std::vector<StuckBit> stuck = StuckBits(readings);
  if (stuck.empty()) return std::nullopt;
  if (stuck.size() == kDataLines) {
    const bool high = stuck.front().high;
    return Cause{"silent",
                 "Every register " + where + " reads 0x" + (high ? "FF" : "00") +
                     ": nothing drives the data lines.",
                 advice};
  }
  std::string lines;
  for (const StuckBit& one : stuck) {
    lines += (lines.empty() ? "" : ", ") + std::string("data line ") + std::to_string(one.bit) +
             " is always " + (one.high ? "1" : "0");
  }
  return Cause{"stuck-line", "In every register " + where + " " + lines + ".", advice};
}

// ---- Lines that are exchanged -------------------------------------------------------------------

std::uint8_t Exchanged(std::uint8_t value, unsigned a, unsigned b) {
  const unsigned differ =
      (static_cast<unsigned>(value) >> a ^ static_cast<unsigned>(value) >> b) & 1;
  return static_cast<std::uint8_t>(value ^ (differ << a | differ << b));
}

// A register's number goes over the data lines, too: what is written and read by the same lines
// looks right, but for tables, which count up from their first number inside of the chip. A read
// then gives what the table has for the exchanged number.
bool SayExchanged(const std::vector<Reading>& readings, unsigned a, unsigned b) {
  // What each register should hold at last, by chip, page and number.
  std::map<std::array<unsigned, 3>, const plan::ExpectedRegister*> table;
  for (const Reading& one : readings) {
    table[{one.expected->chip, one.expected->page, one.expected->number}] = one.expected;
  }
  unsigned differ = 0;
  unsigned explained = 0;
  for (const Reading& one : readings) {
    if (!one.Differs()) continue;
    ++differ;
    const auto other =
        table.find({one.expected->chip, one.expected->page, Exchanged(one.expected->number, a, b)});
    if (other == table.end()) continue;
    const std::uint8_t mask = other->second->mask & one.expected->mask;
    if (((one.found ^ other->second->value) & mask) == 0) ++explained;
  }
  return explained >= kLeastRegisters && 4 * explained >= 3 * differ;
}

std::optional<Cause> ExchangedLines(const std::vector<Reading>& readings) {
  for (unsigned a = 0; a < kDataLines; ++a) {
    for (unsigned b = a + 1; b < kDataLines; ++b) {
      if (!SayExchanged(readings, a, b)) continue;
      return Cause{"exchanged-lines",
                   "Data lines " + std::to_string(a) + " and " + std::to_string(b) +
                       " are exchanged: registers read what belongs to the number in which these "
                       "two bits are exchanged.",
                   "Look at the data lines between processor and chips."};
    }
  }
  return std::nullopt;
}

// ---- The rest -----------------------------------------------------------------------------------

std::optional<Cause> Scattered(const std::vector<Reading>& readings) {
  std::array<unsigned, VEXO_MAX_CHIPS> differ{};
  std::array<unsigned, VEXO_MAX_CHIPS> all{};
  for (const Reading& one : readings) {
    ++all[one.expected->chip];
    if (one.Differs()) ++differ[one.expected->chip];
  }
  std::string chips;
  for (unsigned chip = 0; chip < VEXO_MAX_CHIPS; ++chip) {
    if (differ[chip] == 0) continue;
    chips += (chips.empty() ? "" : ", ") + std::to_string(differ[chip]) + " of " +
             std::to_string(all[chip]) + " of " + ChipName(chip);
  }
  if (chips.empty()) return std::nullopt;
  return Cause{"registers", "Registers read back otherwise than they should: " + chips + ".",
               "Run the check again: registers that change from run to run point to the bus (its "
               "wait states, its strobes), others to the chip. Send both logs."};
}

}  // namespace

std::vector<Cause> LineCauses(const Evidence& evidence) {
  const std::vector<Reading> readings = Readings(evidence);
  if (std::none_of(readings.begin(), readings.end(),
                   [](const Reading& one) { return one.Differs(); })) {
    return {};
  }
  if (auto cause = Stuck(readings, "of all chips",
                         "Look at the data lines between processor and chips: this one is "
                         "shorted, or open.")) {
    return {std::move(*cause)};
  }
  if (auto cause = ExchangedLines(readings)) return {std::move(*cause)};
  std::vector<Cause> causes;
  for (unsigned chip = 0; chip < VEXO_MAX_CHIPS; ++chip) {
    std::vector<Reading> own;
    std::copy_if(readings.begin(), readings.end(), std::back_inserter(own),
                 [chip](const Reading& one) { return one.expected->chip == chip; });
    if (auto cause = Stuck(own, "of " + ChipName(chip),
                           "The other chips read right, so look at this one: its solder joints, "
                           "supply and chip select.")) {
      causes.push_back(std::move(*cause));
    }
  }
  if (!causes.empty()) return causes;
  if (auto cause = Scattered(readings)) causes.push_back(std::move(*cause));
  return causes;
}

}  // namespace verdict
