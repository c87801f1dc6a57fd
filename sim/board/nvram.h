// The stored setting.
#pragma once

#include <cstdint>
#include <string>

#include "sim/board/bytes.h"

namespace sim {

// Battery-backed memory: block 1 alone.
class Nvram {
 public:
  enum class Failure { None, Read, Write };
  void SetBlank();  // six bytes 0xFF
  // A magic is cut or zero-filled to four characters.
  void SetRecord(const std::string& magic, std::uint8_t standard, std::uint8_t channels);
  // The default record, made at the first attach unless something was set before.
  void MakeDefault(std::uint8_t channels);
  void SetFailure(Failure failure) { failure_ = failure; }
  std::uint32_t failed_result = 1;  // of a request that fails; any but 0
  Failure GetFailure() const { return failure_; }
  const Bytes& Content() const { return content_; }  // empty until something is set or made
  unsigned Hits() const { return hits_; }            // failures produced

  bool Read(std::uint32_t block, std::uint32_t offset, std::uint32_t length, std::uint8_t* buffer);
  bool Write(std::uint32_t block, std::uint32_t offset, std::uint32_t length,
             const std::uint8_t* buffer);

 private:
  Bytes content_;
  bool made_ = false;
  Failure failure_ = Failure::None;
  unsigned hits_ = 0;
};

}  // namespace sim
