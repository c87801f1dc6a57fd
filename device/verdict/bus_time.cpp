#include "device/verdict/bus_time.h"

#include <algorithm>

namespace verdict {
namespace {

// Shorter calls are mostly what is not the bus.
constexpr std::uint32_t kLeastCycles = 100;
// What is measured must be so much longer than a count of the clock.
constexpr std::uint64_t kLeastCounts = 20;

std::uint64_t CountUs(const plan::Log& log) {
  const auto clock =
      std::find_if(log.entries.begin(), log.entries.end(), [](const plan::Entry& entry) {
        return entry.kind == plan::EntryKind::Clock && entry.numbers.front() != 0;
      });
  if (clock == log.entries.end()) return 1000;
  return std::max<std::uint64_t>(1'000'000 / static_cast<std::uint64_t>(clock->numbers.front()), 1);
}

}  // namespace

std::optional<BusTime> MeasureBus(const std::vector<Outcome>& outcomes, const plan::Log& log) {
  BusTime bus;
  std::uint64_t us = 0;
  for (const Outcome& outcome : outcomes) {
    const plan::Step& step = *outcome.step;
    // A pause is as long as the system's timer makes it.
    if (!step.cost || step.cost->slept_ms != 0 || step.cost->cycles < kLeastCycles) continue;
    if (outcome.took == nullptr || (step.result && outcome.Result() != step.result)) continue;
    us += static_cast<std::uint64_t>(outcome.took->numbers.front());
    bus.cycles += step.cost->cycles;
    ++bus.calls;
  }
  if (bus.cycles == 0 || us < kLeastCounts * CountUs(log)) return std::nullopt;
  bus.cycle_ns = static_cast<std::uint32_t>((1000 * us + bus.cycles / 2) / bus.cycles);
  return bus;
}

}  // namespace verdict
