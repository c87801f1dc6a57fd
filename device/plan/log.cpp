#include "device/plan/log.h"

#include <algorithm>
#include <array>

#include "device/plan/words.h"
#include "script/words.h"

namespace plan {
namespace {

using script::Arguments;
using script::Malformed;

// Far more than any plan makes: a hundred bytes a line of the longest.
constexpr std::size_t kMostLogBytes = std::size_t{64} << 20;
constexpr std::size_t kMostBytesOfEntry = 1024;

// What stands behind a word: t a text, n a decimal number, i one that may be negative, x one that
// is printed in hexadecimal, b bytes. What is behind a ? may be missing.
struct EntryWord {
  EntryKind kind;
  std::string_view word;
  std::string_view pattern;
};

constexpr std::array kEntries = {
    EntryWord{EntryKind::Begin, "begin", "t"},
    EntryWord{EntryKind::Clock, "clock", "n"},
    EntryWord{EntryKind::File, "file", "tnxx"},
    EntryWord{EntryKind::Absent, "absent", "tn"},
    EntryWord{EntryKind::Missing, "missing", "tt"},
    EntryWord{EntryKind::Imports, "imports", "nn"},
    EntryWord{EntryKind::Loading, "loading", "t"},
    EntryWord{EntryKind::Loaded, "loaded", "x"},
    EntryWord{EntryKind::Refused, "refused", "n"},
    EntryWord{EntryKind::Path, "path", "t"},
    EntryWord{EntryKind::Version, "version", "t"},
    EntryWord{EntryKind::Export, "export", "tx"},
    EntryWord{EntryKind::Again, "again", "x"},
    EntryWord{EntryKind::Process, "process", "tn"},
    EntryWord{EntryKind::Window, "window", "x"},
    EntryWord{EntryKind::Nvram, "nvram", "t?b"},
    EntryWord{EntryKind::Plan, "plan", "nx"},
    EntryWord{EntryKind::Wrong, "wrong", "t"},
    EntryWord{EntryKind::Called, "called", ""},
    EntryWord{EntryKind::Returned, "returned", "?i"},
    EntryWord{EntryKind::Error, "error", "n"},
    EntryWord{EntryKind::Took, "took", "n"},
    EntryWord{EntryKind::Record, "record", "b"},
    EntryWord{EntryKind::Answer, "answer", "t"},
    EntryWord{EntryKind::Message, "message", "xxx?b"},
    EntryWord{EntryKind::Value, "value", "x"},
    EntryWord{EntryKind::Unread, "unread", "i"},
    EntryWord{EntryKind::Summary, "summary", "t"},
    EntryWord{EntryKind::End, "end", "nn"},
};

void ReadParts(Arguments& words, std::string_view pattern, Entry& entry) {
  for (const char part : pattern) {
    if (part == '?' && words.AtEnd()) return;
    if (part == 't') entry.texts.push_back(words.Text("a text"));
    if (part == 'i') entry.numbers.push_back(words.SignedNumber("a number"));
    if (part == 'n' || part == 'x') entry.numbers.push_back(words.Number("a number"));
    if (part == 'b') entry.bytes = ReadHex(words, kMostBytesOfEntry);
  }
}

Entry ReadEntry(Arguments& words, unsigned line) {
  Entry entry;
  entry.line = line;
  entry.plan_line = words.Number("a line of the plan", 0, kMostLines);
  entry.ms = words.Number("milliseconds");
  const auto* const found =
      std::find_if(kEntries.begin(), kEntries.end(),
                   [&words](const EntryWord& row) { return words.Peek() == row.word; });
  if (found == kEntries.end()) words.Expected("an entry of a log");
  words.Take(found->word);
  entry.kind = found->kind;
  ReadParts(words, found->pattern, entry);
  words.End();
  return entry;
}

std::string PrintEntry(const Entry& entry) {
  const auto* const found =
      std::find_if(kEntries.begin(), kEntries.end(),
                   [&entry](const EntryWord& row) { return row.kind == entry.kind; });
  std::string text = std::to_string(entry.plan_line) + ' ' + std::to_string(entry.ms) + ' ' +
                     std::string(found->word);
  auto next_text = entry.texts.begin();
  auto next_number = entry.numbers.begin();
  for (const char part : found->pattern) {
    if (part == 't') text += ' ' + script::Quoted(*next_text++);
    if (part == 'n' || (part == 'i' && next_number != entry.numbers.end())) {
      text += ' ' + std::to_string(*next_number++);
    }
    if (part == 'x') text += ' ' + HexNumber(static_cast<std::uint32_t>(*next_number++));
    if (part == 'b' && !entry.bytes.empty()) text += ' ' + HexWord(entry.bytes);
  }
  return text + '\n';
}

}  // namespace

std::string_view WordOf(EntryKind kind) {
  const auto* const found = std::find_if(kEntries.begin(), kEntries.end(),
                                         [kind](const EntryWord& row) { return row.kind == kind; });
  return found->word;
}

Log ParseLog(std::string_view text, const std::string& name) {
  if (text.size() > kMostLogBytes) {
    throw FormatError(name + ": expected a log of 64 MiB at most, found " +
                      std::to_string(text.size()) + " bytes");
  }
  Log log;
  const std::size_t whole = text.rfind('\n') + 1;  // 0 when no line has an end
  log.cut = whole != text.size();
  ReadLines(text.substr(0, whole), name, [&log](unsigned line, std::span<const std::string> split) {
    Arguments words(split);
    Entry entry = ReadEntry(words, line);
    if (log.entries.empty() != (entry.kind == EntryKind::Begin)) {
      throw Malformed(log.entries.empty() ? "expected 'begin' in the first line, found '" +
                                                std::string(WordOf(entry.kind)) + "'"
                                          : "expected one 'begin', found a second");
    }
    if (log.Whole()) {
      throw Malformed("expected nothing behind the end, found '" + std::string(WordOf(entry.kind)) +
                      "'");
    }
    log.entries.push_back(std::move(entry));
  });
  return log;
}

std::string PrintLog(const Log& log) {
  std::string text;
  for (const Entry& entry : log.entries) text += PrintEntry(entry);
  return text;
}

}  // namespace plan
