#include "tests/model/reference_model.h"

#include <sstream>

namespace test {
namespace {

// Whether a chip select code addresses the chip at a position.
bool Addresses(int chip, std::size_t position) { return (chip & (3 << (2 * position))) != 0; }

}  // namespace

ReferenceModel::ReferenceModel(int channel_count, int video_standard,
                               const RegisterImage& registers)
    : channels(channel_count), chips(channel_count / 4), image(registers) {
  SetStandard(video_standard);
}

ReferenceModel ReferenceModel::AtPowerOn(int fitted_chips, int cameras) {
  ReferenceModel board(4 * fitted_chips, 2, {});
  board.cameras_.fill(cameras);
  for (std::size_t p = 0; p < 4; ++p) {
    if (p >= static_cast<std::size_t>(fitted_chips)) {
      for (auto& page : board.image[p]) page.fill(0xFF);  // nobody drives the bus
      board.image[p][0][0xFE] = 0x00;
      continue;
    }
    board.image[p][0][0xFE] = 0x28;
    for (std::size_t c = 0; c < 4; ++c) board.image[p][0][0x01 + 0x10 * c] = cameras == 1 ? 0 : 1;
    board.image[p][1][0x78] = cameras == 2 ? 0x0F : 0x00;
  }
  return board;
}

void ReferenceModel::SetStandard(int decided) {
  standard = decided;
  for (int mode = 0; mode < 7; ++mode) {
    windows.at(static_cast<std::size_t>(mode)) = DefaultRects(mode, Ntsc());
  }
}

int ReferenceModel::Read(int chip, int page, int reg) {
  int value = page == 0 && reg == 0xFE ? 0x00 : 0xFF;  // where no chip is fitted
  for (std::size_t p = 0; p < static_cast<std::size_t>(chips); ++p) {
    if (chip != kChips.at(p)) continue;
    value = image.at(p).at(static_cast<std::size_t>(page)).at(static_cast<std::size_t>(reg));
  }
  accesses.push_back(R(chip, page, reg, value));
  return value;
}

void ReferenceModel::Write(int chip, int page, int reg, int value) {
  const int own = OwnBits(page, reg);
  for (std::size_t p = 0; p < static_cast<std::size_t>(chips); ++p) {
    if (!Addresses(chip, p)) continue;
    std::uint8_t& byte =
        image.at(p).at(static_cast<std::size_t>(page)).at(static_cast<std::size_t>(reg));
    byte = static_cast<std::uint8_t>((byte & own) | (value & ~own));
  }
  accesses.push_back(W(chip, page, reg, value));
}

void ReferenceModel::Table(int chip, int page, int first, const std::string& hex) {
  std::istringstream in(hex);
  int reg = first;
  for (int byte = 0; in >> std::hex >> byte;) Write(chip, page, reg++, byte);
}

void ReferenceModel::All1Each(int reg, int value, int step) {
  for (int n = 0; n < 4; ++n) All1(reg + 8 * n, value + step * n);
}

void ReferenceModel::Scale(int channel, int code) {
  const Ratio ratio = RatioOf(code).value();
  const int first = 0x81 + 0x10 * (channel % 4);
  Write(ChipOf(channel), 0, first, ratio.high);
  Write(ChipOf(channel), 0, first + 1, ratio.low);
  Write(ChipOf(channel), 0, first + 2, ratio.high);
  Write(ChipOf(channel), 0, first + 3, ratio.low);
}

void ReferenceModel::Layout(int channel, int code) {
  const int n = channel % 4;
  Write(ChipOf(channel), 0, 0x80 + 0x10 * n, 0x40 * n + code);
}

void ReferenceModel::LayoutToAll(int code) {
  for (int n = 0; n < 4; ++n) Write(kAll, 0, 0x80 + 0x10 * n, 0x40 * n + code);
}

void ReferenceModel::Window(int chip, int position, const Rect& rect) {
  for (int i = 0; i < 4; ++i) {
    Write(chip, 1, 0x30 + 4 * position + i, rect.at(static_cast<std::size_t>(i)));
  }
}

void ReferenceModel::Control(int channel, int value) {
  const int n = channel % 4;
  Write(ChipOf(channel), 1, 0x10 + 8 * n, value + n);
}

}  // namespace test
