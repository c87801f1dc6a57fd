#include "text/tokenizer.h"

#include <cstring>

#include "report/diagnostics.h"

TokenizerState g_tokenizer;

namespace {

constexpr std::int32_t kLevelBadNumber = 2;
constexpr std::size_t kHexDigitsMax = 8;

bool IsSeparator(char character, const char* separators) {
  for (; *separators != '\0'; ++separators) {
    if (character == *separators) return true;
  }
  return false;
}

void EndLine() {
  g_tokenizer.length = 0;
  g_tokenizer.position = 0;
}

}  // namespace

const char* VexoTok_Next(const char* line, const char* separators) {
  TokenizerState& state = g_tokenizer;
  if (line != nullptr) {
    state.length = static_cast<std::uint32_t>(std::strlen(line));
    std::memcpy(state.line, line, state.length);
    state.position = 0;
  }
  // Quirk: a token that runs into the end of the line is dropped (hosts end lines with a
  // separator), and an empty token ends the line.
  for (std::uint32_t count = 0; state.position < state.length; ++count) {
    const char character = state.line[state.position++];
    if (IsSeparator(character, separators)) {
      state.token[count] = '\0';
      if (count != 0) return state.token;
      break;
    }
    state.token[count] = character;
  }
  EndLine();
  return nullptr;
}

std::uint32_t string_to_hex(const char* text) {
  const std::size_t length = std::strlen(text);
  if (length == 0 || length > kHexDigitsMax) {
    VexoDbg_PrintLevel(kLevelBadNumber, u">> string_to_hex invalid parameter ( %d )\r\n",
                       static_cast<int>(length));
    return 0;
  }
  std::uint32_t value = 0;
  for (; *text != '\0'; ++text) {
    const std::uint32_t digit = hex_digit_value(*text);
    if (digit == kNoHexDigit) return 0;
    value = (value << 4) | digit;
  }
  return value;
}

std::uint32_t hex_digit_value(char character) {
  if (character >= '0' && character <= '9') return static_cast<std::uint32_t>(character - '0');
  if (character >= 'a' && character <= 'f') return static_cast<std::uint32_t>(character - 'a' + 10);
  if (character >= 'A' && character <= 'F') return static_cast<std::uint32_t>(character - 'A' + 10);
  return kNoHexDigit;
}
