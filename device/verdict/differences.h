// Where the device did not do what a plan expects.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "device/verdict/outcome.h"

namespace verdict {

enum class DifferenceKind : std::uint8_t {
  NeverReturned,
  Result,
  Record,
  Answer,
  MessageMissing,
  MessageExtra,
  MessageContent,
  Register,
  Unread,
};

struct Difference {
  DifferenceKind kind = DifferenceKind::Result;
  const Outcome* outcome = nullptr;
  std::string text;                                  // one line
  const plan::ExpectedRegister* expected = nullptr;  // of Register and Unread
  std::uint8_t found = 0;                            // of Register
  const plan::Entry* message = nullptr;              // of MessageExtra and MessageContent
};

struct Comparison {
  std::vector<Difference> differences;  // in the plan's order
  unsigned met = 0;                     // expectations
  unsigned untried = 0;                 // steps that were never begun
};

// Points into what it compares.
Comparison Compare(const std::vector<Outcome>& outcomes);

// "live.vexo:7: command live-split mode 4 (line 31 of the plan)".
std::string StepInWords(const plan::Step& step);

}  // namespace verdict
