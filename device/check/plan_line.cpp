#include "device/check/plan_line.h"

namespace check {
namespace {

// What stands behind a word: n a number, r one that may be negative, s 0 or 1, c a chip, p a page,
// y a number of 8 bits, h bytes, H bytes or -, M 24 bytes at most, m a mask of bytes, t a text, i
// the word invalid, a the word any, - that sign. What is behind a ? may be missing.
struct LineWord {
  const char* word;
  LineKind kind;
  const char* pattern;
};

constexpr LineWord kWords[] = {
    {"vexoplan", LineKind::Header, "n"},
    {"end", LineKind::End, ""},
    {"board", LineKind::Board, "t"},
    {"script", LineKind::Script, "t"},
    {"step", LineKind::Step, "nt"},
    {"load", LineKind::Load, ""},
    {"unload", LineKind::Unload, ""},
    {"initialize", LineKind::Initialize, "?i"},
    {"uninitialize", LineKind::Uninitialize, ""},
    {"debug", LineKind::Debug, "s"},
    {"output", LineKind::Output, "s"},
    {"version", LineKind::Version, "?-"},
    {"command", LineKind::Command, "nH"},
    {"motion", LineKind::Motion, "yyM"},
    {"text", LineKind::Text, "t"},
    {"wait", LineKind::Wait, "n"},
    {"result", LineKind::Result, "r"},
    {"record", LineKind::Record, "h?m"},
    {"answer", LineKind::Answer, "t"},
    {"message", LineKind::Message, "nnn?h?m"},
    {"messages", LineKind::Messages, "a"},
    {"register", LineKind::Register, "cpyy?y"},
    {"cycles", LineKind::Cycles, "nn"},
    {"prints", LineKind::Prints, "t"},
};

constexpr const char* kChips[] = {"master", "slave1", "slave2", "slave3"};

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\r'; }

int HexDigit(char c) {
  if ('0' <= c && c <= '9') return c - '0';
  if ('a' <= c && c <= 'f') return c - 'a' + 10;
  if ('A' <= c && c <= 'F') return c - 'A' + 10;
  return -1;
}

class Reader {
 public:
  Reader(const char* begin, const char* end) : at_(begin), end_(end) {}

  bool AtEnd() {
    while (at_ != end_ && IsBlank(*at_)) ++at_;
    return at_ == end_ || *at_ == '#';
  }

  // The next word is this one: takes it.
  bool Take(const char* word) {
    if (AtEnd()) return false;
    const char* next = at_;
    while (*word != 0 && next != end_ && *next == *word) {
      ++next;
      ++word;
    }
    if (*word != 0 || !Ends(next)) return false;
    at_ = next;
    return true;
  }

  bool Number(std::uint32_t most, std::uint32_t& value) {
    if (AtEnd()) return false;
    const char* next = at_;
    std::uint32_t base = 10;
    if (end_ - next > 2 && next[0] == '0' && (next[1] == 'x' || next[1] == 'X')) {
      base = 16;
      next += 2;
    }
    std::uint64_t number = 0;
    const char* const first = next;
    for (; !Ends(next); ++next) {
      const int digit = HexDigit(*next);
      if (digit < 0 || static_cast<std::uint32_t>(digit) >= base) return false;
      number = number * base + static_cast<std::uint32_t>(digit);
      if (number > most) return false;
    }
    if (next == first) return false;
    value = static_cast<std::uint32_t>(number);
    at_ = next;
    return true;
  }

  bool SignedNumber(std::uint32_t& value) {
    constexpr std::uint32_t kMost = 0x7FFFFFFF;
    if (AtEnd()) return false;
    const bool negative = *at_ == '-';
    if (negative) ++at_;
    if (at_ == end_ || IsBlank(*at_) || !Number(kMost + (negative ? 1 : 0), value)) return false;
    if (negative) value = 0u - value;
    return true;
  }

  // 0: there are none, or they are none.
  unsigned Bytes(std::uint8_t* bytes, unsigned most) {
    if (AtEnd()) return 0;
    unsigned count = 0;
    const char* next = at_;
    for (; !Ends(next); next += 2) {
      if (count == most || end_ - next < 2) return 0;
      const int high = HexDigit(next[0]);
      const int low = HexDigit(next[1]);
      if (high < 0 || low < 0) return 0;
      bytes[count++] = static_cast<std::uint8_t>(high * 16 + low);
    }
    at_ = next;
    return count;
  }

  // A text in quotes, or a bare word; its first characters, and how many it has.
  bool Text(char* text, unsigned& length) {
    if (AtEnd()) return false;
    length = 0;
    if (*at_ != '"') {
      for (; !Ends(at_); ++at_, ++length) {
        if (*at_ == '"') return false;
        if (length < kMostText) text[length] = *at_;
      }
      text[length < kMostText ? length : kMostText] = 0;
      return true;
    }
    const char* next = at_ + 1;
    while (next != end_ && *next != '"') {
      char c = *next++;
      if (c == '\\' && !Escape(next, c)) return false;
      if (length < kMostText) text[length] = c;
      ++length;
    }
    if (next == end_ || !Ends(next + 1)) return false;
    text[length < kMostText ? length : kMostText] = 0;
    at_ = next + 1;
    return true;
  }

 private:
  // A word may end here.
  bool Ends(const char* next) const { return next == end_ || IsBlank(*next) || *next == '#'; }

  bool Escape(const char*& next, char& c) const {
    if (next == end_) return false;
    switch (const char escape = *next++) {
      case '"':
      case '\\':
        c = escape;
        return true;
      case 'n':
        c = '\n';
        return true;
      case 'r':
        c = '\r';
        return true;
      case 't':
        c = '\t';
        return true;
      default:
        break;
    }
    if (next[-1] != 'x' || end_ - next < 2) return false;
    const int high = HexDigit(next[0]);
    const int low = HexDigit(next[1]);
    if (high < 0 || low < 0) return false;
    c = static_cast<char>(high * 16 + low);
    next += 2;
    return true;
  }

  const char* at_;
  const char* const end_;
};

bool ReadChip(Reader& reader, std::uint32_t& chip) {
  for (chip = 0; chip < sizeof kChips / sizeof *kChips; ++chip) {
    if (reader.Take(kChips[chip])) return true;
  }
  return false;
}

// What was expected; null when it stands there.
const char* ReadPart(Reader& reader, char part, PlanLine& line, std::uint32_t& number) {
  switch (part) {
    case 'n':
      return reader.Number(0xFFFFFFFF, number) ? nullptr : "expected a number of 32 bits";
    case 'r':
      return reader.SignedNumber(number) ? nullptr : "expected a result";
    case 's':
      return reader.Number(1, number) ? nullptr : "expected 0 or 1";
    case 'y':
      return reader.Number(0xFF, number) ? nullptr : "expected a number 0 to 255";
    case 'p':
      return reader.Number(2, number) ? nullptr : "expected a page 0 to 2";
    case 'c':
      return ReadChip(reader, number) ? nullptr : "expected master, slave1, slave2 or slave3";
    case 'H':
      line.no = reader.Take("-");
      if (line.no) return nullptr;
      [[fallthrough]];
    case 'h':
      line.byte_count = reader.Bytes(line.bytes, kRecordBytes);
      return line.byte_count != 0 ? nullptr : "expected 1 to 64 bytes";
    case 'M':
      line.byte_count = reader.Bytes(line.bytes, kMotionBytes);
      return line.byte_count != 0 ? nullptr : "expected 1 to 24 bytes";
    case 'm':
      line.mask_count = reader.Bytes(line.mask, kRecordBytes);
      return line.mask_count != 0 ? nullptr : "expected a mask of 1 to 64 bytes";
    case 't':
      return reader.Text(line.text, line.text_length) ? nullptr : "expected a text";
    case 'i':
      line.no = reader.Take("invalid");
      return line.no ? nullptr : "expected the word invalid";
    case '-':
      line.no = reader.Take("-");
      return line.no ? nullptr : "expected -";
    default:
      return reader.Take("any") ? nullptr : "expected the word any";
  }
}

bool HasZero(const PlanLine& line) {
  for (unsigned i = 0; i < line.text_length; ++i) {
    if (line.text[i] == 0) return true;
  }
  return false;
}

}  // namespace

const char* ReadPlanLine(const char* begin, const char* end, PlanLine& line) {
  line = {};
  if (end - begin > static_cast<std::ptrdiff_t>(kMostLine))
    return "expected 4000 characters at most";
  for (const char* at = begin; at != end; ++at) {
    if ((*at < ' ' || *at > '~') && !IsBlank(*at)) return "expected ASCII text";
  }
  Reader reader(begin, end);
  if (reader.AtEnd()) return nullptr;
  const LineWord* found = nullptr;
  for (const LineWord& row : kWords) {
    if (reader.Take(row.word)) {
      found = &row;
      break;
    }
  }
  if (found == nullptr) return "expected a line of a plan";
  line.kind = found->kind;
  unsigned count = 0;
  for (const char* part = found->pattern; *part != 0; ++part) {
    if (*part == '?') {
      if (reader.AtEnd()) break;
      continue;
    }
    std::uint32_t number = 0;
    if (const char* const wrong = ReadPart(reader, *part, line, number)) return wrong;
    const bool is_number = *part == 'n' || *part == 'r' || *part == 's' || *part == 'y' ||
                           *part == 'p' || *part == 'c';
    if (is_number && count < 4) line.numbers[count] = number;
    if (is_number) ++count;
    if (line.kind == LineKind::Register && count == 5)
      line.mask[0] = static_cast<std::uint8_t>(number);
  }
  if (line.kind == LineKind::Register && count < 5) line.mask[0] = 0xFF;
  if (!reader.AtEnd()) return "expected the end of the line";
  if (line.kind == LineKind::Header && line.numbers[0] != 1) return "expected a plan of format 1";
  if (line.kind == LineKind::Text && (line.text_length > kMostText || HasZero(line))) {
    return "expected a text of 255 characters at most, without a byte 00";
  }
  return nullptr;
}

const char* PlanOrder::Next(const PlanLine& line) {
  const LineKind kind = line.kind;
  if (kind == LineKind::Nothing) return nullptr;
  if (place_ == Place::End) return "expected nothing behind the end";
  if ((kind == LineKind::Header) != (place_ == Place::Begin)) {
    return place_ == Place::Begin ? "expected vexoplan 1" : "expected one line vexoplan";
  }
  if (kind == LineKind::Header) place_ = Place::Board;
  if (kind == LineKind::End) place_ = Place::End;
  if (kind == LineKind::Board && place_ != Place::Board) {
    return "expected board lines before the first script";
  }
  if (kind == LineKind::Script) place_ = Place::Script;
  if (kind == LineKind::Step) {
    if (place_ == Place::Board) return "expected a script before the first step";
    place_ = Place::Step;
  }
  if (IsAction(kind)) {
    if (place_ != Place::Step && place_ != Place::Action) {
      return "expected a step before the first action";
    }
    place_ = Place::Action;
    has_record_ = line.byte_count != 0;
    seen_ = 0;
  }
  if (!IsExpectation(kind)) return nullptr;
  if (place_ != Place::Action) return "expected an action before what is expected of it";
  if (kind == LineKind::Record && !has_record_) return "expected a call with a record before it";
  const bool once = kind == LineKind::Result || kind == LineKind::Record ||
                    kind == LineKind::Answer || kind == LineKind::Cycles;
  const unsigned bit = 1u << static_cast<unsigned>(kind);
  if (once && (seen_ & bit) != 0) return "expected one such line, found a second";
  seen_ |= bit;
  return nullptr;
}

const char* PlanOrder::AtEnd() const {
  return place_ == Place::End ? nullptr : "expected the line end, found the end of the file";
}

}  // namespace check
