// What the tests of motion detection share.
#pragma once

#include <array>
#include <cstdint>

namespace test {

inline constexpr int kAll = 0xFF;

inline int ChipOf(int channel) {
  constexpr std::array<int, 4> kChips = {0x03, 0x0C, 0x30, 0xC0};
  return kChips.at(static_cast<std::size_t>(channel / 4));
}

constexpr std::uint8_t U8(int value) { return static_cast<std::uint8_t>(value); }

}  // namespace test
