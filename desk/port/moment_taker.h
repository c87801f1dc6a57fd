// Takes a moment of a program's board about 25 times a second while somebody wants it, in a thread
// of its own.
#pragma once

#include <condition_variable>
#include <mutex>
#include <thread>

#include "desk/console/console.h"
#include "desk/port/port.h"

namespace desk {

class MomentTaker {
 public:
  MomentTaker(Port& port, BoardAccess& access);
  // By a thread that is outside the board.
  ~MomentTaker();
  MomentTaker(const MomentTaker&) = delete;
  MomentTaker& operator=(const MomentTaker&) = delete;

 private:
  void Run();

  Port& port_;
  BoardAccess& access_;
  std::mutex mutex_;
  std::condition_variable changed_;
  bool ended_ = false;
  std::thread thread_;
};

}  // namespace desk
