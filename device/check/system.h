// What the check program needs of the device, as its parts that any computer can run see it.
#pragma once

#include <cstdint>

namespace check {

using Char16 = char16_t;

// What came to the program's window.
struct Message {
  std::uint32_t number;
  std::uint32_t wparam;  // 0 where it is an address
  std::uint32_t lparam;
  const std::uint8_t* record;  // what stands at that address; null: wparam is a number
  unsigned record_bytes;
};

// The library's exports, called one at a time, and the time between.
class System {
 public:
  // A whole line of the log, with its end: written and flushed when this returns.
  virtual void WriteLog(const char* line, unsigned bytes) = 0;
  virtual std::uint32_t Milliseconds() = 0;  // since the program began
  virtual std::uint64_t Microseconds() = 0;

  // The system's error, 0 when it is loaded.
  virtual std::uint32_t Load() = 0;
  virtual void Unload() = 0;
  // Whether the library has the export that a call needs.
  enum class Export { Initialize, Uninitialize, Version, Debug, Output, Command, Motion, Text };
  virtual bool Has(Export which) = 0;
  virtual int Initialize(bool valid_window) = 0;
  virtual void Uninitialize() = 0;
  virtual void SetDebug(std::uint32_t enable) = 0;
  virtual void SetOutput(std::uint32_t enable) = 0;
  virtual int GetVersion(Char16* buffer) = 0;
  virtual int Command(std::uint32_t code, void* record) = 0;
  virtual int SetMotion(std::uint8_t channel, std::uint8_t level, std::uint8_t* mask) = 0;
  virtual int Text(const char* line) = 0;
  // Handles the window's messages for so long.
  virtual void Wait(std::uint32_t ms) = 0;

 protected:
  ~System() = default;
};

}  // namespace check
