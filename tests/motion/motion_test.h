// What the tests of motion detection share.
#pragma once

#include <cstdint>

#include "tests/model/reference_model.h"

namespace test {

constexpr std::uint8_t U8(int value) { return static_cast<std::uint8_t>(value); }

}  // namespace test
