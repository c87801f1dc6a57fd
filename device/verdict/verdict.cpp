#include "device/verdict/verdict.h"

#include <algorithm>
#include <array>
#include <ostream>
#include <span>

#include "device/verdict/causes.h"
#include "files/printable.h"
#include "sim/text.h"

namespace verdict {

using plan::Entry;
using plan::EntryKind;

const Entry* Evidence::First(EntryKind kind) const {
  const auto found = std::find_if(log.entries.begin(), log.entries.end(),
                                  [kind](const Entry& entry) { return entry.kind == kind; });
  return found == log.entries.end() ? nullptr : &*found;
}

std::vector<const Entry*> Evidence::All(EntryKind kind) const {
  std::vector<const Entry*> all;
  for (const Entry& entry : log.entries) {
    if (entry.kind == kind) all.push_back(&entry);
  }
  return all;
}

namespace {

// Differences of a step beyond these are counted.
constexpr std::size_t kMostOfStep = 8;
constexpr std::size_t kMostSteps = 10;

std::string Address(std::int64_t value) { return sim::Hex(static_cast<std::uint64_t>(value), 8); }

std::string Count(std::size_t count, const char* one, const char* several) {
  return std::to_string(count) + ' ' + (count == 1 ? one : several);
}

void CheckPlan(const Evidence& evidence) {
  const Entry* const entry = evidence.First(EntryKind::Plan);
  if (entry == nullptr || evidence.plan.lines == 0) return;
  const auto checksum = static_cast<std::uint32_t>(entry->numbers[1]);
  if (checksum == evidence.plan.checksum) return;
  throw plan::FormatError("the log is of another plan: of one with checksum " +
                          sim::Hex(checksum, 8) + ", and this one's is " +
                          sim::Hex(evidence.plan.checksum, 8));
}

// A handle is no address on every system, but an export has one.
void PrintPlace(const Evidence& evidence, std::uint32_t base, std::uint32_t bytes,
                std::ostream& out) {
  const Entry* const first = evidence.First(EntryKind::Export);
  if (first == nullptr || first->numbers.front() == 0) return;
  const auto address = static_cast<std::uint32_t>(first->numbers.front());
  // In memory a file takes somewhat more.
  const bool there = address >= base && address - base < 2 * bytes;
  out << "Loaded:   "
      << (there ? "where it would like to be, at " + Address(base)
                : "not at " + Address(base) + ", where it would like to be, which is well: " +
                      files::Printable(first->texts.front()) + " is at " + Address(address))
      << '\n';
}

void PrintLibrary(const Evidence& evidence, std::ostream& out) {
  if (const Entry* file = evidence.First(EntryKind::File)) {
    out << "Library:  " << files::Printable(file->texts.front()) << ", " << file->numbers[0]
        << " bytes, for processor " << sim::Hex(static_cast<std::uint64_t>(file->numbers[1]), 3);
    if (const Entry* version = evidence.First(EntryKind::Version)) {
      out << ", version " << files::Printable(version->texts.front());
    }
    out << '\n';
    PrintPlace(evidence, static_cast<std::uint32_t>(file->numbers[2]),
               static_cast<std::uint32_t>(file->numbers[0]), out);
  }
  if (evidence.log.Whole() && !evidence.log.entries.empty()) {
    out << "Ended:    after " << evidence.log.entries.back().ms << " ms\n";
  }
}

void PrintCounts(const Evidence& evidence, std::ostream& out) {
  const Comparison& comparison = evidence.comparison;
  out << "Plan:     " << Count(evidence.plan.steps.size(), "call", "calls")
      << "; as expected: " << comparison.met << ", otherwise: " << comparison.differences.size();
  if (comparison.untried != 0)
    out << ", never begun: " << Count(comparison.untried, "call", "calls");
  out << '\n';
  if (evidence.bus) {
    out << "Bus:      a cycle takes " << evidence.bus->cycle_ns << " ns, by "
        << Count(evidence.bus->calls, "call", "calls") << " of " << evidence.bus->cycles
        << " cycles together; in simulation: --cycle-ns " << evidence.bus->cycle_ns << '\n';
  } else {
    out << "Bus:      no call took long enough to tell how long a cycle is\n";
  }
}

void PrintCauses(const std::vector<Cause>& causes, std::ostream& out) {
  bool first = true;
  for (const Cause& cause : causes) {
    out << '\n'
        << (first ? "Cause" : "Besides") << " [" << cause.name << "]: " << cause.what << '\n'
        << "  Try: " << cause.advice << '\n';
    first = false;
  }
}

// Registers that cannot be read are so all at once.
void PrintStep(std::span<const Difference> differences, std::ostream& out) {
  std::size_t shown = 0;
  std::size_t unread = 0;
  for (const Difference& one : differences) {
    if (one.kind == DifferenceKind::Unread && ++unread > 1) continue;
    if (shown++ < kMostOfStep) out << "  " << one.text << '\n';
  }
  if (unread > 1) out << "  and " << Count(unread - 1, "other", "others") << " likewise\n";
  if (shown > kMostOfStep) out << "  and " << shown - kMostOfStep << " more of this step\n";
}

void PrintDifferences(const std::vector<Difference>& differences, std::ostream& out) {
  if (differences.empty()) return;
  out << "\nWhat differs:\n";
  std::size_t steps = 0;
  for (auto next = differences.begin(); next != differences.end();) {
    const Outcome* const outcome = next->outcome;
    const auto end = std::find_if(next, differences.end(), [outcome](const Difference& one) {
      return one.outcome != outcome;
    });
    if (steps++ == kMostSteps) {
      out << "and "
          << Count(static_cast<std::size_t>(differences.end() - next), "difference", "differences")
          << " more behind these\n";
      return;
    }
    out << StepInWords(*outcome->step) << '\n';
    PrintStep(std::span(next, end), out);
    next = end;
  }
}

std::vector<Cause> FindCauses(const Evidence& evidence) {
  std::vector<Cause> causes = LoaderCauses(evidence);
  const std::vector<Cause> board = BoardCauses(evidence);
  // Where the chips are not ready, or one is not there, nothing can be read, and with other
  // settings other contents; a line that is wrong explains whatever else the board does.
  static constexpr std::array<std::string_view, 5> kOtherContents = {
      "taken", "no-chip", "chip-id", "nvram-unread", "other-standard"};
  const bool readable = std::none_of(board.begin(), board.end(), [](const Cause& cause) {
    return std::find(kOtherContents.begin(), kOtherContents.end(), cause.name) !=
           kOtherContents.end();
  });
  const std::vector<Cause> lines = readable ? LineCauses(evidence) : std::vector<Cause>();
  causes.insert(causes.end(), lines.begin(), lines.end());
  causes.insert(causes.end(), board.begin(), board.end());
  if (readable && lines.empty()) {
    if (auto cause = OtherRegisters(evidence)) causes.push_back(std::move(*cause));
  }
  const Comparison& comparison = evidence.comparison;
  if (causes.empty() && (!comparison.differences.empty() || comparison.untried != 0)) {
    causes.push_back({"unknown", "Something differs, and nothing is known that would explain it.",
                      "Run the check again, and send both logs."});
  }
  return causes;
}

}  // namespace

bool Judge(const plan::Plan& plan, const plan::Log& log, std::ostream& out) {
  const std::vector<Outcome> outcomes = MatchLog(plan, log);
  const Comparison comparison = Compare(outcomes);
  const Evidence evidence{plan, log, outcomes, comparison, MeasureBus(outcomes, log)};
  CheckPlan(evidence);

  const std::vector<Cause> causes = FindCauses(evidence);
  const bool well = causes.empty();
  out << (well ? "The device and its board are as they should be.\n"
               : "Not all is as it should be.\n");
  PrintCauses(causes, out);
  out << '\n';
  PrintLibrary(evidence, out);
  PrintCounts(evidence, out);
  PrintDifferences(comparison.differences, out);
  return well;
}

}  // namespace verdict
