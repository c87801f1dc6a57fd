// What initialization should leave in the chips, told a second time: the tables as text, the steps
// as straight code on a register file of its own. Nothing here calls the library.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "tests/setup/setup_test.h"

namespace test {

class InitModel {
 public:
  // A board at power-on. cameras: 0 NTSC, 1 PAL, 2 off.
  InitModel(int fitted_chips, int cameras);

  int chips;
  int channels;
  int standard = 2;  // the one that was decided on; set before the tables are written
  RegisterImage image{};
  std::vector<Access> accesses;

  // The steps, in the order of initialization.
  void DetectChips();
  void DetectVideo();
  void Page0Tables();
  void Page1Tables();
  void Page2Tables();
  void AdjustForHostVersion5();
  void MotionSetup();
  void OutputMode() { Write(kChipCodes[0], 1, 0xAC, 0x45); }
  void LiveSwitch();
  void RecordDefault();

  // All of them for a standard, for a host whose version asks for nothing.
  void Run(int decided_standard);

 private:
  int Read(int chip, int page, int reg);
  void Write(int chip, int page, int reg, int value);
  void Table(int chip, int page, int first, const std::string& hex);
  int ChipOf(int channel) const { return kChipCodes.at(static_cast<std::size_t>(channel / 4)); }
  void LiveVariant();
  void LiveSplit();

  std::array<int, 16> cameras_{};
};

// The default split of a channel count.
inline int DefaultSplitOf(int channels) { return channels == 4 ? 1 : channels == 8 ? 4 : 6; }

}  // namespace test
