// What a script leaves to the program that runs it: how time passes, and how the board is shown.
#pragma once

#include <cstdint>
#include <optional>
#include <ostream>
#include <span>
#include <string>
#include <vector>

#include "script/words.h"
#include "sim/trace.h"

namespace script {

class Surroundings {
 public:
  virtual ~Surroundings() = default;

  // The host pumps its messages while this much of the board's time passes.
  virtual void LetTimePass(std::uint32_t ms);
  // Whether the user wants the line that is running to end.
  virtual bool Interrupted() const { return false; }
  // A line begins: what was pressed before is not meant for it.
  virtual void ForgetInterrupt() {}

  // Says how far a long line is, where somebody watches; wipes it before anything else is printed.
  virtual void ShowProgress(const std::string& /*text*/) {}
  virtual void ClearProgress() {}

  // The register pages of these chips, all pages or one.
  virtual void ShowRegisters(std::ostream& out, ChipChoice chips,
                             std::optional<std::uint8_t> page) = 0;
  // The library's functions that the calling thread is in, the innermost first; empty where that is
  // not known.
  virtual std::vector<std::string> LibraryStack() { return {}; }

  // The register writes of the trace from this event on.
  virtual void ShowWrites(std::ostream& out, std::size_t first_event) = 0;
  virtual void ShowAccesses(std::ostream& out, std::span<const sim::RegisterAccess> accesses) = 0;
  virtual void ShowScreen(std::ostream& out) = 0;
  // Writes the screen to a file. Throws std::runtime_error with the reason.
  virtual void SavePicture(const std::string& path) = 0;
};

}  // namespace script
