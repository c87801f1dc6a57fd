#include "script/command_words.h"

#include <algorithm>
#include <bit>
#include <optional>

#include "VexoCtrlSDK.h"
#include "sim/text.h"

namespace script {
namespace {

// ---- Reading ------------------------------------------------------------------------------------

constexpr std::uint32_t kAllChannels = (1U << VEXO_MAX_CHANNELS) - 1;

std::uint32_t MostOf(const RecordField& field) {
  return field.width == 4 ? 0xFFFFFFFF : (1U << (8 * field.width)) - 1;
}

void Append(sim::Bytes& bytes, std::uint32_t value, std::size_t width) {
  for (std::size_t i = 0; i < width; ++i)
    bytes.push_back(static_cast<std::uint8_t>(value >> 8 * i));
}

std::vector<std::string_view> ValueNames(const RecordField& field) {
  std::vector<std::string_view> names;
  for (const NamedValue& value : field.values) names.push_back(value.name);
  return names;
}

std::uint32_t ParseNumber(const RecordField& field, Arguments& arguments) {
  const std::uint32_t most = MostOf(field);
  return arguments.Number(std::string(field.name) + " 0 to " + std::to_string(most), 0, most);
}

// Names before numbers: a split of 6 is not the value 6.
std::uint32_t ParseChoice(const RecordField& field, Arguments& arguments) {
  for (const NamedValue& value : field.values) {
    if (arguments.Take(value.name)) return value.value;
  }
  if (!arguments.Peek().starts_with("0x")) {
    const std::vector<std::string_view> names = ValueNames(field);
    const std::string what =
        std::string(field.name) + ' ' + sim::OneOf(names) + ", or a value from 0x00 on";
    // 13 is no slip for 16.
    if (arguments.AtNumber()) arguments.Expected(what);
    arguments.Expected(what, names);
  }
  return ParseNumber(field, arguments);
}

std::uint32_t ParseMask(const RecordField& field, Arguments& arguments) {
  if (arguments.Take("all")) return kAllChannels;
  if (arguments.Take("none")) return 0;
  const std::string what = std::string(field.name) + " as channels (0-3,7), all, none or a number";
  if (arguments.Peek().find_first_of(",-") == std::string_view::npos) return arguments.Number(what);
  std::uint32_t mask = 0;
  for (const std::uint32_t channel : arguments.NumberList(what, VEXO_MAX_CHANNELS - 1)) {
    mask |= 1U << channel;
  }
  return mask;
}

sim::Bytes ParseChannels(const RecordField& field, Arguments& arguments) {
  const std::string what = std::string(field.name) + " as numbers up to 255, " +
                           std::to_string(field.count) + " at most (0-3,7)";
  const Arguments here = arguments;
  sim::Bytes bytes;
  for (const std::uint32_t channel : arguments.NumberList(what, 0xFF)) {
    if (bytes.size() == field.count) here.Expected(what);
    bytes.push_back(static_cast<std::uint8_t>(channel));
  }
  return bytes;
}

sim::Bytes ParseBytes(const CommandKind& command, const RecordField& field, Arguments& arguments) {
  sim::Bytes bytes = {arguments.RecordByte()};
  while (!arguments.AtEnd() && command.Find(arguments.Peek()) == nullptr) {
    if (bytes.size() == field.count) {
      arguments.Expected(std::to_string(field.count) + " bytes of " + std::string(field.name));
    }
    bytes.push_back(arguments.RecordByte());
  }
  return bytes;
}

sim::Bytes ParseValue(const CommandKind& command, const RecordField& field, Arguments& arguments) {
  sim::Bytes bytes;
  switch (field.kind) {
    case FieldKind::Channels:
      return ParseChannels(field, arguments);
    case FieldKind::Bytes:
      return ParseBytes(command, field, arguments);
    case FieldKind::Choice:
      Append(bytes, ParseChoice(field, arguments), field.width);
      break;
    case FieldKind::Mask:
      Append(bytes, ParseMask(field, arguments), field.width);
      break;
    case FieldKind::Number:
    case FieldKind::Byte:
      Append(bytes, ParseNumber(field, arguments), field.width);
      break;
  }
  return bytes;
}

// ---- In words -----------------------------------------------------------------------------------

std::uint32_t ValueOf(const RecordField& field, const sim::Bytes& record) {
  std::uint32_t value = 0;
  for (std::size_t i = 0; i < field.width; ++i) {
    value |= std::uint32_t{record[field.offset + i]} << (8 * i);
  }
  return value;
}

// "0-3,7": neighbours that count up share a range.
std::string ListInWords(std::span<const std::uint8_t> numbers) {
  std::string text;
  for (std::size_t i = 0; i < numbers.size();) {
    std::size_t end = i + 1;
    while (end < numbers.size() && numbers[end] == numbers[end - 1] + 1) ++end;
    if (!text.empty()) text += ',';
    text += std::to_string(numbers[i]);
    if (end - i > 1) text += '-' + std::to_string(numbers[end - 1]);
    i = end;
  }
  return text;
}

std::string ValueInWords(const RecordField& field, const sim::Bytes& record) {
  const auto bytes = std::span(record).subspan(field.offset, field.Bytes());
  const std::uint32_t value = ValueOf(field, record);
  const auto digits = static_cast<unsigned>(2 * field.width);
  switch (field.kind) {
    case FieldKind::Bytes:
      return sim::HexBytes(bytes, " ");
    case FieldKind::Channels:
      return ListInWords(bytes);
    case FieldKind::Number:
      return std::to_string(value);
    case FieldKind::Byte:
    case FieldKind::Mask:
      return sim::Hex(value, digits);
    case FieldKind::Choice:
      break;
  }
  for (const NamedValue& named : field.values) {
    if (named.value == value) return std::string(named.name);
  }
  return sim::Hex(value, digits);
}

bool Has(const RecordField& field, const sim::Bytes& record) {
  return field.offset + field.Bytes() <= record.size();
}

// Whether a value is one of those that the command takes without more ado.
bool IsWithin(const RecordField& field, std::uint32_t value) {
  if (field.kind != FieldKind::Choice) return value <= field.most;
  return std::any_of(field.values.begin(), field.values.end(),
                     [&](const NamedValue& named) { return named.value == value; });
}

// The highest split mode of a board; none for one that no layout fits.
std::optional<std::uint32_t> HighestSplit(unsigned channels) {
  switch (channels) {
    case 4:
      return VEXO_SPLIT_4;
    case 8:
      return VEXO_SPLIT_9;
    case 16:
      return VEXO_SPLIT_16;
    default:
      return std::nullopt;
  }
}

constexpr std::string_view kMode = "mode";  // of a split

// What is to be said about one call.
class Answer {
 public:
  Answer(const CommandKind& command, const sim::Bytes& sent, unsigned channels)
      : command_(command), sent_(sent), channels_(channels) {}

  // Of a result, and of what the command took without a word; empty when there is nothing to say.
  std::string Why(std::int64_t result) const {
    if (result == VEXO_OK) return Taken();
    if (result == VEXO_ERROR_PARAMETER && !sent_.empty()) {
      if (std::string refused = Refused(); !refused.empty()) return refused;
    }
    if (std::string own = OwnWords(result); !own.empty()) return own;
    switch (result) {
      case VEXO_ERROR_PARAMETER:
        return sent_.empty() ? "the command needs a record" : "a value is refused";
      case VEXO_ERROR_NOT_READY:
        return "not ready: not attached, no window, or chips not initialized";
      case VEXO_ERROR_FAILED:
        return "failed";
      default:
        return "";
    }
  }

 private:
  bool Lacks(const RecordField& field) const {
    if (channels_ == 0 || field.name != kMode || !Has(field, sent_)) return false;
    const auto highest = HighestSplit(channels_);
    return !highest || ValueOf(field, sent_) > *highest;
  }

  std::string NoneOf(const RecordField& field) const {
    return FieldInWords(field, sent_) + " is none of " + ValuesInWords(field);
  }

  // A value that the command does not take.
  std::string Refused() const {
    for (const RecordField& field : command_.fields) {
      if (!field.beyond.empty() || field.flow == Flow::Out || !Has(field, sent_)) continue;
      if (!IsWithin(field, ValueOf(field, sent_))) return NoneOf(field);
    }
    return "";
  }

  // Values that it takes all the same, and what comes of them.
  std::string Taken() const {
    std::string text;
    for (const RecordField& field : command_.fields) {
      if (field.beyond.empty() || !Has(field, sent_)) continue;
      const bool within = IsWithin(field, ValueOf(field, sent_));
      if (within && !Lacks(field)) continue;
      if (!text.empty()) text += "; ";
      text += within ? FieldInWords(field, sent_) + ", which the board lacks" : NoneOf(field);
      text += ": " + std::string(field.beyond);
    }
    return text;
  }

  // Those of the result, joined; what is known about the board chooses among them.
  std::string OwnWords(std::int64_t result) const {
    std::string text;
    for (const ResultWords& row : command_.results) {
      if (row.result != result || (!row.field.empty() && sent_.empty())) continue;
      const RecordField* const field = command_.Find(row.field);
      if (row.field == kMode && channels_ != 0 && Lacks(*field) != (row.words == kBoardLacks)) {
        continue;
      }
      if (!text.empty()) {
        text += ", or ";
      } else if (field != nullptr) {
        text = FieldInWords(*field, sent_) + ": ";
      }
      text += row.words;
    }
    return text;
  }

  const CommandKind& command_;
  const sim::Bytes& sent_;
  unsigned channels_;
};

// The fields that the library filled in.
std::string FilledIn(const CommandKind& command, const sim::Bytes& sent, const sim::Bytes& returned,
                     std::int64_t result) {
  std::string text;
  for (const RecordField& field : command.fields) {
    if (field.flow == Flow::In || !Has(field, returned)) continue;
    const auto differs = [&] {
      return !Has(field, sent) ||
             !std::equal(
                 returned.begin() + static_cast<std::ptrdiff_t>(field.offset),
                 returned.begin() + static_cast<std::ptrdiff_t>(field.offset + field.Bytes()),
                 sent.begin() + static_cast<std::ptrdiff_t>(field.offset));
    };
    if (result != VEXO_OK && !differs()) continue;
    text += (text.empty() ? "" : ", ") + FieldInWords(field, returned);
  }
  return text;
}

}  // namespace

const CommandKind* CommandOfWord(const std::string& word) {
  Arguments arguments(std::span(&word, 1));
  if (!arguments.AtNumber()) return FindCommand(std::string_view(word));
  try {
    return FindCommand(arguments.Number("a command code"));
  } catch (const Malformed&) {
    return nullptr;
  }
}

std::vector<FieldBytes> ParseRecordFields(const CommandKind& command, Arguments& arguments) {
  std::vector<FieldBytes> fields;
  std::vector<std::string_view> left;
  for (const RecordField& field : command.fields) left.push_back(field.name);
  while (!arguments.AtEnd()) {
    const auto next = std::find(left.begin(), left.end(), arguments.Peek());
    if (next == left.end()) {
      if (left.empty()) arguments.End();
      arguments.Expected(std::string(command.name) + "'s " + sim::OneOf(left), left);
    }
    const RecordField& field = *command.Find(*next);
    arguments.Take(*next);
    left.erase(next);
    fields.push_back({&field, ParseValue(command, field, arguments)});
  }
  return fields;
}

sim::Bytes RecordOf(const std::vector<FieldBytes>& fields) {
  sim::Bytes record;
  for (const auto& [field, bytes] : fields) {
    record.resize(std::max(record.size(), field->offset + field->Bytes()));
    std::copy(bytes.begin(), bytes.end(),
              record.begin() + static_cast<std::ptrdiff_t>(field->offset));
  }
  return record;
}

std::string FieldInWords(const RecordField& field, const sim::Bytes& record) {
  if (!Has(field, record)) return "";
  return std::string(field.name) + ' ' + ValueInWords(field, record);
}

std::string ValuesInWords(const RecordField& field) {
  switch (field.kind) {
    case FieldKind::Choice:
      return sim::OneOf(ValueNames(field));
    case FieldKind::Mask:
      return "channels (0-3,7), all, none or a number";
    case FieldKind::Channels:
      return std::to_string(field.count) + " channels (0-3,7)";
    case FieldKind::Bytes:
      return std::to_string(field.count) + " bytes";
    case FieldKind::Byte:
    case FieldKind::Number:
      break;
  }
  return "0-" + std::to_string(std::min(field.most, MostOf(field)));
}

std::vector<std::string> ReturnInWords(std::uint32_t code, const sim::Bytes& sent,
                                       const sim::Bytes& returned, std::int64_t result,
                                       unsigned channels) {
  const CommandKind* const command = FindCommand(code);
  const std::string end = "= " + std::to_string(result);
  if (command == nullptr) {
    if (result != VEXO_ERROR_FAILED) return {end};
    return {end + ": " + sim::Hex(code, 4) + " is no command; the lock stays held"};
  }
  // A record given without bytes is all zero.
  sim::Bytes given = sent;
  if (!returned.empty()) given.resize(std::max(given.size(), returned.size()));
  std::vector<std::string> lines;
  const std::string filled = FilledIn(*command, given, returned, result);
  if (!filled.empty()) lines.push_back("< " + filled);
  const std::string why = Answer(*command, given, channels).Why(result);
  lines.push_back(why.empty() ? end : end + ": " + why);
  return lines;
}

}  // namespace script
