// The clock that a board keeps up with.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace desk {

class Clock {
 public:
  using Time = std::chrono::milliseconds;  // since some moment of its own
  virtual ~Clock() = default;
  virtual Time Now() const = 0;
  // Waits until then, or until `wake` is notified, or less.
  virtual void Wait(std::unique_lock<std::mutex>& lock, std::condition_variable& wake,
                    Time until) = 0;
};

// The machine's. While it sleeps this one stands.
class MachineClock : public Clock {
 public:
  Time Now() const override {
    return std::chrono::duration_cast<Time>(std::chrono::steady_clock::now().time_since_epoch());
  }
  void Wait(std::unique_lock<std::mutex>& lock, std::condition_variable& wake,
            Time until) override {
    wake.wait_until(lock, std::chrono::steady_clock::time_point(until));
  }
};

}  // namespace desk
