#include "tools/vexosim/traces/csv_capture.h"

#include <algorithm>
#include <charconv>

namespace vexosim {
namespace {

constexpr unsigned kBits = 8;

std::string_view Trimmed(std::string_view text) {
  constexpr std::string_view kAround = " \t\"";
  const std::size_t begin = text.find_first_not_of(kAround);
  if (begin == std::string_view::npos) return {};
  return text.substr(begin, text.find_last_not_of(kAround) - begin + 1);
}

void Split(std::string_view row, char separator, std::vector<std::string_view>& fields) {
  fields.clear();
  for (;;) {
    const std::size_t end = row.find(separator);
    fields.push_back(Trimmed(row.substr(0, end)));
    if (end == std::string_view::npos) return;
    row.remove_prefix(end + 1);
  }
}

}  // namespace

CsvCapture::CsvCapture(FileLines lines, const CaptureColumns& columns)
    : columns_(columns), lines_(std::move(lines)) {
  if (!NextRow())
    throw BadFile(files::Printable(lines_.Path()) + ": expected column names, found nothing");
  for (const char separator : {',', ';', '\t'}) {
    separator_ = separator;
    if (row_.find(separator) != std::string::npos) break;
  }
  Split(row_, separator_, fields_);
  names_.assign(fields_.begin(), fields_.end());
  count_ = fields_.size();
  std::size_t enables = 0;
  for (std::size_t line = 0; line < kBusLines; ++line) {
    places_[line] = Find(columns_.NameOf(line), line < kWideBusLines);
    if (places_[line].empty() && line < kBusLinesNeeded) {
      lines_.Wrong(LinesMissing(columns_, line, "columns"));
    }
    if (line >= kBusLinesNeeded && !places_[line].empty()) ++enables;
  }
  if (enables != 0 && enables != kBusLines - kBusLinesNeeded) {
    lines_.Wrong("expected enables of all three windows or of none, found " +
                 std::to_string(enables));
  }
  for (std::size_t i = 0; i < names_.size(); ++i) {
    if (names_[i] == "time" || names_[i] == "Time" || names_[i] == "Time [s]") time_ = i;
  }
  finder_.emplace(columns_, enables != 0);
}

bool CsvCapture::NextRow() {
  while (lines_.Next(row_)) {
    const std::string_view text = Trimmed(row_);
    // What some programs put before the names.
    const bool comment =
        text.starts_with(';') || text.starts_with('#') || text.starts_with("META ");
    if (!text.empty() && !comment) return true;
  }
  return false;
}

CsvCapture::Places CsvCapture::Find(const std::string& name, bool wide) const {
  const auto place = [&](const std::string& wanted) -> std::optional<std::size_t> {
    const auto found = std::find(names_.begin(), names_.end(), wanted);
    if (found == names_.end()) return std::nullopt;
    return static_cast<std::size_t>(found - names_.begin());
  };
  if (const auto whole = place(name)) return {*whole};
  Places places;
  for (unsigned bit = 0; wide && bit < kBits; ++bit) {
    for (const std::string& bit_name : BitNames(name, bit)) {
      if (const auto found = place(bit_name); found && places.size() == bit) {
        places.push_back(*found);
      }
    }
  }
  return places.size() == kBits ? places : Places{};
}

int CsvCapture::Value(const Places& places, std::size_t line) const {
  const bool wide = line < kWideBusLines && places.size() == 1;
  int value = 0;
  for (std::size_t i = 0; i < places.size(); ++i) {
    std::string_view text = fields_[places[i]];
    if (text == "x" || text == "X" || text == "z" || text == "Z") return -1;
    const std::string_view whole = text;
    int base = columns_.hexadecimal ? 16 : 10;
    if (text.starts_with("0x") || text.starts_with("0X")) {
      text.remove_prefix(2);
      base = 16;
    }
    unsigned number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, base);
    if (error != std::errc{} || end != text.data() + text.size() || number > (wide ? 0xFFU : 1U)) {
      lines_.Wrong(std::string("expected ") + (wide ? "a number 0 to 255" : "0 or 1") +
                   " in the column " + Shown(names_[places[i]]) + ", found '" + Shown(whole) + "'" +
                   (wide && !columns_.hexadecimal ? " (--hex reads numbers without 0x too)" : ""));
    }
    value |= static_cast<int>(number) << i;
  }
  return value;
}

std::uint32_t CsvCapture::Time() const {
  if (!time_) return 0;
  const std::string_view text = fields_[*time_];
  double seconds = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), seconds);
  constexpr double kMostSeconds = 4'294'967;
  // Before the trigger the time is negative.
  if (error != std::errc{} || end != text.data() + text.size() || !(seconds < kMostSeconds) ||
      !(seconds > -kMostSeconds)) {
    lines_.Wrong("expected seconds in the column " + Shown(names_[*time_]) + ", found '" +
                 Shown(text) + "'");
  }
  return seconds < 0 ? 0 : static_cast<std::uint32_t>(seconds * 1000);
}

std::optional<ReadEvent> CsvCapture::Next() {
  while (cycles_.empty() && NextRow()) {
    Split(row_, separator_, fields_);
    if (fields_.size() != count_) {
      lines_.Wrong("expected " + std::to_string(count_) + " fields, found " +
                   std::to_string(fields_.size()));
    }
    BusSample sample;
    for (std::size_t line = 0; line < kBusLines; ++line) {
      sample.lines[line] = places_[line].empty() ? -1 : Value(places_[line], line);
    }
    try {
      finder_->Take(sample, Time(), cycles_);
    } catch (const BadSample& error) {
      lines_.Wrong(error.what());
    }
  }
  if (cycles_.empty()) return std::nullopt;
  ReadEvent cycle = std::move(cycles_.front());
  cycles_.pop_front();
  return cycle;
}

}  // namespace vexosim
