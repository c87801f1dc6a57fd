#include "byte_access.h"

namespace {

constexpr std::uint8_t kOperandSize = 0x66;
constexpr unsigned kStackPointerCode = 4;  // as r/m: a SIB byte follows
constexpr unsigned kBasePointerCode = 5;   // as r/m or base with mod 0: a displacement alone

struct Prefixes {
  bool operand_16 = false;
  std::uint8_t rex = 0;
  bool Wide() const { return (rex & 0x08) != 0; }
  unsigned RegisterBit() const { return (rex & 0x04) != 0 ? 8 : 0; }
};

class Reader {
 public:
  explicit Reader(const std::uint8_t* code) : begin_(code), at_(code) {}
  std::uint8_t Peek() const { return *at_; }
  std::uint8_t Byte() { return *at_++; }
  std::uint32_t Number(unsigned bytes) {
    std::uint32_t number = 0;
    for (unsigned i = 0; i < bytes; ++i) number |= std::uint32_t{*at_++} << (8 * i);
    return number;
  }
  void Skip(unsigned bytes) { at_ += bytes; }
  unsigned Length() const { return static_cast<unsigned>(at_ - begin_); }

 private:
  const std::uint8_t* begin_;
  const std::uint8_t* at_;
};

Prefixes ReadPrefixes(Reader& code, bool long_mode) {
  Prefixes prefixes;
  for (;;) {
    const std::uint8_t byte = code.Peek();
    if (byte == kOperandSize) {
      prefixes.operand_16 = true;
    } else if (byte != 0x2E && byte != 0x36 && byte != 0x3E && byte != 0x26) {  // segments
      break;
    }
    code.Byte();
  }
  if (long_mode && (code.Peek() & 0xF0) == 0x40) prefixes.rex = code.Byte();
  return prefixes;
}

// Skips what addresses the memory operand; gives the reg field, none for a register operand.
std::optional<unsigned> ReadAddressing(Reader& code) {
  const std::uint8_t modrm = code.Byte();
  const unsigned mod = modrm >> 6;
  const unsigned rm = modrm & 7;
  if (mod == 3) return std::nullopt;
  unsigned displacement = mod == 1 ? 1 : mod == 2 ? 4 : 0;
  if (rm == kStackPointerCode) {
    const unsigned base = code.Byte() & 7;
    if (mod == 0 && base == kBasePointerCode) displacement = 4;
  } else if (mod == 0 && rm == kBasePointerCode) {
    displacement = 4;
  }
  code.Skip(displacement);
  return (modrm >> 3) & 7;
}

}  // namespace

std::optional<ByteAccess> DecodeAccess(const std::uint8_t* bytes, bool long_mode) {
  Reader code(bytes);
  const Prefixes prefixes = ReadPrefixes(code, long_mode);
  const unsigned wide = prefixes.Wide() ? 8 : prefixes.operand_16 ? 2 : 4;
  ByteAccess access;

  const std::uint8_t opcode = code.Byte();
  if (opcode >= 0xA0 && opcode <= 0xA3) {  // the accumulator and an absolute address
    access.store = opcode >= 0xA2;
    access.bytes = (opcode & 1) != 0 ? wide : 1;
    access.target_bytes = access.bytes;
    code.Skip(long_mode ? 8 : 4);
    access.length = code.Length();
    return access;
  }

  switch (opcode) {
    case 0x88:  // mov to memory
    case 0x89:
      access.store = true;
      access.bytes = opcode == 0x88 ? 1 : wide;
      break;
    case 0x8A:  // mov from memory
    case 0x8B:
      access.bytes = opcode == 0x8A ? 1 : wide;
      access.target_bytes = access.bytes;
      break;
    case 0xC6:  // mov of an immediate
    case 0xC7:
      access.store = true;
      access.immediate = true;
      access.bytes = opcode == 0xC6 ? 1 : wide;
      break;
    case 0x0F: {
      const std::uint8_t second = code.Byte();
      if (second != 0xB6 && second != 0xB7 && second != 0xBE && second != 0xBF) return std::nullopt;
      access.sign = second >= 0xBE;
      access.bytes = (second & 1) != 0 ? 2 : 1;
      access.target_bytes = wide;
      break;
    }
    default:
      return std::nullopt;
  }

  const std::optional<unsigned> field = ReadAddressing(code);
  if (!field) return std::nullopt;
  if (access.immediate) {
    if (*field != 0) return std::nullopt;
    access.value = code.Number(access.bytes < 4 ? access.bytes : 4);
  } else {
    access.reg = *field | prefixes.RegisterBit();
    // Without REX the codes 4 to 7 of a byte register are the high bytes of the first four.
    const bool byte_register = access.store ? access.bytes == 1 : access.target_bytes == 1;
    if (byte_register && prefixes.rex == 0 && *field >= 4) {
      access.high_byte = true;
      access.reg = *field - 4;
    }
  }
  access.length = code.Length();
  return access;
}
