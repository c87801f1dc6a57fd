// A port with a board's lines, without a board.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>
#include <vector>

#include "desk/port/port.h"
#include "sim/world.h"
#include "tests/desk/port/client.h"

namespace desk {

class PortFixture : public testing::Test {
 protected:
  void TearDown() override {
    LetGo();
    sim::ResetWorld();
    port_.reset();
  }

  void Open(const PortSettings& settings) {
    sim::ResetWorld();
    port_.reset();
    port_ = std::make_unique<Port>(settings, [this](const std::string& line) { return Run(line); });
    sim::TheWorld().trace.SetEnabled(false);
    sim::TheWorld().trace.AddListener(port_->Events());
  }

  Answer Run(const std::string& line) {
    std::unique_lock lock(mutex_);
    lines_.push_back(line);
    changed_.notify_all();
    if (line == "wait") changed_.wait(lock, [this] { return let_go_; });
    if (line == "unmet") return {Answer::Result::Unmet, "it is not"};
    if (line == "throw") throw std::runtime_error("thrown");
    if (line == "throw 5") throw 5;  // NOLINT(hicpp-exception-baseclass)
    if (line == "event") Event("event of a line");
    if (line == "long") return {Answer::Result::Done, std::string(100'000, 'a')};
    return {Answer::Result::Done, line + "!"};
  }

  // Lets a line "wait" end.
  void LetGo() {
    const std::lock_guard lock(mutex_);
    let_go_ = true;
    changed_.notify_all();
  }
  // Whether this line comes to be run.
  bool Comes(const std::string& line) {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, kPatience, [&] {
      return std::find(lines_.begin(), lines_.end(), line) != lines_.end();
    });
  }
  std::vector<std::string> Lines() {
    const std::lock_guard lock(mutex_);
    return lines_;
  }
  static void Event(const std::string& text) {
    sim::TheWorld().Record(sim::DebugEvent{false, text});
  }
  static void Cycle(std::uint8_t value) {
    sim::TheWorld().trace.AddCycle(0, sim::By::Host, false, sim::BusWindow::Select, value);
  }

  std::unique_ptr<Port> port_;

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  std::vector<std::string> lines_;
  bool let_go_ = false;
};

}  // namespace desk
