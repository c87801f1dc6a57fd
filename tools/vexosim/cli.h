// The command line.
#pragma once

namespace vexosim {

// Runs the tool; returns its exit status.
int Main(int argc, const char* const* argv);

}  // namespace vexosim
