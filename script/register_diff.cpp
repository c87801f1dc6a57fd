#include "script/register_diff.h"

#include <algorithm>
#include <utility>

#include "script/register_words.h"
#include "script/words.h"

namespace script {
namespace {

bool Differs(const RegisterRun& run, const RegisterPage& before, const RegisterPage& after) {
  for (unsigned reg = run.first; reg < run.first + run.length; ++reg) {
    if (before[reg] != after[reg]) return true;
  }
  return false;
}

using Pages = sim::RegisterSnapshot::Pages;

// Two states of chips, and what the lines call the chips.
struct Pair {
  std::string chip;
  const Pages* before;
  const Pages* after;
};

// "all" when every pair is among them, else their names with commas between.
std::string NamesOf(const std::vector<const Pair*>& some, std::size_t all) {
  if (some.size() == all && all > 1) return "all";
  std::string names;
  for (const Pair* pair : some) names += (names.empty() ? "" : ",") + pair->chip;
  return names;
}

// A line for each change of a run; chips that change alike share it.
void AddRun(std::vector<std::string>& lines, const RegisterRun& run,
            const std::vector<Pair>& pairs) {
  std::vector<std::pair<std::string, std::vector<const Pair*>>> changes;
  for (const Pair& pair : pairs) {
    const RegisterPage& before = (*pair.before)[run.page];
    const RegisterPage& after = (*pair.after)[run.page];
    if (!Differs(run, before, after)) continue;
    const std::string change = ChangeInWords(run, before, after);
    const auto same = std::find_if(changes.begin(), changes.end(),
                                   [&](const auto& known) { return known.first == change; });
    if (same == changes.end()) {
      changes.push_back({change, {&pair}});
    } else {
      same->second.push_back(&pair);
    }
  }
  constexpr std::size_t kChipColumns = 6;
  for (const auto& [change, chips] : changes) {
    std::string names = NamesOf(chips, pairs.size());
    names.resize(std::max(kChipColumns, names.size()), ' ');
    names += " page " + std::to_string(run.page) + "  ";
    lines.push_back(names + change);
  }
}

std::vector<std::string> Lines(const std::vector<Pair>& pairs) {
  std::vector<std::string> lines;
  for (std::uint8_t page = 0; page < kPageCount; ++page) {
    for (const RegisterRun& run : RegisterRuns(page)) AddRun(lines, run, pairs);
  }
  return lines;
}

}  // namespace

std::vector<std::string> DifferencesInWords(const sim::RegisterSnapshot& before,
                                            const sim::RegisterSnapshot& after) {
  std::vector<Pair> pairs;
  std::vector<std::string> fitted;
  for (unsigned position = 0; position < kChipsMax; ++position) {
    const std::string chip(ChipWords()[position]);
    const auto& had = before.chips[position];
    const auto& has = after.chips[position];
    if (had && has) {
      pairs.push_back({chip, &*had, &*has});
    } else if (had.has_value() != has.has_value()) {
      fitted.push_back(chip + (has ? ": not fitted -> fitted" : ": fitted -> not fitted"));
    }
  }
  std::vector<std::string> lines = Lines(pairs);
  lines.insert(lines.end(), fitted.begin(), fitted.end());
  return lines;
}

std::vector<std::string> ChipDifferencesInWords(const sim::RegisterSnapshot& moment, unsigned one,
                                                unsigned other) {
  const std::string names =
      std::string(ChipWords()[one]) + " -> " + std::string(ChipWords()[other]);
  for (const unsigned position : {one, other}) {
    if (!moment.chips[position]) return {std::string(ChipWords()[position]) + ": not fitted"};
  }
  return Lines({{names, &*moment.chips[one], &*moment.chips[other]}});
}

}  // namespace script
