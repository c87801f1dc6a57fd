#include <algorithm>
#include <array>

#include "VexoCtrlSDK.h"
#include "device/verdict/causes.h"
#include "script/words.h"
#include "sim/text.h"

namespace verdict {
namespace {

using plan::ActionKind;
using plan::Entry;
using plan::EntryKind;

// The identification of a chip, without its revision.
constexpr std::uint8_t kFamily = 0xF8;
constexpr std::size_t kStandardOffset = 16;  // in VexoInitRecord
constexpr std::size_t kChipIdOffset = 20;
// A bus cycle that is longer makes a change of the layout longer than a picture.
constexpr std::uint32_t kSlowCycleNs = 2000;
// 200 polls with 5 ms between them, less what a slow system may take besides.
constexpr std::uint64_t kSettleUs = 900'000;
constexpr std::uint64_t kInitPausesUs = 440'000;
constexpr std::uint64_t kMostCycles = 3800;  // of a command
// How long a message that nobody answers holds a call.
constexpr std::uint64_t kSendUs = 4'500'000;

std::string ChipName(unsigned position) { return std::string(script::ChipWords()[position]); }

bool IsInit(const plan::Step& step) {
  return step.action.kind == ActionKind::Command && (step.action.number & 0xFFFF) == VEXO_CMD_INIT;
}

std::uint8_t At(const plan::Bytes& bytes, std::size_t offset) {
  return offset < bytes.size() ? bytes[offset] : std::uint8_t{0};
}

// The first initialization that differs: later ones do for the same reason.
const Outcome* FailedInit(const Evidence& evidence) {
  const auto& differences = evidence.comparison.differences;
  const auto found =
      std::find_if(differences.begin(), differences.end(), [](const Difference& difference) {
        return IsInit(*difference.outcome->step) && (difference.kind == DifferenceKind::Result ||
                                                     difference.kind == DifferenceKind::Record);
      });
  return found == differences.end() ? nullptr : found->outcome;
}

std::optional<Cause> Uninitialized(const Evidence& evidence) {
  const auto found =
      std::find_if(evidence.outcomes.begin(), evidence.outcomes.end(), [](const Outcome& outcome) {
        return outcome.step->action.kind == ActionKind::Initialize &&
               outcome.Result() == VEXO_ERROR_UNINITIALIZED &&
               outcome.step->result != VEXO_ERROR_UNINITIALIZED;
      });
  if (found == evidence.outcomes.end()) return std::nullopt;
  return Cause{"taken",
               "The library is not initialized in the check program: another process has it.",
               "End the recorder's own program (Main.exe) before the check, and keep it from "
               "being started with the system."};
}

std::optional<Cause> NoChip(const Evidence& evidence) {
  const Outcome* const init = FailedInit(evidence);
  if (init == nullptr || init->Result() != VEXO_ERROR_FAILED) return std::nullopt;
  return Cause{
      "no-chip", "Initialization finds no chip.",
      "Look at the debug port for what the library printed when it was loaded: \"ERROR TW2835 ... "
      "BASE REGISTER\" says that a bus window cannot be mapped (the address is another program's, "
      "or "
      "CEDDK.dll is another board's). Without such a line the chips do not answer: look at their "
      "supply, clock and reset, at chip select, read and write strobes, and at the data lines: one "
      "that is stuck, or two that are exchanged, spoil identification."};
}

std::optional<Cause> ChipIds(const Evidence& evidence) {
  const Outcome* const init = FailedInit(evidence);
  if (init == nullptr || init->record == nullptr || !init->step->record) return std::nullopt;
  if (init->Result() != VEXO_OK) return std::nullopt;
  std::string chips;
  for (unsigned position = 0; position < VEXO_MAX_CHIPS; ++position) {
    const std::uint8_t wanted = At(init->step->record->bytes, kChipIdOffset + position);
    const std::uint8_t found = At(init->record->bytes, kChipIdOffset + position);
    if (((wanted ^ found) & kFamily) == 0) continue;
    chips += (chips.empty() ? "" : ", ") + ChipName(position) + " reads " + sim::Hex(found) +
             " as identification, expected " + sim::Hex(wanted);
  }
  if (chips.empty()) return std::nullopt;
  return Cause{"chip-id", "Not the chips that the plan is for: " + chips + ".",
               "Where a chip is soldered look at its supply, clock, reset and chip select: it does "
               "not answer. Where none is, make the plan of a script for this board (board chips "
               "N)."};
}

std::optional<Cause> StoredSettings(const Evidence& evidence) {
  const Outcome* const init = FailedInit(evidence);
  if (init == nullptr || init->record == nullptr || !init->step->record) return std::nullopt;
  if (init->Result() != VEXO_OK) return std::nullopt;
  const std::uint8_t wanted = At(init->step->record->bytes, kStandardOffset);
  const std::uint8_t found = At(init->record->bytes, kStandardOffset);
  if (wanted == found) return std::nullopt;
  if (found == VEXO_VIDEO_NONE) {
    return Cause{"nvram-unread",
                 "Initialization has no video standard: the stored settings cannot be read, or "
                 "are empty, and no camera told one.",
                 "Look whether the NVRAM and ExtRtcNVramCtl.dll are this board's; let the "
                 "recorder's own program store its settings once."};
  }
  return Cause{
      "other-standard",
      std::string("The stored settings or the cameras are ") +
          (found == VEXO_VIDEO_NTSC ? "NTSC" : "PAL") + ", the plan is for " +
          (wanted == VEXO_VIDEO_NTSC ? "NTSC." : "PAL."),
      "Plug cameras of the plan's standard, or make a plan of a script for the other one."};
}

std::optional<Cause> Drivers(const Evidence& evidence) {
  for (const Entry* entry : evidence.All(EntryKind::Absent)) {
    const std::string& name = entry->texts.front();
    if (name != "CAM1:" && name != "VBE1:") continue;
    return Cause{"driver-absent",
                 "The driver " + name + " cannot be opened (error " +
                     std::to_string(entry->numbers.front()) + ").",
                 name == "CAM1:" ? "The library goes on without it: pictures may tear while it "
                                   "initializes. Have the system built with the camera driver."
                                 : "Text lines that begin with vpb do nothing without it. Have the "
                                   "system built with the video back-end's driver."};
  }
  return std::nullopt;
}

bool Came(const Evidence& evidence, std::uint32_t message) {
  return std::any_of(
      evidence.outcomes.begin(), evidence.outcomes.end(), [&](const Outcome& outcome) {
        return std::any_of(
            outcome.messages.begin(), outcome.messages.end(),
            [message](const Entry* entry) { return entry->numbers.front() == message; });
      });
}

bool Awaited(const Evidence& evidence, std::uint32_t message) {
  return std::any_of(
      evidence.outcomes.begin(), evidence.outcomes.end(), [&](const Outcome& outcome) {
        const auto& messages = outcome.step->messages;
        return outcome.returned != nullptr &&
               std::any_of(
                   messages.begin(), messages.end(),
                   [message](const plan::ExpectedMessage& one) { return one.message == message; });
      });
}

std::optional<Cause> Messages(const Evidence& evidence) {
  const auto& differences = evidence.comparison.differences;
  const bool missing =
      std::any_of(differences.begin(), differences.end(), [](const Difference& difference) {
        return difference.kind == DifferenceKind::MessageMissing;
      });
  if (!missing || FailedInit(evidence) != nullptr) return std::nullopt;
  const bool none = std::all_of(evidence.outcomes.begin(), evidence.outcomes.end(),
                                [](const Outcome& outcome) { return outcome.messages.empty(); });
  if (none) {
    return Cause{"no-messages", "No message came to the program's window.",
                 "The library's calls work, so look at the system: whether messages are sent "
                 "between threads at all (SendMessageTimeout of COREDLL), and at the debug port "
                 "for \"SendMessage Error occure\" with the error's number."};
  }
  if (Awaited(evidence, VEXO_MSG_VIDEO_INFO) && !Came(evidence, VEXO_MSG_VIDEO_INFO)) {
    return Cause{
        "no-monitor",
        "The monitor tells nothing: no message of video loss came, though others did.",
        "Look at the debug port for \"Fail Create Worker Thread\". Without it the master's "
        "sync bit (page 1, register 0xAB, bit 4) is never set: look at its clock."};
  }
  return std::nullopt;
}

std::string Channels(std::uint32_t mask) {
  std::string text;
  for (unsigned channel = 0; channel < VEXO_MAX_CHANNELS; ++channel) {
    if ((mask >> channel & 1) != 0) text += (text.empty() ? "" : ", ") + std::to_string(channel);
  }
  return mask == 0 ? "none" : "channel " + text;
}

std::uint32_t LossMask(const plan::Bytes& record) {
  return At(record, 0) | static_cast<std::uint32_t>(At(record, 1)) << 8;
}

std::optional<Cause> Cameras(const Evidence& evidence) {
  if (FailedInit(evidence) != nullptr) return std::nullopt;
  for (const Difference& difference : evidence.comparison.differences) {
    if (difference.message == nullptr || difference.message->numbers[0] != VEXO_MSG_VIDEO_INFO) {
      continue;
    }
    const plan::Bytes& record = difference.message->bytes;
    std::uint32_t pal = 0;
    for (unsigned channel = 0; channel < VEXO_MAX_CHANNELS; ++channel) {
      if (At(record, 4 + channel) == VEXO_VIDEO_PAL) pal |= 1U << channel;
    }
    return Cause{"cameras",
                 "The cameras are not those that the plan expects: no video on " +
                     Channels(LossMask(record)) + ", PAL on " + Channels(pal) + ".",
                 "Plug cameras as the plan's board lines say, look at their cables, and run the "
                 "check again."};
  }
  return std::nullopt;
}

std::optional<Cause> BackEnd(const Evidence& evidence) {
  for (const Difference& difference : evidence.comparison.differences) {
    if (difference.message == nullptr || difference.message->numbers[0] != VEXO_MSG_STATUS)
      continue;
    const std::int64_t status = difference.message->numbers[1];
    if (status == VEXO_STATUS_VBE_OPEN_FAILED || status == VEXO_STATUS_VBE_ALREADY_OPEN) {
      return Cause{"driver-absent",
                   status == VEXO_STATUS_VBE_OPEN_FAILED
                       ? "The video back-end's driver VBE1: cannot be opened."
                       : "The video back-end's driver VBE1: was open already.",
                   "Look whether the system has the driver, and whether another program holds it."};
    }
  }
  return std::nullopt;
}

// Commands that hold the picture until the chips have settled.
bool Holds(const plan::Step& step) {
  static constexpr std::array kCodes = {VEXO_CMD_INIT, VEXO_CMD_LIVE_SPLIT, VEXO_CMD_LIVE_MODE,
                                        VEXO_CMD_MOTION_SETUP};
  return step.action.kind == ActionKind::Command &&
         std::find(kCodes.begin(), kCodes.end(), step.action.number & 0xFFFF) != kCodes.end();
}

std::optional<Cause> Settling(const Evidence& evidence) {
  std::size_t late = 0;
  const Outcome* first = nullptr;
  for (const Outcome& outcome : evidence.outcomes) {
    const plan::Step& step = *outcome.step;
    if (!Holds(step) || outcome.took == nullptr) continue;
    const std::uint64_t bus_us =
        evidence.bus ? std::uint64_t{evidence.bus->cycle_ns} * kMostCycles / 1000 : 0;
    const std::uint64_t least = kSettleUs + bus_us + (IsInit(step) ? kInitPausesUs : 0);
    const auto took = static_cast<std::uint64_t>(outcome.took->numbers.front());
    if (took < least || took >= least + kSendUs) continue;
    ++late;
    if (first == nullptr) first = &outcome;
  }
  if (first == nullptr) return std::nullopt;
  return Cause{
      "settle",
      std::to_string(late) + (late == 1 ? " command" : " commands") +
          " took about a second longer than they should, the first in " +
          StepInWords(*first->step) + ": a chip never says that its picture has settled.",
      "Look at the debug port for \"fail to apply anti-rolling\". Look at the chips' "
      "clock, and whether the settle status bit of one is stuck: unplug the cameras of one "
      "chip after the other."};
}

std::optional<Cause> SlowBus(const Evidence& evidence) {
  if (!evidence.bus || evidence.bus->cycle_ns <= kSlowCycleNs) return std::nullopt;
  return Cause{"slow-bus",
               "The bus is slow: a cycle takes " + std::to_string(evidence.bus->cycle_ns) +
                   " ns, where some hundred are usual.",
               "Look at the wait states that the system sets for the chips' windows, and whether "
               "another device holds the bus."};
}

constexpr std::array kRules = {Uninitialized, NoChip,   ChipIds, StoredSettings, Drivers,
                               BackEnd,       Messages, Cameras, Settling,       SlowBus};

}  // namespace

std::vector<Cause> BoardCauses(const Evidence& evidence) {
  std::vector<Cause> causes;
  for (const auto rule : kRules) {
    if (auto cause = rule(evidence)) causes.push_back(std::move(*cause));
  }
  return causes;
}

}  // namespace verdict
