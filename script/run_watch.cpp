#include "script/run_watch.h"

#include <string>
#include <vector>

#include "script/register_words.h"
#include "sim/text.h"

namespace script {
namespace {

constexpr std::uint8_t kSettlePage = kSettleStatus.page;

// What polling a register is for; none for one that nobody waits for.
struct Wait {
  RegisterAddress at;
  const char* purpose;
  std::uint8_t busy;  // bits
};
constexpr Wait kWaits[] = {
    {{kSettlePage, kSettleStatus.first}, "to settle", kSettleBits.bits},
    {{kFillControl.page, kFillControl.first}, "to end its fill", kFillBusy.bits},
};

std::uint8_t PageOf(const sim::Polling::Read& read) {
  sim::RegisterAccess access;
  access.select = read.select;
  return access.Page();
}

bool Fitted(const sim::World& world, std::uint8_t select) {
  for (unsigned position = 0; position < kChipsMax; ++position) {
    if (ChipOfSelect(select) == ChipWords()[position]) return world.board.Fitted(position);
  }
  return true;
}

}  // namespace

std::string WaitInWords(const sim::World& world) {
  std::string chips;
  const char* purpose = nullptr;
  std::string reads;
  const std::vector<sim::Polling::Read> last = world.polling.Last();
  for (const sim::Polling::Read& read : last) {
    const std::uint8_t page = PageOf(read);
    const std::string chip(ChipOfSelect(read.select));
    const bool fitted = Fitted(world, read.select);
    if (!reads.empty()) reads += ", ";
    reads += chip + ' ' + sim::Hex(read.value) + (fitted ? "" : " (not fitted)");
    if (&read == &last.back()) reads += " in " + RegisterLabel(page, read.reg);
    for (const Wait& wait : kWaits) {
      if (wait.at.page != page || wait.at.number != read.reg) continue;
      if ((read.value & wait.busy) == 0) continue;
      chips += (chips.empty() ? "" : ", ") + chip;
      purpose = wait.purpose;
    }
  }
  std::string text = "waits for ";
  if (purpose == nullptr) {
    text += "an answer that never comes";
  } else {
    text += (chips.find(',') == std::string::npos ? "chip " : "chips ") + chips + ' ' + purpose +
            ", which never happens";
  }
  return text + ": it has read " + reads + " over and over, and nothing can change that";
}

RunWatch::RunWatch(const Limits& limits, const Surroundings& around)
    : limits_(limits), around_(around) {}

void RunWatch::Attach() {
  sim::TheWorld().kernel.SetWatch([this] { Check(); });
}

void RunWatch::Check() {
  if (paused_) return;
  const sim::World& world = sim::TheWorld();
  if (around_.Interrupted()) throw Ended(Ended::Why::Interrupt, "interrupted");
  if (limits_.virtual_ms && world.kernel.NowUnwrapped() >= *limits_.virtual_ms) {
    throw Ended(Ended::Why::Limit, "the limit of " + std::to_string(*limits_.virtual_ms) +
                                       " ms of the board's time is reached");
  }
  if (world.polling.Reads() > kMostReads && world.kernel.Current() == sim::By::Host) {
    throw Ended(Ended::Why::Poll, WaitInWords(world));
  }
  if (limits_.real && ++asks_ % kAsksALook == 0) CheckReal();
}

void RunWatch::CheckReal() const {
  if (Clock::now() - begin_ < *limits_.real) return;
  throw Ended(Ended::Why::Limit,
              "the limit of " + std::to_string(limits_.real->count()) + " ms is reached");
}

}  // namespace script
