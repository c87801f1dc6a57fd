// A caller's record in memory that ends where the record ends: an access outside it is found.
#pragma once

#include <sanitizer/asan_interface.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <vector>

namespace test {

// One page between two that may not be touched. The record lies against one of the two, so that an
// access beyond that end stops the test in any build; the rest of the page carries a pattern, which
// shows writes, and is closed to the address sanitizer, which shows reads too.
class FencedRecord {
 public:
  enum class Side { Left, Right };  // which of the closed pages the record lies against

  FencedRecord() : page_bytes_(static_cast<std::size_t>(sysconf(_SC_PAGESIZE))) {
    void* memory = mmap(nullptr, 3 * page_bytes_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) std::abort();
    page_ = static_cast<std::uint8_t*>(memory) + page_bytes_;
    if (mprotect(page_, page_bytes_, PROT_READ | PROT_WRITE) != 0) std::abort();
  }
  ~FencedRecord() {
    Open();
    munmap(page_ - page_bytes_, 3 * page_bytes_);
  }
  FencedRecord(const FencedRecord&) = delete;
  FencedRecord& operator=(const FencedRecord&) = delete;

  // Puts a record of at most a page in; the address stays good until the next one.
  std::uint8_t* Place(const std::vector<std::uint8_t>& content, Side side) {
    Open();
    std::fill_n(page_, page_bytes_, kPattern);
    bytes_ = content.size();
    record_ = side == Side::Left ? page_ : page_ + page_bytes_ - bytes_;
    std::copy(content.begin(), content.end(), record_);
    ASAN_POISON_MEMORY_REGION(page_, static_cast<std::size_t>(record_ - page_));
    ASAN_POISON_MEMORY_REGION(record_ + bytes_, After());
    return record_;
  }

  std::vector<std::uint8_t> Content() const { return {record_, record_ + bytes_}; }

  // Whether nothing was written beside the record. Opens the page until the next Place().
  bool Intact() {
    Open();
    const auto is_pattern = [](std::uint8_t byte) { return byte == kPattern; };
    return std::all_of(page_, record_, is_pattern) &&
           std::all_of(record_ + bytes_, page_ + page_bytes_, is_pattern);
  }

 private:
  static constexpr std::uint8_t kPattern = 0xC3;

  std::size_t After() const {
    return static_cast<std::size_t>(page_ + page_bytes_ - (record_ + bytes_));
  }
  void Open() { ASAN_UNPOISON_MEMORY_REGION(page_, page_bytes_); }

  std::size_t page_bytes_;
  std::uint8_t* page_ = nullptr;
  std::uint8_t* record_ = nullptr;
  std::size_t bytes_ = 0;
};

}  // namespace test
