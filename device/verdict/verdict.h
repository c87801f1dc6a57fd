// What a log of the check program says: what was as expected, what differs, why that may be, and
// what to try next.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "device/plan/log.h"
#include "device/plan/plan.h"

namespace verdict {

// Writes the verdict in words. True when the device did all that the plan expects, and nothing
// speaks against it. Throws plan::FormatError for a log that is of another plan.
bool Judge(const plan::Plan& plan, const plan::Log& log, std::ostream& out);

}  // namespace verdict
