// A text line as the library reads it: what it takes, what it leaves, and what it makes of each
// number.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "text/command_pattern.h"

namespace script {

struct TypedNumber {
  std::string_view name;   // of the pattern, without marks
  std::string_view typed;  // empty when it is missing
  std::int64_t value = 0;  // as the operation takes it: cut to its width
};

struct TypedLine {
  const TextGrammar* grammar = nullptr;
  std::string_view pattern;          // of a whole command, else empty
  std::vector<TypedNumber> numbers;  // of a whole command, missing ones too
  std::string fault;                 // why it is none, in words; one line or several
  std::vector<std::string> notes;    // what of a whole command is not read, or not as it is typed

  bool Whole() const { return !pattern.empty(); }
};

// Views into the text, which outlives what is returned.
TypedLine ReadTypedLine(std::string_view text);

}  // namespace script
