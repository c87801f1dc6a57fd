// The image's own copies, fills and comparisons of memory, which the compiler calls.
#include <algorithm>

#include "tests/device/image/image_fixture.h"

namespace emulator {
namespace {

constexpr std::uint32_t kMostBytes = 40;
constexpr std::uint32_t kWord = 4;
constexpr std::uint8_t kOld = 0xEE;

// A block of the guest's, of so many bytes behind an address with this remainder by 4; what lies
// behind is out of bounds.
struct Block {
  std::uint32_t begin = 0;
  std::uint32_t address = 0;
};

class ImageMemory : public ImageTest {
 protected:
  Block Make(std::uint32_t misalign, std::uint32_t bytes) {
    const std::uint32_t begin = machine_.Heap().Allocate(misalign + bytes);
    std::memset(At(begin), kOld, misalign + bytes);
    return {begin, begin + misalign};
  }
  Block Make(std::uint32_t misalign, const std::vector<std::uint8_t>& content) {
    const Block block = Make(misalign, static_cast<std::uint32_t>(content.size()));
    std::copy(content.begin(), content.end(), At(block.address));
    return block;
  }
  void Free(const Block& block) { machine_.Heap().Free(block.begin); }
  // Whether what lies before the address is as it was.
  bool IsWholeBefore(const Block& block) {
    return std::all_of(At(block.begin), At(block.address),
                       [](std::uint8_t byte) { return byte == kOld; });
  }
  std::vector<std::uint8_t> Content(const Block& block, std::uint32_t bytes) {
    return {At(block.address), At(block.address) + bytes};
  }
  static std::vector<std::uint8_t> Pattern(std::uint32_t bytes) {
    std::vector<std::uint8_t> pattern(bytes);
    for (std::uint32_t i = 0; i < bytes; ++i) pattern[i] = static_cast<std::uint8_t>(0x81 + 3 * i);
    return pattern;
  }
  std::uint64_t Instructions(const std::string& function,
                             std::initializer_list<std::uint32_t> arguments) {
    const std::uint64_t before = machine_.Instructions();
    Call(function, arguments);
    return machine_.Instructions() - before;
  }
};

TEST_F(ImageMemory, IsCopiedAtEachAlignmentAndLength) {
  for (std::uint32_t places = 0; places < kWord * kWord; ++places) {
    for (std::uint32_t bytes = 0; bytes <= kMostBytes; ++bytes) {
      const std::vector<std::uint8_t> content = Pattern(bytes);
      const Block from = Make(places / kWord, content);
      const Block to = Make(places % kWord, bytes);
      ASSERT_EQ(Call("memcpy", {to.address, from.address, bytes}), to.address);
      ASSERT_EQ(Content(to, bytes), content) << places << ' ' << bytes;
      ASSERT_EQ(Content(from, bytes), content);
      ASSERT_TRUE(IsWholeBefore(to)) << places << ' ' << bytes;
      Free(from);
      Free(to);
    }
  }
}

TEST_F(ImageMemory, IsFilledWithTheLowestByteAtEachAlignmentAndLength) {
  constexpr std::uint32_t kValue = 0x12345681;
  for (std::uint32_t misalign = 0; misalign < kWord; ++misalign) {
    for (std::uint32_t bytes = 0; bytes <= kMostBytes; ++bytes) {
      const Block block = Make(misalign, bytes);
      ASSERT_EQ(Call("memset", {block.address, kValue, bytes}), block.address);
      ASSERT_EQ(Content(block, bytes), std::vector<std::uint8_t>(bytes, 0x81))
          << misalign << ' ' << bytes;
      ASSERT_TRUE(IsWholeBefore(block)) << misalign << ' ' << bytes;
      Free(block);
    }
  }
}

TEST_F(ImageMemory, IsComparedByItsFirstDifferentByteAtEachAlignmentAndLength) {
  for (std::uint32_t places = 0; places < kWord * kWord; ++places) {
    for (std::uint32_t bytes = 0; bytes <= kMostBytes; ++bytes) {
      const std::vector<std::uint8_t> content = Pattern(bytes);
      const Block left = Make(places / kWord, content);
      const Block right = Make(places % kWord, content);
      ASSERT_EQ(Call("memcmp", {left.address, right.address, bytes}), 0u) << places << ' ' << bytes;
      if (bytes != 0) {
        At(right.address)[bytes - 1] = 0xFF;  // greater only as an unsigned byte
        At(left.address)[bytes - 1] = 0x01;
        ASSERT_EQ(Call("memcmp", {left.address, right.address, bytes}), 0u - 0xFE)
            << places << ' ' << bytes;
        ASSERT_EQ(Call("memcmp", {right.address, left.address, bytes}), 0xFEu);
        ASSERT_EQ(Call("memcmp", {left.address, right.address, bytes - 1}), 0u);
        // An earlier difference counts more.
        if (bytes > 1) {
          At(left.address)[0] = 0xFF;
          At(right.address)[0] = 0xFE;
          ASSERT_EQ(Call("memcmp", {left.address, right.address, bytes}), 1u);
        }
      }
      Free(left);
      Free(right);
    }
  }
}

// Not only right: a word at a time, which costs less, from the first whole word on.
TEST_F(ImageMemory, GoesByWordsWhereBothAddressesAreWords) {
  for (const std::uint32_t bytes : {kWord, kMostBytes}) {
    const Block from = Make(0, bytes + kWord + 1);
    const Block to = Make(0, bytes + kWord + 1);
    const std::uint64_t copied = Instructions("memcpy", {to.address, from.address, bytes});
    const std::uint64_t filled = Instructions("memset", {to.address, 0, bytes});
    // Blocks begin at two words.
    EXPECT_EQ(Instructions("memcpy", {to.address + kWord, from.address, bytes}), copied) << bytes;
    EXPECT_EQ(Instructions("memset", {to.address + kWord, 0, bytes}), filled) << bytes;
    EXPECT_GT(Instructions("memcpy", {to.address + 1, from.address + 1, bytes}), copied) << bytes;
    EXPECT_GT(Instructions("memcpy", {to.address, from.address + 1, bytes}), copied) << bytes;
    EXPECT_GT(Instructions("memset", {to.address + 1, 0, bytes}), filled) << bytes;
  }
}

}  // namespace
}  // namespace emulator
