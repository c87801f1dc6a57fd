// How long the chips' fill engine stays busy.
#include <gtest/gtest.h>

#include "tests/sim/board_bus.h"

namespace {

using sim::BoardOnBus;

constexpr std::uint8_t kFill = 0x0A;

TEST(FillEngine, HasFinishedAtOnceUnlessItIsToldToStayBusy) {
  BoardOnBus bus;
  bus.Write(kChipMaster, 2, kFill, 0xC0);
  EXPECT_EQ(bus.Read(kChipMaster, 2, kFill), 0x40);
}

TEST(FillEngine, StaysBusyForSoManyReadsAfterEachStart) {
  BoardOnBus bus;
  bus.board.SetFillBusy(2);
  for (int fill = 0; fill < 2; ++fill) {
    bus.Write(kChipMaster, 2, kFill, 0xC0);
    EXPECT_EQ(bus.board.Peek(0, 2, kFill), 0xC0) << "looking counts for no read";
    EXPECT_EQ(bus.Read(kChipMaster, 2, kFill), 0xC0);
    EXPECT_EQ(bus.Read(kChipMaster, 2, kFill), 0xC0);
    EXPECT_EQ(bus.Read(kChipMaster, 2, kFill), 0x40);
    EXPECT_EQ(bus.Read(kChipMaster, 2, kFill), 0x40);
  }
}

TEST(FillEngine, IsBusyOnTheChipThatWasStartedAlone) {
  BoardOnBus bus;
  bus.board.SetFillBusy(1);
  bus.Write(kChipSlave2, 2, kFill, 0x80);
  EXPECT_EQ(bus.Read(kChipMaster, 2, kFill), 0x00);
  EXPECT_EQ(bus.Read(kChipSlave1, 2, kFill), 0x00);
  EXPECT_EQ(bus.Read(kChipSlave2, 2, kFill), 0x80);
  EXPECT_EQ(bus.Read(kChipSlave2, 2, kFill), 0x00);
}

TEST(FillEngine, IsStartedByBit7OfItsControlRegisterOnly) {
  BoardOnBus bus;
  bus.board.SetFillBusy(3);
  bus.Write(kChipMaster, 2, kFill, 0x7F);
  EXPECT_EQ(bus.Read(kChipMaster, 2, kFill), 0x7F);
  bus.Write(kChipMaster, 2, 0x09, 0xFF);
  bus.Write(kChipMaster, 1, kFill, 0xFF);
  bus.Write(kChipMaster, 0, kFill, 0xFF);
  EXPECT_EQ(bus.Read(kChipMaster, 2, kFill), 0x7F);
  EXPECT_EQ(bus.Read(kChipMaster, 1, kFill), 0xFF);
}

TEST(FillEngine, IsNotStartedFromTheBackSide) {
  BoardOnBus bus;
  bus.board.SetFillBusy(3);
  bus.board.Poke(0, 2, kFill, 0xC0);
  EXPECT_EQ(bus.Read(kChipMaster, 2, kFill), 0x40);
}

}  // namespace
