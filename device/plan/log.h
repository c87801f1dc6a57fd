// What the check program has found on the device: docs/plan-format.md.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "device/plan/plan.h"

namespace plan {

// Far more than any plan makes: a hundred bytes a line of the longest.
inline constexpr std::size_t kMostLogBytes = std::size_t{64} << 20;

enum class EntryKind : std::uint8_t {
  Begin,
  Clock,
  File,
  Absent,
  Missing,
  Imports,
  Loading,
  Loaded,
  Refused,
  Path,
  Version,
  Export,
  Again,
  Process,
  Window,
  Nvram,
  Plan,
  Wrong,
  Called,
  Returned,
  Error,
  Took,
  Record,
  Answer,
  Message,
  Value,
  Unread,
  Summary,
  End,
};

// A line of a log. Which numbers and texts it has is a matter of its kind: as many as stand in its
// row of the format, each kind in its order.
struct Entry {
  unsigned line = 0;       // of the log, from 1
  unsigned plan_line = 0;  // 0: none
  std::uint32_t ms = 0;    // since the program began
  EntryKind kind = EntryKind::Begin;
  std::vector<std::string> texts;
  std::vector<std::int64_t> numbers;
  Bytes bytes;

  bool operator==(const Entry&) const = default;
};

struct Log {
  std::vector<Entry> entries;
  bool cut = false;  // its last line has no end, and is left out

  // Nothing is missing at its end.
  bool Whole() const { return !entries.empty() && entries.back().kind == EntryKind::End; }
  bool operator==(const Log&) const = default;
};

// The word that an entry of this kind begins with.
std::string_view WordOf(EntryKind kind);

// Reads a log; `name` stands in messages. Throws FormatError.
Log ParseLog(std::string_view text, const std::string& name);
std::string PrintLog(const Log& log);

// What the exit code of the second process is made of.
inline constexpr unsigned kChildLoaded = 1;
inline constexpr unsigned kChildExports = 2;
inline constexpr unsigned kChildUninitialized = 4;
inline constexpr unsigned kChildNoVersion = 8;
inline constexpr unsigned kChildSharesMemory = 16;
inline constexpr unsigned kChildAsItShould = 31;

}  // namespace plan
