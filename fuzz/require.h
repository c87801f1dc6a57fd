// What must hold whatever the input is.
#pragma once

#include <cstdlib>

namespace fuzz {

// A failure is an abort, which the fuzzer reports with its input.
inline void Require(bool condition) {
  if (!condition) std::abort();
}

}  // namespace fuzz
