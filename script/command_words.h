// Records of binary commands by field, and what comes back in words.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "script/command_table.h"
#include "script/words.h"
#include "sim/trace.h"

namespace script {

// The command that a word names or whose code it is; null when there is none.
const CommandKind* CommandOfWord(const std::string& word);

// A field with the bytes it was given, as they lie in the record; a list may be shorter than the
// field.
struct FieldBytes {
  const RecordField* field = nullptr;
  sim::Bytes bytes;
};

// Reads FIELD VALUE... up to the end of the line. Throws Malformed, also for a field given twice.
std::vector<FieldBytes> ParseRecordFields(const CommandKind& command, Arguments& arguments);

// A record with these fields, and 0 elsewhere.
sim::Bytes RecordOf(const std::vector<FieldBytes>& fields);

// "mode 16" as the record has it; empty when the record ends before the field.
std::string FieldInWords(const RecordField& field, const sim::Bytes& record);

// What a field may have: "0-3", "full, 4, 9 or 16", "24 bytes".
std::string ValuesInWords(const RecordField& field);

// What a call of VEXOAPI_CommandProc left, a line each:
//   < chip-count 4, video-standard ntsc, chip-id 28 28 28 28    fields that the library filled in
//   = -5: mode 0x07 is none of full, 4, 6, 8, 9, 13 or 16
// sent: the record as it was given, empty when there was none. channels: how many the board has,
// 0 when that is not known.
std::vector<std::string> ReturnInWords(std::uint32_t code, const sim::Bytes& sent,
                                       const sim::Bytes& returned, std::int64_t result,
                                       unsigned channels = 0);

}  // namespace script
