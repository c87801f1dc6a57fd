// The demo: a recorder comes up, shows its cameras, tells its host what happens to them, plays
// recorded pictures and returns to the live ones.
#pragma once

#include <ostream>
#include <string>

#include "harness/image_run.h"
#include "tools/vexosim/terminal.h"

namespace vexosim {

struct DemoOptions {
  std::string picture = "vexosim-demo.png";  // the 4x4 live picture
  PictureStyle style;
  const harness::ImageRun* machine = nullptr;  // what runs the library, none for the linked one
};

// Where the 4x4 playback picture goes: beside the live one, "demo-playback.png" for "demo.png".
std::string PlaybackPicture(const std::string& picture);

// Runs on a fresh library and a fresh board. Returns one of kExit....
int RunDemo(const DemoOptions& options, std::ostream& out, std::ostream& err);

}  // namespace vexosim
