// Notices that the host's threads poll what nothing changes.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "sim/board/bus_windows.h"

namespace sim {

class Polling {
 public:
  struct Read {
    std::uint8_t select;
    std::uint8_t reg;
    std::uint8_t value;
    bool operator==(const Read&) const = default;
  };

  // A bus cycle of the host.
  void OnCycle(bool load, BusWindow window, std::uint8_t value) {
    if (window == BusWindow::Data) {
      if (load) {
        last_[reads_++ % last_.size()] = {select_, address_, value};
      } else {
        reads_ = 0;
      }
      ++address_;
    } else if (!load) {
      (window == BusWindow::Select ? select_ : address_) = value;
    }
  }
  // A chip has come nearer to the end of what it is busy with, or another call begins.
  void Progress() { reads_ = 0; }

  // Register reads since anything was written, or came nearer to its end.
  std::uint64_t Reads() const { return reads_; }
  // The different ones among the last reads, oldest first.
  std::vector<Read> Last() const;

 private:
  std::uint8_t select_ = 0xFF;
  std::uint8_t address_ = 0;
  std::uint64_t reads_ = 0;
  std::array<Read, 8> last_{};
};

}  // namespace sim
