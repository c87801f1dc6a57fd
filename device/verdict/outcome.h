// What came of each step of a plan, from the log of its run.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "device/plan/log.h"
#include "device/plan/plan.h"

namespace verdict {

// Points into the plan and the log that it was made of.
struct Outcome {
  const plan::Step* step = nullptr;
  const plan::Entry* called = nullptr;
  const plan::Entry* returned = nullptr;
  const plan::Entry* took = nullptr;
  const plan::Entry* record = nullptr;
  const plan::Entry* answer = nullptr;
  const plan::Entry* error = nullptr;
  std::vector<const plan::Entry*> messages;
  // A `value` or an `unread` by the line of the plan that asks for it.
  std::map<unsigned, const plan::Entry*> values;

  std::optional<std::int32_t> Result() const;
};

// One for each step, in order.
std::vector<Outcome> MatchLog(const plan::Plan& plan, const plan::Log& log);

}  // namespace verdict
