// Puts every state record of the linked library back to its initial values, as a fresh load does.
#pragma once

namespace vexosim {

// No library thread may run meanwhile.
void ResetLibraryState();

}  // namespace vexosim
