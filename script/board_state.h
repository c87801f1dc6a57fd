// The board said in lines.
#pragma once

#include <string>
#include <vector>

#include "sim/world.h"

namespace script {

// The board lines that make a fresh board one like this: nothing of what is as it is there. Stored
// settings are among them once there are any. What the chips hold is the library's doing, and no
// part of it.
std::vector<std::string> BoardInLines(const sim::World& world);

}  // namespace script
