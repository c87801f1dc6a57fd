#include "sim/kernel/windows.h"

#include <algorithm>
#include <utility>

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

void Windows::Receive(ReceivedMessage message) {
  if (on_received) on_received(message);
  if (keep_received) received.push_back(std::move(message));
}

}  // namespace sim
