// The board as a host sees it: chips and their select codes, the sizes that have layouts of their
// own, and the bits of the chips' registers that no write reaches. Told independently of the
// library, as everything in this folder.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace test {

inline constexpr int kAll = 0xFF;  // chip select of a broadcast
inline constexpr int kMaster = 0x03;
inline constexpr int kSlave1 = 0x0C;
inline constexpr int kSlave2 = 0x30;
inline constexpr int kSlave3 = 0xC0;
inline constexpr std::array<int, 4> kChips = {kMaster, kSlave1, kSlave2, kSlave3};

// Chip select code of the chip that carries a channel; everything above 11 is slave 3.
constexpr int ChipOf(int channel) {
  return channel > 11 ? kSlave3 : kChips.at(static_cast<std::size_t>(channel / 4));
}

// The sizes that have layouts of their own. A board of twelve channels has none.
struct Variant {
  int channels;
  int highest_mode;  // of the splits, and the one that the board starts with
};
inline constexpr std::array<Variant, 3> kVariants = {{{4, 1}, {8, 4}, {16, 6}}};

// -1 where there are no layouts.
constexpr int HighestMode(int channels) {
  for (const Variant& variant : kVariants) {
    if (variant.channels == channels) return variant.highest_mode;
  }
  return -1;
}
constexpr bool HasLayouts(int channels) { return HighestMode(channels) >= 0; }
// Split mode that initialization notes for a size; where there are no layouts, that of 16 channels.
constexpr int DefaultSplitOf(int channels) {
  return HasLayouts(channels) ? HighestMode(channels) : 6;
}
constexpr std::uint32_t AllChannels(int channels) { return (1u << channels) - 1; }

// Bits that a chip answers for itself: a write does not reach them.
constexpr int OwnBits(int page, int reg) {
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

}  // namespace test
