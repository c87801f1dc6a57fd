#include "platform.h"

// In a section that all processes which load the library have in common.
__attribute__((section(".shared"), shared)) std::uint32_t g_shared_word = 1;
