// Which channels are blanked, frozen and recorded.
#include "tests/model/reference_model.h"

namespace test {

void ReferenceModel::AttributeMask(std::uint32_t mask, int bit) {
  for (int n = 0; n < channels; ++n) {
    const int reg = 0x11 + 8 * (n % 4);
    const int old = Read(ChipOf(n), 1, reg);
    const bool set = (mask & (1u << n)) != 0;
    Write(ChipOf(n), 1, reg, set ? old | bit : old & ~bit & 0xFF);
  }
}

void ReferenceModel::Blank(std::uint32_t mask) {
  AttributeMask(mask, kBlankBit);
  (view == kLive ? live_blank : play_blank) = mask;
}

void ReferenceModel::RecordMask(std::uint32_t mask) {
  for (int n = 0; n < channels; ++n) {
    Write(ChipOf(n), 1, 0x61 + 3 * (n % 4), (mask & (1u << n)) != 0 ? 0x00 : 0x04);
  }
}

// ---- Of the host --------------------------------------------------------------------------------

int ReferenceModel::ChannelMasks(const HostMasks& given) {
  masks = given;
  if (view == kLive || view == kPlayback) RestoreBlank();
  RecordMask(masks.record);
  return 0;
}

int ReferenceModel::BlankMask(std::uint32_t mask) {
  if (!HasLayouts(channels)) return -1;
  Blank(mask);
  return 0;
}

int ReferenceModel::Bit0Mask(std::uint32_t mask) {
  if (!HasLayouts(channels)) return -1;
  AttributeMask(mask, kBit0);
  return 0;
}

int ReferenceModel::RestoreBlank() { return BlankMask(~(view == kLive ? masks.live : masks.play)); }

// ---- Of the text path ---------------------------------------------------------------------------

// An unknown number of channels visits the first two chips.
void ReferenceModel::ChipMask(std::uint32_t mask, int bit) {
  const int visited = channels == 4 ? 1 : channels == 16 ? 4 : 2;
  for (int i = 0; i < 4; ++i) {
    for (int p = 0; p < visited; ++p) {
      const int chip = kChips.at(static_cast<std::size_t>(p));
      const int old = Read(chip, 1, 0x11 + 8 * i);
      const bool set = (mask & (1u << (4 * p + i))) != 0;
      Write(chip, 1, 0x11 + 8 * i, set ? old | bit : old & (0xFF - bit));
    }
  }
  if (bit == kFreezeBit) frozen = mask;
}

// Position by position, and there chip by chip; a board without layouts counts as one chip.
void ReferenceModel::BlankAll() {
  for (int i = 0; i < 4; ++i) {
    for (int p = 0; p < (HasLayouts(channels) ? chips : 1); ++p) {
      const int chip = kChips.at(static_cast<std::size_t>(p));
      const int old = Read(chip, 1, 0x11 + 8 * i);
      Write(chip, 1, 0x11 + 8 * i, old | kBlankBit);
      Write(chip, 1, 0x11 + 8 * i, old | kBlankBit);
    }
  }
  if (HasLayouts(channels)) play_blank = AllChannels(channels);
}

void ReferenceModel::UnblankAll() {
  for (int i = 0; i < 4; ++i) {
    for (int p = 0; p < (HasLayouts(channels) ? chips : 1); ++p) {
      const int chip = kChips.at(static_cast<std::size_t>(p));
      Write(chip, 1, 0x11 + 8 * i, Read(chip, 1, 0x11 + 8 * i) & 0xFB);
    }
  }
  play_blank = 0;
}

void ReferenceModel::UnblankPair(int channel) {
  const std::uint32_t pair = (3u << channel) & 0xFFFFu;
  if ((play_blank & pair) == 0) return;
  for (const int c : {channel, channel + 1}) {
    const int reg = 0x11 + 8 * (c % 4);
    Write(ChipOf(c), 1, reg, Read(ChipOf(c), 1, reg) & 0xFB);
  }
  play_blank &= ~pair;
}

void ReferenceModel::Attributes(int to_clear, int to_set) {
  for (int i = 0; i < 4; ++i) {
    for (int p = 0; p < chips; ++p) {
      const int chip = kChips.at(static_cast<std::size_t>(p));
      const int old = Read(chip, 1, 0x11 + 8 * i);
      Write(chip, 1, 0x11 + 8 * i, (old & ~to_clear) | to_set);
    }
  }
}

// ---- The record path ----------------------------------------------------------------------------

void ReferenceModel::RecordSetup(int record_mode, int switching) {
  struct Row {
    int mode;
    int layout;
    int control;
    int enable;
    int order;
  };
  constexpr std::array<Row, 3> kRows = {{{0x00, 0x00, 0x20, 0xFF, 0x00},
                                         {0x40, 0x10, 0x10, 0x00, 0xE4},
                                         {0x00, 0x30, 0x00, 0x00, 0xE4}}};
  const Row& row = kRows.at(static_cast<std::size_t>(record_mode));

  All1(0x51, row.mode);
  for (int n = 0; n < channels; ++n) {
    Write(ChipOf(n), 0, 0x8A + 0x10 * (n % 4), 0x40 * (n % 4) + row.layout);
  }
  if (record_mode == 0 && HasLayouts(channels)) {
    for (int p = 0; p < chips; ++p) {
      const int chip = kChips.at(static_cast<std::size_t>(p));
      Write(chip, 1, 0x57, 0x00);
      Write(chip, 1, 0x58, 0x00);
      Write(chip, 1, 0x59, 0x00);
      Write(chip, 1, 0x5A, 0x80);
      Write(chip, 1, 0x56, switching == 4 ? 0x70 : 0x40);
    }
  }
  if (record_mode == 1) {
    for (const int chip : kChips) Write(chip, 1, 0x57, 0x80);
    for (const int reg : {0x62, 0x65, 0x68, 0x6B}) All1(reg, 0x20);
  }
  for (int i = 0; i < 4; ++i) All1(0x60 + 3 * i, 0x80 | row.control | i);
  All1(0x6C, row.enable);
  All1(0x6D, row.order);
  All1(0x86, 0x20);
  RecordMask(0xFFFFFFFF);
}

}  // namespace test
