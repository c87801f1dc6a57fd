// The steps of initialization, in their order.
#include "tests/model/init_tables.h"
#include "tests/model/reference_model.h"

namespace test {

void ReferenceModel::Initialize(int decided_standard) {
  DetectChips();
  DetectVideo();
  SetStandard(decided_standard);
  Page0Tables();
  Page1Tables();
  Page2Tables();
  InitMotion();
  Write(kMaster, 1, 0xAC, 0x45);  // output mode
  Channels all;
  for (std::uint8_t n = 0; n < 16; ++n) all.push_back(n);
  LiveMode(DefaultSplitOf(channels), all);
  RecordSetup(1, 0);
  InitMotion();
}

void ReferenceModel::DetectChips() {
  for (const int chip : kChips) Read(chip, 0, 0xFE);
}

void ReferenceModel::DetectVideo() {
  for (int p = 0; p < chips; ++p) {
    Read(ChipOf(4 * p), 1, 0x76);
    Read(ChipOf(4 * p), 1, 0x78);
  }
  for (int n = 0; n < channels; ++n) {
    if (cameras_.at(static_cast<std::size_t>(n)) != 2) Read(ChipOf(n), 0, 0x01 + 0x10 * (n % 4));
  }
}

void ReferenceModel::Page0Tables() {
  const bool ntsc = Ntsc();
  for (int c = 0; c < 4; ++c) {
    Table(kAll, 0, 0x10 * c, ntsc ? kInputN : kInputP);
    Write(kAll, 0, 0x10 * c + 0x0C, (c << 6) | 0x06);
    Table(kAll, 0, 0x80 + 0x10 * c, ntsc ? kScalerN : kScalerP);
    Write(kAll, 0, 0x80 + 0x10 * c, c << 6);
    Write(kAll, 0, 0x8A + 0x10 * c, (c << 6) | 0x31);
  }
  Table(kAll, 0, 0x40, kDecoder);
  Table(kAll, 0, 0x60, ntsc && channels != 4 ? kAudioLargerN : kAudio);
  Table(kAll, 0, 0xC0, kBlockC0);
  if (!ntsc) {
    for (const int reg : {0x02, 0x12, 0x22, 0x32}) Write(kAll, 0, reg, 0x28);
  }
  Write(kAll, 0, 0x4C, 0x30);
  for (const int reg : {0x02, 0x12, 0x22, 0x32}) Write(kAll, 0, reg, ntsc ? 0x20 : 0x32);
  for (const int reg : {0x03, 0x13, 0x23, 0x33}) Write(kAll, 0, reg, 0xD0);
  for (const int reg : {0x04, 0x14, 0x24, 0x34}) Write(kAll, 0, reg, 0x09);
}

void ReferenceModel::Page1Tables() {
  const bool ntsc = Ntsc();
  const char* const master = ntsc ? kOutputMasterN : kOutputMasterP;
  const char* const slave = ntsc ? kOutputSlaveN : kOutputSlaveP;
  if (channels == 4) {
    Table(kAll, 1, 0x01, kDisplay4);
    Table(kAll, 1, 0x50, kRecord4);
    Table(kAll, 1, 0x30, ntsc ? kWindows4N : kWindows4P);
    Table(kAll, 1, 0xA0, master);
    Write(kAll, 1, 0x00, ntsc ? 0x00 : 0x80);
    Write(0x03, 1, 0x7E, 0x8A);
  }
  if (channels == 8) {
    Table(kAll, 1, 0x01, kDisplayLarger);
    Table(kAll, 1, 0x50, kRecordLarger);
    Table(0x03, 1, 0x30, ntsc ? kWindows8N : kWindows8P);
    Table(0x0C, 1, 0x30, ntsc ? kWindows8N : kWindows8P);
    Table(0x03, 1, 0xA0, master);
    Table(0x0C, 1, 0xA0, slave);
    Write(0x03, 1, 0x00, ntsc ? 0x08 : 0x88);
    Write(0x0C, 1, 0x00, ntsc ? 0x39 : 0xB9);
    Write(0x03, 1, 0x7E, 0x8A);
    Write(0x0C, 1, 0x7E, 0x8A);
  }
  if (channels == 16) {
    Table(kAll, 1, 0x01, kDisplayLarger);
    Table(kAll, 1, 0x50, kRecordLarger);
    for (std::size_t p = 0; p < 4; ++p) {
      Table(kChips.at(p), 1, 0x30, (ntsc ? kWindows16N : kWindows16P).at(p));
    }
    for (std::size_t p = 0; p < 4; ++p) Table(kChips.at(p), 1, 0xA0, p == 0 ? master : slave);
    constexpr std::array<int, 4> kSystemN = {0x08, 0x09, 0x0A, 0x3B};
    constexpr std::array<int, 4> kSystemP = {0x88, 0x89, 0x8A, 0xBB};
    constexpr std::array<int, 4> kCascade = {0xC9, 0xA9, 0x89, 0x89};
    for (std::size_t p = 0; p < 4; ++p) {
      Write(kChips.at(p), 1, 0x00, (ntsc ? kSystemN : kSystemP).at(p));
    }
    for (std::size_t p = 0; p < 4; ++p) Write(kChips.at(p), 1, 0x7E, kCascade.at(p));
  }
  Write(kAll, 1, 0xA7, 0x0D);
  Write(kAll, 1, 0xA8, 0x20);
  Write(kAll, 1, 0x80, 0xE1);
  Write(kAll, 1, 0x81, 0x00);
  Write(kAll, 1, 0x82, 0x92);
  Write(kAll, 1, 0x83, ntsc ? 0x0F : 0x16);
  Write(kAll, 1, 0x84, 0xEB);
  Write(kAll, 1, 0x85, 0x10);
  Write(kAll, 1, 0x86, 0x20);
  Write(kAll, 1, 0x87, 0x00);
  Write(kAll, 1, 0x88, 0xB2);
  Write(kAll, 1, 0x89, ntsc ? 0x0F : 0x14);
  Write(kAll, 1, 0x8A, 0x80);
  for (int c = 0; c < 4; ++c) {
    Table(kAll, 0, 0x8B + 0x10 * c, ntsc ? "00 68 02 78 04" : "00 68 02 90 04");
  }
  Write(kAll, 0, 0xC0, 0x08);
}

void ReferenceModel::Page2Tables() {
  Table(kAll, 2, 0x10, kOverlay);
  Table(kAll, 2, 0x60, kBoxes);
  for (const int reg : {0x80, 0xA0, 0xC0, 0xE0}) {
    Table(kAll, 2, reg, channels == 4 ? kMotion4 : kMotionLarger);
  }
  Write(kAll, 2, 0x10, 0x00);
}

void ReferenceModel::AdjustForHostVersion5() {
  for (int p = 0; p < chips; ++p) {
    const int value = Read(ChipOf(4 * p), 1, 0x0F);
    Write(ChipOf(4 * p), 1, 0x0F, (value & 0xCF) | 0x20);
  }
}

}  // namespace test
