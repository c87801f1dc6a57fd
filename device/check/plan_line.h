// A line of a plan, read without memory of its own: docs/plan-format.md.
#pragma once

#include <cstddef>
#include <cstdint>

namespace check {

inline constexpr unsigned kRecordBytes = 64;
inline constexpr unsigned kMotionBytes = 24;
inline constexpr unsigned kMostText = 255;
inline constexpr unsigned kMostLine = 4000;
inline constexpr unsigned kMostLines = 100'000;
inline constexpr unsigned kMostPlan = 1u << 20;

enum class LineKind : std::uint8_t {
  Nothing,
  Header,
  End,
  Board,
  Script,
  Step,
  // Actions
  Load,
  Unload,
  Initialize,
  Uninitialize,
  Debug,
  Output,
  Version,
  Command,
  Motion,
  Text,
  Wait,
  // Expectations
  Result,
  Record,
  Answer,
  Message,
  Messages,
  Register,
  Cycles,
  Prints,
};

constexpr bool IsAction(LineKind kind) { return LineKind::Load <= kind && kind <= LineKind::Wait; }
constexpr bool IsExpectation(LineKind kind) { return LineKind::Result <= kind; }

struct PlanLine {
  LineKind kind;
  bool no;  // without a window, a buffer or a record
  std::uint32_t numbers[4];
  unsigned byte_count;  // of a record; 0: none
  std::uint8_t bytes[kRecordBytes];
  unsigned mask_count;
  std::uint8_t mask[kRecordBytes];
  unsigned text_length;  // all of it, though no more than the first are kept
  char text[kMostText + 1];
};

// Reads a line without its end. Returns what is wrong with it, null for nothing.
const char* ReadPlanLine(const char* begin, const char* end, PlanLine& line);

// What may stand where in a plan.
class PlanOrder {
 public:
  // What is wrong with a line in its place, null for nothing.
  const char* Next(const PlanLine& line);
  // The same of a plan that has no more lines.
  const char* AtEnd() const;

 private:
  enum class Place { Begin, Board, Script, Step, Action, End };
  Place place_ = Place::Begin;
  bool has_record_ = false;  // the last action
  unsigned seen_ = 0;        // what may be expected of it once, and is
};

}  // namespace check
