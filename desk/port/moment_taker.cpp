#include "desk/port/moment_taker.h"

#include <chrono>
#include <utility>

#include "sim/world.h"

namespace desk {

MomentTaker::MomentTaker(Port& port, BoardAccess& access)
    : port_(port), access_(access), thread_([this] { Run(); }) {}

MomentTaker::~MomentTaker() {
  {
    const std::lock_guard lock(mutex_);
    ended_ = true;
    changed_.notify_one();
  }
  thread_.join();
}

void MomentTaker::Run() {
  constexpr std::chrono::milliseconds kPeriod{40};
  std::unique_lock lock(mutex_);
  while (!changed_.wait_for(lock, kPeriod, [this] { return ended_; })) {
    if (!port_.WantsMoment()) continue;
    access_.Enter();
    const sim::World& world = sim::TheWorld();
    Moment moment{.board = world.board,
                  .time_ms = world.kernel.NowUnwrapped(),
                  .cycles = world.trace.Cycles()};
    access_.Leave();
    port_.Show(std::move(moment));
  }
}

}  // namespace desk
