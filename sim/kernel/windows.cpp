#include "sim/kernel/windows.h"

#include <algorithm>

namespace sim {

PlatWindow Windows::Create() {
  const PlatWindow window = next_;
  next_ += 2;
  windows_.push_back(window);
  return window;
}

void Windows::Destroy(PlatWindow window) {
  if (std::erase(windows_, window) != 0 && on_destroyed) on_destroyed(window);
}

bool Windows::Exists(PlatWindow window) const {
  return std::find(windows_.begin(), windows_.end(), window) != windows_.end();
}

}  // namespace sim
