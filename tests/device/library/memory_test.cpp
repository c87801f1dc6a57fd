// The device's memory routines that the image has only when its compiler calls them: moves that
// overlap, and the names of the processor's convention. They are built for this machine, under
// other names than the C library's.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <numeric>

extern "C" {
void* device_memmove(void* to, const void* from, std::size_t bytes);
void __aeabi_memcpy(void* to, const void* from, std::size_t bytes);
void __aeabi_memcpy4(void* to, const void* from, std::size_t bytes);
void __aeabi_memcpy8(void* to, const void* from, std::size_t bytes);
void __aeabi_memmove(void* to, const void* from, std::size_t bytes);
void __aeabi_memmove4(void* to, const void* from, std::size_t bytes);
void __aeabi_memmove8(void* to, const void* from, std::size_t bytes);
void __aeabi_memset(void* to, std::size_t bytes, int value);
void __aeabi_memset4(void* to, std::size_t bytes, int value);
void __aeabi_memset8(void* to, std::size_t bytes, int value);
void __aeabi_memclr(void* to, std::size_t bytes);
void __aeabi_memclr4(void* to, std::size_t bytes);
void __aeabi_memclr8(void* to, std::size_t bytes);
}

namespace {

constexpr std::size_t kMostBytes = 40;
constexpr std::size_t kRoom = 64;
using Room = std::array<std::uint8_t, kRoom>;

Room Numbered() {
  Room room{};
  std::iota(room.begin(), room.end(), std::uint8_t{1});
  return room;
}

TEST(DeviceMemory, IsMovedOverItselfInBothDirectionsAtEachAlignmentAndLength) {
  for (std::size_t from = 8; from < 16; ++from) {
    for (std::size_t to = 0; to < 24; ++to) {
      for (std::size_t bytes = 0; bytes <= kMostBytes; ++bytes) {
        alignas(8) Room room = Numbered();
        const Room before = room;
        Room wanted = before;
        std::copy_n(&before[from], bytes, &wanted[to]);
        ASSERT_EQ(device_memmove(&room[to], &room[from], bytes), &room[to]);
        ASSERT_EQ(room, wanted) << from << ' ' << to << ' ' << bytes;
      }
    }
  }
}

TEST(DeviceMemory, IsCopiedAndMovedUnderTheProcessorsNames) {
  for (const auto routine : {__aeabi_memcpy, __aeabi_memcpy4, __aeabi_memcpy8, __aeabi_memmove,
                             __aeabi_memmove4, __aeabi_memmove8}) {
    alignas(8) const Room from = Numbered();
    alignas(8) Room to{};
    Room wanted{};
    std::copy_n(&from[0], 13, &wanted[8]);
    routine(&to[8], &from[0], 13);
    EXPECT_EQ(to, wanted);
  }
}

TEST(DeviceMemory, IsMovedOverItselfUnderTheProcessorsNames) {
  for (const auto routine : {__aeabi_memmove, __aeabi_memmove4, __aeabi_memmove8}) {
    alignas(8) Room room = Numbered();
    Room wanted = room;
    const Room before = room;
    std::copy_n(&before[0], 30, &wanted[8]);
    routine(&room[8], &room[0], 30);
    EXPECT_EQ(room, wanted);
  }
}

TEST(DeviceMemory, IsFilledUnderTheProcessorsNamesWithTheLengthFirst) {
  for (const auto routine : {__aeabi_memset, __aeabi_memset4, __aeabi_memset8}) {
    alignas(8) Room room = Numbered();
    Room wanted = room;
    std::fill_n(&wanted[8], 13, std::uint8_t{0x81});
    routine(&room[8], 13, 0x181);
    EXPECT_EQ(room, wanted);
  }
  for (const auto routine : {__aeabi_memclr, __aeabi_memclr4, __aeabi_memclr8}) {
    alignas(8) Room room = Numbered();
    Room wanted = room;
    std::fill_n(&wanted[8], 13, std::uint8_t{0});
    routine(&room[8], 13);
    EXPECT_EQ(room, wanted);
  }
}

}  // namespace
