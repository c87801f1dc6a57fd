#include "script/register_names.h"

#include <algorithm>
#include <string>

#include "script/register_words.h"
#include "sim/text.h"

namespace script {
namespace {

struct Named {
  std::string name;
  const Register* row;
  std::vector<RegisterAddress> at;
};

void AddPosition(std::vector<RegisterAddress>& at, const Register& row, unsigned position) {
  for (unsigned i = 0; i < row.length; ++i) at.push_back(row.AddressOf(position, i));
}

std::vector<Named> MakeNames() {
  std::vector<Named> names;
  for (const Register& row : kRegisters) {
    Named whole{row.name, &row, {}};
    for (unsigned k = 0; k < row.count; ++k) AddPosition(whole.at, row, k);
    names.push_back(std::move(whole));
    for (unsigned k = 0; k < row.count && row.count > 1; ++k) {
      Named one{std::string(row.name) + ' ' + std::to_string(k), &row, {}};
      AddPosition(one.at, row, k);
      names.push_back(std::move(one));
    }
  }
  return names;
}

const std::vector<Named>& Names() {
  static const std::vector<Named> names = MakeNames();
  return names;
}

const Named* Find(std::string_view name) {
  const auto found = std::find_if(Names().begin(), Names().end(),
                                  [&](const Named& one) { return one.name == name; });
  return found == Names().end() ? nullptr : &*found;
}

std::vector<std::string_view> FieldNames(std::span<const Field> fields) {
  std::vector<std::string_view> names;
  for (const Field& field : fields) names.emplace_back(field.name);
  return names;
}

}  // namespace

std::span<const std::string_view> RegisterNames() {
  static const std::vector<std::string_view> words = [] {
    std::vector<std::string_view> all;
    for (const Named& one : Names()) all.push_back(one.name);
    return all;
  }();
  return words;
}

std::vector<RegisterAddress> RegistersOf(std::string_view name) {
  const Named* const found = Find(name);
  return found == nullptr ? std::vector<RegisterAddress>() : found->at;
}

std::span<const Field> FieldsOf(std::string_view name) {
  const Named* const found = Find(name);
  return found == nullptr ? std::span<const Field>() : FieldsOf(*found->row);
}

std::vector<RegisterAddress> ParseRegisterList(Arguments& arguments) {
  std::vector<RegisterAddress> registers = RegistersOf(arguments.Peek());
  if (!registers.empty()) {
    arguments.Text("a name");
    return registers;
  }
  const bool by_number = arguments.Take("page");
  if (!by_number && !arguments.AtNumber()) {
    arguments.Expected("a name of registers or page", RegisterNames());
  }
  const std::uint8_t page = arguments.Page();
  for (const std::uint32_t reg : arguments.NumberList("registers 0 to 255, as 0x30-0x3F", 0xFF)) {
    registers.push_back({page, static_cast<std::uint8_t>(reg)});
  }
  return registers;
}

std::string ParseRegisterName(Arguments& arguments) {
  if (Find(arguments.Peek()) == nullptr) {
    arguments.Expected("a name of registers", RegisterNames());
  }
  return arguments.Text("a name of registers");
}

FieldSetting ParseFieldSetting(Arguments& arguments, std::string_view name) {
  const std::span<const Field> fields = FieldsOf(name);
  for (const Field& field : fields) {
    if (!arguments.Take(field.name)) continue;
    const std::uint8_t most = FieldMost(field);
    const std::string what = std::string(field.name) + " 0 to " + std::to_string(most);
    const std::uint32_t value = arguments.Number(what, 0, most);
    return {field, static_cast<std::uint8_t>(value)};
  }
  const std::vector<std::string_view> names = FieldNames(fields);
  if (names.empty()) {
    arguments.Expected("a name of registers with fields, not '" + std::string(name) + '\'');
  }
  arguments.Expected(sim::OneOf(names), names);
}

}  // namespace script
