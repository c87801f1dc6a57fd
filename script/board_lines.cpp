// Script lines that change the board and the PC around it: no call, no time, no bus cycle.
#include <array>
#include <charconv>
#include <optional>

#include "script/line.h"
#include "sim/text.h"

namespace script {
namespace {

Step ParseChips(Arguments& arguments) {
  const std::uint32_t count = arguments.Number("a chip count 0 to 4", 0, kChipsMax);
  return [=](Session& session) { session.World().board.FitChips(count); };
}

Step ParseId(Arguments& arguments) {
  const ChipChoice chips = arguments.Chips();
  const std::uint8_t id = arguments.Byte("an identification");
  return [=](Session& session) {
    for (unsigned position = 0; position < kChipsMax; ++position) {
      if (chips.all || chips.position == position) session.World().board.SetId(position, id);
    }
  };
}

Step ParseCamera(Arguments& arguments) {
  static constexpr std::array<std::string_view, 3> kWords = {"ntsc", "pal", "off"};
  const auto channels = arguments.Channels();
  const auto camera = static_cast<sim::Camera>(arguments.Choice(kWords));
  static_assert(static_cast<int>(sim::Camera::Ntsc) == 0 &&
                static_cast<int>(sim::Camera::Pal) == 1 && static_cast<int>(sim::Camera::Off) == 2);
  return [=](Session& session) {
    for (const unsigned channel : channels) session.World().board.SetCamera(channel, camera);
  };
}

Step ParseWeak(Arguments& arguments) {
  const auto channels = arguments.Channels();
  const bool on = arguments.OnOff();
  return [=](Session& session) {
    for (const unsigned channel : channels) session.World().board.SetWeak(channel, on);
  };
}

Step ParseMotion(Arguments& arguments) {
  const auto channels = arguments.Channels();
  const bool on = arguments.OnOff();
  return [=](Session& session) {
    for (const unsigned channel : channels) session.World().board.SetMotion(channel, on);
  };
}

Step ParseSettle(Arguments& arguments) {
  int reads = -1;
  if (!arguments.Take("never")) {
    reads = static_cast<int>(arguments.Number("a number of reads or never", 0, 0x7FFFFFFF));
  }
  return [=](Session& session) { session.World().board.SetSettle(reads); };
}

Step ParseSyncPeriod(Arguments& arguments) {
  const std::uint32_t period = arguments.Number("a period of 1 ms or more", 1);
  return [=](Session& session) { session.World().board.SetSyncPeriod(period); };
}

Step ParseSyncHold(Arguments& arguments) {
  const bool level = arguments.Number("0 or 1", 0, 1) != 0;
  return [=](Session& session) { session.World().board.HoldSync(level); };
}

std::uint32_t ReadDataLine(Arguments& arguments) {
  return arguments.Number("a data line 0 to 7", 0, sim::DataLines::kCount - 1);
}

Step ParseBusExchange(Arguments& arguments) {
  const std::uint32_t a = ReadDataLine(arguments);
  const Arguments before = arguments;
  const std::uint32_t b = ReadDataLine(arguments);
  if (a == b) before.Expected("another data line 0 to 7");
  return [=](Session& session) {
    sim::DataLines lines = session.World().board.GetDataLines();
    lines.exchanged = {a, b};
    session.World().board.SetDataLines(lines);
  };
}

Step ParseBusHold(Arguments& arguments) {
  const std::uint32_t line = ReadDataLine(arguments);
  const bool high = arguments.Number("0 or 1", 0, 1) != 0;
  const auto bit = static_cast<std::uint8_t>(1U << line);
  return [=](Session& session) {
    sim::DataLines lines = session.World().board.GetDataLines();
    (high ? lines.high : lines.low) |= bit;
    (high ? lines.low : lines.high) &= static_cast<std::uint8_t>(~bit);
    session.World().board.SetDataLines(lines);
  };
}

Step ParseBusGood(Arguments&) {
  return [](Session& session) { session.World().board.SetDataLines({}); };
}

Step ParseNvramRecord(Arguments& arguments) {
  const std::string magic = arguments.Text("a magic of four characters");
  const std::uint8_t standard = arguments.Byte("a video standard");
  const std::uint8_t channels = arguments.Byte("a channel count");
  return [=](Session& session) { session.World().nvram.SetRecord(magic, standard, channels); };
}

Step ParseNvramBlank(Arguments&) {
  return [](Session& session) { session.World().nvram.SetBlank(); };
}

Step ParseNvramFail(Arguments& arguments) {
  static constexpr std::array<std::string_view, 3> kWords = {"none", "read", "write"};
  using Failure = sim::Nvram::Failure;
  static constexpr std::array kFailures = {Failure::None, Failure::Read, Failure::Write};
  const Failure failure = kFailures[arguments.Choice(kWords)];
  return [=](Session& session) { session.World().nvram.SetFailure(failure); };
}

// Four numbers of 16 bits with dots between them.
std::optional<std::array<std::uint16_t, 4>> ReadVersion(std::string_view text) {
  std::array<std::uint16_t, 4> version{};
  for (std::size_t i = 0; i < version.size(); ++i) {
    if (i != 0) {
      if (!text.starts_with('.')) return std::nullopt;
      text.remove_prefix(1);
    }
    const auto [end, error] = std::from_chars(text.begin(), text.end(), version[i]);
    if (error != std::errc{}) return std::nullopt;
    text.remove_prefix(static_cast<std::size_t>(end - text.begin()));
  }
  return text.empty() ? std::optional(version) : std::nullopt;
}

Step ParseFile(Arguments& arguments) {
  const std::string path = arguments.Text("a path");
  if (arguments.Take("absent")) {
    return [=](Session& session) { session.World().files.Remove(path); };
  }
  sim::VersionFile file;
  if (arguments.Take("unreadable")) {
    file.state = sim::VersionFile::State::Unreadable;
  } else if (arguments.Take("noroot")) {
    file.state = sim::VersionFile::State::NoRoot;
  } else {
    constexpr std::string_view kWhat = "a version (1.0.1.6), absent, unreadable or noroot";
    const Arguments before = arguments;
    const auto version = ReadVersion(arguments.Text(kWhat));
    if (!version) before.Expected(kWhat);
    file.version = *version;
  }
  return [=](Session& session) { session.World().files.Set(path, file); };
}

Step ParseDriver(Arguments& arguments) {
  static constexpr std::array<std::string_view, 3> kWords = {"present", "absent", "null"};
  using State = sim::Drivers::State;
  static constexpr std::array kStates = {State::Present, State::Absent, State::Null};
  const std::string name(sim::kDriverNames[arguments.Choice(sim::kDriverNames)]);
  const State state = kStates[arguments.Choice(kWords)];
  return [=](Session& session) { session.World().drivers.Set(name, state); };
}

Step ParseFault(Arguments& arguments) {
  const auto fault = static_cast<sim::Fault>(arguments.Choice(FaultWords()));
  static constexpr std::array<std::string_view, 4> kWords = {"off", "on", "nth", "from"};
  const std::size_t how = arguments.Choice(kWords);
  if (how < 2) return [=](Session& session) { session.World().faults.Set(fault, how == 1); };
  const std::uint32_t call = arguments.Number("a number of a call, from 1", 1);
  const auto plan = how == 2 ? sim::Faults::Nth(call) : sim::Faults::From(call);
  return [=](Session& session) { session.World().faults.Set(fault, plan); };
}

Step ParseSeed(Arguments& arguments) {
  const std::uint32_t seed = arguments.Number("a number");
  return [=](Session& session) { session.World().kernel.SetSeed(seed); };
}

Step ParseWindowDeaf(Arguments&) {
  return [](Session& session) { session.World().windows.deaf = true; };
}

Step ParseWindowHearing(Arguments&) {
  return [](Session& session) { session.World().windows.deaf = false; };
}

constexpr LineGroup kBoard = LineGroup::Board;

const std::string kDriverHelp =
    sim::OneOf(sim::kDriverNames) + "; absent gives the invalid handle, null gives 0 (present)";
constexpr const char* kFaultHelp =
    "what fails (help fault): always, in the N-th call from now alone (nth N), or in that call and "
    "all later ones (from N) (off)";

const std::array kBoardLines = {
    LineKind{kBoard, "board chips", "N", "fits chips at positions 0 to N-1, empties the rest (4)",
             ParseChips},
    LineKind{kBoard, "board id", "CHIP BYTE",
             "identification of a position; fitted when (BYTE & 0xF8) is 0x28", ParseId},
    LineKind{kBoard, "camera", "CH ntsc|pal|off",
             "signal of a channel; off sets its loss bit (ntsc)", ParseCamera},
    LineKind{kBoard, "weak", "CH on|off", "second loss bit of a channel (off)", ParseWeak},
    LineKind{kBoard, "motion", "CH on|off", "motion bit of a channel (off)", ParseMotion},
    LineKind{kBoard, "settle", "N|never",
             "how many reads of each chip's settle status are busy after a hold (0)", ParseSettle},
    LineKind{kBoard, "sync period", "MS", "toggles the master's sync bit every MS ms (20)",
             ParseSyncPeriod},
    LineKind{kBoard, "sync hold", "0|1", "holds the sync bit", ParseSyncHold},
    LineKind{kBoard, "bus exchange", "A B", "exchanges two data lines of the chips, 0 to 7",
             ParseBusExchange},
    LineKind{kBoard, "bus hold", "A 0|1", "holds a data line of the chips", ParseBusHold},
    LineKind{kBoard, "bus good", "", "all data lines are as they should be", ParseBusGood},
    LineKind{kBoard, "nvram record", "MAGIC STANDARD CHANNELS",
             "stored settings (MDVR, 0 and four channels a fitted chip, made at the first attach)",
             ParseNvramRecord},
    LineKind{kBoard, "nvram blank", "", "six bytes 0xFF", ParseNvramBlank},
    LineKind{kBoard, "nvram fail", "none|read|write", "makes reads or writes fail (none)",
             ParseNvramFail},
    LineKind{kBoard, "file", "PATH VERSION|absent|unreadable|noroot",
             "version resource of a file, such as 1.0.1.6, or what is wrong with it", ParseFile},
    LineKind{kBoard, "driver", "DRIVER present|absent|null", kDriverHelp, ParseDriver},
    LineKind{kBoard, "fault", "FAULT on|off|nth|from [N]", kFaultHelp, ParseFault},
    LineKind{kBoard, "window deaf", "", "the host window answers no sent message", ParseWindowDeaf},
    LineKind{kBoard, "seed", "N", "chooses among threads that could run; 0: the fixed order (0)",
             ParseSeed},
    LineKind{kBoard, "window hearing", "", "it answers again", ParseWindowHearing},
};

}  // namespace

std::span<const LineKind> BoardLines() { return kBoardLines; }

}  // namespace script
