// A bench on a clock that goes on when a test says so.
#pragma once

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <optional>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "desk/bench/bench.h"
#include "harness/host.h"
#include "sim/trace_json.h"

namespace desk {

class TestClock : public Clock {
 public:
  Time Now() const override { return Time(now_); }
  void Wait(std::unique_lock<std::mutex>& lock, std::condition_variable& wake,
            Time until) override {
    // The last millisecond passes by itself: a board between two is not to be waited for.
    std::int64_t now = now_;
    if (until.count() - now == 1) {
      now_.compare_exchange_strong(now, now + 1);
    } else {
      wake.wait_for(lock, std::chrono::milliseconds(1));
    }
  }
  void Advance(std::int64_t ms) { now_ += ms; }

 private:
  std::atomic<std::int64_t> now_{1'000'000};
};

// What is told, by the bench's thread.
class Told : public sim::TraceListener {
 public:
  BenchWatch Watch() {
    const auto tell = [this](const std::string& what) {
      return [this, what](std::uint32_t t, std::uint64_t, const std::string& text) {
        const std::lock_guard lock(mutex_);
        news_.push_back(std::to_string(t) + ' ' + what + (text.empty() ? "" : ": " + text));
      };
    };
    return {.wants_moment = [this] { return wants_moments.load(); },
            .show =
                [this](Moment moment) {
                  const std::lock_guard lock(mutex_);
                  ++moments_;
                  moment_.emplace(std::move(moment));
                },
            .events = this,
            .stopped = tell("stopped"),
            .continued = tell("continued"),
            .rewound = tell("rewound")};
  }
  std::vector<std::string> News() const { return Locked(news_); }
  std::vector<std::string> Lines() const { return Locked(lines_); }
  std::size_t Events() const { return Locked(events_); }
  std::size_t Moments() const { return Locked(moments_); }
  std::optional<Moment> Last() const { return Locked(moment_); }
  std::uint64_t Time() const {  // of the last moment
    const std::lock_guard lock(mutex_);
    return moment_ ? moment_->time_ms : 0;
  }

  std::atomic<bool> wants_moments{false};

 private:
  template <typename T>
  T Locked(const T& of) const {
    const std::lock_guard lock(mutex_);
    return of;
  }
  void OnEvent(const sim::Event&, const sim::EventDetail* detail) override {
    const std::lock_guard lock(mutex_);
    ++events_;
    if (detail == nullptr) return;
    if (const auto* line = std::get_if<sim::LineEvent>(detail)) lines_.push_back(line->text);
  }

  mutable std::mutex mutex_;
  std::vector<std::string> news_;
  std::vector<std::string> lines_;
  std::size_t events_ = 0;
  std::size_t moments_ = 0;
  std::optional<Moment> moment_;
};

class BenchTest : public testing::Test {
 protected:
  void TearDown() override { Close(); }

  void Open(BenchOptions options = {}) {
    Close();
    bring_up_lines_ = options.board.bare ? 2 : 6;
    options.clock = &clock_;
    options.run.stacks = false;
    std::promise<Bench*> made;
    served_ = {};
    closed_ = {};
    host_ = std::thread([&made, options, this] {
      {
        Bench bench(options);
        bench.Watch(told_.Watch());
        made.set_value(&bench);
        served_.set_value(bench.Serve());
        closed_.get_future().wait();
      }
      harness::Restart();
    });
    bench_ = made.get_future().get();
  }
  void Close() {
    if (!host_.joinable()) return;
    bench_->End();
    closed_.set_value();
    host_.join();
  }
  // Until the session has ended by itself.
  std::string AwaitEnd() {
    std::future<std::string> end = served_.get_future();
    const bool ended = end.wait_for(std::chrono::seconds(60)) == std::future_status::ready;
    return ended ? end.get() : "it has not ended";
  }

  Answer Run(const std::string& line) { return bench_->Run(line); }
  std::string Done(const std::string& line) { return Expect(line, Answer::Result::Done); }
  std::string Unmet(const std::string& line) { return Expect(line, Answer::Result::Unmet); }
  std::string Refused(const std::string& line) { return Expect(line, Answer::Result::Refused); }
  // A line that takes time.
  Answer RunSlow(const std::string& line) { return Pass(Send(line)); }
  // Somebody else sends it.
  std::future<Answer> Send(const std::string& line) {
    return std::async(std::launch::async, [this, line] { return bench_->Run(line); });
  }
  // The clock goes on until it is answered.
  Answer Pass(std::future<Answer> answer) {
    while (answer.wait_for(std::chrono::milliseconds(1)) != std::future_status::ready) {
      clock_.Advance(5);
    }
    return answer.get();
  }
  // So much time at least, with the clock no faster than the board can follow.
  void PassSlowly(std::uint64_t ms) {
    told_.wants_moments = true;
    Await([&] {
      clock_.Advance(40);
      return told_.Moments() != 0;
    });
    const std::uint64_t end = told_.Time() + ms;
    Await([&] {
      clock_.Advance(40);
      return told_.Time() >= end;
    });
    told_.wants_moments = false;
  }
  // The lines of the session behind the bring-up.
  std::vector<std::string> History() {
    std::istringstream history(Done("history"));
    std::vector<std::string> lines;
    for (std::string line; std::getline(history, line);) {
      lines.push_back(line.substr(line.find_first_not_of(" 0123456789")));
    }
    lines.erase(lines.begin(), lines.begin() + bring_up_lines_);
    return lines;
  }
  // The same without the time between lines: a line that comes when no time has passed yet waits
  // for the next millisecond.
  std::vector<std::string> Lines() {
    std::vector<std::string> lines = History();
    std::erase_if(lines, [](const std::string& line) { return line.starts_with("wait "); });
    return lines;
  }
  // The time between lines from this one on, but for some milliseconds.
  int WaitedSince(std::size_t first) {
    int ms = 0;
    std::size_t count = 0;
    for (const std::string& line : History()) {
      const bool wait = line.starts_with("wait ");
      if (!wait) ++count;
      if (wait && count >= first) ms += std::stoi(line.substr(5));
    }
    return ms;
  }
  // Waits for what comes soon.
  static void Await(const std::function<bool()>& there) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (!there()) {
      ASSERT_LT(std::chrono::steady_clock::now(), end) << "it did not come";
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
  }
  void AwaitLine(const std::string& begin) {
    Await([&] {
      const std::vector<std::string> lines = Lines();
      return !lines.empty() && lines.back().starts_with(begin);
    });
  }

  TestClock clock_;
  Told told_;
  Bench* bench_ = nullptr;

 private:
  std::string Expect(const std::string& line, Answer::Result result) {
    const Answer answer = Run(line);
    EXPECT_EQ(answer.result, result) << line << ": " << answer.text;
    return answer.text;
  }

  std::thread host_;
  int bring_up_lines_ = 0;
  std::promise<std::string> served_;
  std::promise<void> closed_;
};

}  // namespace desk
