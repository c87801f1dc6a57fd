#include "platform/platform.h"

// Quirk: nothing here reads or writes it; other programs of the device know that it is there. In a
// section that all processes which load the library have in common: for the desktop the
// compiler marks it so, for the device the image's maker.
#ifdef _WIN32
#define SHARED_SECTION __attribute__((section(".shared"), shared))
#else
#define SHARED_SECTION __attribute__((section(".shared")))
#endif

SHARED_SECTION std::uint32_t g_shared_word = 1;
