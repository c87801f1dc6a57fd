// The command line.
#pragma once

namespace ceimage {

// Runs the tool; returns its exit status.
int Main(int argc, const char* const* argv);

}  // namespace ceimage
