// Plans made of scripts.
#pragma once

#include <span>

#include "device/plan/plan.h"
#include "script/parse.h"

namespace vexosim {

// Each script is recorded on two boards that begin as differently as the script lets them: what
// comes out the same is what the library does, on any board, and is expected. All scripts must be
// about one bench. Throws NoPlan.
plan::Plan MakePlan(std::span<const script::Script> scripts);

}  // namespace vexosim
