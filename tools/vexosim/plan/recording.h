// What a script does on the simulated board, action by action.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "device/plan/plan.h"
#include "script/parse.h"
#include "sim/board/snapshot.h"

namespace vexosim {

struct RecordedMessage {
  std::uint32_t message = 0;
  std::uint32_t wparam = 0;  // 0 where it is an address
  std::uint32_t lparam = 0;
  plan::Bytes record;
};

struct RecordedAction {
  unsigned line = 0;  // of the script; 0: none
  std::string source;
  plan::Action action;
  std::optional<std::int32_t> result;
  std::optional<plan::Bytes> record;
  std::optional<std::string> answer;
  std::vector<RecordedMessage> messages;
  plan::Cost cost;    // of the host's thread
  std::string debug;  // the worker's, too
  // After it, where the library can be asked for them.
  std::optional<sim::RegisterSnapshot> registers;
};

// The bits of each register that a write reaches; those that chips own are none.
using WritableBits = sim::RegisterSnapshot;

struct Recording {
  std::vector<std::string> board;  // the lines that make it, of a fresh one
  WritableBits writable;
  std::vector<RecordedAction> actions;
};

// How the board begins.
enum class Begin {
  AsItIs,  // the script's expectations must be met
  // In all that the script does not say: every bit that a write reaches is the other way round, the
  // chips are of another revision, need time to settle, and their sync bit has another period; what
  // can move before a camera moves.
  OtherWay,
};

// Throws NoPlan when the script cannot be run to its end, or expects what does not come.
Recording Record(const script::Script& script, Begin begin);

}  // namespace vexosim
