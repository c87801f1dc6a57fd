#include "script/session.h"

namespace script {

void Session::BeginAction(std::string name) {
  action_ = std::move(name);
  returned.reset();
  first_event_ = World().trace.Mark();
  first_received_ = World().windows.received.size();
  first_cycle_ = World().trace.Cycles();
  moments.insert_or_assign("start", sim::TakeSnapshot(World().board));
}

const sim::Bytes* Session::Record() const {
  const sim::Trace& trace = World().trace;
  for (std::size_t i = trace.Mark(); i > first_event_; --i) {
    const auto* event = trace.As<sim::ReturnEvent>(trace.Events()[i - 1]);
    if (event != nullptr) return event->record ? &*event->record : nullptr;
  }
  return nullptr;
}

std::string Session::DebugText() const {
  const sim::Trace& trace = World().trace;
  std::string text;
  for (std::size_t i = first_event_; i < trace.Mark(); ++i) {
    if (const auto* debug = trace.As<sim::DebugEvent>(trace.Events()[i])) text += debug->text;
  }
  return text;
}

bool Session::HasMessage(std::uint32_t message, std::optional<std::uint32_t> wparam) const {
  const sim::Trace& trace = World().trace;
  for (std::size_t i = first_event_; i < trace.Mark(); ++i) {
    const auto* event = trace.As<sim::MessageEvent>(trace.Events()[i]);
    if (event == nullptr || !event->ok || event->message != message) continue;
    if (!wparam || event->wparam == wparam) return true;
  }
  const auto& received = World().windows.received;
  for (std::size_t i = first_received_; i < received.size(); ++i) {
    if (received[i].message != message) continue;
    // An address is no number that a script could know.
    if (!wparam || (received[i].record.empty() && received[i].wparam == *wparam)) return true;
  }
  return false;
}

}  // namespace script
