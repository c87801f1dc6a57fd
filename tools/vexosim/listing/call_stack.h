// The library's call stack, where a run stops in it.
#pragma once

#include <string>
#include <vector>

namespace vexosim {

// The library's functions that the calling thread is in, the innermost first: "Name
// (chip/register_bus.cpp:40)". Empty when it is in none, or the build does not tell.
std::vector<std::string> LibraryStack();

}  // namespace vexosim
