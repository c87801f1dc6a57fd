// What a program that knows the kit may ask CEDDK.dll for: lines of the script language, and the
// control port and the page, which send such lines too. VexoDesk.h tells the rest.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace kit {

int RunLine(const char* line, char* answer, std::size_t capacity);

// Throws std::runtime_error for a line that has no meaning where the system has the threads.
void RefuseForSystem(const std::string& line);

// Opens the control port or the page, 0: at one that is free, as soon as the system's loader is
// done with this process. Where it is, and what is in its way, is said.
void OpenPort(std::uint16_t number);
void OpenPage(std::uint16_t number);

// Its number, 0 when none was asked for, less when there is none all the same.
int ControlPort();
int PagePort();

}  // namespace kit
