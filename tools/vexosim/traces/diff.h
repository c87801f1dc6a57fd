// Two traces or captures set beside each other.
#pragma once

#include <ostream>
#include <string>

#include "tools/vexosim/traces/capture_columns.h"

namespace vexosim {

struct DiffOptions {
  std::string a;
  std::string b;
  bool registers = false;  // accesses to registers alone, without times and threads
  CaptureColumns columns;
};

// Prints the first difference in words, or that there is none. The time of the build, numbers of
// threads and window handles make no difference. With a capture, accesses to registers alone are
// compared. Returns kExitDone or kExitUnmet. Throws files::FileError.
int DiffTraces(const DiffOptions& options, std::ostream& out);

}  // namespace vexosim
