// One instruction that moves a byte between a register and memory, decoded.
#pragma once

#include <cstdint>
#include <optional>

struct ByteAccess {
  bool store = false;
  unsigned bytes = 1;      // width in memory
  unsigned length = 0;     // of the instruction
  bool immediate = false;  // stores `value`, else a register
  std::uint32_t value = 0;
  unsigned reg = 0;           // 0-15 as the instruction set numbers them
  bool high_byte = false;     // bits 8-15 of register `reg` (ah, ch, dh, bh)
  unsigned target_bytes = 1;  // load: bytes of the register that are written
  bool sign = false;          // load: sign-extends
};

// mov, movzx and movsx between memory and a register, and mov of an immediate; none for any other
// instruction. Wider ones are decoded as well, so that they can be told from what is not known.
std::optional<ByteAccess> DecodeAccess(const std::uint8_t* bytes, bool long_mode);
