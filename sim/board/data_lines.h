// The eight data lines of the chips, which carry register numbers and contents, and what may be
// wrong with them.
#pragma once

#include <cstdint>
#include <optional>
#include <utility>

namespace sim {

struct DataLines {
  static constexpr unsigned kCount = 8;

  std::optional<std::pair<unsigned, unsigned>> exchanged = {};  // two of them
  std::uint8_t low = 0;                                         // bit n: line n is always 0
  std::uint8_t high = 0;                                        // always 1

  // What arrives at the other end, either way.
  std::uint8_t Pass(std::uint8_t value) const {
    if (exchanged) {
      const auto [a, b] = *exchanged;
      const unsigned differ = (unsigned{value} >> a ^ unsigned{value} >> b) & 1;
      value = static_cast<std::uint8_t>(value ^ (differ << a | differ << b));
    }
    return static_cast<std::uint8_t>((value | high) & ~low);
  }
  bool operator==(const DataLines&) const = default;
};

}  // namespace sim
