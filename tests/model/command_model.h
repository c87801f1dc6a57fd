// What the binary commands promise a host: what comes back, what becomes of the record, and what
// the library remembers. What they write to the chips is the business of the model inside.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "VexoCtrlSDK.h"
#include "tests/model/reference_model.h"

namespace test {

// The first code behind the last command: what a host of a later version might send.
inline constexpr std::uint32_t kUnknownCommand = VEXO_CMD_MOTION_REG + 1;

class CommandModel {
 public:
  using Bytes = std::vector<std::uint8_t>;
  using CellMask = std::array<std::uint8_t, VEXO_MOTION_MASK_BYTES>;

  // ---- What the host and the board did ----------------------------------------------------------

  bool initialized = true;
  bool bound = true;
  std::array<std::uint8_t, VEXO_MAX_CHIPS> chip_ids = {};  // as they read now

  // ---- What the library remembers ---------------------------------------------------------------

  ReferenceModel display;   // and what the last command did to the chips
  unsigned lock_depth = 0;  // acquisitions that the host thread was left with
  bool ready = false;
  std::array<CellMask, VEXO_MAX_CHANNELS> motion_mask = {};
  std::array<std::uint8_t, VEXO_MAX_CHANNELS> motion_level = {};

  // A command; record becomes what it has to be afterwards, apart from bytes that the registers
  // decide: those are marked free.
  int Run(std::uint32_t code, std::optional<Bytes>& record, std::vector<bool>& free);
  // The same for a command that leaves its record as it is.
  int Run(std::uint32_t code, const std::optional<Bytes>& record);

  int SetMotionInfo(std::uint8_t channel, std::uint8_t level, const std::optional<Bytes>& mask);

  static bool NeedsRecord(std::uint32_t code);
  // How long the record of a command is; none for commands without one.
  static std::optional<std::size_t> RecordBytes(std::uint32_t code);

 private:
  int Initialize(std::optional<Bytes>& record, std::vector<bool>& free);
  int Operate(std::uint32_t code, std::optional<Bytes>& record, std::vector<bool>& free);
  int MotionMaskRecord(Bytes& record, bool keep);
  void Keep(std::uint8_t channel, std::uint8_t level, const std::uint8_t* mask);
};

}  // namespace test
