// A register access, and all registers of a board.
#pragma once

#include <array>
#include <cstdint>
#include <iosfwd>

namespace test {

// One register access as the library made it. Tables count one access a byte.
struct Access {
  char kind;  // 'r' or 'w'
  std::uint8_t chip;
  std::uint8_t page;
  std::uint8_t reg;
  std::uint8_t value;
  bool operator==(const Access&) const = default;
};
std::ostream& operator<<(std::ostream& out, const Access& access);

inline Access W(int chip, int page, int reg, int value) {
  return {'w', static_cast<std::uint8_t>(chip), static_cast<std::uint8_t>(page),
          static_cast<std::uint8_t>(reg), static_cast<std::uint8_t>(value)};
}
inline Access R(int chip, int page, int reg, int value) {
  return {'r', static_cast<std::uint8_t>(chip), static_cast<std::uint8_t>(page),
          static_cast<std::uint8_t>(reg), static_cast<std::uint8_t>(value)};
}

// All stored registers of the four chips: what was written, apart from what the chips own.
using RegisterImage = std::array<std::array<std::array<std::uint8_t, 256>, 3>, 4>;

}  // namespace test
