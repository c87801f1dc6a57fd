// The binary commands by name: code, record, results.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <string_view>

namespace script {

// How a field is written and shown.
enum class FieldKind {
  Number,
  Byte,      // a number, shown in hexadecimal
  Choice,    // one of its values' names, or a value in hexadecimal
  Mask,      // a bit a channel: a list of channels, all, none, or a number
  Channels,  // a byte each: numbers and ranges, 0-3,7
  Bytes,     // two hexadecimal digits each
};

enum class Flow { In, Out, InOut };  // as the library sees it

struct NamedValue {
  std::string_view name;
  std::uint32_t value;
};

// A field of a public record.
struct RecordField {
  std::string_view name;
  std::size_t offset;
  std::size_t width;  // of one
  std::size_t count;
  FieldKind kind;
  Flow flow;
  std::string_view help;
  std::span<const NamedValue> values = {};  // of a Choice
  std::uint32_t most = std::numeric_limits<std::uint32_t>::max();
  // What comes of a value beyond these, where the command takes it all the same; else it is -5.
  std::string_view beyond = {};

  std::size_t Bytes() const { return width * count; }
};

inline constexpr std::string_view kBoardLacks = "the board lacks it";  // a split mode

// What a result means, where there are several one or the other; `field` is the one whose value it
// is about, empty when there is none.
struct ResultWords {
  std::int64_t result;
  std::string_view field;
  std::string_view words;
};

struct CommandKind {
  std::uint32_t code;
  std::string_view name;
  std::string_view help;
  std::span<const RecordField> fields = {};  // none: the command takes no record
  std::span<const ResultWords> results = {};

  const RecordField* Find(std::string_view field) const;
};

// In the order of their codes.
std::span<const CommandKind> Commands();

// The same by name; null for an unknown one.
const CommandKind* FindCommand(std::string_view name);
// By code, of which the low 16 bits count.
const CommandKind* FindCommand(std::uint32_t code);

std::span<const std::string_view> CommandNames();

}  // namespace script
