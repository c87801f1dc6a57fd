// Every touch of the platform, in one ordered list.
#pragma once

#include <cstdint>
#include <deque>
#include <limits>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "sim/board/board.h"
#include "sim/board/bytes.h"

namespace sim {

enum class By : std::uint8_t { Host, Worker };

// Details of the events that are no bus cycles; one struct a kind of event.
struct CallEvent {
  std::string fn{};                                // export name, or DllMain
  std::vector<std::int64_t> args{};                // the numbers among the arguments
  std::optional<Bytes> record = std::nullopt;      // the caller's record before the call
  std::optional<std::string> text = std::nullopt;  // the line of a text command, UTF-8
  std::optional<bool> valid = std::nullopt;        // of a window handle: whether it is a window
};
// A script's line that changes the board or lets time pass; what it does comes after it.
struct LineEvent {
  std::string text;
};
struct ReturnEvent {
  std::string fn;
  std::optional<std::int64_t> value;  // none for exports without a result
  std::optional<Bytes> record;        // the caller's record after the call
  std::optional<std::string> text;    // version text after the call
};
struct DebugEvent {  // one write
  bool kernel = false;
  std::string text;  // UTF-8
};
struct MessageEvent {
  bool post = false;  // posted, else sent
  std::uint32_t message = 0;
  std::optional<std::uint32_t> wparam;  // none where it is an address
  std::uint32_t lparam = 0;
  bool ok = false;
  std::optional<Bytes> record;  // what wparam points to
};
struct LockEvent {
  bool unlock = false;
  std::string name;
  bool ok = false;
};
struct SleepEvent {
  bool wait = false;  // a timed wait on an event, else Sleep
  std::uint32_t ms = 0;
};
struct OpenEvent {
  std::string name;
  std::uint32_t access = 0;
  std::uint32_t share = 0;
  std::uint32_t disposition = 0;
  bool ok = false;
};
struct IoctlEvent {
  std::string name;
  std::uint32_t code = 0;
  Bytes in;
  bool ok = false;
};
struct CloseEvent {  // of a driver; tried, when it is not ok
  std::string name;
  bool ok = true;
};
struct NvramEvent {
  std::string op;  // init, read, write, deinit
  std::uint32_t block = 0;
  std::uint32_t offset = 0;
  std::uint32_t length = 0;
  Bytes data;
  bool ok = false;
};
struct MapEvent {
  std::uint32_t physical = 0;
  std::uint32_t length = 0;
  bool cached = false;
  bool ok = false;
};
struct UnmapEvent {
  BusWindow window = BusWindow::Select;
};
struct ThreadEvent {
  std::string what;  // start, end, terminate
  std::uint32_t code = 0;
};

using EventDetail =
    std::variant<CallEvent, ReturnEvent, DebugEvent, MessageEvent, LockEvent, SleepEvent, OpenEvent,
                 IoctlEvent, CloseEvent, NvramEvent, MapEvent, UnmapEvent, ThreadEvent, LineEvent>;

// Bus cycles are stored in the event itself, so that millions of them stay cheap.
struct Event {
  enum class Kind : std::uint8_t { Store, Load, Other };
  std::uint32_t t = 0;  // virtual ms
  By by = By::Host;
  Kind kind = Kind::Other;
  BusWindow window = BusWindow::Select;  // Store, Load
  std::uint8_t value = 0;                // Store, Load
  std::uint32_t detail = 0;              // Other: index for Trace::Detail
};

// Hears of every event as it happens.
class TraceListener {
 public:
  virtual ~TraceListener() = default;
  // detail: null for a bus cycle.
  virtual void OnEvent(const Event& event, const EventDetail* detail) = 0;
};

class Trace {
 public:
  // Events beyond this many are not kept until the next Clear; listeners hear of them, and cycles
  // are counted.
  void SetCapacity(std::size_t events) { capacity_ = events; }
  void SetEnabled(bool enabled) { SetCapacity(enabled ? kUnlimited : 0); }

  enum class Hears { Everything, AllButCycles };
  // A listener is told until it is removed, in the order of addition. What it throws comes out of
  // what added the event, which is kept.
  void AddListener(TraceListener& listener, Hears hears = Hears::Everything);
  void RemoveListener(TraceListener& listener);
  void RemoveListeners();

  void AddCycle(std::uint32_t t, By by, bool load, BusWindow window, std::uint8_t value) {
    ++cycles_;
    if (events_.size() >= capacity_ && cycle_listeners_.empty()) return;
    KeepCycle({t, by, load ? Event::Kind::Load : Event::Kind::Store, window, value, 0});
  }
  template <typename Detail>
  void Add(std::uint32_t t, By by, Detail&& detail) {
    if (events_.size() >= capacity_ && listeners_.empty()) return;
    Keep(t, by, EventDetail(std::forward<Detail>(detail)));
  }

  const std::vector<Event>& Events() const { return events_; }
  const EventDetail& Detail(const Event& event) const { return details_[event.detail]; }
  // The same, null for a bus cycle.
  const EventDetail* DetailOf(const Event& event) const {
    return event.kind == Event::Kind::Other ? &details_[event.detail] : nullptr;
  }

  // The event's detail when it is of type T, else null.
  template <typename T>
  const T* As(const Event& event) const {
    return event.kind == Event::Kind::Other ? std::get_if<T>(&details_[event.detail]) : nullptr;
  }

  // Number of events so far: a place in the list to look from later.
  std::size_t Mark() const { return events_.size(); }
  std::uint64_t Cycles() const { return cycles_; }
  void Clear();         // cycles count from 0 again
  void ForgetEvents();  // but not their number of cycles

 private:
  static constexpr std::size_t kUnlimited = std::numeric_limits<std::size_t>::max();
  void KeepCycle(const Event& event);
  void Keep(std::uint32_t t, By by, EventDetail detail);

  std::size_t capacity_ = kUnlimited;
  std::uint64_t cycles_ = 0;
  std::vector<TraceListener*> listeners_;        // to all but cycles
  std::vector<TraceListener*> cycle_listeners_;  // some of them
  std::vector<Event> events_;
  std::deque<EventDetail> details_;  // stay where they are: listeners may add events
};

// One register access decoded from its bus cycles.
struct RegisterAccess {
  bool read = false;
  std::uint8_t select = kSelectIdle;  // the select byte in force
  std::uint8_t reg = 0;
  std::uint8_t value = 0;
  By by = By::Host;
  std::uint32_t t = 0;

  // The chip select code (kChipMaster ... kChipAll; 0 when no chip or another set is selected) and
  // the page (0 to 2, 0xFF when there is none) that the select byte stands for.
  std::uint8_t Chip() const;
  std::uint8_t Page() const;
};

// Register accesses from event `from` on; a table write gives one access a data byte. The cycles
// of host and worker are decoded apart.
std::vector<RegisterAccess> DecodeAccesses(const Trace& trace, std::size_t from = 0);

}  // namespace sim
