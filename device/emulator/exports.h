// The exports of the image in the place of the linked library's.
#pragma once

#include "device/emulator/machine.h"
#include "harness/export_table.h"

namespace emulator {

// While it lives, what host.h calls is the machine's image. Its end ends the threads that are left
// in the image, and with them the simulated PC.
class ImageInUse {
 public:
  explicit ImageInUse(Machine& machine);
  ~ImageInUse();
  ImageInUse(const ImageInUse&) = delete;
  ImageInUse& operator=(const ImageInUse&) = delete;

  // The next load leaves a relocation out.
  static void LeaveOut(std::optional<std::size_t> relocation);
};

}  // namespace emulator
