// The host's windows, and what they were told.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "platform/platform.h"
#include "sim/board/bytes.h"

namespace sim {

// A message that reached the host window's procedure.
struct ReceivedMessage {
  std::uint32_t t = 0;  // virtual ms of its handling
  std::uint32_t message = 0;
  std::uint32_t wparam = 0;  // 0 where it is an address
  std::uint32_t lparam = 0;
  Bytes record;  // what wparam pointed to
  bool posted = false;
};

// The host's windows.
class Windows {
 public:
  PlatWindow Create();
  void Destroy(PlatWindow window);
  bool Exists(PlatWindow window) const;
  void Receive(ReceivedMessage message);
  bool deaf = false;  // does not answer sent messages
  std::vector<ReceivedMessage> received;
  bool keep_received = true;
  std::function<void(const ReceivedMessage&)> on_received;  // hears of each that comes
  std::function<void(PlatWindow)> on_destroyed;             // told after a window is gone
  // What a window does with a message when it comes, sent or posted; its record may be written.
  std::function<void(PlatWindow window, std::uint32_t message, std::uintptr_t wparam,
                     std::intptr_t lparam)>
      procedure;

 private:
  std::vector<PlatWindow> windows_;
  PlatWindow next_ = 0x10010;  // window handles are never reused
};

}  // namespace sim
