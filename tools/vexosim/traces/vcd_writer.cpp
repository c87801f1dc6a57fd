#include "tools/vexosim/traces/vcd_writer.h"

#include <algorithm>

#include "chip/registers.h"
#include "script/register_words.h"
#include "sim/text.h"
#include "tools/vexosim/traces/capture_columns.h"
#include "tools/vexosim/traces/event_words.h"

namespace vexosim {
namespace {

constexpr std::array<std::string_view, kBusLines> kIds = {"s", "a", "d", "w", "r", "S", "A", "D"};
constexpr std::string_view kSyncId = "y";
constexpr std::string_view kRegisterId = "g";
constexpr std::array<std::string_view, 2> kCallIds = {"h", "k"};  // of host and worker

constexpr unsigned kBits = 8;

// A bus is a signal for each bit: readers of logic analysers know no others, and viewers put names
// like data[7] to data[0] together again.
std::string BitId(std::size_t line, unsigned bit) {
  return std::string(kIds[line]) + std::to_string(bit);
}

constexpr std::size_t Index(BusLine line) { return static_cast<std::size_t>(line); }

// As the readers of this format take texts: without blanks, which would end them.
std::string Escaped(std::string_view text) {
  std::string escaped;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (c == '\\') {
      escaped += "\\\\";
    } else if (byte > ' ' && byte <= '~') {
      escaped += c;
    } else {
      escaped += '\\';
      for (const unsigned shift : {6U, 3U, 0U}) {
        escaped += static_cast<char>('0' + (byte >> shift & 7U));
      }
    }
  }
  return escaped;
}

}  // namespace

VcdWriter::VcdWriter(std::ostream& out, std::uint32_t cycle_ns) : out_(out), cycle_ns_(cycle_ns) {
  out_ << "$comment Bus cycles take no virtual time: those of one millisecond stand one after the "
          "other, "
       << cycle_ns_ << " ns each. $end\n$timescale 1 ns $end\n$scope module bus $end\n";
  std::string values;
  const auto signal = [&](std::string_view type, const std::string& id, const std::string& name,
                          std::string_view value) {
    out_ << "$var " << type << " 1 " << id << ' ' << name << " $end\n";
    if (!value.empty()) values += std::string(value) + id + '\n';
  };
  for (std::size_t line = 0; line < kBusLines; ++line) {
    const std::string id(kIds[line]);
    const std::string name(kBusLineNames[line]);
    for (unsigned bit = kBits; line < kWideBusLines && bit-- > 0;) {
      signal("wire", BitId(line, bit), name + '[' + std::to_string(bit) + ']', "x");
    }
    if (line < kWideBusLines) continue;
    signal("wire", id, name, "0");
    shown_.emplace(id, "0");
  }
  signal("wire", std::string(kSyncId), "sync", "x");
  signal("string", std::string(kRegisterId), "register", "");
  signal("string", std::string(kCallIds[0]), "host", "");
  signal("string", std::string(kCallIds[1]), "worker", "");
  out_ << "$upscope $end\n$enddefinitions $end\n#0\n$dumpvars\n" << values << "$end\n";
}

void VcdWriter::Stamp(std::uint64_t time) {
  if (time != stamped_ns_) out_ << '#' << time << '\n';
  stamped_ns_ = time;
}

void VcdWriter::Advance(std::uint32_t t_ms) {
  constexpr std::uint64_t kNsAMs = 1'000'000;
  now_ns_ = std::max(now_ns_, t_ms * kNsAMs);
  Stamp(now_ns_);
}

void VcdWriter::Byte(std::size_t line, std::uint8_t value) {
  const int held = bytes_[line];
  const int changed = held < 0 ? 0xFF : held ^ value;
  for (unsigned bit = 0; bit < kBits; ++bit) {
    if ((changed >> bit & 1) != 0) out_ << (value >> bit & 1) << BitId(line, bit) << '\n';
  }
  bytes_[line] = value;
}

void VcdWriter::Bit(std::string_view id, bool value) {
  std::string& shown = shown_[std::string(id)];
  const std::string bit = value ? "1" : "0";
  if (shown == bit) return;
  out_ << bit << id << '\n';
  shown = bit;
}

void VcdWriter::Text(std::string_view id, const std::string& text) {
  std::string& shown = shown_[std::string(id)];
  if (shown == text) return;
  out_ << 's' << Escaped(text) << ' ' << id << '\n';
  shown = text;
}

void VcdWriter::OnCycle(const sim::Event& event) {
  const auto window = static_cast<std::size_t>(event.window);
  const std::string_view enable = kIds[Index(BusLine::EnableSelect) + window];
  const std::string_view strobe =
      kIds[Index(event.kind == sim::Event::Kind::Load ? BusLine::Read : BusLine::Write)];
  Byte(window, event.value);
  if (const auto access = decoder_.Take(event)) {
    Text(kRegisterId, script::AccessInWords(*access));
    const RegisterAddress flags = kStatusFlags;
    if (access->read && access->Chip() == kChipMaster && access->Page() == flags.page &&
        access->reg == flags.number) {
      Bit(kSyncId, (access->value & kStatusSync) != 0);
    }
  }
  Bit(enable, true);
  Bit(strobe, true);
  Stamp(now_ns_ + cycle_ns_ / 2);
  Bit(strobe, false);
  Bit(enable, false);
}

void VcdWriter::OnEvent(const sim::Event& event, const sim::EventDetail* detail) {
  if (detail == nullptr) {
    Advance(event.t);
    OnCycle(event);
  } else if (const auto* call = std::get_if<sim::CallEvent>(detail)) {
    Advance(event.t);
    Text(kCallIds[0], CallName(*call));
  } else if (std::holds_alternative<sim::ReturnEvent>(*detail)) {
    Advance(event.t);
    Text(kCallIds[0], "");
  } else if (const auto* thread = std::get_if<sim::ThreadEvent>(detail)) {
    Advance(event.t);
    Text(kCallIds[1], thread->what == "start" ? "runs" : "");
  } else {
    return;
  }
  now_ns_ += cycle_ns_;
}

void VcdWriter::Finish() {
  Stamp(now_ns_);
  out_.flush();
}

}  // namespace vexosim
