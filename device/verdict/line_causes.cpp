#include <algorithm>
#include <array>
#include <map>
#include <set>
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

// What is written and read by the same exchanged lines looks right; what a chip makes itself does
// not, nor do tables, which count up from their first number inside of the chip. All chips then
// differ in the same registers, as hardly anything else makes them do.
std::optional<Cause> AllAlike(const std::vector<Reading>& readings) {
  std::set<unsigned> chips;
  std::map<std::pair<unsigned, unsigned>, std::set<unsigned>> differing;  // chips by register
  for (const Reading& one : readings) {
    chips.insert(one.expected->chip);
    if (one.Differs()) {
      differing[{one.expected->page, one.expected->number}].insert(one.expected->chip);
    }
  }
  const auto alike = static_cast<unsigned>(
      std::count_if(differing.begin(), differing.end(),
                    [&chips](const auto& one) { return one.second.size() == chips.size(); }));
  if (chips.size() < 2 || alike < kLeastRegisters || 2 * alike < differing.size()) {
    return std::nullopt;
  }
  return Cause{"data-lines",
               std::to_string(alike) +
                   " registers read otherwise than they should, the same ones "
                   "of every chip: what the chips have in common is the bus.",
               "Look at the data lines between processor and chips: two that are exchanged do "
               "this, and so does one that touches another."};
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
  if (auto cause = AllAlike(readings)) return {std::move(*cause)};
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
  return causes;
}

std::optional<Cause> OtherRegisters(const Evidence& evidence) {
  std::array<unsigned, VEXO_MAX_CHIPS> differ{};
  std::array<unsigned, VEXO_MAX_CHIPS> all{};
  for (const Reading& one : Readings(evidence)) {
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

}  // namespace verdict
