// Registers, their fields and accesses to them in words, all from the one description of registers.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "chip/registers.h"
#include "sim/trace.h"

namespace script {

// A register's name, with the channel's position on its chip where the name repeats: "window 2".
// "(no name)" when it has none.
std::string RegisterLabel(std::uint8_t page, std::uint8_t reg);

// The fields of a register, none where it has no name.
std::span<const Field> FieldsOf(const Register& row);
std::span<const Field> FieldsOf(std::uint8_t page, std::uint8_t reg);

// What a field holds in a register's byte, counted from its lowest bit; a field whose bits do not
// lie together keeps them in their places.
std::uint8_t FieldValue(const Field& field, std::uint8_t byte);
// The byte with the field's bits set to a value that fits it; FieldMost is what fits.
std::uint8_t WithFieldValue(const Field& field, std::uint8_t byte, std::uint8_t value);
std::uint8_t FieldMost(const Field& field);

// "enable, hold, position 2": fields of one bit by name when set, of several bits with their value
// unless it is 0. A register that has only fields of several bits shows all of them. Empty for a
// register without fields, or when none is set.
std::string FieldsInWords(std::uint8_t page, std::uint8_t reg, std::uint8_t value);

// "hold set, front cleared, position 0 -> 2": the fields that differ; empty when none does.
std::string FieldChangesInWords(std::uint8_t page, std::uint8_t reg, std::uint8_t before,
                                std::uint8_t after);

// Neighbours of a page that have one label, eight at most; one without a name stands alone, because
// nothing says that neighbours belong together.
struct RegisterRun {
  const Register* row = nullptr;  // null: no name
  std::string label;
  std::uint8_t page = 0;
  std::uint8_t first = 0;
  unsigned length = 0;
};
// A whole page, in order.
std::vector<RegisterRun> RegisterRuns(std::uint8_t page);

using RegisterPage = std::array<std::uint8_t, kRegistersPerPage>;
// "0x10  channel display 0         80 -> 94 (hold set, decoded set)"
std::string ChangeInWords(const RegisterRun& run, const RegisterPage& before,
                          const RegisterPage& after);

// The chip or chips that a select byte selects: "master" to "slave3", "all", "several" for any
// other set, "none".
std::string_view ChipOfSelect(std::uint8_t select);

// "w master page 1 0x10 channel display 0 = 0x92 (enable, hold, position 2)"; r for a read, the
// select byte in place of a chip when it selects several, "(worker)" behind what the worker did.
std::string AccessInWords(const sim::RegisterAccess& access);

}  // namespace script
