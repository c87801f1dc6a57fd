// Events of a trace in words.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "sim/trace.h"

namespace vexosim {

// What is called: "VEXOAPI_CommandProc 0xF005 live-split", "VEXOAPI_TextCommandProc lsplit",
// "DllMain attach". The same for calls that do the same kind of thing.
std::string CallName(const sim::CallEvent& call);
// The same with all that the caller gives.
std::string CallInWords(const sim::CallEvent& call);

// What came of it, a line each: the fields that the library filled in, and the result.
std::vector<std::string> ResultInWords(const sim::CallEvent& call, const sim::ReturnEvent& result,
                                       unsigned channels);

// Any other event than a bus cycle, but for messages as a line of its own; control characters are
// not left in it. channels: how many the board has.
std::string EventInWords(const sim::EventDetail& detail, unsigned channels);

std::string_view ThreadName(sim::By by);
std::string_view WindowName(sim::BusWindow window);

}  // namespace vexosim
