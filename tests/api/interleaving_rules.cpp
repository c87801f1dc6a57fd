#include "tests/api/interleaving_rules.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "VexoCtrlSDK.h"
#include "chip/registers.h"
#include "chip/video_state.h"

namespace test {
namespace {

std::uint32_t ThisThread() { return sim::TheWorld().kernel.CurrentThreadId(); }

std::uint32_t LossMask(const std::vector<std::uint8_t>& record) {
  VideoDetectRecord detect;
  EXPECT_EQ(record.size(), sizeof detect);
  std::memcpy(&detect, record.data(), std::min(record.size(), sizeof detect));
  return detect.loss_mask;
}

}  // namespace

void InterleavingRules::Attach() {
  commands_.clear();
  accesses_.clear();
  owner_.reset();
  told_loss_.reset();
  sim::World& world = sim::TheWorld();
  world.trace.AddListener(*this);
  world.windows.procedure = [this](PlatWindow window, std::uint32_t message, std::uintptr_t wparam,
                                   std::intptr_t) { OnArrival(window, message, wparam); };
}

void InterleavingRules::Begin(std::uint32_t code) {
  commands_[ThisThread()] = {code, code == kText || code == kTextInit, {}};
}

void InterleavingRules::End(const std::vector<std::uint8_t>& record) {
  const HostThread command = commands_[ThisThread()];
  commands_.erase(ThisThread());
  EXPECT_NE(owner_, ThisThread()) << "the lock is kept by " << std::hex << command.code;
  if (command.code == VEXO_CMD_READ_REG) {
    ASSERT_EQ(command.sent.size(), 1u);
    EXPECT_EQ(command.sent[0].message, VEXO_MSG_REG_VALUE);
    EXPECT_TRUE(
        std::equal(command.sent[0].record.begin(), command.sent[0].record.end(), record.begin()))
        << "another value is told than is returned";
  } else if (command.code == kTextInit) {
    ASSERT_EQ(command.sent.size(), 2u);
    EXPECT_EQ(command.sent[0].message, VEXO_MSG_INIT_RESULT);
    EXPECT_TRUE(command.sent[0].post);
    EXPECT_EQ(command.sent[1].message, VEXO_MSG_VIDEO_INFO);
    EXPECT_FALSE(command.sent[1].post);
  } else {
    EXPECT_EQ(command.sent.size(), 0u) << "messages of " << std::hex << command.code;
  }
}

void InterleavingRules::OnEvent(const sim::Event& event, const sim::EventDetail* detail) {
  if (detail == nullptr) return OnCycle(event);
  if (const auto* lock = std::get_if<sim::LockEvent>(detail)) return OnLock(*lock);
  if (const auto* message = std::get_if<sim::MessageEvent>(detail)) {
    return OnMessage(event.by, *message);
  }
  const auto* thread = std::get_if<sim::ThreadEvent>(detail);
  if (thread != nullptr && thread->what == "start") told_loss_.reset();
}

void InterleavingRules::OnCycle(const sim::Event& event) {
  const std::uint32_t thread = ThisThread();
  if (event.by == sim::By::Host) {
    EXPECT_TRUE(owner_ == thread || commands_[thread].outside)
        << "on the bus without the lock: " << std::hex << commands_[thread].code;
  }
  Access& access = accesses_[thread];
  const bool idle = event.window == sim::BusWindow::Select && event.value == kSelectIdle;
  Access next = Access::Moved;
  bool whole = access == Access::Addressed || access == Access::Moved;
  if (event.window == sim::BusWindow::Select) {
    // Initialization begins with a release of its own.
    whole = access == Access::None || (idle && access == Access::Moved);
    next = idle ? Access::None : Access::Selected;
  } else if (event.window == sim::BusWindow::Address) {
    whole = access == Access::Selected;
    next = Access::Addressed;
  }
  EXPECT_TRUE(whole) << "a cut access of thread " << thread;
  access = next;
}

void InterleavingRules::OnLock(const sim::LockEvent& lock) {
  EXPECT_TRUE(lock.ok) << lock.name;
  HostThread& command = commands_[ThisThread()];
  if (lock.unlock) {
    EXPECT_EQ(owner_, ThisThread());
    EXPECT_EQ(accesses_[ThisThread()], Access::None) << "unlocked in the middle of an access";
    owner_.reset();
    command.outside = command.code == VEXO_CMD_BLANK_MASK;
  } else {
    EXPECT_FALSE(owner_.has_value()) << "two owners of the lock";
    owner_ = ThisThread();
  }
}

void InterleavingRules::OnMessage(sim::By by, const sim::MessageEvent& message) {
  // The worker's may find a host that is busy for too long, and count as told.
  if (by == sim::By::Worker) return OnWorkersMessage(message);
  EXPECT_TRUE(message.ok) << std::hex << message.message;
  // Of the command that has the lock: others in the test tell nobody, but where they are alone.
  commands_[owner_.value_or(ThisThread())].sent.push_back(
      {message.message, message.post, message.record.value_or(sim::Bytes())});
}

void InterleavingRules::OnWorkersMessage(const sim::MessageEvent& message) {
  EXPECT_FALSE(message.post);
  EXPECT_TRUE(told_loss_.has_value() || message.message == VEXO_MSG_VIDEO_INFO)
      << "the worker's first message is " << std::hex << message.message;
  if (message.message != VEXO_MSG_VIDEO_INFO) return;
  const std::uint32_t loss = LossMask(message.record.value());
  EXPECT_NE(told_loss_, loss) << "told again";
  told_loss_ = loss;
}

void InterleavingRules::OnArrival(PlatWindow, std::uint32_t message, std::uintptr_t wparam) {
  if (message == VEXO_MSG_INIT_RESULT) {
    EXPECT_EQ(wparam, reinterpret_cast<std::uintptr_t>(&g_video.report)) << "may be gone by now";
  }
}

}  // namespace test
