#include "files/program.h"
#include "tools/vexosim/cli.h"

// Nothing comes out of it: each exception is told and becomes a status.
// NOLINTNEXTLINE(bugprone-exception-escape)
int main(int argc, char** argv) {
  return files::RunProgram("vexosim", [=] { return vexosim::Main(argc, argv); });
}
