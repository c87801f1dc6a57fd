// The control port: lines of the script language over a socket of this machine, answers and events
// as JSON lines.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "desk/console/console.h"
#include "sim/trace.h"

namespace desk {

struct PortLimits {
  std::size_t connections = 16;
  std::chrono::milliseconds greeting{5000};  // until the first line must be there
  std::chrono::milliseconds goodbye{1000};   // until a connection that was told of its end is gone
  std::size_t kept_bytes = std::size_t{8} << 20;  // of events, for those who are slow
};

class Port {
 public:
  using Run = std::function<Answer(const std::string& line)>;

  // Listens on 127.0.0.1 at this port, 0: one that is free. `run` runs one line, in threads of the
  // port's own. Throws std::runtime_error with the reason.
  Port(std::uint16_t port, Run run, const PortLimits& limits = {});
  // Ends all connections, and waits for the lines that run; from a thread that is outside the
  // board.
  ~Port();
  Port(const Port&) = delete;
  Port& operator=(const Port&) = delete;

  std::uint16_t Number() const;

  // Tells the events of the world's trace to whoever asked for them. Never blocks the board.
  sim::TraceListener& Events();

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace desk
