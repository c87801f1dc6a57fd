#include "files/standard_output.h"

#include <cerrno>

#include "files/exit_status.h"
#include "files/file_error.h"

namespace files {

int FinishOutput(std::ostream& out, std::ostream& err, const std::string& program, int status) {
  const bool failed = !out;
  // What stopped an earlier write stops what is left of it too, and so tells its reason.
  out.clear();
  errno = 0;
  if (out.flush() && !failed) return status;
  err << program << ": cannot write standard output"
      << (errno == 0 ? std::string() : ": " + SystemText(errno)) << std::endl;
  return kExitWrong;
}

}  // namespace files
