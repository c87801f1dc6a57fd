// What is wrong with a device or its board, found in what it did otherwise than a plan expects.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "device/verdict/bus_time.h"
#include "device/verdict/differences.h"

namespace verdict {

struct Cause {
  std::string_view name;  // for programs: "import-missing"
  std::string what;       // sentences
  std::string advice;     // what to try next
};

struct Evidence {
  const plan::Plan& plan;
  const plan::Log& log;
  const std::vector<Outcome>& outcomes;
  const Comparison& comparison;
  std::optional<BusTime> bus;

  // The first entry of a kind that is about no step; null when there is none.
  const plan::Entry* First(plan::EntryKind kind) const;
  std::vector<const plan::Entry*> All(plan::EntryKind kind) const;
};

// What keeps the library from being loaded, or the program from its work.
std::vector<Cause> LoaderCauses(const Evidence& evidence);
// What the chips, the bus, the drivers and the cameras do.
std::vector<Cause> BoardCauses(const Evidence& evidence);
// What registers read back say of the data lines: first what explains the rest, then what is left.
std::vector<Cause> LineCauses(const Evidence& evidence);
std::optional<Cause> OtherRegisters(const Evidence& evidence);

}  // namespace verdict
