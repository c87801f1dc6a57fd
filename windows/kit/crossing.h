// Calls into the library's image and out of it again. It has no frames for exceptions on every
// processor: what is thrown outside, such as the end of a thread, goes over it.
#pragma once

#include <exception>

namespace kit {

// Where a thread went into the library, the innermost first.
struct Crossing {
  void* place[5];  // of __builtin_setjmp
  Crossing* outer;
  std::exception_ptr thrown;
};
extern thread_local Crossing* t_crossing;

// Runs `call`, which goes into the library. What is thrown in a call out of it comes out here.
template <typename Call>
[[gnu::noinline]] void GoIn(const Call& call) {
  Crossing crossing{{}, t_crossing, nullptr};
  if (__builtin_setjmp(crossing.place) == 0) {
    t_crossing = &crossing;
    call();
    t_crossing = crossing.outer;
    return;
  }
  Crossing& back = *t_crossing;
  t_crossing = back.outer;
  std::rethrow_exception(back.thrown);
}

[[noreturn]] void ComeOut();

// Runs `call` for the library, outside it.
template <typename Call>
auto GoOut(const Call& call) {
  try {
    return call();
  } catch (...) {
    t_crossing->thrown = std::current_exception();
  }
  ComeOut();
}

}  // namespace kit
