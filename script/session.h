// What a script's lines act on while it runs: its outputs, and what the last action did.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "script/surroundings.h"
#include "sim/board/snapshot.h"
#include "sim/world.h"

namespace script {

// An expectation that was not met; the text says what was found.
struct Unmet {
  std::string found;
};

class Session {
 public:
  Session(std::ostream& out, Surroundings& around) : out_(out), around_(around) {}

  sim::World& World() const { return sim::TheWorld(); }
  std::ostream& Out() const { return out_; }
  Surroundings& Around() const { return around_; }

  // An action begins: what is looked at from now on is its own.
  void BeginAction(std::string name);
  // The last action's name and result, none when its call has none.
  const std::string& ActionName() const { return action_; }
  std::optional<std::int64_t> returned;

  // The registers at moments that have a name; "start" is when the last action began.
  std::map<std::string, sim::RegisterSnapshot, std::less<>> moments;

  // ---- What the last action did -------------------------------------------------------------

  std::size_t FirstEvent() const { return first_event_; }
  std::size_t FirstReceived() const { return first_received_; }
  std::uint64_t Cycles() const { return World().trace.Cycles() - first_cycle_; }
  // The caller's record as its call left it; null when the call had none.
  const sim::Bytes* Record() const;
  // All its debug and kernel debug writes, in order.
  std::string DebugText() const;
  // Whether it sent or posted such a message with success, or the host window handled one.
  bool HasMessage(std::uint32_t message, std::optional<std::uint32_t> wparam) const;

 private:
  std::ostream& out_;
  Surroundings& around_;
  std::string action_;
  std::size_t first_event_ = 0;
  std::size_t first_received_ = 0;
  std::uint64_t first_cycle_ = 0;
};

}  // namespace script
