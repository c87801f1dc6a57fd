#include "files/program.h"

#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <exception>
#include <iostream>
#include <new>

#include "files/exit_status.h"
#include "files/standard_output.h"

namespace files {
namespace {

// A file that is opened while standard output is closed would take its place, and be printed to.
// What cannot be written stands there instead.
void FillClosedDescriptors() {
  constexpr int kStandardError = 2;
  int descriptor = 0;
  do {
    descriptor = open("/dev/null", O_RDONLY);
  } while (descriptor >= 0 && descriptor <= kStandardError);
  if (descriptor >= 0) close(descriptor);
}

void IgnoreSignalsOfWrites() {
#ifdef SIGPIPE
  std::signal(SIGPIPE, SIG_IGN);
#endif
#ifdef SIGXFSZ
  std::signal(SIGXFSZ, SIG_IGN);
#endif
}

int Guarded(const std::string& name, const std::function<int()>& run) {
  try {
    return run();
  } catch (const std::bad_alloc&) {
    std::cerr << name << ": there is not enough memory" << std::endl;
  } catch (const std::exception& error) {
    std::cerr << name << ": " << error.what() << std::endl;
  } catch (...) {
    std::cerr << name << ": ended by what has no name" << std::endl;
  }
  return kExitWrong;
}

}  // namespace

int RunProgram(const std::string& name, const std::function<int()>& run) {
  FillClosedDescriptors();
  IgnoreSignalsOfWrites();
  const int status = Guarded(name, run);
  return FinishOutput(std::cout, std::cerr, name, status);
}

}  // namespace files
