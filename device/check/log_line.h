// A line of the log, word by word: docs/plan-format.md.
#pragma once

#include <cstdint>

#include "device/check/system.h"

namespace check {

class LogLine {
 public:
  // The plan's line that it is about, 0 for none.
  LogLine(System& system, unsigned plan_line, const char* entry);

  LogLine& Number(std::uint32_t value);
  LogLine& Signed(std::int32_t value);
  LogLine& Hex(std::uint32_t value);
  LogLine& Text(const char* text);
  LogLine& Text(const Char16* text);
  LogLine& Bytes(const std::uint8_t* bytes, unsigned count);
  void Write();

 private:
  void Put(char c);
  void Put(const char* text);
  void PutNumber(std::uint32_t value);
  void PutByte(std::uint8_t value);
  void PutQuoted(std::uint32_t unit);

  static constexpr unsigned kMost = 1200;
  System& system_;
  unsigned length_ = 0;
  char line_[kMost] = {};
};

// What somebody reads: a text made of parts.
class Words {
 public:
  Words& Add(const char* text);
  Words& Add(std::uint32_t number);
  const char* Get() const { return text_; }

 private:
  static constexpr unsigned kMost = 400;
  unsigned length_ = 0;
  char text_[kMost] = {};
};

}  // namespace check
