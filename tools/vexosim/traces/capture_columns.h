// Which column or signal of a capture is which line of the bus.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

namespace vexosim {

// A line of the bus; those of eight bits first.
enum class BusLine : std::size_t {
  Select,
  Address,
  Data,
  Write,
  Read,
  EnableSelect,
  EnableAddress,
  EnableData,
};
inline constexpr std::size_t kBusLines = 8;
inline constexpr std::size_t kBusLinesNeeded = 5;  // all but the enables
inline constexpr std::size_t kWideBusLines = 3;    // of eight bits
inline constexpr std::array<std::string_view, kBusLines> kBusLineNames = {
    "select", "address", "data", "write", "read", "enable_select", "enable_address", "enable_data"};

struct CaptureColumns {
  struct Column {
    std::string name;
    bool active_low = false;
  };
  std::array<Column, kBusLines> lines;  // a name that is empty is the line's own
  bool hexadecimal = false;             // numbers of a CSV without 0x

  std::string NameOf(std::size_t line) const {
    return lines[line].name.empty() ? std::string(kBusLineNames[line]) : lines[line].name;
  }
  // Takes "write=nWR:low"; what is wrong with it, empty when nothing is.
  std::string Set(const std::string& assignment);
};

}  // namespace vexosim
