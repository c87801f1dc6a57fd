// The board for others: the control port, which takes lines of the script language over a socket of
// this machine and gives answers and events as JSON lines, and the page for browsers, which does
// the same and shows pictures.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "desk/console/console.h"
#include "desk/port/moment.h"
#include "sim/trace.h"

namespace desk {

struct PortLimits {
  std::size_t connections = 16;  // of the control port
  std::size_t watchers = 32;     // of the page: so many send lines, and so many see pictures
  std::size_t sessions = 128;    // of the page: connections for files, or not yet for more
  std::chrono::milliseconds greeting{5000};  // until the first line must be there
  std::chrono::milliseconds goodbye{1000};   // until a connection that was told of its end is gone
  std::chrono::milliseconds silence{20000};  // until a page is asked whether it is there, and again
                                             // until it is taken for gone
  std::size_t kept_bytes = std::size_t{8} << 20;  // of events, for those who are slow
};

struct PageSettings {
  std::string address = "127.0.0.1";  // to listen on
  std::uint16_t port = 0;             // 0: one that is free
  bool bench = false;                 // the board is the page's own, not a program's
  std::string title = "VexoCtrlSDK";  // such as the program's name
};

struct PortSettings {
  std::optional<std::uint16_t> control{};  // the control port, 0: one that is free
  std::optional<PageSettings> page{};
  PortLimits limits{};
};

class Port {
 public:
  using Run = std::function<Answer(const std::string& line)>;

  // Listens; the control port on 127.0.0.1. `run` runs one line, in threads of the port's own.
  // Throws std::runtime_error with the reason.
  Port(const PortSettings& settings, Run run);
  // Ends all connections, and waits for the lines that run; from a thread that is outside the
  // board.
  ~Port();
  Port(const Port&) = delete;
  Port& operator=(const Port&) = delete;

  // Where it listens; 0: not at all.
  std::uint16_t Number() const;
  std::uint16_t PageNumber() const;

  // ---- Events ----------------------------------------------------------------------------------

  // Tells the events of the world's trace to whoever asked for them. Never blocks the board.
  sim::TraceListener& Events();

  // What happens to the board as a whole, which no trace has. Like the events by one thread at a
  // time, which is inside.
  enum class Tells : std::uint8_t { Stopped, Continued, Rewound };
  void Tell(Tells what, std::uint32_t t, std::uint64_t cycle, const std::string& text = {});

  // ---- Pictures: any thread --------------------------------------------------------------------

  // Somebody watches, and the moment that was shown last is drawn.
  bool WantsMoment() const;
  // Is drawn and sent by threads of the port's own.
  void Show(Moment moment);

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace desk
