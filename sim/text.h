// Texts: numbers and bytes in words, and the platform's encoding.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace sim {

// "0x00FE": at least `digits` hexadecimal digits.
std::string Hex(std::uint64_t value, unsigned digits = 2);

// "28fe": two digits a byte, nothing between them, or `separator`.
std::string HexBytes(std::span<const std::uint8_t> bytes, std::string_view separator = "");

// "0-4,6-15": numbers of the set bits among the first `count`.
std::string BitList(std::uint32_t mask, unsigned count);

// "a, b or c".
std::string OneOf(std::span<const std::string_view> words);

// The lines of a text, without line ends; lines with nothing but blanks are left out.
std::vector<std::string> TextLines(std::string_view text);

// Text between the platform's form and the trace's; a null text is empty, an unpaired surrogate
// or a malformed byte becomes U+FFFD.
std::string ToUtf8(const char16_t* text);
std::u16string ToUtf16(const std::string& text);

// ASCII letters to lower case, for names that compare without regard to case.
std::string ToLower(std::string text);

}  // namespace sim
