// Registers that differ: between two moments, or between two chips.
#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "sim/board/snapshot.h"

namespace script {

// Moments that every session knows: the last attach, the begin of the last action, now.
inline constexpr std::string_view kAttachMoment = "attach";
inline constexpr std::string_view kStartMoment = "start";
inline constexpr std::string_view kNowMoment = "now";
inline constexpr std::array kMoments = {kAttachMoment, kStartMoment, kNowMoment};

// One line each, with both values and the fields that changed, by page and register:
//   all    page 1  0x10  channel display 0         c0 -> c4 (decoded set)
//   master page 1  0x3C  window 3                  85 b0 02 1f -> 04 5a 01 3c
// "all" stands for every chip that is fitted at both moments; one that is fitted at one of them
// alone is a line that says so.
std::vector<std::string> DifferencesInWords(const sim::RegisterSnapshot& before,
                                            const sim::RegisterSnapshot& after);

// The same between two chips at one moment; one line when one of them is not fitted.
std::vector<std::string> ChipDifferencesInWords(const sim::RegisterSnapshot& moment, unsigned one,
                                                unsigned other);

}  // namespace script
