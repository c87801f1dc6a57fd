// What an action did, in words: debug output, host messages, result.
#pragma once

#include <cstddef>
#include <ostream>
#include <string>
#include <vector>

#include "script/session.h"
#include "sim/world.h"

namespace script {

// Prints what happened since these places in the trace and in the list of received messages:
//   | debug output, a line of the library each; ! for kernel debug output
//   > a message that the host got, or did not get
void PrintEvents(std::ostream& out, const sim::World& world, std::size_t first_event,
                 std::size_t first_received);

// The messages of the last action, one line each.
std::vector<std::string> MessagesInWords(const Session& session);

}  // namespace script
