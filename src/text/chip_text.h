// The text commands that drive the chips: header "vexo".
#pragma once

#include <cstdint>

#include "text/command_pattern.h"

inline constexpr const char* kChipHeader = "vexo";

// Runs a line of at most kLineMax characters. Returns the number of tokens taken after the header,
// 0 when the line is rejected: another header (printed), an unknown keyword, a missing token. An
// unknown word further on is accepted and does nothing.
std::int32_t VexoText_Parse(const char* line);

// The commands, for listings.
extern const TextGrammar kChipGrammar;
