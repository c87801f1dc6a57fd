// What a register is: where it lies, how often, and what its bits are.
//
// Registers are compile-time values. A program that names one in an access keeps its address, as a
// constant, and nothing else: neither names nor meanings reach the recorder.
#pragma once

#include <array>
#include <cstdint>

inline constexpr std::uint8_t kPage0 = 0;  // inputs, scalers
inline constexpr std::uint8_t kPage1 = 1;  // display, record, output
inline constexpr std::uint8_t kPage2 = 2;  // fill engine, boxes, motion
inline constexpr std::uint8_t kPageCount = 3;
inline constexpr std::uint16_t kRegistersPerPage = 256;

// Bits of a register that belong together. Stands for its bits where a number is wanted.
struct Field {
  std::uint8_t bits = 0;
  const char* name = nullptr;     // null: no field
  const char* meaning = nullptr;  // when set; what the value is, for fields of several bits

  // NOLINTNEXTLINE(google-explicit-constructor): a mask, as its uses have it
  constexpr operator std::uint8_t() const { return bits; }
};

// One register of a page.
struct RegisterAddress {
  std::uint8_t page;
  std::uint8_t number;
};

// A run of registers, once a chip or once for each channel of the chip.
struct Register {
  static constexpr unsigned kFieldsMax = 5;

  std::uint8_t page;
  std::uint8_t first;   // number of the first one
  std::uint8_t stride;  // to the next channel's; 0: once a chip
  std::uint8_t count;   // 4 (positions), or 1
  std::uint8_t length;  // registers in a row
  const char* name;
  std::array<Field, kFieldsMax> fields;  // of each register of the run; unused ones behind

  [[gnu::always_inline]] constexpr RegisterAddress AddressOf(unsigned position,
                                                             unsigned offset) const {
    return {page, static_cast<std::uint8_t>(first + stride * position + offset)};
  }
};
constexpr bool Covers(const Register& of, RegisterAddress at) {
  const int offset = at.number - of.first;
  if (at.page != of.page || offset < 0) return false;
  if (of.stride == 0) return offset < of.length;
  return offset / of.stride < of.count && offset % of.stride < of.length;
}

// A register's shape is part of its type: an access that names a position where there is one
// register, or none where there are four, does not compile.
template <unsigned kLength>
struct ChipRegister : Register {
  [[gnu::always_inline]] constexpr RegisterAddress At(unsigned offset) const {
    return AddressOf(0, offset);
  }
};

template <>
struct ChipRegister<1> : Register {
  // NOLINTNEXTLINE(google-explicit-constructor): a single register is its address
  [[gnu::always_inline]] constexpr operator RegisterAddress() const { return AddressOf(0, 0); }
};

template <unsigned kLength>
struct ChannelRegister : Register {
  [[gnu::always_inline]] constexpr RegisterAddress At(unsigned position, unsigned offset) const {
    return AddressOf(position, offset);
  }
};

template <>
struct ChannelRegister<1> : Register {
  [[gnu::always_inline]] constexpr RegisterAddress At(unsigned position) const {
    return AddressOf(position, 0);
  }
};
