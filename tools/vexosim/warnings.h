// What the board noticed, in words.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "sim/reports.h"

namespace vexosim {

// One line a report; accesses to neighbouring registers without a name share a line.
std::vector<std::string> WarningsInWords(std::span<const sim::Report> reports);

}  // namespace vexosim
