// Motion detection: masks, levels, shared parameters, and the boxes that show the cells.
#include "tests/model/reference_model.h"

namespace test {
namespace {

bool Has(std::uint32_t mask, int channel) { return ((mask >> channel) & 1) != 0; }

struct BoxLook {
  int control;
  int attribute;
};
BoxLook BoxLookOf(int type) {
  constexpr std::array<BoxLook, 5> kLooks = {
      {{0xA0, 0x00}, {0xA0, 0x10}, {0x98, 0x28}, {0xB8, 0x28}, {0xB8, 0x38}}};
  return kLooks.at(type < 5 ? static_cast<std::size_t>(type) : 0);
}

}  // namespace

void ReferenceModel::MotionMask(int channel, const std::vector<std::uint8_t>& mask) {
  for (int i = 0; i < 24; ++i) {
    Write(ChipOf(channel), 2, 0x86 + 0x20 * (channel % 4) + i,
          mask.at(static_cast<std::size_t>(i)));
  }
}

void ReferenceModel::MotionLevel(int channel, int level) {
  constexpr std::array<const char*, 4> kLevels = {"CF 07 51", "4C 08 41", "08 09 21", "04 0A 01"};
  Table(ChipOf(channel), 2, 0x83 + 0x20 * (channel % 4),
        kLevels.at(static_cast<std::size_t>(level)));
}

void ReferenceModel::MotionTiming(int value) {
  motion_timing = value;
  for (const int reg : {0x5B, 0x5C, 0x5D, 0x5E}) Write(kAll, 2, reg, value);
  Write(kAll, 2, 0x5F, 0xAA);
}

// Every cell of every channel, level 1.
void ReferenceModel::InitMotion() {
  for (int n = 0; n < channels; ++n) MotionMask(n, std::vector<std::uint8_t>(24, 0xFF));
  for (int n = 0; n < channels; ++n) MotionLevel(n, 1);
  MotionTiming(0x33);
}

// ---- Boxes --------------------------------------------------------------------------------------

void ReferenceModel::HideMotionCells() {
  for (int p = 0; p < 4; ++p) {
    Box(kAll, 0x60, p, p);
    Box(kAll, 0x61, p, 0x00);
  }
}

void ReferenceModel::ShowMotionCells(int type, int split, int first) {
  for (int p = 0; p < 4; ++p) {
    Box(kAll, 0x60, p, p);
    Box(kAll, 0x61, p, p);
  }
  // How far the cells begin inside their window, and how wide and high one is.
  if (split == 0 && Has(masks.live, first)) CellsOfOne(type, first);
  if (split == 1) Cells(type, split, first, 4, {0, 0, 0x09, Ntsc() ? 0x09 : 0x0A});
  if (split == 4) {
    Cells(type, split, first, channels == 8 ? 8 : 9, {3, 2, 0x05, Ntsc() ? 0x05 : 0x06});
  }
  if (split == 6) Cells(type, split, first, 16, {0, 0, 0x04, Ntsc() ? 0x04 : 0x05});
}

void ReferenceModel::CellsOfOne(int type, int channel) {
  const int chip = ChipOf(channel);
  const int p = channel % 4;
  for (const int reg : {0x5B, 0x5C, 0x5D, 0x5E}) Write(chip, 2, reg, motion_timing);
  if (!Has(frozen, channel)) {
    Box(chip, 0x60, p, BoxLookOf(type).control | p | 0x08);
    Box(chip, 0x61, p, BoxLookOf(type).attribute | 0x32);
  }
  Box(chip, 0x62, p, Tile(0, 0)[0]);
  Box(chip, 0x64, p, Tile(0, 0)[2]);
  Box(chip, 0x63, p, 0x15);
  Box(chip, 0x65, p, Ntsc() ? 0x13 : 0x16);
}

void ReferenceModel::Cells(int type, int split, int first, int count, const Rect& cell) {
  int c = first;
  for (int k = 0; k < count; ++k) {
    if (split == 4 && k == 2 && split_option != 0) c = (c + 7) % channels;  // the second page
    if (Has(masks.live, c)) {
      const int chip = ChipOf(c);
      const int p = c % 4;
      if (!Has(frozen, c)) {
        Box(chip, 0x60, p, BoxLookOf(type).control | p);
        Box(chip, 0x61, p, BoxLookOf(type).attribute);
      }
      Box(chip, 0x62, p, Tile(split, k)[0] + cell[0]);
      Box(chip, 0x64, p, Tile(split, k)[2] + cell[1]);
      Box(chip, 0x63, p, cell[2]);
      Box(chip, 0x65, p, cell[3]);
    }
    c = c + 1 == channels ? 0 : c + 1;
  }
}

}  // namespace test
