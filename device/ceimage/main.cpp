// ceimage: a Windows CE library of a linked ELF file and a compiled resource file.
#include "device/ceimage/cli.h"
#include "files/program.h"

// Nothing comes out of it: each exception is told and becomes a status.
// NOLINTNEXTLINE(bugprone-exception-escape)
int main(int argc, char** argv) {
  return files::RunProgram("ceimage", [=] { return ceimage::Main(argc, argv); });
}
