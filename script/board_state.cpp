#include "script/board_state.h"

#include <algorithm>
#include <array>
#include <functional>

#include "script/words.h"
#include "sim/text.h"

namespace script {
namespace {

using Lines = std::vector<std::string>;

void AddChips(const sim::Board& board, Lines& lines) {
  const auto id = [&](unsigned position) { return board.Peek(position, kChipId); };
  unsigned count = 0;
  while (count < kChipsMax && id(count) == kChipIdTw2835) ++count;
  if (count != kChipsMax) lines.push_back("board chips " + std::to_string(count));
  for (unsigned position = count; position < kChipsMax; ++position) {
    if (id(position) == sim::kEmptyId) continue;
    lines.push_back("board id " + std::string(ChipWords()[position]) + ' ' +
                    sim::Hex(id(position)));
  }
}

// A line for each channel of which this holds, or one for all.
void AddChannels(const sim::Board& board, const std::string& word, const std::string& state,
                 const std::function<bool(const sim::ChannelInput&)>& holds, Lines& lines) {
  Lines channels;
  for (unsigned channel = 0; channel < kChannelsMax; ++channel) {
    if (holds(board.Input(channel))) channels.push_back(std::to_string(channel));
  }
  if (channels.size() == kChannelsMax) channels = {"all"};
  for (const std::string& channel : channels) {
    lines.push_back(word);
    lines.back().append(" ").append(channel).append(" ").append(state);
  }
}

void AddSignals(const sim::Board& board, Lines& lines) {
  using Input = sim::ChannelInput;
  // A camera that is off keeps its standard.
  AddChannels(
      board, "camera", "pal", [](const Input& input) { return input.pal; }, lines);
  AddChannels(
      board, "camera", "off", [](const Input& input) { return input.lost; }, lines);
  AddChannels(
      board, "weak", "on", [](const Input& input) { return input.weak; }, lines);
  AddChannels(
      board, "motion", "on", [](const Input& input) { return input.motion; }, lines);
}

void AddTimes(const sim::World& world, const sim::World& fresh, Lines& lines) {
  const sim::Board& board = world.board;
  if (const int reads = board.SettleReads(); reads != fresh.board.SettleReads()) {
    lines.push_back("settle " + (reads < 0 ? "never" : std::to_string(reads)));
  }
  if (board.SyncPeriod() != fresh.board.SyncPeriod()) {
    lines.push_back("sync period " + std::to_string(board.SyncPeriod()));
  }
  if (const auto level = board.SyncHeld()) lines.push_back(*level ? "sync hold 1" : "sync hold 0");
}

void AddDataLines(const sim::DataLines& data_lines, Lines& lines) {
  if (data_lines.exchanged) {
    lines.push_back("bus exchange " + std::to_string(data_lines.exchanged->first) + ' ' +
                    std::to_string(data_lines.exchanged->second));
  }
  for (unsigned line = 0; line < sim::DataLines::kCount; ++line) {
    const bool high = (data_lines.high >> line & 1) != 0;
    if (!high && (data_lines.low >> line & 1) == 0) continue;
    lines.push_back("bus hold " + std::to_string(line) + (high ? " 1" : " 0"));
  }
}

void AddNvram(const sim::Nvram& nvram, Lines& lines) {
  const sim::Bytes& content = nvram.Content();
  if (!content.empty()) {
    const bool blank =
        std::all_of(content.begin(), content.end(), [](auto byte) { return byte == 0xFF; });
    std::string magic(content.begin(), content.end() - 2);
    magic.erase(magic.find_last_not_of('\0') + 1);
    lines.push_back(blank ? "nvram blank"
                          : "nvram record " + AsWord(magic) + ' ' +
                                std::to_string(content.end()[-2]) + ' ' +
                                std::to_string(content.end()[-1]));
  }
  using Failure = sim::Nvram::Failure;
  if (nvram.GetFailure() == Failure::None) return;
  lines.push_back(nvram.GetFailure() == Failure::Read ? "nvram fail read" : "nvram fail write");
}

std::string FileState(const sim::VersionFile& file) {
  if (file.state == sim::VersionFile::State::Unreadable) return "unreadable";
  if (file.state == sim::VersionFile::State::NoRoot) return "noroot";
  std::string version;
  for (const std::uint16_t number : file.version) {
    version += (version.empty() ? "" : ".") + std::to_string(number);
  }
  return version;
}

void AddFiles(const sim::Files& files, const sim::Files& fresh, Lines& lines) {
  for (const auto& [path, file] : fresh.All()) {
    if (files.Find(path) == nullptr) lines.push_back("file " + AsWord(path) + " absent");
  }
  for (const auto& [path, file] : files.All()) {
    const sim::VersionFile* const before = fresh.Find(path);
    if (before != nullptr && *before == file) continue;
    lines.push_back("file " + AsWord(path) + ' ' + FileState(file));
  }
}

// Counted from the call that comes next.
std::string FaultPlan(const sim::Faults::Plan& plan) {
  if (plan == sim::Faults::Always()) return "on";
  return (plan.last == plan.first ? "nth " : "from ") + std::to_string(plan.first);
}

void AddSystem(const sim::World& world, Lines& lines) {
  using State = sim::Drivers::State;
  for (const std::string_view driver : sim::kDriverNames) {
    const State state = world.drivers.Get(std::string(driver));
    if (state == State::Present) continue;
    lines.push_back("driver " + std::string(driver) +
                    (state == State::Absent ? " absent" : " null"));
  }
  for (std::size_t i = 0; i < sim::kFaults.size(); ++i) {
    const auto plan = world.faults.ToCome(static_cast<sim::Fault>(i));
    if (!plan) continue;
    lines.push_back("fault " + std::string(sim::kFaults.at(i).word) + ' ' + FaultPlan(*plan));
  }
  if (world.windows.deaf) lines.emplace_back("window deaf");
  if (const auto seed = world.kernel.Seed()) lines.push_back("seed " + std::to_string(seed));
}

}  // namespace

std::vector<std::string> BoardInLines(const sim::World& world) {
  const sim::World fresh;
  Lines lines;
  AddChips(world.board, lines);
  AddSignals(world.board, lines);
  AddTimes(world, fresh, lines);
  AddDataLines(world.board.GetDataLines(), lines);
  AddNvram(world.nvram, lines);
  AddFiles(world.files, fresh.files, lines);
  AddSystem(world, lines);
  return lines;
}

}  // namespace script
