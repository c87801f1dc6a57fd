#include "crossing.h"

namespace kit {

thread_local Crossing* t_crossing = nullptr;

void ComeOut() { __builtin_longjmp(t_crossing->place, 1); }

}  // namespace kit
