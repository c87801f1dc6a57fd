// Words that plans and logs have in common.
#pragma once

#include <functional>
#include <span>
#include <string>
#include <string_view>

#include "device/plan/plan.h"
#include "script/words.h"

namespace plan {

// The next word as bytes, two hexadecimal digits each: one at least, `most` at most.
Bytes ReadHex(script::Arguments& words, std::size_t most);
std::string HexWord(std::span<const std::uint8_t> bytes);

// "0x2401".
std::string HexNumber(std::uint32_t value);

// Hands each line of a text to `read` as its words. What that throws becomes a FormatError with
// file and line.
void ReadLines(std::string_view text, const std::string& name,
               const std::function<void(unsigned line, std::span<const std::string> words)>& read);

}  // namespace plan
