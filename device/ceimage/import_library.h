// What a linker is given for a program that is linked with the image.
#pragma once

#include <cstdint>
#include <string>

#include "device/ceimage/bytes.h"
#include "device/ceimage/link_tables.h"

namespace ceimage {

// The import library, with short import members: one to a name, of which the linker makes the jump
// and the address itself. Microsoft's linkers read them since version 6.0, and so all those for
// Windows CE on ARM since embedded Visual C++ 3.0.
Bytes MakeImportLibrary(const Exports& exports, std::uint16_t machine);

// The same as a text, for linkers that make their own (.def).
std::string MakeDefinition(const Exports& exports);

}  // namespace ceimage
