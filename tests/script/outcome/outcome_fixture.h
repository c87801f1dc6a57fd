// Text lines on a library that is watched from its load on.
#pragma once

#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "harness/host.h"
#include "script/outcome/library_facts.h"
#include "script/outcome/text_outcome.h"

namespace script {

class OutcomeTest : public testing::Test {
 protected:
  OutcomeTest() { harness::Restart(); }
  ~OutcomeTest() override { harness::Restart(); }

  // A fresh library, attached and bound to a window, before chips.
  void Attach(unsigned chips) {
    harness::Restart();
    facts_ = {};
    World().board.FitChips(chips);
    Watch([] {
      harness::Entry(1);
      harness::Initialize(sim::TheWorld().windows.Create());
    });
  }
  // Likewise, and its chips initialized; the worker is stopped.
  void Start(unsigned chips) {
    Attach(chips);
    EXPECT_EQ(Command(0xF001), 0);
    EXPECT_EQ(Command(0xF002), 0);
  }
  int Command(std::uint32_t code) {
    int result = 0;
    Watch([&] {
      sim::Bytes record;
      result = harness::CommandProc(code, &record);
    });
    return result;
  }
  // Runs a line as it stands; what is said of it, empty when it is nothing.
  std::string Said(const std::string& line) {
    Watch([&] { result_ = harness::TextCommandProc(line); });
    return OutcomeOfText(line, result_, World(), 0, facts_).value_or("");
  }

  sim::World& World() { return sim::TheWorld(); }
  // Of the last line: its result, and its bus cycles that store a data byte.
  int Result() const { return result_; }
  unsigned Writes() {
    unsigned writes = 0;
    for (const sim::Event& event : World().trace.Events()) {
      if (event.kind == sim::Event::Kind::Store && event.window == sim::BusWindow::Data) ++writes;
    }
    return writes;
  }
  // Nothing but the call and its return, and texts.
  bool Still() {
    for (const sim::Event& event : World().trace.Events()) {
      if (World().trace.As<sim::CallEvent>(event) == nullptr &&
          World().trace.As<sim::ReturnEvent>(event) == nullptr &&
          World().trace.As<sim::DebugEvent>(event) == nullptr) {
        return false;
      }
    }
    return true;
  }
  const LibraryFacts& Facts() const { return facts_; }

  template <typename Action>
  void Watch(Action action) {
    World().trace.ForgetEvents();
    action();
    Retell(World().trace, 0, facts_);
  }

 private:
  LibraryFacts facts_;
  int result_ = 0;
};

}  // namespace script
