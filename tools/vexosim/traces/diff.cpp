#include "tools/vexosim/traces/diff.h"

#include <algorithm>
#include <deque>
#include <memory>

#include "files/exit_status.h"
#include "script/register_words.h"
#include "sim/register_decoder.h"
#include "sim/text.h"
#include "sim/trace_json.h"
#include "tools/vexosim/traces/build_time.h"
#include "tools/vexosim/traces/event_words.h"
#include "tools/vexosim/traces/events.h"

namespace vexosim {
namespace {

constexpr std::size_t kEventsBefore = 5;
constexpr std::size_t kMostAhead = 64;  // events, to tell what a cycle is part of

// An event and where it stands.
struct Entry {
  std::size_t number = 0;  // from 1
  ReadEvent read;
  std::optional<sim::RegisterAccess> access;  // that it makes
};

// One of the two, as far as it was read.
class Side {
 public:
  Side(const std::string& path, const CaptureColumns& columns)
      : name_(files::Printable(path)), source_(OpenEvents(path, columns)) {}

  bool IsCapture() const { return source_->IsCapture(); }
  // Nobody tells threads apart from now on: cycles are decoded as the chips see them.
  void OneBus() { one_bus_ = true; }

  const Entry* Next() {
    if (entry_ && entry_->read.As<sim::ReturnEvent>() != nullptr) call_.clear();
    if (entry_ && (entry_->access || entry_->read.detail)) Remember();
    auto read = source_->Next();
    if (!read) {
      entry_.reset();
      return nullptr;
    }
    if (const auto* call = read->As<sim::CallEvent>()) call_ = CallName(*call);
    if (one_bus_) read->event.by = sim::By::Host;
    entry_ = Entry{++number_, *std::move(read), std::nullopt};
    entry_->access = decoder_.Take(entry_->read.event);
    return &*entry_;
  }
  const Entry* NextAccess() {
    const Entry* entry = Next();
    while (entry != nullptr && !entry->access) entry = Next();
    return entry;
  }

  const std::string& Name() const { return name_; }
  // The event that was read last in words.
  std::string Describe(bool registers) {
    if (!entry_) return "ends after event " + std::to_string(number_);
    const Entry entry = *entry_;
    std::string text = Place(entry, registers);
    if (entry.read.detail || entry.access) return text + InWords(entry);
    const sim::Event& event = entry.read.event;
    text += std::string(event.kind == sim::Event::Kind::Store ? "store " : "load ") +
            std::string(WindowName(event.window)) + ' ' + sim::Hex(event.value);
    for (std::size_t i = 0; i < kMostAhead; ++i) {
      const Entry* next = Next();
      if (next == nullptr) break;
      if (!next->access || next->read.event.by != event.by) continue;
      return text + ", then " + InWords(*next);
    }
    return text;
  }
  // "642 ms, host, in VEXOAPI_CommandProc 0xF005 live-split"
  std::string Moment(bool registers) const {
    std::string text;
    if (entry_ && !registers) {
      text = std::to_string(entry_->read.event.t) + " ms, " +
             std::string(ThreadName(entry_->read.event.by));
    }
    if (!call_.empty()) text += (text.empty() ? "in " : ", in ") + call_;
    return text;
  }
  void PrintBefore(std::ostream& out, bool registers, std::size_t columns) const {
    for (const Entry& entry : before_) {
      if (registers && !entry.access) continue;
      const std::string name = &entry == &before_.front() ? "before" : "";
      out << "  " << name << std::string(columns - name.size(), ' ') << "  "
          << Place(entry, registers) << InWords(entry) << '\n';
    }
  }
  void Remember() {
    before_.push_back(*std::move(entry_));
    if (before_.size() > kEventsBefore) before_.pop_front();
  }

 private:
  static std::string Place(const Entry& entry, bool registers) {
    const std::string number = std::to_string(entry.number);
    std::string text =
        "event " + std::string(number.size() < 7 ? 7 - number.size() : 0, ' ') + number + "  ";
    if (registers) return text;
    return text + std::to_string(entry.read.event.t) + " ms  " +
           std::string(ThreadName(entry.read.event.by)) + "  ";
  }
  static std::string InWords(const Entry& entry) {
    return entry.access ? script::AccessInWords(*entry.access)
                        : EventInWords(*entry.read.detail, kChannelsMax);
  }

  std::string name_;
  std::unique_ptr<EventSource> source_;
  sim::RegisterDecoder decoder_;
  bool one_bus_ = false;
  std::size_t number_ = 0;
  std::optional<Entry> entry_;  // read last
  std::deque<Entry> before_;
  std::string call_;  // in progress, empty for none
};

std::string Comparable(std::string text) {
  return WithoutThreadNumber(WithoutBuildTime(std::move(text)));
}

nlohmann::ordered_json Comparable(const sim::Event& event, sim::EventDetail detail) {
  if (auto* debug = std::get_if<sim::DebugEvent>(&detail)) debug->text = Comparable(debug->text);
  if (auto* call = std::get_if<sim::CallEvent>(&detail); call != nullptr && call->valid) {
    call->args.clear();  // the handle
  }
  return sim::EventToJson(event, &detail);
}

bool SameEvent(const ReadEvent& a, const ReadEvent& b) {
  const sim::Event& x = a.event;
  const sim::Event& y = b.event;
  if (x.t != y.t || x.by != y.by || x.kind != y.kind) return false;
  if (!a.detail || !b.detail) return x.window == y.window && x.value == y.value;
  return Comparable(x, *a.detail) == Comparable(y, *b.detail);
}

bool SameAccess(const sim::RegisterAccess& a, const sim::RegisterAccess& b) {
  return a.read == b.read && a.select == b.select && a.reg == b.reg && a.value == b.value;
}

}  // namespace

int DiffTraces(const DiffOptions& options, std::ostream& out) {
  Side a(options.a, options.columns);
  Side b(options.b, options.columns);
  const bool registers = options.registers || a.IsCapture() || b.IsCapture();
  if (a.IsCapture() || b.IsCapture()) {
    a.OneBus();
    b.OneBus();
  }
  for (std::size_t same = 0;; ++same) {
    const Entry* const x = registers ? a.NextAccess() : a.Next();
    const Entry* const y = registers ? b.NextAccess() : b.Next();
    if (x == nullptr && y == nullptr) {
      out << "the same: " << same << (registers ? " register accesses\n" : " events\n");
      return files::kExitDone;
    }
    if (x != nullptr && y != nullptr &&
        (registers ? SameAccess(*x->access, *y->access) : SameEvent(x->read, y->read))) {
      continue;
    }
    const std::string moment = (x != nullptr && !a.IsCapture() ? a : b).Moment(registers);
    const std::size_t columns = std::max({a.Name().size(), b.Name().size(), std::size_t{6}});
    out << a.Name() << " and " << b.Name() << " differ" << (moment.empty() ? "" : ": ") << moment
        << '\n';
    a.PrintBefore(out, registers, columns);
    for (Side* side : {&a, &b}) {
      out << "  " << side->Name() << std::string(columns - side->Name().size(), ' ') << "  "
          << side->Describe(registers) << '\n';
    }
    return files::kExitUnmet;
  }
}

}  // namespace vexosim
