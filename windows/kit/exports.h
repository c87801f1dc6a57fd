// Which library the lines call.
#pragma once

namespace kit {

// Lines that call the library call the loaded one from now on: in real time, by a thread that is
// at the board and leaves it for the call.
void UseLoadedExports();

// The same for the board in virtual time: the library is mapped when it is called first, with the
// simulated kernel's functions, and anew after each reset.
void UseMappedExports();

}  // namespace kit
