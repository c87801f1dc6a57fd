// The demo: a recorder comes up, shows its cameras and tells its host what happens to them.
#pragma once

#include <ostream>
#include <string>

#include "tools/vexosim/terminal.h"

namespace vexosim {

struct DemoOptions {
  std::string picture = "vexosim-demo.png";  // the 4x4 live picture
  PictureStyle style;
};

// Runs on a fresh library and a fresh board. Returns one of kExit....
int RunDemo(const DemoOptions& options, std::ostream& out, std::ostream& err);

}  // namespace vexosim
