#include "tools/vexosim/cli.h"

int main(int argc, char** argv) { return vexosim::Main(argc, argv); }
