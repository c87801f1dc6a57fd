#include "script/register_words.h"

#include <algorithm>
#include <bit>

#include "script/words.h"
#include "sim/text.h"

namespace script {
namespace {

bool IsFlag(const Field& field) { return std::has_single_bit(field.bits); }

// Whether other bits lie between those of the field.
bool HasGaps(const Field& field) {
  const unsigned low = unsigned{field.bits} >> std::countr_zero(field.bits);
  return !std::has_single_bit(low + 1);
}

int ShiftOf(const Field& field) { return HasGaps(field) ? 0 : std::countr_zero(field.bits); }

std::string NumberOf(const Field& field, std::uint8_t value) {
  return HasGaps(field) ? sim::Hex(value) : std::to_string(value);
}

}  // namespace

std::string RegisterLabel(std::uint8_t page, std::uint8_t reg) {
  const Register* const found = FindRegister(page, reg);
  if (found == nullptr) return "(no name)";
  if (found->count == 1) return found->name;
  return std::string(found->name) + ' ' + std::to_string((reg - found->first) / found->stride);
}

std::span<const Field> FieldsOf(const Register& row) {
  const auto count = std::count_if(row.fields.begin(), row.fields.end(),
                                   [](const Field& field) { return field.name != nullptr; });
  return std::span(row.fields).first(static_cast<std::size_t>(count));
}

std::span<const Field> FieldsOf(std::uint8_t page, std::uint8_t reg) {
  const Register* const found = FindRegister(page, reg);
  return found == nullptr ? std::span<const Field>() : FieldsOf(*found);
}

std::uint8_t FieldValue(const Field& field, std::uint8_t byte) {
  return static_cast<std::uint8_t>((byte & field.bits) >> ShiftOf(field));
}

std::uint8_t WithFieldValue(const Field& field, std::uint8_t byte, std::uint8_t value) {
  const unsigned bits = unsigned{value} << ShiftOf(field) & field.bits;
  return static_cast<std::uint8_t>((byte & ~unsigned{field.bits}) | bits);
}

std::uint8_t FieldMost(const Field& field) { return FieldValue(field, field.bits); }

std::string FieldsInWords(std::uint8_t page, std::uint8_t reg, std::uint8_t value) {
  const std::span<const Field> fields = FieldsOf(page, reg);
  const bool numbers_alone = std::none_of(fields.begin(), fields.end(), IsFlag);
  std::string text;
  for (const Field& field : fields) {
    const std::uint8_t has = FieldValue(field, value);
    if (has == 0 && !numbers_alone) continue;
    if (!text.empty()) text += ", ";
    text += field.name;
    if (!IsFlag(field)) text += ' ' + NumberOf(field, has);
  }
  return text;
}

std::string FieldChangesInWords(std::uint8_t page, std::uint8_t reg, std::uint8_t before,
                                std::uint8_t after) {
  std::string text;
  for (const Field& field : FieldsOf(page, reg)) {
    const std::uint8_t had = FieldValue(field, before);
    const std::uint8_t has = FieldValue(field, after);
    if (had == has) continue;
    if (!text.empty()) text += ", ";
    if (IsFlag(field)) {
      text += field.name + std::string(has == 0 ? " cleared" : " set");
    } else {
      text += field.name + (' ' + NumberOf(field, had)) + " -> " + NumberOf(field, has);
    }
  }
  return text;
}

std::vector<RegisterRun> RegisterRuns(std::uint8_t page) {
  constexpr unsigned kLongest = 8;
  std::vector<RegisterRun> runs;
  for (unsigned number = 0; number < kRegistersPerPage; ++number) {
    const auto reg = static_cast<std::uint8_t>(number);
    const Register* const row = FindRegister(page, reg);
    std::string label = RegisterLabel(page, reg);
    if (runs.empty() || row == nullptr || runs.back().label != label ||
        runs.back().length == kLongest) {
      runs.push_back({row, std::move(label), page, reg, 0});
    }
    ++runs.back().length;
  }
  return runs;
}

std::string ChangeInWords(const RegisterRun& run, const RegisterPage& before,
                          const RegisterPage& after) {
  constexpr std::size_t kLabelColumns = 26;
  std::string label = run.label;
  label.resize(std::max(kLabelColumns, label.size() + 1), ' ');
  const auto had = std::span(before).subspan(run.first, run.length);
  const auto has = std::span(after).subspan(run.first, run.length);
  std::string text = sim::Hex(run.first) + "  " + label + sim::HexBytes(had, " ") + " -> " +
                     sim::HexBytes(has, " ");
  const auto same = [](std::span<const std::uint8_t> bytes) {
    return std::all_of(bytes.begin(), bytes.end(),
                       [&](auto byte) { return byte == bytes.front(); });
  };
  if (!same(had) || !same(has)) return text;
  const std::string fields = FieldChangesInWords(run.page, run.first, had.front(), has.front());
  return fields.empty() ? text : text + " (" + fields + ')';
}

std::string_view ChipOfSelect(std::uint8_t select) {
  sim::RegisterAccess access;
  access.select = select;
  const std::uint8_t chip = access.Chip();
  if (chip == kChipAll) return ChipWords()[kChipsMax];
  for (unsigned position = 0; position < kChipsMax; ++position) {
    if (chip == kChipByPosition[position]) return ChipWords()[position];
  }
  return select == kSelectIdle ? "none" : "several";
}

std::string AccessInWords(const sim::RegisterAccess& access) {
  const std::string_view chip = ChipOfSelect(access.select);
  std::string text = access.read ? "r " : "w ";
  text += chip == "several" ? sim::Hex(access.select) : std::string(chip);
  text += " page " + (access.Page() < kPageCount ? std::to_string(access.Page()) : "-");
  text += ' ' + sim::Hex(access.reg) + ' ' + RegisterLabel(access.Page(), access.reg) + " = " +
          sim::Hex(access.value);
  const std::string fields = FieldsInWords(access.Page(), access.reg, access.value);
  if (!fields.empty()) text += " (" + fields + ')';
  return text;
}

}  // namespace script
