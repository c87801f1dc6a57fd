// Scripts and the console in a terminal: what they show, how far they are, and Ctrl-C.
#pragma once

#include <cstdint>
#include <optional>
#include <ostream>
#include <span>
#include <string>

#include "script/surroundings.h"
#include "tools/vexosim/listing/call_stack.h"
#include "tools/vexosim/terminal.h"

namespace vexosim {

class TerminalSurroundings : public script::Surroundings {
 public:
  explicit TerminalSurroundings(PictureStyle style = {}, bool show_progress = false)
      : style_(style), progress_(show_progress) {}

  bool Interrupted() const override { return vexosim::Interrupted(); }
  void ForgetInterrupt() override { vexosim::ForgetInterrupt(); }
  void ShowProgress(const std::string& text) override { progress_.Update(text); }
  void ClearProgress() override { progress_.Clear(); }
  void ShowRegisters(std::ostream& out, script::ChipChoice chips,
                     std::optional<std::uint8_t> page) override;
  std::vector<std::string> LibraryStack() override { return vexosim::LibraryStack(); }
  void ShowWrites(std::ostream& out, std::size_t first_event) override;
  void ShowAccesses(std::ostream& out, std::span<const sim::RegisterAccess> accesses) override;
  void ShowScreen(std::ostream& out) override;
  void SavePicture(const std::string& path) override;

 private:
  PictureStyle style_;
  Progress progress_;
};

}  // namespace vexosim
