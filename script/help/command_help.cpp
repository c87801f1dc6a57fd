#include "script/help/command_help.h"

#include <algorithm>

#include "script/command_words.h"
#include "script/message_words.h"
#include "sim/text.h"

namespace script {
namespace {

std::string Padded(std::string text, std::size_t columns) {
  text.resize(std::max(columns, text.size() + 2), ' ');
  return text;
}

// Beside its results those that every command has.
std::string Results(const CommandKind& command) {
  std::string text;
  for (const ResultWords& row : command.results) {
    text += "  " + Padded("= " + std::to_string(row.result), 6);
    if (!row.field.empty()) text += std::string(row.field) + ": ";
    text += std::string(row.words) + '\n';
  }
  return text;
}

bool IsByte(std::string_view word) {
  return word.size() == 2 &&
         word.find_first_not_of("0123456789abcdefABCDEF") == std::string_view::npos;
}

}  // namespace

std::string HelpOnCommand(std::string_view name) {
  const CommandKind* const command = FindCommand(name);
  if (command == nullptr) return "";
  std::string text = "command " + std::string(name);
  if (!command->fields.empty()) text += " [FIELD VALUE...]";
  text += "\n    " + sim::Hex(command->code, 4) + ": " + std::string(command->help) + '\n';
  std::size_t name_columns = 0;
  std::size_t value_columns = 0;
  for (const RecordField& field : command->fields) {
    name_columns = std::max(name_columns, field.name.size() + 2);
    value_columns = std::max(value_columns, ValuesInWords(field).size() + 2);
  }
  for (const RecordField& field : command->fields) {
    text += "  " + Padded(std::string(field.name), name_columns) +
            Padded(ValuesInWords(field), value_columns) + std::string(field.help) +
            (field.flow == Flow::Out ? " (filled in)\n" : "\n");
  }
  return text + Results(*command);
}

std::string HelpOnCommands() {
  std::string text;
  for (const CommandKind& command : Commands()) {
    text += "  " + sim::Hex(command.code, 4) + "  " + Padded(std::string(command.name), 21) +
            std::string(command.help) + '\n';
  }
  return text + "help NAME lists a command's fields.\n";
}

std::string HelpOnMessages() {
  std::string text;
  for (const std::string_view name : MessageNames()) {
    text += "  " + sim::Hex(FindMessage(name).value_or(0), 4) + "  " + std::string(name) + '\n';
  }
  return text;
}

NextOfRecord AfterFields(const CommandKind& command, std::span<const std::string> words) {
  NextOfRecord next;
  for (const RecordField& field : command.fields) next.fields.push_back(&field);
  for (std::size_t i = 0; i < words.size();) {
    const auto field = std::find_if(next.fields.begin(), next.fields.end(),
                                    [&](const RecordField* one) { return one->name == words[i]; });
    if (field == next.fields.end()) {
      next.wrong = true;
      return next;
    }
    next.value = *field;
    next.fields.erase(field);
    ++i;
    if (i == words.size()) {
      next.fields.clear();  // its value comes first
      return next;
    }
    ++i;
    if (next.value->kind == FieldKind::Bytes) {
      while (i < words.size() && IsByte(words[i])) ++i;
      if (i == words.size()) return next;
    }
    next.value = nullptr;
  }
  return next;
}

}  // namespace script
