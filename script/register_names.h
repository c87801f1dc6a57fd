// Registers that a line names: "window" at every position, "window 2" at one, or by their numbers.
#pragma once

#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "chip/registers.h"
#include "script/words.h"

namespace script {

// Every name, and those that repeat with each position behind it.
std::span<const std::string_view> RegisterNames();

// The registers of a name, in order; empty for a name that there is not.
std::vector<RegisterAddress> RegistersOf(std::string_view name);

// The fields that each register of a name has.
std::span<const Field> FieldsOf(std::string_view name);

// Reads "NAME", page P REG[-REG] or P REG[-REG].
std::vector<RegisterAddress> ParseRegisterList(Arguments& arguments);
// Reads "NAME", and throws with names that are near.
std::string ParseRegisterName(Arguments& arguments);

// A field and a value for it.
struct FieldSetting {
  Field field;
  std::uint8_t value = 0;
};
// Reads FIELD VALUE for registers of a name.
FieldSetting ParseFieldSetting(Arguments& arguments, std::string_view name);

}  // namespace script
