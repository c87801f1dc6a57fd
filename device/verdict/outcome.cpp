#include "device/verdict/outcome.h"

namespace verdict {
namespace {

using plan::EntryKind;

void Take(Outcome& outcome, const plan::Entry& entry) {
  switch (entry.kind) {
    case EntryKind::Called:
      outcome.called = &entry;
      break;
    case EntryKind::Returned:
      outcome.returned = &entry;
      break;
    case EntryKind::Took:
      outcome.took = &entry;
      break;
    case EntryKind::Record:
      outcome.record = &entry;
      break;
    case EntryKind::Answer:
      outcome.answer = &entry;
      break;
    case EntryKind::Error:
      outcome.error = &entry;
      break;
    case EntryKind::Message:
      outcome.messages.push_back(&entry);
      break;
    case EntryKind::Value:
    case EntryKind::Unread:
      outcome.values[entry.plan_line] = &entry;
      break;
    default:  // not about a step
      break;
  }
}

}  // namespace

std::optional<std::int32_t> Outcome::Result() const {
  if (returned == nullptr || returned->numbers.empty()) return std::nullopt;
  return static_cast<std::int32_t>(returned->numbers.front());
}

std::vector<Outcome> MatchLog(const plan::Plan& plan, const plan::Log& log) {
  std::vector<Outcome> outcomes;
  std::map<unsigned, std::size_t> by_line;
  for (const plan::Step& step : plan.steps) {
    by_line[step.line] = outcomes.size();
    for (const plan::ExpectedRegister& one : step.registers) by_line[one.line] = outcomes.size();
    outcomes.emplace_back().step = &step;
  }
  for (const plan::Entry& entry : log.entries) {
    const auto found = by_line.find(entry.plan_line);
    if (found != by_line.end()) Take(outcomes[found->second], entry);
  }
  return outcomes;
}

}  // namespace verdict
