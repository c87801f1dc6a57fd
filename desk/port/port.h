// The control port: lines of the script language over a socket of this machine, answers and events
// as JSON lines.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "desk/console/console.h"
#include "sim/trace.h"

namespace desk {

class Port {
 public:
  using Run = std::function<Answer(const std::string& line)>;

  // Listens on 127.0.0.1 at this port, 0: one that is free. `run` runs one line, in threads of the
  // port's own. Throws std::runtime_error with the reason.
  Port(std::uint16_t port, Run run);
  ~Port();  // ends all connections; from a thread that is outside the board
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
