// What the tests of the simulated platform share.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "platform/platform.h"
#include "sim/world.h"

namespace sim {

using WorkerBody = std::function<std::uint32_t()>;

// A fresh world, and a log in which threads say what they do and when.
class PlatformTest : public testing::Test {
 protected:
  PlatformTest() { ResetWorld(); }
  ~PlatformTest() override { ResetWorld(); }

  World& world() { return TheWorld(); }
  Kernel& kernel() { return TheWorld().kernel; }

  void Log(const std::string& what) { log.push_back(std::to_string(kernel().Now()) + " " + what); }

  // Starts a library thread; the body must outlive it.
  static PlatHandle StartWorker(const WorkerBody& body, std::uint32_t* thread_id = nullptr) {
    const auto run = [](void* argument) { return (*static_cast<const WorkerBody*>(argument))(); };
    return Plat_CreateThread(run, const_cast<WorkerBody*>(&body), thread_id);
  }

  static std::uint32_t ExitCode(PlatHandle thread) {
    std::uint32_t code = 0;
    EXPECT_TRUE(Plat_GetExitCodeThread(thread, &code));
    return code;
  }

  // Details of one kind, in order.
  template <typename T>
  std::vector<T> Details() {
    std::vector<T> details;
    for (const Event& event : world().trace.Events()) {
      if (const T* detail = world().trace.As<T>(event)) details.push_back(*detail);
    }
    return details;
  }
  // When and by whom the nth of one kind happened.
  template <typename T>
  Event Nth(std::size_t n) {
    for (const Event& event : world().trace.Events()) {
      if (world().trace.As<T>(event) != nullptr && n-- == 0) return event;
    }
    ADD_FAILURE() << "no such event";
    return {};
  }

  std::vector<std::string> log;
};

using Lines = std::vector<std::string>;

}  // namespace sim
