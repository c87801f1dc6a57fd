// The word that all processes which load the library have in common, if the system shares it.
#pragma once

#include <cstdint>

#include "device/program/program_api.h"

namespace check {

// Of the library that this process has loaded; null when its file has no such word.
volatile std::uint32_t* FindSharedWord(HINSTANCE__* library);

// While it lives, another process can see the mark there; then it is as it was.
class SharedMark {
 public:
  explicit SharedMark(HINSTANCE__* library);
  ~SharedMark();
  SharedMark(const SharedMark&) = delete;
  SharedMark& operator=(const SharedMark&) = delete;

 private:
  volatile std::uint32_t* const word_;
  std::uint32_t before_ = 0;
};

bool SeesSharedMark(HINSTANCE__* library);

}  // namespace check
