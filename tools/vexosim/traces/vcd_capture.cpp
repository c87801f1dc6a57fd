#include "tools/vexosim/traces/vcd_capture.h"

#include <algorithm>
#include <charconv>
#include <limits>

namespace vexosim {
namespace {

constexpr std::string_view kBlanks = " \t\v\f";
constexpr unsigned kBits = 8;
constexpr unsigned kAllBits = 0xFF;

template <typename T>
bool ReadNumber(std::string_view text, T& number) {
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  return error == std::errc{} && end == text.data() + text.size();
}

}  // namespace

VcdCapture::VcdCapture(FileLines lines, const CaptureColumns& columns)
    : columns_(columns), lines_(std::move(lines)) {
  now_.lines.fill(-1);
  unknown_bits_.fill(kAllBits);
  ReadHeader();
  FindLines();
}

std::string_view VcdCapture::Word() {
  for (;;) {
    at_ = std::min(line_.find_first_not_of(kBlanks, at_), line_.size());
    if (at_ < line_.size()) break;
    at_ = 0;
    if (!lines_.Next(line_)) {
      line_.clear();
      return {};
    }
  }
  const std::size_t end = std::min(line_.find_first_of(kBlanks, at_), line_.size());
  const std::string_view word = std::string_view(line_).substr(at_, end - at_);
  at_ = end;
  return word;
}

void VcdCapture::SkipToEnd() {
  for (std::string_view word = Word(); word != "$end"; word = Word()) {
    if (word.empty()) lines_.Wrong("expected $end, found the end of the file");
  }
}

void VcdCapture::ReadTimescale() {
  std::string text;
  for (std::string_view word = Word(); word != "$end"; word = Word()) {
    if (word.empty()) lines_.Wrong("expected $end, found the end of the file");
    if (text.size() < 40) text += word;
  }
  constexpr std::array<std::pair<std::string_view, double>, 6> kUnits = {
      {{"ms", 1}, {"us", 1e-3}, {"ns", 1e-6}, {"ps", 1e-9}, {"fs", 1e-12}, {"s", 1e3}}};
  for (const auto& [unit, ms] : kUnits) {
    if (!text.ends_with(unit)) continue;
    unsigned count = 0;
    if (!ReadNumber(std::string_view(text).substr(0, text.size() - unit.size()), count)) break;
    if (count != 1 && count != 10 && count != 100) break;
    ms_a_unit_ = ms * count;
    return;
  }
  lines_.Wrong("expected a timescale of 1, 10 or 100 and a unit, found '" + Shown(text) + "'");
}

// $var TYPE WIDTH ID NAME [RANGE] $end
void VcdCapture::ReadVariable(const std::string& scope) {
  Word();
  Signal signal;
  const std::string width(Word());
  signal.id = Word();
  std::string name(Word());
  if (!ReadNumber(width, signal.width) || signal.id.empty() || name.empty() || name == "$end") {
    lines_.Wrong("expected $var TYPE WIDTH ID NAME $end, found a width '" + Shown(width) +
                 "' and a name '" + Shown(name) + "'");
  }
  const std::string_view range = Word();
  if (range != "$end") {
    // One bit of a bus is a signal of its own; a range is that of a whole one.
    if (range.find(':') == std::string_view::npos) name += range;
    SkipToEnd();
  } else if (const std::size_t open = name.find('['); name.find(':') != std::string::npos) {
    name.resize(std::min(open, name.size()));
  }
  signals_.emplace(name, signal);
  if (!scope.empty()) signals_.emplace(scope + name, signal);
}

void VcdCapture::ReadHeader() {
  std::vector<std::string> scopes;
  for (;;) {
    const std::string word(Word());
    if (word == "META") {
      at_ = line_.size();  // a line that sigrok-cli puts first
    } else if (word == "$scope") {
      Word();
      scopes.emplace_back(Word());
      SkipToEnd();
    } else if (word == "$upscope") {
      if (!scopes.empty()) scopes.pop_back();
      SkipToEnd();
    } else if (word == "$var") {
      std::string scope;
      for (const std::string& each : scopes) scope += each + '.';
      ReadVariable(scope);
    } else if (word == "$timescale") {
      ReadTimescale();
    } else if (word == "$enddefinitions") {
      SkipToEnd();
      return;
    } else if (word.starts_with('$')) {
      SkipToEnd();
    } else {
      lines_.Wrong("expected a header that ends with $enddefinitions, found " +
                   (word.empty() ? std::string("the end of the file") : "'" + Shown(word) + "'"));
    }
  }
}

void VcdCapture::FindLines() {
  std::size_t enables = 0;
  for (std::size_t line = 0; line < kBusLines; ++line) {
    const std::string name = columns_.NameOf(line);
    const unsigned width = line < kWideBusLines ? kBits : 1;
    const auto whole = signals_.find(name);
    if (whole != signals_.end()) {
      if (whole->second.width != width) {
        lines_.Wrong("expected " + std::to_string(width) + " bits of the signal " + Shown(name) +
                     ", found " + std::to_string(whole->second.width));
      }
      targets_.emplace(whole->second.id, Target{line, -1});
      has_[line] = true;
    } else if (width == kBits) {
      unsigned found = 0;
      for (unsigned bit = 0; bit < kBits; ++bit) {
        for (const std::string& bit_name : BitNames(name, bit)) {
          const auto one = signals_.find(bit_name);
          if (one == signals_.end() || one->second.width != 1) continue;
          targets_.emplace(one->second.id, Target{line, static_cast<int>(bit)});
          ++found;
          break;
        }
      }
      has_[line] = found == kBits;
    }
    if (!has_[line] && line < kBusLinesNeeded) {
      lines_.Wrong(LinesMissing(columns_, line, "signals"));
    }
    if (has_[line] && line >= kBusLinesNeeded) ++enables;
  }
  if (enables != 0 && enables != kBusLines - kBusLinesNeeded) {
    lines_.Wrong("expected enables of all three windows or of none, found " +
                 std::to_string(enables));
  }
  signals_.clear();
  finder_.emplace(columns_, enables != 0);
}

// A vector that is shorter than its signal has zeros on its left, or x where it begins with one.
void VcdCapture::Change(std::string_view value, std::string_view id) {
  const auto [first, last] = targets_.equal_range(id);
  for (auto target = first; target != last; ++target) {
    const auto [line, bit] = target->second;
    unsigned bits = 0;
    unsigned unknown = 0;
    for (const char c : value) {
      bits = bits << 1 | (c == '1' ? 1U : 0U);
      unknown = unknown << 1 | (c == '1' || c == '0' ? 0U : 1U);
    }
    const unsigned width = line < kWideBusLines && bit < 0 ? kBits : 1;
    if (value.size() > width) {
      lines_.Wrong("expected " + std::to_string(width) + " bits at most, found '" + Shown(value) +
                   "'");
    }
    if (value.size() < width && value.front() != '0' && value.front() != '1') {
      unknown |= kAllBits << value.size() & kAllBits;
    }
    if (line >= kWideBusLines) {
      now_.lines[line] = unknown != 0 ? -1 : static_cast<int>(bits);
      continue;
    }
    const unsigned mask = bit < 0 ? kAllBits : 1U << bit;
    const unsigned shift = bit < 0 ? 0 : static_cast<unsigned>(bit);
    unsigned& unknowns = unknown_bits_[line];
    unsigned& held = held_bits_[line];
    held = (held & ~mask) | bits << shift;
    unknowns = (unknowns & ~mask) | unknown << shift;
    now_.lines[line] = unknowns != 0 ? -1 : static_cast<int>(held);
  }
}

void VcdCapture::EndOfMoment() {
  const double ms = static_cast<double>(time_) * ms_a_unit_;
  constexpr double kMost = std::numeric_limits<std::uint32_t>::max();
  try {
    finder_->Take(now_, static_cast<std::uint32_t>(std::min(ms, kMost)), cycles_);
  } catch (const BadSample& error) {
    lines_.Wrong(error.what());
  }
}

bool VcdCapture::ReadChange() {
  const std::string word(Word());
  if (word.empty()) {
    EndOfMoment();
    return false;
  }
  const std::string_view rest = std::string_view(word).substr(1);
  switch (word.front()) {
    case '#': {
      std::uint64_t time = 0;
      if (!ReadNumber(rest, time)) {
        lines_.Wrong("expected a time, a whole number, found '" + Shown(word) + "'");
      }
      if (time < time_) {
        lines_.Wrong("expected a time of " + std::to_string(time_) + " or later, found " +
                     std::to_string(time));
      }
      EndOfMoment();
      time_ = time;
      break;
    }
    case '0':
    case '1':
    case 'x':
    case 'X':
    case 'z':
    case 'Z':
      if (rest.empty()) lines_.Wrong("expected a signal behind its value, found none");
      Change(std::string_view(word).substr(0, 1), rest);
      break;
    case 'b':
    case 'B': {
      const std::string_view id = Word();
      if (rest.empty() || rest.find_first_not_of("01xXzZ") != std::string_view::npos ||
          id.empty()) {
        lines_.Wrong("expected bits and a signal, found '" + Shown(word) + "'");
      }
      Change(rest, id);
      break;
    }
    case 'r':
    case 'R':
    case 's':
    case 'S':
      Word();  // numbers and texts say nothing about the bus
      break;
    case '$':
      if (word == "$comment") SkipToEnd();  // $dumpvars and its like hold changes
      break;
    default:
      lines_.Wrong("expected a time or a change of value, found '" + Shown(word) + "'");
  }
  return true;
}

std::optional<ReadEvent> VcdCapture::Next() {
  while (cycles_.empty()) {
    if (!ReadChange()) break;
  }
  if (cycles_.empty()) return std::nullopt;
  ReadEvent cycle = std::move(cycles_.front());
  cycles_.pop_front();
  return cycle;
}

}  // namespace vexosim
