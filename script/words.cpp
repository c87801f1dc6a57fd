#include "script/words.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>

#include "script/command_table.h"
#include "script/grammar/did_you_mean.h"
#include "script/message_words.h"
#include "script/register_diff.h"
#include "sim/board/drivers.h"
#include "sim/faults.h"
#include "sim/text.h"

namespace script {
namespace {

bool IsBlank(char c) { return kBlanks.find(c) != std::string_view::npos; }

std::optional<std::uint8_t> HexByte(std::string_view text) {
  if (text.size() != 2) return std::nullopt;
  std::uint8_t value = 0;
  const auto [end, error] = std::from_chars(text.begin(), text.end(), value, 16);
  if (error != std::errc{} || end != text.end()) return std::nullopt;
  return value;
}

// Decimal or 0x-hexadecimal, with a minus sign or without.
std::optional<std::int64_t> ReadNumber(std::string_view text) {
  const bool negative = text.starts_with('-');
  if (negative) text.remove_prefix(1);
  int base = 10;
  if (text.starts_with("0x") || text.starts_with("0X")) {
    text.remove_prefix(2);
    base = 16;
  }
  std::uint64_t value = 0;
  const auto [end, error] = std::from_chars(text.begin(), text.end(), value, base);
  if (error != std::errc{} || end != text.end()) return std::nullopt;
  if (value > std::uint64_t{std::numeric_limits<std::int64_t>::max()}) return std::nullopt;
  return negative ? -static_cast<std::int64_t>(value) : static_cast<std::int64_t>(value);
}

// The parts of a word between separators; of an empty one that itself.
std::vector<std::string> Split(std::string_view word, char separator) {
  std::vector<std::string> parts(1);
  for (const char c : word) {
    if (c == separator) {
      parts.emplace_back();
    } else {
      parts.back() += c;
    }
  }
  return parts;
}

// Reads a quoted word from behind its opening quote; `at` is left behind the closing one.
std::string ReadQuoted(std::string_view line, std::size_t& at) {
  std::string word;
  while (at < line.size()) {
    const char c = line[at++];
    if (c == '"') {
      if (at < line.size() && !IsBlank(line[at]) && line[at] != '#') {
        throw Malformed("expected a blank after the closing quote, found '" +
                        std::string(1, line[at]) + "'");
      }
      return word;
    }
    if (c != '\\') {
      word += c;
      continue;
    }
    const std::string_view rest = line.substr(at);
    const char escape = rest.empty() ? '\0' : rest.front();
    ++at;
    switch (escape) {
      case 'n':
        word += '\n';
        break;
      case 'r':
        word += '\r';
        break;
      case 't':
        word += '\t';
        break;
      case '\\':
        word += '\\';
        break;
      case '"':
        word += '"';
        break;
      case 'x':
        if (const auto byte = HexByte(rest.substr(1, 2))) {
          word += static_cast<char>(*byte);
          at += 2;
          break;
        }
        [[fallthrough]];
      default:
        throw Malformed("expected one of the escapes \\n \\r \\t \\\\ \\\" \\xHH, found '\\" +
                        std::string(rest.substr(0, escape == 'x' ? 3 : 1)) + "'");
    }
  }
  throw Malformed("expected a closing quote, found the end of the line");
}

constexpr std::array<std::string_view, kChipsMax + 1> kChipWords = {"master", "slave1", "slave2",
                                                                    "slave3", "all"};

constexpr auto kFaultWords = [] {
  std::array<std::string_view, sim::kFaults.size()> words;
  std::transform(sim::kFaults.begin(), sim::kFaults.end(), words.begin(),
                 [](const sim::FaultWords& fault) { return fault.word; });
  return words;
}();

}  // namespace

std::string Quoted(std::string_view text) {
  std::string quoted = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') {
      quoted += '\\';
      quoted += c;
    } else if (c >= ' ' && c <= '~') {
      quoted += c;
    } else {
      quoted += "\\x" + sim::Hex(static_cast<unsigned char>(c)).substr(2);
    }
  }
  return quoted + '"';
}

std::string AsWord(std::string_view text) {
  const bool bare = !text.empty() && std::all_of(text.begin(), text.end(), [](char c) {
    return c > ' ' && c <= '~' && c != '"' && c != '#';
  });
  return bare ? std::string(text) : Quoted(text);
}

std::span<const std::string_view> ChipWords() { return kChipWords; }
std::span<const std::string_view> FaultWords() { return kFaultWords; }

std::span<const std::string_view> WordsOf(std::string_view argument) {
  if (argument == "CHIP") return kChipWords;
  if (argument == "DRIVER") return sim::kDriverNames;
  if (argument == "FAULT") return kFaultWords;
  if (argument == "COMMAND") return CommandNames();
  if (argument == "MESSAGE") return MessageNames();
  if (argument == "MOMENT") return kMoments;
  return {};
}

std::size_t CommentBegin(std::string_view line) {
  bool quoted = false;
  for (std::size_t at = 0; at < line.size(); ++at) {
    if (line[at] == '#' && !quoted) return at;
    if (line[at] == '"') quoted = !quoted;
    if (line[at] == '\\' && quoted) ++at;  // and what it escapes
  }
  return line.size();
}

std::vector<std::string> SplitWords(std::string_view line) {
  std::vector<std::string> words;
  std::size_t at = 0;
  while (at < line.size()) {
    if (IsBlank(line[at])) {
      ++at;
    } else if (line[at] == '#') {
      break;
    } else if (line[at] == '"') {
      ++at;
      words.push_back(ReadQuoted(line, at));
    } else {
      const std::size_t begin = at;
      while (at < line.size() && !IsBlank(line[at]) && line[at] != '#') {
        if (line[at] == '"') throw Malformed("expected a blank before a quoted word, found '\"'");
        ++at;
      }
      words.emplace_back(line.substr(begin, at - begin));
    }
  }
  return words;
}

std::vector<unsigned> ChipChoice::Fitted(const sim::Board& board) const {
  if (!all) return {position};
  std::vector<unsigned> positions;
  for (unsigned p = 0; p < kChipsMax; ++p) {
    if (board.Fitted(p)) positions.push_back(p);
  }
  return positions;
}

std::string_view Arguments::Peek() const {
  return words_.empty() ? std::string_view() : words_.front();
}

bool Arguments::AtNumber() const {
  return !Peek().empty() && '0' <= Peek().front() && Peek().front() <= '9';
}

bool Arguments::Take(std::string_view word) {
  if (words_.empty() || words_.front() != word) return false;
  words_ = words_.subspan(1);
  return true;
}

void Arguments::Expected(std::string_view what, std::span<const std::string_view> near) const {
  throw Malformed("expected " + std::string(what) + ", found " +
                  (words_.empty() ? "the end of the line"
                                  : "'" + words_.front() + "'" + DidYouMean(words_.front(), near)));
}

std::string Arguments::Text(std::string_view what) {
  if (words_.empty()) Expected(what);
  const std::string& text = words_.front();
  words_ = words_.subspan(1);
  return text;
}

std::uint32_t Arguments::Number(std::string_view what, std::uint32_t least, std::uint32_t most) {
  const auto value = words_.empty() ? std::nullopt : ReadNumber(words_.front());
  if (!value || words_.front().starts_with('-') || *value < least || *value > most) Expected(what);
  words_ = words_.subspan(1);
  return static_cast<std::uint32_t>(*value);
}

std::int32_t Arguments::SignedNumber(std::string_view what) {
  using Limits = std::numeric_limits<std::int32_t>;
  const auto value = words_.empty() ? std::nullopt : ReadNumber(words_.front());
  if (!value || *value < Limits::min() || *value > Limits::max()) Expected(what);
  words_ = words_.subspan(1);
  return static_cast<std::int32_t>(*value);
}

std::uint8_t Arguments::Byte(std::string_view what) {
  return static_cast<std::uint8_t>(Number(std::string(what) + " 0 to 255", 0, 255));
}

std::uint8_t Arguments::RecordByte() {
  const auto value = words_.empty() ? std::nullopt : HexByte(words_.front());
  if (!value) Expected("a byte of two hexadecimal digits");
  words_ = words_.subspan(1);
  return *value;
}

std::uint8_t Arguments::Page(std::string_view what) {
  return static_cast<std::uint8_t>(Number(what, 0, kPageCount - 1));
}

std::vector<unsigned> Arguments::Channels() {
  if (!Take("all")) return {Number("a channel 0 to 15 or all", 0, kChannelsMax - 1)};
  std::vector<unsigned> channels;
  for (unsigned channel = 0; channel < kChannelsMax; ++channel) channels.push_back(channel);
  return channels;
}

std::vector<std::uint32_t> Arguments::NumberList(std::string_view what, std::uint32_t most) {
  std::vector<std::uint32_t> numbers;
  for (const std::string& item : Split(Peek(), ',')) {
    const std::vector<std::string> ends = Split(item, '-');
    const auto first = ReadNumber(ends.front());
    const auto last = ReadNumber(ends.back());
    if (ends.size() > 2 || !first || !last || *last > most || *first > *last) Expected(what);
    for (auto number = *first; number <= *last; ++number) {
      numbers.push_back(static_cast<std::uint32_t>(number));
    }
  }
  words_ = words_.subspan(1);
  return numbers;
}

ChipChoice Arguments::Chips() {
  const auto index = static_cast<unsigned>(Choice(kChipWords));
  return {index == kChipsMax, index};
}

std::vector<ChipChoice> Arguments::ChipList() {
  if (Peek().find(',') == std::string_view::npos) return {Chips()};
  const std::vector<std::string> names = Split(Text("chips"), ',');
  std::vector<ChipChoice> chips;
  for (Arguments list(names); !list.AtEnd();) {
    const auto position =
        static_cast<unsigned>(list.Choice(std::span(kChipWords).first<kChipsMax>()));
    chips.push_back({false, position});
  }
  return chips;
}

bool Arguments::OnOff() {
  static constexpr std::array<std::string_view, 2> kWords = {"off", "on"};
  return Choice(kWords) == 1;
}

std::size_t Arguments::Choice(std::span<const std::string_view> words) {
  for (std::size_t i = 0; i < words.size(); ++i) {
    if (Take(words[i])) return i;
  }
  Expected(sim::OneOf(words));
}

void Arguments::End() {
  if (!AtEnd()) Expected("the end of the line");
}

}  // namespace script
