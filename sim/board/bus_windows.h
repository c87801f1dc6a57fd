// Where the bus windows are mapped.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace sim {

enum class BusWindow : std::uint8_t { Select, Address, Data };

// The three bus windows as the processor sees them. Each has an address of its own; mapped twice,
// it must be unmapped twice.
class BusWindows {
 public:
  static constexpr std::size_t kCount = 3;
  // The window at a physical address, none for an address that is no bus window.
  static std::optional<BusWindow> AtPhysical(std::uint32_t physical);
  static volatile std::uint8_t* Address(BusWindow window);

  void Map(BusWindow window) { ++mapped_[static_cast<std::size_t>(window)]; }
  // False when it is not mapped.
  bool Unmap(BusWindow window);

  // The window that an address belongs to, none when nothing is mapped there.
  std::optional<BusWindow> Find(const volatile std::uint8_t* address) const {
    const std::size_t offset = reinterpret_cast<std::uintptr_t>(address) -
                               reinterpret_cast<std::uintptr_t>(memory_.data());
    if (offset >= sizeof(memory_) || offset % kBytes != 0 || mapped_[offset / kBytes] == 0) {
      return std::nullopt;
    }
    return static_cast<BusWindow>(offset / kBytes);
  }

 private:
  static constexpr std::size_t kBytes = 4;
  static std::array<std::uint8_t, kCount * kBytes> memory_;  // addresses only, never accessed
  std::array<unsigned, kCount> mapped_{};
};

}  // namespace sim
