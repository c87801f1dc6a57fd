// A program's board in virtual time: one thread, which is the host.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <utility>

#include "desk/console/console.h"
#include "harness/host.h"
#include "sim/world.h"

namespace desk {

class VirtualAccess : public BoardAccess {
 public:
  void Enter() override {
    EXPECT_FALSE(inside);
    inside = true;
  }
  void Leave() override {
    EXPECT_TRUE(inside);
    inside = false;
  }
  void LetTimePass(std::uint32_t ms) override {
    EXPECT_TRUE(inside);
    if (const auto fail = std::exchange(failing, nullptr)) fail();
    if (const auto others = std::exchange(meanwhile, nullptr)) {
      inside = false;
      others();
      inside = true;
    }
    sim::TheWorld().kernel.Pump(ms);
  }

  bool inside = false;
  std::function<void()> meanwhile;  // what others do while time passes, once
  std::function<void()> failing;    // throws
};

// A program that has loaded the library and given it a window.
class ConsoleTest : public testing::Test {
 protected:
  void SetUp() override {
    harness::Restart();
    console_ = std::make_unique<Console>(access_);
    harness::Entry(1);
    harness::Initialize(sim::TheWorld().windows.Create());
  }
  void TearDown() override {
    EXPECT_FALSE(access_.inside);
    console_.reset();
    harness::Restart();
  }

  // The text of a line that is done.
  std::string Done(std::string_view line) {
    const Answer answer = console_->Run(line);
    EXPECT_EQ(answer.result, Answer::Result::Done) << line << ": " << answer.text;
    return answer.text;
  }
  std::string Unmet(std::string_view line) {
    const Answer answer = console_->Run(line);
    EXPECT_EQ(answer.result, Answer::Result::Unmet) << line << ": " << answer.text;
    return answer.text;
  }
  std::string Refused(std::string_view line) {
    const Answer answer = console_->Run(line);
    EXPECT_EQ(answer.result, Answer::Result::Refused) << line << ": " << answer.text;
    return answer.text;
  }

  VirtualAccess access_;
  std::unique_ptr<Console> console_;
};

}  // namespace desk
