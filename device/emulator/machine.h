// The library's image alone in a process of the emulated device, in the place of the linked
// library: the caller is the host on the PC, and the system that it calls is played by the
// simulated platform.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "device/emulator/process.h"
#include "harness/image_run.h"

namespace emulator {

struct MachineOptions {
  std::optional<std::uint32_t> base = {};  // none: the image's own
  std::uint64_t instruction_limit = ProcessLimits{}.instructions;
  // What the caller lends begins at a multiple of 8; else as oddly as its type allows.
  bool lends_aligned = false;
};

class Machine : public Process, public harness::ImageRun {
 public:
  // Throws BadImage for an image that does not fit or imports what the system does not have.
  explicit Machine(PeImage image, const MachineOptions& options = {});

  const PeImage& Image() const { return loaded_->File(); }
  std::uint32_t Base() const { return loaded_->Base(); }
  bool LendsAligned() const { return lends_aligned_; }
  // Address of an exported function, or of the entry point for an empty name. Throws BadImage.
  std::uint32_t AddressOf(const std::string& name) const;

  // A fresh load. No thread may be in the image. `without` leaves a relocation out.
  void Reload(std::optional<std::size_t> without = {});

  std::uint64_t Instructions() const override { return InstructionSum(); }
  std::uint32_t DeepestStack() const override { return DeepestStackOfAll(); }
  // Since the last reload.
  const std::optional<std::string>& FirstFault() const override { return Fault(); }

  // Whether code loaded the word of the image at this offset since ForgetLoads.
  bool Loaded(std::uint32_t rva) const { return noted_[rva / 4]; }
  void ForgetLoads() { noted_.assign(noted_.size(), false); }

 private:
  LoadedImage* loaded_;
  bool lends_aligned_;
};

}  // namespace emulator
