// A connection to a control port.
#pragma once

// The first one comes first.
// clang-format off
#include <winsock2.h>
#include <windows.h>
// clang-format on

#include <cstdint>
#include <string>

namespace drive {

class Control {
 public:
  explicit Control(std::uint16_t port);
  ~Control();
  Control(const Control&) = delete;
  Control& operator=(const Control&) = delete;

  // A line of the script language, done; its answer.
  std::string Run(const std::string& line);
  // The board's time.
  std::uint64_t Now();

 private:
  std::string ReadLine();
  SOCKET socket_ = INVALID_SOCKET;
  std::string read_;
  std::uint64_t last_event_ms_ = 0;
};

}  // namespace drive
