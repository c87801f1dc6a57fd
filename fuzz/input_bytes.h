// The input, taken piece by piece from its beginning.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace fuzz {

class InputBytes {
 public:
  InputBytes(const std::uint8_t* data, std::size_t size) : rest_(data, size) {}

  bool AtEnd() const { return rest_.empty(); }
  // 0 behind the end, as in every byte that the next one lacks.
  std::uint8_t Byte() {
    const std::uint8_t byte = rest_.empty() ? std::uint8_t{0} : rest_.front();
    rest_ = rest_.subspan(rest_.empty() ? 0 : 1);
    return byte;
  }
  std::vector<std::uint8_t> Bytes(std::size_t count) {
    std::vector<std::uint8_t> bytes(count);
    const auto there = rest_.first(std::min(count, rest_.size()));
    std::copy(there.begin(), there.end(), bytes.begin());
    rest_ = rest_.subspan(there.size());
    return bytes;
  }

 private:
  std::span<const std::uint8_t> rest_;
};

}  // namespace fuzz
