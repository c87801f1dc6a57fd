#include "desk/port/painter.h"

#include <algorithm>
#include <utility>

namespace desk {

Painter::Painter(OnPicture on_picture)
    : on_picture_(std::move(on_picture)), thread_([this] { Paint(); }) {}

Painter::~Painter() {
  {
    const std::lock_guard lock(mutex_);
    ended_ = true;
    changed_.notify_one();
  }
  thread_.join();
}

bool Painter::Idle() const {
  const std::lock_guard lock(mutex_);
  return moment_ == nullptr && !drawing_ && Clock::now() >= next_;
}

void Painter::Show(Moment moment) {
  auto latest = std::make_unique<const Moment>(std::move(moment));
  const std::lock_guard lock(mutex_);
  moment_.swap(latest);
  changed_.notify_one();
}

void Painter::Paint() {
  constexpr std::chrono::milliseconds kPeriod{40};
  std::unique_lock lock(mutex_);
  for (std::uint64_t number = 0;; ++number) {
    changed_.wait(lock, [this] { return ended_ || moment_ != nullptr; });
    changed_.wait_until(lock, next_, [this] { return ended_; });
    if (ended_) return;
    // One that comes late does not make the next one late too.
    next_ = std::max(next_ + kPeriod, Clock::now());
    const std::unique_ptr<const Moment> moment = std::move(moment_);
    drawing_ = true;
    lock.unlock();
    on_picture_(std::make_shared<const std::string>(maker_.Make(*moment, number)));
    lock.lock();
    drawing_ = false;
  }
}

}  // namespace desk
