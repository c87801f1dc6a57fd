// Scripts in virtual time through the DLL: the same kernel and the same language as on the PC, and
// the library as Windows has it.
#pragma once

namespace kit {

// words: SCRIPT... --traces FOLDER; writes FOLDER/NAME.jsonl for each, NAME.VARIANT.jsonl for each
// of its variants. Gives the exit status; what is wrong is said on standard error.
int RunScripts(int count, const char* const* words);

}  // namespace kit
