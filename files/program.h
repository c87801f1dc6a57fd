// What main() does in every program.
#pragma once

#include <functional>
#include <string>

namespace files {

// Runs a program; returns its exit status. No exception comes out: each is told in a sentence, and
// the status is then kExitWrong, as it is when not all of standard output could be written. A
// closed pipe and a file that may not grow are errors of the write, not the end of the process.
int RunProgram(const std::string& name, const std::function<int()>& run);

}  // namespace files
