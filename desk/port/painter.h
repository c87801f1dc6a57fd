// Draws moments in a thread of its own: the latest one, and no more than 25 a second.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

#include "desk/page/picture.h"
#include "desk/port/moment.h"

namespace desk {

class Painter {
 public:
  using Picture = std::shared_ptr<const std::string>;
  // Called in the painter's thread.
  using OnPicture = std::function<void(Picture picture)>;

  explicit Painter(OnPicture on_picture);
  ~Painter();
  Painter(const Painter&) = delete;
  Painter& operator=(const Painter&) = delete;

  // ---- Any thread ------------------------------------------------------------------------------

  // Another moment could be drawn at once.
  bool Idle() const;
  void Show(Moment moment);

 private:
  using Clock = std::chrono::steady_clock;

  void Paint();

  const OnPicture on_picture_;
  PictureMaker maker_;        // the thread's
  mutable std::mutex mutex_;  // for what follows
  std::condition_variable changed_;
  std::unique_ptr<const Moment> moment_;  // to be drawn
  bool drawing_ = false;
  bool ended_ = false;
  Clock::time_point next_{};  // not before
  std::thread thread_;
};

}  // namespace desk
