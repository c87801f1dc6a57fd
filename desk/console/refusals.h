// Lines that a running program's board does not take.
#pragma once

#include <string_view>

#include "script/line.h"

namespace desk {

// Why a line of this kind is refused; empty when it is not.
std::string_view WhyRefused(const script::LineKind& kind);

}  // namespace desk
