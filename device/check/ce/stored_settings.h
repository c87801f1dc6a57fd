// The settings that the library keeps in battery-backed memory: a check leaves them as they were.
#pragma once

#include <cstdint>

namespace check {

class System;

class StoredSettings {
 public:
  explicit StoredSettings(System& system) : system_(system) {}

  // Remembers what is stored, and tells the log; and whether it can be put back, by writing it as
  // it is, before anything can have changed it.
  void Remember();
  // Puts it back if it has changed, and tells the log.
  void Restore();
  // Tells the log, when it has never changed.
  void Finish();

 private:
  static constexpr unsigned kBytes = 6;
  bool Read(std::uint8_t* bytes);
  bool Write(std::uint8_t* bytes);

  System& system_;
  bool known_ = false;
  bool changed_ = false;
  std::uint8_t bytes_[kBytes] = {};
};

}  // namespace check
