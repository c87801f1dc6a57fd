#include "sim/board/chip.h"

#include <gtest/gtest.h>

#include <functional>
#include <initializer_list>

namespace sim {
namespace {

Chip FittedChip() {
  Chip chip;
  chip.SetId(0x2A);
  return chip;
}

constexpr bool kSyncLow = false;
constexpr bool kSyncHigh = true;

TEST(Chip, IsFittedWhenTheUpperFiveBitsOfItsIdentificationMatch) {
  for (unsigned id = 0; id < 256; ++id) {
    Chip chip;
    chip.SetId(static_cast<std::uint8_t>(id));
    EXPECT_EQ(chip.Fitted(), id >= 0x28 && id <= 0x2F) << id;
  }
}

TEST(Chip, GivesBackEveryStoredBitExceptItsOwn) {
  struct OwnBits {
    std::uint8_t page, reg, mask;
  };
  const OwnBits own_bits[] = {{0, 0xFE, 0xFF}, {0, 0x01, 0x01}, {0, 0x11, 0x01}, {0, 0x21, 0x01},
                              {0, 0x31, 0x01}, {1, 0x04, 0x0F}, {1, 0x76, 0xFF}, {1, 0x78, 0xFF},
                              {1, 0x79, 0xFF}, {1, 0xAB, 0xF0}, {2, 0x0A, 0x80}};
  for (std::uint8_t page = 0; page < 3; ++page) {
    for (unsigned r = 0; r < 256; ++r) {
      const auto reg = static_cast<std::uint8_t>(r);
      std::uint8_t own = 0;
      for (const OwnBits& bits : own_bits) {
        if (bits.page == page && bits.reg == reg) own = bits.mask;
      }
      Chip chip = FittedChip();
      const std::uint8_t before = chip.Peek(page, reg, kSyncLow);
      for (const std::uint8_t value : std::initializer_list<std::uint8_t>{0xFF, 0x5A, 0, 0xA5}) {
        chip.Write(page, reg, value, 0, 0);
        const int expected = (value & ~own) | (before & own);
        ASSERT_EQ(chip.Read(page, reg, kSyncLow), expected) << int{page} << " " << r;
        chip.Poke(page, reg, static_cast<std::uint8_t>(value ^ 0xFF));
        ASSERT_EQ(chip.Peek(page, reg, kSyncLow), ((value ^ 0xFF) & ~own) | (before & own))
            << int{page} << " " << r;
      }
    }
  }
}

TEST(Chip, KeepsItsPagesApart) {
  Chip chip = FittedChip();
  for (std::uint8_t page = 0; page < 3; ++page) {
    chip.Write(page, 0x50, static_cast<std::uint8_t>(0x10 + page), 0, 0);
  }
  for (std::uint8_t page = 0; page < 3; ++page) {
    EXPECT_EQ(chip.Read(page, 0x50, kSyncLow), 0x10 + page);
  }
}

TEST(Chip, AnswersForItsInputs) {
  struct Case {
    const char* what;
    std::function<void(ChannelInput&)> set;
    std::uint8_t standard, loss, motion;  // page 0 0x21, page 1 0x78 and 0x79
  };
  const Case cases[] = {
      {"ntsc", [](ChannelInput&) {}, 1, 0x00, 0x00},
      {"pal", [](ChannelInput& input) { input.pal = true; }, 0, 0x00, 0x00},
      {"lost", [](ChannelInput& input) { input.lost = true; }, 1, 0x04, 0x00},
      {"lost pal", [](ChannelInput& input) { input.lost = input.pal = true; }, 0, 0x04, 0x00},
      {"weak", [](ChannelInput& input) { input.weak = true; }, 1, 0x40, 0x00},
      {"motion", [](ChannelInput& input) { input.motion = true; }, 1, 0x00, 0x04},
  };
  for (const Case& c : cases) {
    Chip chip = FittedChip();
    c.set(chip.inputs[2]);
    EXPECT_EQ(chip.Read(0, 0x21, kSyncLow), c.standard) << c.what;
    EXPECT_EQ(chip.Read(0, 0x11, kSyncLow), 1) << c.what;
    EXPECT_EQ(chip.Read(1, 0x78, kSyncLow), c.loss) << c.what;
    EXPECT_EQ(chip.Read(1, 0x79, kSyncLow), c.motion) << c.what;
  }
}

TEST(Chip, PutsTheSyncBitBesideTheStoredLowNibble) {
  Chip chip = FittedChip();
  chip.Write(1, 0xAB, 0xF8, 0, 0);
  EXPECT_EQ(chip.Read(1, 0xAB, kSyncLow), 0x08);
  EXPECT_EQ(chip.Read(1, 0xAB, kSyncHigh), 0x18);
}

TEST(Chip, IsBusyAfterAHoldForAsManyReadsAsItIsTold) {
  Chip chip = FittedChip();
  chip.Write(1, 0x04, 0xA0, 0, 0);
  chip.Write(1, 0x18, 0x91, 2, 0);
  EXPECT_EQ(chip.Peek(1, 0x04, kSyncLow), 0xAF);
  EXPECT_EQ(chip.Peek(1, 0x04, kSyncLow), 0xAF) << "looking must not wear it off";
  EXPECT_EQ(chip.Read(1, 0x04, kSyncLow), 0xAF);
  EXPECT_EQ(chip.Read(1, 0x04, kSyncLow), 0xAF);
  EXPECT_EQ(chip.Read(1, 0x04, kSyncLow), 0xA0);
}

TEST(Chip, StartsToSettleAnewAtEveryHold) {
  Chip chip = FittedChip();
  chip.Write(1, 0x10, 0x90, 1, 0);
  EXPECT_EQ(chip.Read(1, 0x04, kSyncLow), 0x0F);
  chip.Write(1, 0x28, 0x93, 1, 0);
  EXPECT_EQ(chip.Read(1, 0x04, kSyncLow), 0x0F);
  EXPECT_EQ(chip.Read(1, 0x04, kSyncLow), 0x00);
}

TEST(Chip, HoldsOnlyForBit4OfAChannelDisplayRegister) {
  struct Case {
    std::uint8_t page, reg, value;
  };
  for (const Case c : {Case{1, 0x10, 0xEF}, Case{1, 0x11, 0x10}, Case{1, 0x30, 0x10},
                       Case{1, 0x08, 0x10}, Case{0, 0x10, 0x10}, Case{2, 0x18, 0x10}}) {
    Chip chip = FittedChip();
    chip.Write(c.page, c.reg, c.value, -1, 0);
    EXPECT_EQ(chip.Read(1, 0x04, kSyncLow), 0) << int{c.page} << " " << int{c.reg};
  }
}

TEST(Chip, NeverSettlesWhenToldSoUntilTheLimitChanges) {
  Chip chip = FittedChip();
  chip.Write(1, 0x20, 0x92, -1, 0);
  for (int i = 0; i < 1000; ++i) ASSERT_EQ(chip.Read(1, 0x04, kSyncLow), 0x0F);
  chip.LimitSettle(-1);
  EXPECT_EQ(chip.Read(1, 0x04, kSyncLow), 0x0F);
  chip.LimitSettle(1);
  EXPECT_EQ(chip.Read(1, 0x04, kSyncLow), 0x0F);
  EXPECT_EQ(chip.Read(1, 0x04, kSyncLow), 0x00);
}

TEST(Chip, ReadsAsAFloatingBusWhereThePositionIsEmpty) {
  Chip chip;
  chip.SetId(0x30);
  chip.Write(1, 0x50, 0x12, 0, 0);
  chip.Poke(1, 0x51, 0x12);
  for (std::uint8_t page = 0; page < 3; ++page) {
    for (unsigned reg = 0; reg < 256; ++reg) {
      const int expected = page == 0 && reg == 0xFE ? 0x30 : 0xFF;
      ASSERT_EQ(chip.Read(page, static_cast<std::uint8_t>(reg), kSyncHigh), expected);
    }
  }
  chip.SetId(0x28);
  EXPECT_EQ(chip.Read(1, 0x50, kSyncLow), 0) << "the empty position kept a write";
  EXPECT_EQ(chip.Read(1, 0x51, kSyncLow), 0) << "the empty position kept a poke";
}

TEST(Chip, RemembersWhenAFreezeBitWasSetNotWhenItWasWrittenAgain) {
  Chip chip = FittedChip();
  chip.Write(1, 0x19, 0x42, 0, 100);
  chip.Write(1, 0x19, 0x46, 0, 200);
  EXPECT_EQ(chip.FrozenAt(1), 100u);
  EXPECT_EQ(chip.FrozenAt(0), 0u);
  chip.Write(1, 0x19, 0x06, 0, 300);
  chip.Write(1, 0x19, 0x46, 0, 400);
  EXPECT_EQ(chip.FrozenAt(1), 400u);
}

TEST(Chip, RemembersWhichInputsHadAPictureWhenItFroze) {
  Chip chip = FittedChip();
  chip.inputs[0].lost = true;
  chip.inputs[1].weak = true;
  chip.Write(1, 0x29, 0x40, 0, 0);
  chip.inputs = {};
  const std::array<bool, 4> expected = {false, false, true, true};
  EXPECT_EQ(chip.FrozenState(3).has_picture, expected);
}

}  // namespace
}  // namespace sim
