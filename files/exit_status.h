// What the exit status of every program says.
#pragma once

namespace files {

inline constexpr int kExitDone = 0;
// An expectation was not met, something differs, or a run had to be ended.
inline constexpr int kExitUnmet = 1;
// The command line, a file or a script is wrong; a sentence on standard error says how.
inline constexpr int kExitWrong = 2;

}  // namespace files
