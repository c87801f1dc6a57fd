#include "tools/vexosim/traces/show_trace.h"

#include <algorithm>
#include <sstream>

#include "VexoCtrlSDK.h"
#include "chip/registers.h"
#include "script/listing/register_writes.h"
#include "script/register_words.h"
#include "sim/kernel/message_records.h"
#include "sim/text.h"
#include "tools/vexosim/traces/event_words.h"
#include "tools/vexosim/traces/events.h"

namespace vexosim {

bool TraceFilter::Has(const sim::RegisterAccess& access) const {
  if (!registers.empty() && std::none_of(registers.begin(), registers.end(), [&](const auto& one) {
        return one.page == access.Page() && one.number == access.reg;
      })) {
    return false;
  }
  if (!chip) return true;
  if (*chip == kChipsMax) return access.Chip() == kChipAll;
  return (access.select >> (2 * *chip) & 3) < kPageCount;
}

bool TracePrinter::Wanted(const sim::Event& event) const {
  return event.t >= filter_.from_ms && event.t <= filter_.to_ms &&
         (!filter_.by || *filter_.by == event.by);
}

void TracePrinter::Print(std::uint32_t t, sim::By by, const std::string& text) {
  const std::string time = std::to_string(t);
  out_ << std::string(time.size() < 8 ? 8 - time.size() : 0, ' ') << time << " ms  ";
  if (threads_) out_ << (by == sim::By::Host ? "host    " : "worker  ");
  out_ << text << '\n';
}

void TracePrinter::PrintPendingCall() {
  if (!call_ || call_shown_) return;
  Print(call_t_, sim::By::Host, CallInWords(*call_));
  call_shown_ = true;
}

void TracePrinter::Flush() {
  if (line_) {
    while (!line_->text.empty() && (line_->text.back() == '\n' || line_->text.back() == '\r')) {
      line_->text.pop_back();
    }
    if (line_->text.find_first_not_of(' ') != std::string::npos) {
      Print(line_t_, line_by_, "  " + EventInWords(*line_, channels_));
    }
    line_.reset();
  }
  if (run_.empty()) return;
  const sim::RegisterAccess& first = run_.front();
  if (first.by == sim::By::Host) PrintPendingCall();
  if (run_.size() == 1) {
    Print(first.t, first.by, "  " + script::AccessInWords(first));
  } else {
    std::ostringstream lines;
    script::PrintRun(lines, run_);
    for (const std::string& line : sim::TextLines(lines.str())) {
      Print(first.t, first.by,
            "  " + line.substr(std::min(line.find_first_not_of(' '), line.size())));
    }
  }
  run_.clear();
}

void TracePrinter::OnCycle(const sim::Event& event) {
  if (event.by == sim::By::Host) ++call_cycles_;
  const auto access = decoder_.Take(event);
  if (!access || filter_.calls || !Wanted(event) || !filter_.Has(*access)) return;
  if (line_ || run_.empty() || !script::Continues(run_.back(), *access) ||
      run_.front().t != access->t) {
    Flush();
  }
  run_.push_back(*access);
}

void TracePrinter::OnCall(const sim::Event& event, const sim::CallEvent& call) {
  Flush();
  call_ = call;
  call_t_ = event.t;
  call_cycles_ = 0;
  call_shown_ = false;
  if (Wanted(event) && !filter_.Registers()) PrintPendingCall();
}

void TracePrinter::OnReturn(const sim::Event& event, const sim::ReturnEvent& result) {
  Flush();
  if (Wanted(event) && (!filter_.Registers() || call_shown_)) {
    std::vector<std::string> lines =
        ResultInWords(call_.value_or(sim::CallEvent()), result, channels_);
    if (call_cycles_ != 0) lines.back() += " (" + std::to_string(call_cycles_) + " bus cycles)";
    for (const std::string& line : lines) Print(event.t, event.by, "  " + line);
  }
  call_.reset();
}

void TracePrinter::OnDebug(const sim::Event& event, const sim::DebugEvent& debug) {
  const bool goes_on =
      line_ && line_by_ == event.by && line_->kernel == debug.kernel && run_.empty();
  if (!goes_on) {
    Flush();
    line_ = sim::DebugEvent{debug.kernel, {}};
    line_t_ = event.t;
    line_by_ = event.by;
  }
  line_->text += debug.text;
  constexpr std::size_t kMost = 4096;
  if (line_->text.ends_with('\n') || line_->text.size() > kMost) Flush();
}

void TracePrinter::OnEvent(const sim::Event& event, const sim::EventDetail* detail) {
  if (detail == nullptr) return OnCycle(event);
  if (const auto* call = std::get_if<sim::CallEvent>(detail)) return OnCall(event, *call);
  if (const auto* result = std::get_if<sim::ReturnEvent>(detail)) return OnReturn(event, *result);
  const auto* const message = std::get_if<sim::MessageEvent>(detail);
  if (message != nullptr && message->message == VEXO_MSG_INIT_RESULT && message->record &&
      message->record->size() == sim::MessageRecordBytes(VEXO_MSG_INIT_RESULT)) {
    channels_ = std::min<unsigned>(message->record->front(), kChipsMax) * kChannelsPerChip;
  }
  if (filter_.calls || filter_.Registers() || !Wanted(event)) return;
  if (const auto* debug = std::get_if<sim::DebugEvent>(detail)) return OnDebug(event, *debug);
  Flush();
  const bool line = std::holds_alternative<sim::LineEvent>(*detail);
  Print(event.t, event.by, (line ? "" : "  ") + EventInWords(*detail, channels_));
}

}  // namespace vexosim
