// What the compiler calls for copies, fills and comparisons of memory, under the names that it and
// its run-time library use. Bytes where an address is odd: the processor refuses odd words.
#include <cstddef>
#include <cstdint>

namespace {

using Word = std::uint32_t __attribute__((may_alias));
constexpr std::size_t kWord = sizeof(Word);

bool Aligned(const void* a, const void* b) {
  return ((reinterpret_cast<std::uintptr_t>(a) | reinterpret_cast<std::uintptr_t>(b)) &
          (kWord - 1)) == 0;
}

}  // namespace

extern "C" {

void* memcpy(void* to, const void* from, std::size_t bytes) {
  auto* out = static_cast<std::uint8_t*>(to);
  const auto* in = static_cast<const std::uint8_t*>(from);
  if (Aligned(to, from)) {
    for (; bytes >= kWord; bytes -= kWord, out += kWord, in += kWord) {
      *reinterpret_cast<Word*>(out) = *reinterpret_cast<const Word*>(in);
    }
  }
  while (bytes-- != 0) *out++ = *in++;
  return to;
}

void* memmove(void* to, const void* from, std::size_t bytes) {
  auto* out = static_cast<std::uint8_t*>(to);
  const auto* in = static_cast<const std::uint8_t*>(from);
  if (out <= in || out >= in + bytes) return memcpy(to, from, bytes);
  while (bytes-- != 0) out[bytes] = in[bytes];
  return to;
}

void* memset(void* to, int value, std::size_t bytes) {
  auto* out = static_cast<std::uint8_t*>(to);
  const auto byte = static_cast<std::uint8_t>(value);
  if (Aligned(to, nullptr)) {
    const Word word = byte * 0x01010101u;
    for (; bytes >= kWord; bytes -= kWord, out += kWord) *reinterpret_cast<Word*>(out) = word;
  }
  while (bytes-- != 0) *out++ = byte;
  return to;
}

int memcmp(const void* a, const void* b, std::size_t bytes) {
  const auto* left = static_cast<const std::uint8_t*>(a);
  const auto* right = static_cast<const std::uint8_t*>(b);
  for (; bytes != 0; --bytes, ++left, ++right) {
    if (*left != *right) return *left - *right;
  }
  return 0;
}

void __aeabi_memcpy(void* to, const void* from, std::size_t bytes) { memcpy(to, from, bytes); }
void __aeabi_memcpy4(void* to, const void* from, std::size_t bytes) { memcpy(to, from, bytes); }
void __aeabi_memcpy8(void* to, const void* from, std::size_t bytes) { memcpy(to, from, bytes); }
void __aeabi_memmove(void* to, const void* from, std::size_t bytes) { memmove(to, from, bytes); }
void __aeabi_memmove4(void* to, const void* from, std::size_t bytes) { memmove(to, from, bytes); }
void __aeabi_memmove8(void* to, const void* from, std::size_t bytes) { memmove(to, from, bytes); }

// Not memset's order of arguments.
void __aeabi_memset(void* to, std::size_t bytes, int value) { memset(to, value, bytes); }
void __aeabi_memset4(void* to, std::size_t bytes, int value) { memset(to, value, bytes); }
void __aeabi_memset8(void* to, std::size_t bytes, int value) { memset(to, value, bytes); }
void __aeabi_memclr(void* to, std::size_t bytes) { memset(to, 0, bytes); }
void __aeabi_memclr4(void* to, std::size_t bytes) { memset(to, 0, bytes); }
void __aeabi_memclr8(void* to, std::size_t bytes) { memset(to, 0, bytes); }

}  // extern "C"
