// Whether everything that a program printed has gone out.
#pragma once

#include <ostream>
#include <string>

namespace files {

// At the end of a program: its exit status is `status`, or kExitWrong with a sentence when not all
// of its output could be written.
int FinishOutput(std::ostream& out, std::ostream& err, const std::string& program, int status);

}  // namespace files
