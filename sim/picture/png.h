// Pictures as PNG files.
#pragma once

#include <string>

#include "sim/screen/screen.h"

namespace sim {

// Refuses a name of another kind of file, with a files::FileError.
void CheckPngName(const std::string& path);

// Writes a PNG file, whole or not at all. Throws std::runtime_error with the reason.
void WritePng(const Image& image, const std::string& path);

}  // namespace sim
