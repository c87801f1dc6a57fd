// The text commands that drive the video back-end's stream driver "VBE1:": header "vpb".
#pragma once

#include <cstdint>

#include "platform/platform.h"
#include "text/command_pattern.h"

inline constexpr const char* kBackEndHeader = "vpb";

struct BackEndState {
  PlatHandle driver = kPlatNoHandle;  // none: closed; the invalid handle after a failed open
};
extern BackEndState g_back_end;

// Runs a line of at most kLineMax characters: opens or closes the driver, or sends it one request
// when it is open. Returns the number of tokens taken after the header, 0 when the line is
// rejected: another header (printed), an unknown word, a missing token.
std::int32_t VPB_ParseText(const char* line);

// The commands, for listings.
extern const TextGrammar kBackEndGrammar;
