// What the check program does on the device, and what is expected of it: docs/plan-format.md.
#pragma once

#include <cstdint>
#include <istream>
#include <optional>
#include <ostream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace plan {

using Bytes = std::vector<std::uint8_t>;

inline constexpr std::size_t kRecordBytes = 64;
inline constexpr std::size_t kMotionBytes = 24;
inline constexpr std::size_t kLongestText = 255;  // of a text command
inline constexpr std::size_t kLongestLine = 4000;
inline constexpr std::size_t kMostLines = 100'000;
inline constexpr std::size_t kMostBytes = std::size_t{1} << 20;
// Of motion, which no plan expects; and of a read of a register, which is no message of an action.
inline constexpr std::uint32_t kMotionMessage = 0x2404;
inline constexpr std::uint32_t kRegisterMessage = 0x2406;

// A plan or a log that is none; the text is "FILE:LINE: expected ..., found ...".
struct FormatError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// Bytes, of which the bits in the mask count: those of bytes that the mask does not give, too.
struct MaskedBytes {
  Bytes bytes;
  Bytes mask;

  // Bytes that one of the two does not have are 0.
  bool Matches(const Bytes& found) const;
  bool operator==(const MaskedBytes&) const = default;
};

enum class ActionKind : std::uint8_t {
  Load,
  Unload,
  Initialize,
  InitializeInvalid,
  Uninitialize,
  Debug,
  Output,
  Version,
  VersionNull,
  Command,
  Motion,
  Text,
  Wait,
};

struct Action {
  ActionKind kind = ActionKind::Load;
  std::uint32_t number = 0;     // switch, code, channel, milliseconds
  std::uint32_t level = 0;      // of Motion
  std::optional<Bytes> record;  // of Command and Motion, as far as it is not 0; none: null
  std::string text;             // of Text

  bool operator==(const Action&) const = default;
};

// The line of a plan that is this action: "command 0xF002 -".
std::string ActionInWords(const Action& action);

struct ExpectedMessage {
  unsigned line = 0;
  std::uint32_t message = 0;
  std::uint32_t wparam = 0;  // 0 where it is an address
  std::uint32_t lparam = 0;
  std::optional<MaskedBytes> record;  // what stood at that address

  bool operator==(const ExpectedMessage&) const = default;
};

struct ExpectedRegister {
  unsigned line = 0;
  unsigned chip = 0;  // position
  std::uint8_t page = 0;
  std::uint8_t number = 0;
  std::uint8_t value = 0;
  std::uint8_t mask = 0xFF;

  bool operator==(const ExpectedRegister&) const = default;
};

// In simulation.
struct Cost {
  std::uint32_t cycles = 0;
  std::uint32_t slept_ms = 0;

  bool operator==(const Cost&) const = default;
};

// An action with what is expected of it.
struct Step {
  unsigned line = 0;         // of the plan, from 1
  std::string script;        // that it was made of
  unsigned script_line = 0;  // 0: none, the plan adds it
  std::string source;        // what stands there
  Action action;

  std::optional<std::int32_t> result;
  std::optional<MaskedBytes> record;
  std::optional<std::string> answer;
  bool any_messages = false;
  std::vector<ExpectedMessage> messages;
  std::vector<ExpectedRegister> registers;
  std::optional<Cost> cost;
  std::vector<std::string> prints;

  bool operator==(const Step&) const = default;
};

struct Plan {
  std::vector<std::string> board;  // lines that must hold on the bench
  std::vector<Step> steps;
  unsigned lines = 0;          // of its file; 0 when it was not read from one
  std::uint32_t checksum = 0;  // of its file, as a log names it

  bool operator==(const Plan&) const = default;
};

// FNV-1a, 32 bits.
std::uint32_t Checksum(std::string_view text);

// Reads a plan; `name` stands in messages. Throws FormatError.
Plan ParsePlan(std::string_view text, const std::string& name);
// The text of a plan, of which its numbers of lines and its checksum are no part.
std::string PrintPlan(const Plan& plan);

}  // namespace plan
