// Counts the calls of the program that are under way, so that its board goes away only when there
// is none.
#pragma once

#include <atomic>

namespace desk {

class Gate {
 public:
  // A call begins; false when no board is open.
  bool Enter() {
    unsigned state = state_.load();
    while ((state & kOpen) != 0) {
      if (state_.compare_exchange_weak(state, state + kCall)) return true;
    }
    return false;
  }
  void Leave() { state_ -= kCall; }

  void Open() { state_ = kOpen; }
  // False while a call is under way; else none begins any more.
  bool Close() {
    unsigned idle = kOpen;
    return state_.compare_exchange_strong(idle, 0);
  }

 private:
  static constexpr unsigned kOpen = 1;
  static constexpr unsigned kCall = 2;
  std::atomic<unsigned> state_ = 0;
};

}  // namespace desk
