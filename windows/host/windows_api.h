// The system's headers, without their macros of names that the simulated board has too.
#pragma once

// The first one comes first.
// clang-format off
#include <windows.h>
#include <tlhelp32.h>
// clang-format on

#undef CreateEvent
#undef CreateMutex
#undef OpenEvent
#undef PostMessage
#undef SendMessage
