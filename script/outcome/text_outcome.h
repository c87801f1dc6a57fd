// What a text line did, in words: what was refused, cut, not read or not reached, also where its
// result says that all is well.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "script/outcome/library_facts.h"
#include "sim/world.h"

namespace script {

// line and result of VEXOAPI_TextCommandProc, called since the event first_event and heard of by
// facts. None when the line did what it asks for.
std::optional<std::string> OutcomeOfText(std::string_view line, int result, const sim::World& world,
                                         std::size_t first_event, const LibraryFacts& facts);

}  // namespace script
