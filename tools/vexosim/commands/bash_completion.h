// Completion of the command line.
#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace vexosim {

// A script for bash that completes subcommands, their options, and what these take. The type name
// of an option says what that is: FILE, or FILE.png for files that end so, or the words that may
// stand there (auto|always|never); nothing is offered for another. An argument is a file, as its
// name says.
std::string BashCompletion(const CLI::App& program);

}  // namespace vexosim
