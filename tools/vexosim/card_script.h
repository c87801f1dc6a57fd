// The lines of a script beside the programs of an emulated device: what its board is, and what
// happens to it while they run.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "device/emulator/device.h"
#include "script/session.h"

namespace vexosim {

class CardScript {
 public:
  CardScript() = default;
  // Lines that change the board, and `wait`, `key` and `start`. Throws script::ScriptError.
  explicit CardScript(const std::string& file);

  // The lines before the first that waits, presses a key or starts a program.
  void MakeBoard(script::Session& session) const;
  // The others, from now on, beside the calling thread. Session and device must stay; what goes
  // wrong comes out of what the main host thread does: script::ScriptError, with the line.
  void Play(script::Session& session, emulator::Device& device) const;

 private:
  using Step = std::function<void(script::Session&, emulator::Device&)>;
  void Add(const std::string& text, const std::string& where);

  std::vector<std::function<void(script::Session&)>> board_;
  std::vector<Step> steps_;
};

}  // namespace vexosim
