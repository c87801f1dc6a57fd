// The DLL against the library as the PC has it.
#pragma once

#include <string>
#include <vector>

namespace host {

// Runs each script on both sides and prints a line each. Gives the exit status.
int Compare(const std::vector<std::string>& scripts);

}  // namespace host
