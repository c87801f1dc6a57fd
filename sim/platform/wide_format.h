// The platform's wide printf, for UTF-16 texts.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <cstdint>

namespace sim {

// Writes the formatted text into a buffer of `capacity` units, terminator included; what does not
// fit is cut. Returns the length without the terminator. A capacity of 0 writes nothing.
//
// %[-0+ #][width|*][.precision|.*][h|l|w|I32|I64|ll]X with X of
//   d i u o x X  integers: 32 bits (l too: a platform long has 32), 16 with h, 64 with I64 or ll
//   c            one UTF-16 unit
//   s            UTF-16 text, 8-bit text with h; null prints (null)
//   S            8-bit text, as %hs
//   p            eight or more upper-case hexadecimal digits, as the platform prints addresses
//   %            a percent sign
// Anything else is written as it stands.
std::size_t WideFormatV(char16_t* buffer, std::size_t capacity, const char16_t* format,
                        std::va_list arguments);

}  // namespace sim
