#include "device/emulator/memory.h"

#include <sys/mman.h>

#include <algorithm>
#include <cstring>
#include <new>

namespace emulator {

GuestPages::GuestPages(std::size_t bytes)
    : bytes_((bytes + kGuestPage - 1) / kGuestPage * kGuestPage) {
  void* memory = mmap(nullptr, bytes_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) throw std::bad_alloc();
  data_ = static_cast<std::uint8_t*>(memory);
}

GuestPages::~GuestPages() { munmap(data_, bytes_); }

std::uint32_t GuestHeap::Allocate(std::uint32_t bytes) {
  constexpr std::uint32_t kAlignment = 8;
  constexpr std::uint32_t kGap = 16;  // between blocks, in bounds of none
  constexpr int kFresh = 0xCD;
  if (blocks_.empty()) next_ = kGap;
  if (bytes > kHeapBytes - next_) return 0;
  const std::uint32_t address = kHeapAddress + next_;
  const std::uint32_t end = next_ + bytes + kGap;
  std::uint8_t* host = pages_.Data() + next_;
  std::memset(host, kFresh, bytes);
  blocks_[address] = {address, bytes, host, true};
  next_ = std::min(kHeapBytes, (end + kAlignment - 1) / kAlignment * kAlignment);
  return address;
}

bool GuestHeap::Free(std::uint32_t address) { return blocks_.erase(address) != 0; }
void GuestHeap::Clear() { blocks_.clear(); }

const Extent* GuestHeap::Find(std::uint32_t address) const {
  auto found = blocks_.upper_bound(address);
  if (found == blocks_.begin()) return nullptr;
  --found;
  return found->second.Holds(address, 1) ? &found->second : nullptr;
}

}  // namespace emulator
