// The trace as short lines, so that a test can say in one list what has to happen, in which order.
#pragma once

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

#include "sim/trace.h"

namespace test {

// One event.
//   select<-FD  address<-10  data<-22  data->22    bus cycles
//   call VEXOAPI_Initialize                        return VEXOAPI_Initialize 0
//   debug TEXT, kernel TEXT                        line ends as \r\n
//   send 2404 1, post 2401 4099, send 2406 [03010210]   wparam or record; " failed"
//   lock NAME, unlock NAME                         " failed"
//   sleep 200, wait 2
//   open CAM1:, ioctl 220864, close CAM1:          " failed"
//   nvram init
//   map 06600000 4 uncached, unmap select          " failed"
//   thread start, thread end F0000001, thread terminate FFFF0000
struct Line {
  std::uint32_t t;  // virtual ms
  sim::By by;
  std::string text;
  bool operator==(const Line&) const = default;
};
std::ostream& operator<<(std::ostream& out, const Line& line);

std::string Text(const sim::Trace& trace, const sim::Event& event);

// All events from a place in the trace on.
std::vector<Line> Lines(const sim::Trace& trace, std::size_t from = 0);
// Their texts alone; a prefix keeps those that begin with it.
std::vector<std::string> Texts(const sim::Trace& trace, std::size_t from = 0,
                               const std::string& prefix = "");
// The lines of one side that begin with a prefix.
std::vector<Line> LinesBy(sim::By by, const sim::Trace& trace, std::size_t from = 0,
                          const std::string& prefix = "");

inline bool IsBusCycle(const sim::Event& event) { return event.kind != sim::Event::Kind::Other; }

// The whole trace as vexosim writes it.
std::string TraceAsJson(const sim::Trace& trace);

}  // namespace test
