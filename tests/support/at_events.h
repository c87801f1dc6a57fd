// Looks at the library's state in the middle of a call: a function that hears of each event when it
// happens.
#pragma once

#include <functional>
#include <utility>

#include "sim/world.h"

namespace test {

class AtEvents : public sim::TraceListener {
 public:
  // The detail is null for a bus cycle.
  using Look = std::function<void(const sim::Event&, const sim::EventDetail*)>;
  explicit AtEvents(Look look) : look_(std::move(look)) {
    sim::TheWorld().trace.AddListener(*this);
  }
  ~AtEvents() override { sim::TheWorld().trace.RemoveListener(*this); }
  AtEvents(const AtEvents&) = delete;
  AtEvents& operator=(const AtEvents&) = delete;

 private:
  void OnEvent(const sim::Event& event, const sim::EventDetail* detail) override {
    look_(event, detail);
  }
  Look look_;
};

}  // namespace test
