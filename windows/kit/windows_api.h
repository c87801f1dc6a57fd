// The system's headers, without their macros of names that the simulated board has too.
#pragma once

#include <windows.h>

#undef CreateEvent
#undef CreateMutex
#undef OpenEvent
#undef PostMessage
#undef SendMessage
