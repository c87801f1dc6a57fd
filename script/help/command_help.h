// Help on binary commands, and what may stand next in a line that names one.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "script/command_table.h"

namespace script {

// A command with its fields and results; empty for an unknown one.
std::string HelpOnCommand(std::string_view name);
// All of them, a line each.
std::string HelpOnCommands();
std::string HelpOnMessages();

// What may follow FIELD VALUE...
struct NextOfRecord {
  std::vector<const RecordField*> fields;  // that are not given yet
  const RecordField* value = nullptr;      // whose value stands next, or may go on
  bool wrong = false;                      // a word is no field of the command
};
NextOfRecord AfterFields(const CommandKind& command, std::span<const std::string> words);

}  // namespace script
