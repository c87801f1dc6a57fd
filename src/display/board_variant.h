// What differs between boards of 4, 8 and 16 channels.
#pragma once

#include <array>
#include <cstdint>

#include "chip/registers.h"

struct BoardVariant {
  std::uint8_t channels;
  std::uint8_t chips;
  std::uint8_t highest_split_mode;
  std::uint16_t all_channels;  // mask of the board's channels
};

inline constexpr BoardVariant kBoard4Ch = {4, 1, 1, 0x000F};
inline constexpr BoardVariant kBoard8Ch = {8, 2, 4, 0x00FF};
inline constexpr BoardVariant kBoard16Ch = {16, 4, 6, 0xFFFF};

inline constexpr std::array<const BoardVariant*, 3> kBoardVariants = {&kBoard4Ch, &kBoard8Ch,
                                                                      &kBoard16Ch};

// The variant of a channel count, null for counts that have none (12, 0).
constexpr const BoardVariant* FindBoardVariant(std::uint8_t channels) {
  for (const BoardVariant* variant : kBoardVariants) {
    if (variant->channels == channels) return variant;
  }
  return nullptr;
}
