#include "tools/vexosim/cli.h"

// What nobody expects ends the program, with its text.
// NOLINTNEXTLINE(bugprone-exception-escape)
int main(int argc, char** argv) { return vexosim::Main(argc, argv); }
