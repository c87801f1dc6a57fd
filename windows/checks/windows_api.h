// The system's headers.
#pragma once

// The first one comes first.
// clang-format off
#include <windows.h>
#include <tlhelp32.h>
// clang-format on
