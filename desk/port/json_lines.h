// What the port says, a JSON object a line.
#pragma once

#include <cstdint>
#include <sstream>
#include <string>
#include <string_view>

#include "desk/console/console.h"
#include "desk/port/conversation.h"
#include "desk/port/port.h"
#include "sim/trace.h"
#include "sim/trace_json.h"

namespace desk {

// next: the number of the next event.
std::string GreetingLine(Wants wants, std::uint64_t next);
std::string AnswerLine(std::uint64_t number, std::string_view line, const Answer& answer);
// Events that the connection was too slow for.
std::string MissedLine(std::uint64_t count);
std::string ErrorLine(std::string_view what);

// What no trace has, as an event without its beginning.
std::string ToldRest(Port::Tells what, std::uint32_t t, std::uint64_t cycle, std::string_view text);

// Events as the trace has them, each with its number and that of the bus cycles before it in front.
class EventLines {
 public:
  EventLines() : writer_(out_) {}
  // Without the beginning, which has the number.
  std::string Rest(const sim::Event& event, const sim::EventDetail* detail, std::uint64_t cycle);
  static std::string Line(std::uint64_t number, std::string_view rest);

 private:
  std::ostringstream out_;
  sim::TraceWriter writer_;
};

}  // namespace desk
