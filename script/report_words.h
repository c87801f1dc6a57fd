// What the board noticed, in words.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "sim/board/reports.h"

namespace script {

// One line a report; accesses to neighbouring registers without a name share a line.
std::vector<std::string> WarningsInWords(std::span<const sim::Report> reports);

}  // namespace script
