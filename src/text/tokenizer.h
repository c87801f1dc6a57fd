// Cuts a command line into tokens, and reads numbers from them. One line at a time.
#pragma once

#include <cstddef>
#include <cstdint>

// Longest line, in characters.
inline constexpr std::size_t kLineMax = 255;

struct TokenizerState {
  char line[kLineMax + 1] = {};
  char token[264] = {};
  std::uint32_t length = 0;    // of the line; 0: no line is being cut
  std::uint32_t position = 0;  // of the next character
};
extern TokenizerState g_tokenizer;

// Starts on a line of at most kLineMax characters, or goes on with the current one when line is
// null. Returns the next token, valid until the next call, or null when there is none: a token
// counts only if a separator follows it, and an empty one ends the line.
const char* VexoTok_Next(const char* line, const char* separators);

// Value of one to eight hexadecimal digits. 0 for anything else; no or more than eight characters
// are printed.
std::uint32_t string_to_hex(const char* text);

inline constexpr std::uint32_t kNoHexDigit = 0xFFFFFFFFu;

// 0 to 15, or kNoHexDigit.
std::uint32_t hex_digit_value(char character);
