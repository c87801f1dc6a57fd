#include "desk/bench/held_sink.h"

#include <utility>

namespace desk {
namespace {

const sim::LineEvent* TimeLine(const sim::EventDetail* detail) {
  const auto* const line = detail == nullptr ? nullptr : std::get_if<sim::LineEvent>(detail);
  const bool time =
      line != nullptr && (line->text.starts_with("run ") || line->text.starts_with("wait "));
  return time ? line : nullptr;
}

}  // namespace

void HeldSink::Begin(sim::Trace& trace) {
  held_.clear();
  trace_.emplace();
  trace_->SetCapacity(0);
  sink_.Begin(*trace_);
  trace.AddListener(*this);
}

void HeldSink::End(sim::Trace& trace) {
  trace.RemoveListener(*this);
  Release();
  sink_.End(*trace_);
}

void HeldSink::OnEvent(const sim::Event& event, const sim::EventDetail* detail) {
  const bool time = TimeLine(detail) != nullptr;
  if (held_.empty() && !time) return Pass(event, detail);
  if (!held_.empty() && time) return;  // goes on with the one that is held
  held_.push_back({event, detail == nullptr ? std::nullopt : std::optional(*detail)});
}

void HeldSink::OnKept(const std::string& line) {
  if (held_.empty()) return;
  held_.front().detail = sim::LineEvent{line};
  Release();
}

void HeldSink::Release() {
  for (const Held& held : std::exchange(held_, {})) {
    Pass(held.event, held.detail ? &*held.detail : nullptr);
  }
}

void HeldSink::Pass(const sim::Event& event, const sim::EventDetail* detail) {
  if (detail != nullptr) return trace_->Add(event.t, event.by, *detail);
  trace_->AddCycle(event.t, event.by, event.kind == sim::Event::Kind::Load, event.window,
                   event.value);
}

}  // namespace desk
