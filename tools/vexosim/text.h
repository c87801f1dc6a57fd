// Numbers and bytes as texts.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vexosim {

// "0x00FE": at least `digits` hexadecimal digits.
std::string Hex(std::uint64_t value, unsigned digits = 2);

// "28fe": two digits a byte, nothing between them, or `separator`.
std::string HexBytes(std::span<const std::uint8_t> bytes, std::string_view separator = "");

// "0-4,6-15": numbers of the set bits among the first `count`.
std::string BitList(std::uint32_t mask, unsigned count);

// "a, b or c".
std::string OneOf(std::span<const std::string_view> words);

// The lines of a text, without line ends; lines with nothing but blanks are left out.
std::vector<std::string> Lines(std::string_view text);

}  // namespace vexosim
