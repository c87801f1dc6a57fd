// PNG files read back, for comparing pictures, by another library than the one that writes them.
#pragma once

#include <string>

#include "sim/screen/screen.h"

namespace test {

// Throws std::runtime_error with the reason.
sim::Image ReadPng(const std::string& path);

}  // namespace test
