// Lines on their way to the thread that runs them, and their answers back.
#pragma once

#include <condition_variable>
#include <deque>
#include <future>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

#include "desk/bench/clock.h"
#include "desk/console/console.h"

namespace desk {

// A line and who waits for its answer.
class SentLine {
 public:
  explicit SentLine(std::string line) : line_(std::move(line)) {}
  const std::string& Line() const { return line_; }
  void SetAnswer(Answer answer) { answer_.set_value(std::move(answer)); }
  std::future<Answer> Future() { return answer_.get_future(); }

 private:
  std::string line_;
  std::promise<Answer> answer_;
};

class LineQueue {
 public:
  static constexpr const char* kEnded = "the session is over";

  // Any thread: waits for the answer.
  Answer Run(const std::string& line) {
    std::future<Answer> answer;
    {
      const std::lock_guard lock(mutex_);
      if (ended_) return {Answer::Result::Refused, kEnded};
      answer = lines_.emplace_back(line).Future();
    }
    came_.notify_one();
    return answer.get();
  }

  // Any thread: there are no more.
  void End() {
    const std::lock_guard lock(mutex_);
    ended_ = true;
    for (SentLine& line : std::exchange(lines_, {})) {
      line.SetAnswer({Answer::Result::Refused, kEnded});
    }
    came_.notify_one();
  }

  // ---- The thread that runs them --------------------------------------------------------------

  bool Ended() const {
    const std::lock_guard lock(mutex_);
    return ended_;
  }
  bool Empty() const {
    const std::lock_guard lock(mutex_);
    return lines_.empty();
  }
  std::optional<SentLine> Take() {
    const std::lock_guard lock(mutex_);
    if (lines_.empty()) return std::nullopt;
    std::optional<SentLine> line(std::move(lines_.front()));
    lines_.pop_front();
    return line;
  }
  // Until then, or a line comes or the end, or less. With `lines` what has come does not count.
  void Wait(Clock& clock, Clock::Time until, bool lines_too) {
    std::unique_lock lock(mutex_);
    if (ended_ || (lines_too && !lines_.empty())) return;
    clock.Wait(lock, came_, until);
  }

 private:
  mutable std::mutex mutex_;
  std::condition_variable came_;
  std::deque<SentLine> lines_;
  bool ended_ = false;
};

}  // namespace desk
