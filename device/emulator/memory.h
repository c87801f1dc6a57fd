// Memory of the emulated device as this process holds it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <stdexcept>
#include <string>

#include "harness/image_run.h"

namespace emulator {

// ---- Where things are -------------------------------------------------------------------------

inline constexpr std::uint32_t kGuestPage = 0x1000;
// Images are loaded below; all else lies above, each area far from its neighbours.
inline constexpr std::uint32_t kLeastImageBase = 0x00010000;
inline constexpr std::uint32_t kImageLimit = 0x40000000;
inline constexpr std::uint32_t kHeapAddress = 0x40000000;
inline constexpr std::uint32_t kHeapBytes = 0x00100000;
inline constexpr std::uint32_t kCallerAddress = 0x50000000;  // what the caller hands over
inline constexpr std::uint32_t kCallerBytes = 0x00010000;
inline constexpr std::uint32_t kStackAddress = 0x60000000;
inline constexpr std::uint32_t kStackBytes = 0x00010000;  // the system's default
inline constexpr std::uint32_t kAreaStep = 0x00100000;    // from one processor's to the next one's
inline constexpr std::uint32_t kTrapAddress = 0x70000000;
inline constexpr std::uint32_t kBusAddress = 0xA0000000;  // three pages, one a window
// The page in which the kernel keeps what every process may know, and in it the words that are the
// identifiers of the running thread and of its process. All of it that code may look at.
inline constexpr std::uint32_t kUserDataAddress = 0xFFFFC000;
inline constexpr std::uint32_t kThreadIdAddress = 0xFFFFC808;

// Whole pages that an engine can map.
class GuestPages {
 public:
  explicit GuestPages(std::size_t bytes);  // zeros
  ~GuestPages();
  GuestPages(const GuestPages&) = delete;
  GuestPages& operator=(const GuestPages&) = delete;

  std::uint8_t* Data() const { return data_; }
  std::size_t Bytes() const { return bytes_; }

 private:
  std::size_t bytes_;
  std::uint8_t* data_;
};

// A piece of memory that may be used; everything around it may not.
struct Extent {
  std::uint32_t address = 0;
  std::uint32_t bytes = 0;
  std::uint8_t* host = nullptr;
  bool writable = false;

  bool Holds(std::uint32_t at, std::uint32_t count) const {
    return at >= address && at - address < bytes && count <= bytes - (at - address);
  }
};

// The system's heap: a block's neighbours are out of bounds.
class GuestHeap {
 public:
  GuestHeap() : pages_(kHeapBytes) {}

  // 0 when there is no room. The content is no zeros.
  std::uint32_t Allocate(std::uint32_t bytes);
  // False when no block begins there.
  bool Free(std::uint32_t address);
  void Clear();
  // The block that an address lies in, null when it lies in none.
  const Extent* Find(std::uint32_t address) const;
  const GuestPages& Pages() const { return pages_; }

 private:
  GuestPages pages_;
  std::map<std::uint32_t, Extent> blocks_;  // by address
  std::uint32_t next_ = 0;                  // offset behind the last block
};

}  // namespace emulator
