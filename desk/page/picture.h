// What a watcher is sent of a moment: its header, the registers, and the screen.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "desk/port/moment.h"

namespace desk {

// Keeps what it needs for the next one.
class PictureMaker {
 public:
  PictureMaker();
  ~PictureMaker();
  PictureMaker(const PictureMaker&) = delete;
  PictureMaker& operator=(const PictureMaker&) = delete;

  // A message as docs/control-port.md has it, number `number`.
  std::string Make(const Moment& moment, std::uint64_t number);

 private:
  struct Deflate;
  const std::unique_ptr<Deflate> deflate_;
};

}  // namespace desk
