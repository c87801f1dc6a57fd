#include "device/check/log_line.h"

namespace check {
namespace {

constexpr char kDigits[] = "0123456789ABCDEF";
constexpr unsigned kMostDigits = 10;

// The digits of a number, the last one first; returns how many.
unsigned Digits(std::uint32_t value, std::uint32_t base, char* digits) {
  unsigned count = 0;
  do {
    digits[count++] = kDigits[value % base];
    value /= base;
  } while (value != 0);
  return count;
}

}  // namespace

LogLine::LogLine(System& system, unsigned plan_line, const char* entry) : system_(system) {
  PutNumber(plan_line);
  Put(' ');
  PutNumber(system.Milliseconds());
  Put(' ');
  Put(entry);
}

LogLine& LogLine::Number(std::uint32_t value) {
  Put(' ');
  PutNumber(value);
  return *this;
}

LogLine& LogLine::Signed(std::int32_t value) {
  Put(' ');
  if (value < 0) Put('-');
  const auto bits = static_cast<std::uint32_t>(value);
  PutNumber(value < 0 ? 0u - bits : bits);
  return *this;
}

LogLine& LogLine::Hex(std::uint32_t value) {
  char digits[kMostDigits];
  Put(" 0x");
  for (unsigned left = Digits(value, 16, digits); left != 0;) Put(digits[--left]);
  return *this;
}

LogLine& LogLine::Text(const char* text) {
  Put(" \"");
  for (; *text != 0; ++text) PutQuoted(static_cast<unsigned char>(*text));
  Put('"');
  return *this;
}

LogLine& LogLine::Text(const Char16* text) {
  Put(" \"");
  for (; *text != 0; ++text) PutQuoted(*text);
  Put('"');
  return *this;
}

LogLine& LogLine::Bytes(const std::uint8_t* bytes, unsigned count) {
  Put(' ');
  for (unsigned i = 0; i < count; ++i) PutByte(bytes[i]);
  return *this;
}

void LogLine::Write() {
  line_[length_++] = '\n';
  system_.WriteLog(line_, length_);
}

// What does not fit is left out; there is room for the line's end.
void LogLine::Put(char c) {
  if (length_ < kMost - 1) line_[length_++] = c;
}

void LogLine::Put(const char* text) {
  while (*text != 0) Put(*text++);
}

void LogLine::PutNumber(std::uint32_t value) {
  char digits[kMostDigits];
  for (unsigned left = Digits(value, 10, digits); left != 0;) Put(digits[--left]);
}

void LogLine::PutByte(std::uint8_t value) {
  Put(kDigits[value >> 4]);
  Put(kDigits[value & 0xF]);
}

// The log is ASCII: of any other character its lowest byte tells little, so it is a question mark.
void LogLine::PutQuoted(std::uint32_t unit) {
  constexpr unsigned kRoom = 8;  // for it and what must stand behind it
  if (length_ > kMost - kRoom) return;
  if (unit == '"' || unit == '\\') Put('\\');
  if (unit >= ' ' && unit <= '~') return Put(static_cast<char>(unit));
  if (unit > 0xFF) return Put('?');
  Put("\\x");
  PutByte(static_cast<std::uint8_t>(unit));
}

Words& Words::Add(const char* text) {
  while (*text != 0 && length_ < kMost - 1) text_[length_++] = *text++;
  return *this;
}

Words& Words::Add(std::uint32_t number) {
  char digits[kMostDigits];
  for (unsigned left = Digits(number, 10, digits); left != 0 && length_ < kMost - 1;) {
    text_[length_++] = digits[--left];
  }
  return *this;
}

}  // namespace check
