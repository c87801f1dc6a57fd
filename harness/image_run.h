// What a run tells of an image that takes the place of the linked library, whatever executes it.
#pragma once

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>

namespace harness {

// The image did what would be an error on the device, or what no healthy image does. Ends the run.
struct ImageFault : std::runtime_error {
  using std::runtime_error::runtime_error;
};

class ImageRun {
 public:
  virtual ~ImageRun() = default;
  virtual std::uint64_t Instructions() const = 0;
  virtual std::uint32_t DeepestStack() const = 0;  // bytes, of any call
  virtual const std::optional<std::string>& FirstFault() const = 0;
};

}  // namespace harness
