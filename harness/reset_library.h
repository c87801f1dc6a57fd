// Puts every state record of the linked library back to its initial values, as a fresh load does.
#pragma once

namespace harness {

// No library thread may run meanwhile.
void ResetLibraryState();

}  // namespace harness
