#include "tests/model/init_model.h"

#include <sstream>

namespace test {
namespace {

// Hexadecimal bytes in register order.
constexpr const char* kInputN = "00 C8 20 D0 06 F0 08 80 80 80 80 18 03 03 11";
constexpr const char* kInputP = "00 88 20 D0 05 20 28 80 80 80 80 18 03 03 11";
constexpr const char* kScalerN = "01 3F FF 3F FF 00 FF FF FF FF 30 00 D0 00 F0 08";
constexpr const char* kScalerP = "01 3F FF 3F FF 00 FF FF FF FF 30 00 D0 00 20 28";
constexpr const char* kBlock40 =
    "00 33 77 45 A0 D0 7F 64 80 80 80 80 30 0F 05 00 "
    "00 80 06 00 00";
constexpr const char* kAudio =
    "88 88 00 00 10 32 54 76 98 BA DC FE 00 00 88 88 "
    "88 54 00 00 00";
constexpr const char* kAudioLargerN =
    "88 88 03 01 10 32 54 76 98 BA DC FE 03 00 88 88 "
    "88 53 00 00 00";
constexpr const char* kBlockC0 = "00 00 00 07 00 00 F0 FF 00 3C 4F";
constexpr const char* kDisplay4 =
    "02 00 00 00 04 00 00 00 00 00 D7 23 2D 1E A7 80 "
    "02 00 00 02 00 10 00 81 02 00 01 02 00 11 00 82 "
    "02 00 02 02 00 12 00 83 02 00 03 02 00 13 00";
constexpr const char* kDisplayLarger =
    "02 00 00 00 04 00 00 00 00 00 D7 23 2D 1E 93 80 "
    "02 00 00 02 00 10 00 81 02 00 01 02 00 11 00 82 "
    "02 00 02 02 00 12 00 83 02 00 03 02 00 13 00";
constexpr const char* kRecord4 =
    "28 01 10 A0 40 00 00 00 00 00 00 00 00 00 00 A7 "
    "80 00 00 81 00 00 82 00 00 83 00 00 00 E4 00 00 "
    "00 03 00 00 00 00 02 00 FF FF FF FF F0 00 89 84 "
    "DF 00 91 07 EB 10 A8 00 91 E7 80 00 00 00 00 00 "
    "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00";
constexpr const char* kRecordLarger =
    "28 00 10 A0 40 00 00 00 00 00 00 00 00 00 00 93 "
    "80 00 00 81 00 00 82 00 00 83 00 00 00 E4 00 00 "
    "00 03 00 00 00 00 02 00 FF FF FF FF F0 00 89 84 "
    "DF 00 91 07 EB 10 A8 00 91 E7 80 00 00 00 00 00 "
    "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00";
constexpr const char* kWindows4N = "00 5A 00 3C 5A B4 00 3C 00 5A 3C 78 5A B4 3C 78";
constexpr const char* kWindows4P = "00 5A 00 48 5A B4 00 48 00 5A 48 90 5A B4 48 90";
constexpr const char* kWindows8N = "00 B4 00 78 00 B4 00 78 00 B4 00 78 00 B4 00 78";
constexpr const char* kWindows8P = "00 B4 00 90 00 B4 00 90 00 B4 00 90 00 B4 00 90";
constexpr std::array<const char*, 4> kWindows16N = {
    "00 2D 00 1E 2D 5A 00 1E 5A 87 00 1E 87 B4 00 1E",
    "00 2D 1E 3C 2D 5A 1E 3C 5A 87 1E 3C 87 B4 1E 3C",
    "00 2D 3C 5A 2D 5A 3C 5A 5A 87 3C 5A 87 B4 3C 5A",
    "00 2D 5A 78 2D 5A 5A 78 5A 87 5A 78 87 B4 5A 78",
};
constexpr std::array<const char*, 4> kWindows16P = {
    "00 2D 00 24 2D 5A 00 24 5A 87 00 24 87 B4 00 24",
    "00 2D 24 48 2D 5A 24 48 5A 87 24 48 87 B4 24 48",
    "00 2D 48 6C 2D 5A 48 6C 5A 87 48 6C 87 B4 48 6C",
    "00 2D 6C 90 2D 5A 6C 90 5A 87 6C 90 87 B4 6C 90",
};
constexpr const char* kOutputMasterN = "66 90 D0 01 80 20 00 0C 20 08 AA 00 40 40 00 00";
constexpr const char* kOutputSlaveN = "66 FF 97 01 80 20 00 0C 20 08 AA 00 40 40 00 00";
constexpr const char* kOutputMasterP = "66 90 D0 01 80 20 00 0C 20 48 AA 00 40 40 00 00";
constexpr const char* kOutputSlaveP = "66 FF 97 01 80 20 00 0C 20 48 AA 00 40 40 00 00";
constexpr const char* kOverlay =
    "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 "
    "00 B0 00 00 00 00 40 00 00 00 00 00 00 B0 00 00 "
    "00 00 40 00 00 00 00 00 00 00 00 00 00 00 00 00 "
    "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 "
    "00 00 00 00 00 00 00 00 00 00 00 40 40 40 42 FF";
constexpr const char* kBoxes =
    "88 00 00 00 00 00 FB 00 89 00 00 00 00 00 FB 00 "
    "8A 00 00 00 00 00 FB 00 8B 00 00 00 00 00 FB 00";
constexpr const char* kMotion4 =
    "17 73 88 4A 07 24 00 00 00 00 00 00 00 00 00 00 "
    "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00";
constexpr const char* kMotionLarger =
    "57 73 88 4A 07 24 00 00 00 00 00 00 00 00 00 00 "
    "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00";
// Rectangles of the default splits: x start, x end, y start, y end of each window in turn.
constexpr const char* kSplit4N = "04 5A 01 3C 5A B0 01 3C 04 5A 3C 77 5A B0 3C 77";
constexpr const char* kSplit4P = "04 5A 02 48 5A B0 02 48 04 5A 48 8E 5A B0 48 8E";
constexpr const char* kSplit9N =
    "04 3D 02 29 3D 77 02 29 77 B0 02 29 04 3D 29 50 3D 77 29 50 77 B0 29 50 "
    "04 3D 50 76 3D 77 50 76 77 B0 50 76";
constexpr const char* kSplit9P =
    "04 3D 02 31 3D 76 02 31 76 B0 02 31 04 3D 31 5F 3D 76 31 5F 76 B0 31 5F "
    "04 3D 5F 8E 3D 76 5F 8E 76 B0 5F 8E";
constexpr const char* kSplit16N =
    "04 2F 02 1F 2F 5A 02 1F 5A 85 02 1F 85 B0 02 1F 04 2F 1F 3C 2F 5A 1F 3C 5A 85 1F 3C "
    "85 B0 1F 3C 04 2F 3C 59 2F 5A 3C 59 5A 85 3C 59 85 B0 3C 59 04 2F 59 76 2F 5A 59 76 "
    "5A 85 59 76 85 B0 59 76";
constexpr const char* kSplit16P =
    "04 2F 02 25 2F 5A 02 25 5A 85 02 25 85 B0 02 25 04 2F 25 48 2F 5A 25 48 5A 85 25 48 "
    "85 B0 25 48 04 2F 48 6B 2F 5A 48 6B 5A 85 48 6B 85 B0 48 6B 04 2F 6B 8E 2F 5A 6B 8E "
    "5A 85 6B 8E 85 B0 6B 8E";

std::vector<int> Parse(const std::string& hex) {
  std::vector<int> bytes;
  std::istringstream in(hex);
  for (int byte = 0; in >> std::hex >> byte;) bytes.push_back(byte);
  return bytes;
}

// Bits that a chip answers for itself: a write does not reach them.
int OwnBits(int page, int reg) {
  if (page == 0) {
    if (reg == 0xFE) return 0xFF;
    return reg == 0x01 || reg == 0x11 || reg == 0x21 || reg == 0x31 ? 0x01 : 0x00;
  }
  if (page == 1) {
    if (reg == 0x76 || reg == 0x78 || reg == 0x79) return 0xFF;
    if (reg == 0x04) return 0x0F;
    return reg == 0xAB ? 0xF0 : 0x00;
  }
  return reg == 0x0A ? 0x80 : 0x00;
}

}  // namespace

InitModel::InitModel(int fitted_chips, int cameras)
    : chips(fitted_chips), channels(4 * fitted_chips) {
  cameras_.fill(cameras);
  for (std::size_t p = 0; p < 4; ++p) {
    if (p >= static_cast<std::size_t>(chips)) {
      for (auto& page : image[p]) page.fill(0xFF);  // nobody drives the bus
      image[p][0][0xFE] = 0x00;
      continue;
    }
    image[p][0][0xFE] = 0x28;
    for (std::size_t c = 0; c < 4; ++c) image[p][0][0x01 + 0x10 * c] = cameras == 1 ? 0 : 1;
    image[p][1][0x78] = cameras == 2 ? 0x0F : 0x00;
  }
}

int InitModel::Read(int chip, int page, int reg) {
  int value = 0xFF;
  for (std::size_t p = 0; p < 4; ++p) {
    if (chip != kChipCodes.at(p)) continue;
    value = image.at(p).at(static_cast<std::size_t>(page)).at(static_cast<std::size_t>(reg));
  }
  accesses.push_back(R(chip, page, reg, value));
  return value;
}

void InitModel::Write(int chip, int page, int reg, int value) {
  const int own = OwnBits(page, reg);
  for (int p = 0; p < chips; ++p) {
    if ((chip & (3 << (2 * p))) == 0) continue;
    std::uint8_t& byte = image.at(static_cast<std::size_t>(p))
                             .at(static_cast<std::size_t>(page))
                             .at(static_cast<std::size_t>(reg));
    byte = static_cast<std::uint8_t>((byte & own) | (value & ~own));
  }
  accesses.push_back(W(chip, page, reg, value));
}

void InitModel::Table(int chip, int page, int first, const std::string& hex) {
  int reg = first;
  for (const int byte : Parse(hex)) Write(chip, page, reg++, byte);
}

void InitModel::DetectChips() {
  for (const int chip : kChipCodes) Read(chip, 0, 0xFE);
}

void InitModel::DetectVideo() {
  for (int p = 0; p < chips; ++p) {
    Read(ChipOf(4 * p), 1, 0x76);
    Read(ChipOf(4 * p), 1, 0x78);
  }
  for (int n = 0; n < channels; ++n) {
    if (cameras_.at(static_cast<std::size_t>(n)) != 2) Read(ChipOf(n), 0, 0x01 + 0x10 * (n % 4));
  }
}

void InitModel::Page0Tables() {
  const bool ntsc = standard == 0;
  for (int c = 0; c < 4; ++c) {
    Table(kAllChips, 0, 0x10 * c, ntsc ? kInputN : kInputP);
    Write(kAllChips, 0, 0x10 * c + 0x0C, (c << 6) | 0x06);
    Table(kAllChips, 0, 0x80 + 0x10 * c, ntsc ? kScalerN : kScalerP);
    Write(kAllChips, 0, 0x80 + 0x10 * c, c << 6);
    Write(kAllChips, 0, 0x8A + 0x10 * c, (c << 6) | 0x31);
  }
  Table(kAllChips, 0, 0x40, kBlock40);
  Table(kAllChips, 0, 0x60, ntsc && channels != 4 ? kAudioLargerN : kAudio);
  Table(kAllChips, 0, 0xC0, kBlockC0);
  if (!ntsc) {
    for (const int reg : {0x02, 0x12, 0x22, 0x32}) Write(kAllChips, 0, reg, 0x28);
  }
  Write(kAllChips, 0, 0x4C, 0x30);
  for (const int reg : {0x02, 0x12, 0x22, 0x32}) Write(kAllChips, 0, reg, ntsc ? 0x20 : 0x32);
  for (const int reg : {0x03, 0x13, 0x23, 0x33}) Write(kAllChips, 0, reg, 0xD0);
  for (const int reg : {0x04, 0x14, 0x24, 0x34}) Write(kAllChips, 0, reg, 0x09);
}

void InitModel::Page1Tables() {
  const bool ntsc = standard == 0;
  const char* const master = ntsc ? kOutputMasterN : kOutputMasterP;
  const char* const slave = ntsc ? kOutputSlaveN : kOutputSlaveP;
  if (channels == 4) {
    Table(kAllChips, 1, 0x01, kDisplay4);
    Table(kAllChips, 1, 0x50, kRecord4);
    Table(kAllChips, 1, 0x30, ntsc ? kWindows4N : kWindows4P);
    Table(kAllChips, 1, 0xA0, master);
    Write(kAllChips, 1, 0x00, ntsc ? 0x00 : 0x80);
    Write(0x03, 1, 0x7E, 0x8A);
  }
  if (channels == 8) {
    Table(kAllChips, 1, 0x01, kDisplayLarger);
    Table(kAllChips, 1, 0x50, kRecordLarger);
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
    Table(kAllChips, 1, 0x01, kDisplayLarger);
    Table(kAllChips, 1, 0x50, kRecordLarger);
    for (std::size_t p = 0; p < 4; ++p) {
      Table(kChipCodes.at(p), 1, 0x30, (ntsc ? kWindows16N : kWindows16P).at(p));
    }
    for (std::size_t p = 0; p < 4; ++p) Table(kChipCodes.at(p), 1, 0xA0, p == 0 ? master : slave);
    constexpr std::array<int, 4> kSystemN = {0x08, 0x09, 0x0A, 0x3B};
    constexpr std::array<int, 4> kSystemP = {0x88, 0x89, 0x8A, 0xBB};
    constexpr std::array<int, 4> kCascade = {0xC9, 0xA9, 0x89, 0x89};
    for (std::size_t p = 0; p < 4; ++p) {
      Write(kChipCodes.at(p), 1, 0x00, (ntsc ? kSystemN : kSystemP).at(p));
    }
    for (std::size_t p = 0; p < 4; ++p) Write(kChipCodes.at(p), 1, 0x7E, kCascade.at(p));
  }
  Write(kAllChips, 1, 0xA7, 0x0D);
  Write(kAllChips, 1, 0xA8, 0x20);
  Write(kAllChips, 1, 0x80, 0xE1);
  Write(kAllChips, 1, 0x81, 0x00);
  Write(kAllChips, 1, 0x82, 0x92);
  Write(kAllChips, 1, 0x83, ntsc ? 0x0F : 0x16);
  Write(kAllChips, 1, 0x84, 0xEB);
  Write(kAllChips, 1, 0x85, 0x10);
  Write(kAllChips, 1, 0x86, 0x20);
  Write(kAllChips, 1, 0x87, 0x00);
  Write(kAllChips, 1, 0x88, 0xB2);
  Write(kAllChips, 1, 0x89, ntsc ? 0x0F : 0x14);
  Write(kAllChips, 1, 0x8A, 0x80);
  for (int c = 0; c < 4; ++c) {
    Table(kAllChips, 0, 0x8B + 0x10 * c, ntsc ? "00 68 02 78 04" : "00 68 02 90 04");
  }
  Write(kAllChips, 0, 0xC0, 0x08);
}

void InitModel::Page2Tables() {
  Table(kAllChips, 2, 0x10, kOverlay);
  Table(kAllChips, 2, 0x60, kBoxes);
  for (const int reg : {0x80, 0xA0, 0xC0, 0xE0}) {
    Table(kAllChips, 2, reg, channels == 4 ? kMotion4 : kMotionLarger);
  }
  Write(kAllChips, 2, 0x10, 0x00);
}

void InitModel::AdjustForHostVersion5() {
  for (int p = 0; p < chips; ++p) {
    const int value = Read(ChipOf(4 * p), 1, 0x0F);
    Write(ChipOf(4 * p), 1, 0x0F, (value & 0xCF) | 0x20);
  }
}

void InitModel::MotionSetup() {
  for (int n = 0; n < channels; ++n) {
    for (int i = 0; i < 24; ++i) Write(ChipOf(n), 2, 0x86 + 0x20 * (n % 4) + i, 0xFF);
  }
  for (int n = 0; n < channels; ++n) {
    Table(ChipOf(n), 2, 0x83 + 0x20 * (n % 4), "4C 08 41");  // level 1
  }
  for (const int reg : {0x5B, 0x5C, 0x5D, 0x5E}) Write(kAllChips, 2, reg, 0x33);
  Write(kAllChips, 2, 0x5F, 0xAA);
}

void InitModel::LiveSwitch() {
  for (const int reg : {0x12, 0x1A, 0x22, 0x2A}) Write(kAllChips, 1, reg, 0x00);
  Write(kAllChips, 1, 0x06, 0x00);
  Write(kAllChips, 1, 0x0C, 0x00);
  if (channels != 12) {
    LiveVariant();
    for (int n = 0; n < channels; ++n) {  // no channel is blanked
      const int value = Read(ChipOf(n), 1, 0x11 + 8 * (n % 4));
      Write(ChipOf(n), 1, 0x11 + 8 * (n % 4), value & 0xFB);
    }
  }
  for (int n = 0; n < channels; ++n) Write(ChipOf(n), 1, 0x61 + 3 * (n % 4), 0x00);
}

void InitModel::LiveVariant() {
  for (int i = 0; i < 4; ++i) Write(kAllChips, 1, 0x10 + 8 * i, 0x80 + i);
  for (int i = 0; i < 4; ++i) Write(kAllChips, 1, 0x16 + 8 * i, i);
  Table(kAllChips, 0, 0x40, "00 33 77 45 A0 D0 7F 64 80 80 80 80 30 0F 05 00 00 80 06 00 00");
  for (const int reg : {0x12, 0x1A, 0x22, 0x2A}) Write(kAllChips, 1, reg, 0x00);
  Write(kAllChips, 1, 0x06, Read(0x03, 1, 0x06) & 0xFB);
  for (int i = 0; i < 4; ++i) {
    for (int p = 0; p < chips; ++p) {
      const int value = Read(ChipOf(4 * p), 1, 0x11 + 8 * i);
      Write(ChipOf(4 * p), 1, 0x11 + 8 * i, (value & 0xF5) | 0x02);
    }
  }
  LiveSplit();
}

// The default split with the channels in order: 2 x 2, 3 x 3 and 4 x 4 for 4, 8 and 16 channels.
void InitModel::LiveSplit() {
  for (int i = 0; i < 4; ++i) {
    const int value = Read(0x03, 1, 0x10 + 8 * i);
    Write(kAllChips, 1, 0x10 + 8 * i, ((value & 0xFC) | 0x10) + i);
  }
  for (int p = 0; p < chips; ++p) Read(ChipOf(4 * p), 1, 0x04);

  const bool ntsc = standard == 0;
  const std::vector<int> windows = Parse(channels == 4   ? (ntsc ? kSplit4N : kSplit4P)
                                         : channels == 8 ? (ntsc ? kSplit9N : kSplit9P)
                                                         : (ntsc ? kSplit16N : kSplit16P));
  const char* const ratio = channels == 4   ? "7F FF 7F FF"   // 1/2
                            : channels == 8 ? "55 55 55 55"   // 1/3
                                            : "3F FF 3F FF";  // 1/4
  for (int n = 0; n < channels; ++n) Table(ChipOf(n), 0, 0x81 + 0x10 * (n % 4), ratio);
  if (channels == 4) {
    for (int i = 0; i < 4; ++i) Write(kAllChips, 0, 0x80 + 0x10 * i, 0x40 * i + 0x1);
  }
  for (int n = 0; n < channels; ++n) {
    for (int i = 0; i < 4; ++i) {
      Write(ChipOf(n), 1, 0x30 + 4 * (n % 4) + i, windows.at(static_cast<std::size_t>(4 * n + i)));
    }
    const int layout = channels == 8 ? 0xA : 0xF;
    if (channels != 4) Write(ChipOf(n), 0, 0x80 + 0x10 * (n % 4), 0x40 * (n % 4) + layout);
  }

  for (int p = 0; p < chips; ++p) {
    for (int i = 0; i < 4; ++i) {
      const int value = Read(ChipOf(4 * p), 1, 0x10 + 8 * i);
      Write(ChipOf(4 * p), 1, 0x10 + 8 * i, ((value & 0x2C) | 0xC0) + i);
    }
  }
  if (standard == 1) Write(kAllChips, 0, 0xC5, 0xF0);
}

void InitModel::RecordDefault() {
  Write(kAllChips, 1, 0x51, 0x40);
  for (int n = 0; n < channels; ++n)
    Write(ChipOf(n), 0, 0x8A + 0x10 * (n % 4), 0x40 * (n % 4) + 0x10);
  for (const int chip : kChipCodes) Write(chip, 1, 0x57, 0x80);
  for (const int reg : {0x62, 0x65, 0x68, 0x6B}) Write(kAllChips, 1, reg, 0x20);
  for (int i = 0; i < 4; ++i) Write(kAllChips, 1, 0x60 + 3 * i, 0x90 + i);
  Write(kAllChips, 1, 0x6C, 0x00);
  Write(kAllChips, 1, 0x6D, 0xE4);
  Write(kAllChips, 1, 0x86, 0x20);
  for (int n = 0; n < channels; ++n) Write(ChipOf(n), 1, 0x61 + 3 * (n % 4), 0x00);
}

void InitModel::Run(int decided_standard) {
  DetectChips();
  DetectVideo();
  standard = decided_standard;
  Page0Tables();
  Page1Tables();
  Page2Tables();
  MotionSetup();
  OutputMode();
  LiveSwitch();
  RecordDefault();
  MotionSetup();
}

}  // namespace test
