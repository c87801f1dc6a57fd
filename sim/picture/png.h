// Pictures as PNG files.
#pragma once

#include <string>

#include "sim/screen/screen.h"

namespace sim {

// Writes a PNG file. Throws std::runtime_error with the reason.
void WritePng(const Image& image, const std::string& path);

// Reads one back, for comparing pictures. Throws std::runtime_error with the reason.
Image ReadPng(const std::string& path);

}  // namespace sim
