// What the library gets in place of the system's calls while a script runs: the real call, noted in
// the trace and in step with the board's time, or the failure that the script asks for.
#pragma once

#include <span>

#include "library.h"

namespace host {

std::span<const Import> ScriptImports();

// The window that stands for one of the simulated PC's, made at its first use; the handle itself
// when the PC has none.
HWND RealWindow(PlatWindow window);

// Posts to a null window, which the real call takes and these refuse.
extern unsigned g_posts_to_nobody;

// Ends what the last script left over: threads, handles, windows. The library is still loaded.
void EndThreads();
void CloseLeftOvers();

}  // namespace host
