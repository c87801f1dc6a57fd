#include "tools/vexosim/plan/maker.h"

#include <algorithm>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "sim/text.h"
#include "tools/vexosim/plan/recording.h"
#include "tools/vexosim/plan/scope.h"
#include "tools/vexosim/traces/build_time.h"

namespace vexosim {
namespace {

using plan::Bytes;
using plan::MaskedBytes;

constexpr std::uint8_t kAll = 0xFF;

// The bits in which two bytes agree.
std::uint8_t Agreed(std::uint8_t one, std::uint8_t other) {
  return static_cast<std::uint8_t>(~(one ^ other));
}

// Both records are of one size.
MaskedBytes Merge(const Bytes& one, const Bytes& other) {
  MaskedBytes merged{one, {}};
  for (std::size_t i = 0; i < one.size(); ++i) {
    const std::uint8_t agreed = Agreed(one[i], other[i]);
    merged.mask.push_back(agreed);
    merged.bytes[i] &= agreed;
  }
  // What a mask does not give counts whole, and bytes that are not given are 0.
  while (!merged.mask.empty() && merged.mask.back() == kAll) merged.mask.pop_back();
  while (merged.bytes.size() > std::max<std::size_t>(merged.mask.size(), 1) &&
         merged.bytes.back() == 0) {
    merged.bytes.pop_back();
  }
  return merged;
}

// ---- Messages -----------------------------------------------------------------------------------

std::vector<RecordedMessage> Expectable(std::vector<RecordedMessage> messages) {
  std::erase_if(messages, [](const RecordedMessage& message) {
    return message.message == plan::kMotionMessage;
  });
  return messages;
}

// None where the two boards do not agree.
std::optional<std::vector<plan::ExpectedMessage>> Merge(const std::vector<RecordedMessage>& one,
                                                        const std::vector<RecordedMessage>& other) {
  if (one.size() != other.size()) return std::nullopt;
  std::vector<plan::ExpectedMessage> merged;
  for (std::size_t i = 0; i < one.size(); ++i) {
    const RecordedMessage& a = one[i];
    const RecordedMessage& b = other[i];
    if (a.message != b.message || a.wparam != b.wparam || a.lparam != b.lparam) return std::nullopt;
    plan::ExpectedMessage expected{0, a.message, a.wparam, a.lparam, {}};
    if (!a.record.empty()) expected.record = Merge(a.record, b.record);
    merged.push_back(std::move(expected));
  }
  return merged;
}

// ---- Texts --------------------------------------------------------------------------------------

// The lines that come on both boards, but for what each build and each run says differently.
std::vector<std::string> CommonLines(const std::string& one, const std::string& other) {
  const std::vector<std::string> others = sim::TextLines(other);
  std::vector<std::string> lines;
  for (std::string& line : sim::TextLines(one)) {
    const bool fixed =
        WithoutBuildTime(line + '\r') == line + '\r' && WithoutThreadNumber(line) == line;
    if (fixed && line.size() <= plan::kLongestText &&
        std::find(others.begin(), others.end(), line) != others.end()) {
      lines.push_back(std::move(line));
    }
  }
  return lines;
}

// ---- Registers ----------------------------------------------------------------------------------

// What is known of a script's registers as it goes on.
class KnownRegisters {
 public:
  explicit KnownRegisters(const WritableBits& writable) : writable_(writable) {}

  // What the two boards agree in and is news, or everything.
  std::vector<plan::ExpectedRegister> Look(const sim::RegisterSnapshot& one,
                                           const sim::RegisterSnapshot& other, bool everything) {
    std::vector<plan::ExpectedRegister> found;
    for (unsigned chip = 0; chip < kChipsMax; ++chip) {
      if (!one.chips[chip]) continue;
      for (std::uint8_t page = 0; page < kPageCount; ++page) {
        for (unsigned reg = 0; reg < kRegistersPerPage; ++reg) {
          const std::uint8_t value = (*one.chips[chip])[page][reg];
          plan::ExpectedRegister now{0, chip, page, static_cast<std::uint8_t>(reg), 0, 0};
          now.mask =
              Agreed(value, (*other.chips[chip])[page][reg]) & (*writable_.chips[chip])[page][reg];
          now.value = value & now.mask;
          plan::ExpectedRegister& before = known_[chip][page][reg];
          if (now.mask != 0 &&
              (everything || now.mask != before.mask || now.value != before.value)) {
            found.push_back(now);
          }
          before = now;
        }
      }
    }
    return found;
  }

 private:
  const WritableBits& writable_;
  plan::ExpectedRegister unknown_{0, 0, 0, 0, 0, 0};
  std::array<std::array<std::array<plan::ExpectedRegister, kRegistersPerPage>, kPageCount>,
             kChipsMax>
      known_ = [this] {
        std::array<std::array<std::array<plan::ExpectedRegister, kRegistersPerPage>, kPageCount>,
                   kChipsMax>
            known;
        for (auto& chip : known) {
          for (auto& page : chip) page.fill(unknown_);
        }
        return known;
      }();
};

// ---- Steps --------------------------------------------------------------------------------------

plan::Step Merge(const RecordedAction& one, const RecordedAction& other) {
  plan::Step step;
  step.script_line = one.line;
  step.source = one.source;
  step.action = one.action;
  if (one.result == other.result) step.result = one.result;
  if (one.answer == other.answer) step.answer = one.answer;
  if (one.record && other.record) step.record = Merge(*one.record, *other.record);
  if (auto messages = Merge(Expectable(one.messages), Expectable(other.messages))) {
    step.messages = std::move(*messages);
  } else {
    step.any_messages = true;
  }
  // Time passes in a wait whatever the bus does meanwhile.
  if (one.cost == other.cost && one.cost.cycles != 0 && one.action.kind != plan::ActionKind::Wait) {
    step.cost = one.cost;
  }
  step.prints = CommonLines(one.debug, other.debug);
  return step;
}

void AddScript(const script::Script& script, plan::Plan& plan, bool first) {
  const Recording one = Record(script, Begin::AsItIs);
  const Recording other = Record(script, Begin::OtherWay);
  std::vector<std::string> board = one.board;
  if (first) plan.board = board;
  if (plan.board != board) {
    throw NoPlan(script.name +
                 ": a plan is for one bench, and the script before has another board");
  }
  if (one.actions.size() != other.actions.size()) {
    throw NoPlan(script.name + ": what it calls depends on how the chips begin");
  }
  KnownRegisters registers(one.writable);
  for (std::size_t i = 0; i < one.actions.size(); ++i) {
    const RecordedAction& action = one.actions[i];
    plan::Step step = Merge(action, other.actions[i]);
    step.script = script.name;
    if (action.registers && other.actions[i].registers) {
      const bool last = action.line == 0 && action.action.kind == plan::ActionKind::Wait;
      step.registers = registers.Look(*action.registers, *other.actions[i].registers, last);
    }
    plan.steps.push_back(std::move(step));
  }
}

}  // namespace

plan::Plan MakePlan(std::span<const script::Script> scripts) {
  for (const script::Script& script : scripts) CheckScope(script);
  plan::Plan plan;
  for (const script::Script& script : scripts) AddScript(script, plan, &script == scripts.data());
  return plan;
}

}  // namespace vexosim
