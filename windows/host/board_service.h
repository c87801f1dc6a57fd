// The simulated board, as the stand-in DLLs reach it.
#pragma once

#include <atomic>
#include <cstdint>

namespace host {

// How accesses are stamped.
struct AccessStamp {
  std::uint32_t now_ms = 0;
  bool worker = false;
};
// Asked at each access; the time of scripts unless something else is set.
void SetAccessStamp(AccessStamp (*stamp)());

// Takes the accesses in place of the board; null: the board has them.
struct AccessTap {
  void (*store)(int window, std::uint32_t value, unsigned bytes);
  std::uint8_t (*load)(int window, unsigned bytes);
};
void SetAccessTap(const AccessTap* tap);

// Accesses seen so far, and those of them that were wider than a byte.
extern std::atomic<std::uint64_t> g_accesses;
extern std::atomic<std::uint64_t> g_wide_accesses;

// Held while the board is touched; recursive.
class BoardLock {
 public:
  BoardLock();
  ~BoardLock();
  BoardLock(const BoardLock&) = delete;
  BoardLock& operator=(const BoardLock&) = delete;
};

}  // namespace host
