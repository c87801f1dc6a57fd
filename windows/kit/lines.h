// What a program that knows the kit may ask CEDDK.dll for: lines of the script language, and the
// control port. VexoDesk.h tells the rest.
#pragma once

#include <cstddef>

namespace kit {

int RunLine(const char* line, char* answer, std::size_t capacity);
int ControlPort();

}  // namespace kit
