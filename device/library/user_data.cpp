// Windows CE 5 exports no call for the current thread: programs read it from the page in which the
// kernel keeps what every process may know.
#include "ce_api.h"

extern "C" CeDword CE_CALL GetCurrentThreadId() {
  constexpr std::uintptr_t kUserData = 0xFFFFC800;  // on every ARM processor
  constexpr std::uintptr_t kSystemHandles = 4;      // from its start
  constexpr std::uintptr_t kCurrentThread = 1;      // which of the handles
  // A thread's identifier and its handle are the same number.
  return *reinterpret_cast<const volatile CeDword*>(kUserData + kSystemHandles +
                                                    kCurrentThread * sizeof(CeDword));
}
