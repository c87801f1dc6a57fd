#include "sim/board/bus_windows.h"

namespace sim {

std::array<std::uint8_t, BusWindows::kCount * BusWindows::kBytes> BusWindows::memory_;

std::optional<BusWindow> BusWindows::AtPhysical(std::uint32_t physical) {
  switch (physical) {
    case 0x06600000:
      return BusWindow::Select;
    case 0x06400000:
      return BusWindow::Address;
    case 0x06200000:
      return BusWindow::Data;
    default:
      return std::nullopt;
  }
}

volatile std::uint8_t* BusWindows::Address(BusWindow window) {
  return &memory_[static_cast<std::size_t>(window) * kBytes];
}

bool BusWindows::Unmap(BusWindow window) {
  unsigned& mapped = mapped_[static_cast<std::size_t>(window)];
  if (mapped == 0) return false;
  --mapped;
  return true;
}

}  // namespace sim
