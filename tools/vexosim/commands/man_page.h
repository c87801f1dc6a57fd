// The manual page of the program.
#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace vexosim {

// vexosim(1) in troff: everything that the help of the command line and of its subcommands says.
// Each paragraph of the program's own footer is a section, whose title stands before its first
// colon.
std::string ManPage(const CLI::App& program);

}  // namespace vexosim
