#include "sim/board/board.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "tests/sim/board/board_bus.h"

namespace sim {
namespace {

TEST(Board, FitsTheFirstPositionsAndEmptiesTheRest) {
  for (unsigned count = 0; count <= 4; ++count) {
    BoardOnBus bus(count);
    EXPECT_EQ(bus.board.FittedCount(), count);
    for (unsigned p = 0; p < 4; ++p) {
      EXPECT_EQ(bus.board.Fitted(p), p < count);
      EXPECT_EQ(bus.Read(kChipByPosition[p], 0, 0xFE), p < count ? 0x28 : kEmptyId);
    }
  }
  EXPECT_THROW(BoardOnBus(5), std::out_of_range);
}

TEST(Board, CanLeaveAGapBetweenChips) {
  BoardOnBus bus(3);
  bus.board.SetId(1, 0x20);
  EXPECT_EQ(bus.board.FittedCount(), 2u);
  EXPECT_EQ(bus.Read(kChipSlave1, 0, 0xFE), 0x20);
  EXPECT_EQ(bus.Read(kChipSlave1, 1, 0x10), 0xFF);
  EXPECT_EQ(bus.Read(kChipSlave2, 1, 0x10), 0x00);
}

TEST(Board, WritesToTheSelectedChipAndPageOnly) {
  for (unsigned target = 0; target < 4; ++target) {
    for (std::uint8_t page = 0; page < 3; ++page) {
      BoardOnBus bus;
      bus.Write(kChipByPosition[target], page, 0x86, 0x5A);
      for (unsigned p = 0; p < 4; ++p) {
        for (std::uint8_t q = 0; q < 3; ++q) {
          EXPECT_EQ(bus.board.Peek(p, q, 0x86), p == target && q == page ? 0x5A : 0);
        }
      }
    }
  }
}

TEST(Board, HasExchangedDataLinesForNumbersAndContents) {
  BoardOnBus bus;
  bus.board.SetDataLines({.exchanged = {{1, 6}}});
  bus.Write(kChipMaster, 1, 0x82, 0x40);  // a number with neither bit alone
  EXPECT_EQ(bus.board.Peek(0, 1, 0xC0), 0x02);
  EXPECT_EQ(bus.Read(kChipMaster, 1, 0x82), 0x40);
  bus.board.SetDataLines({});
  EXPECT_EQ(bus.Read(kChipMaster, 1, 0xC0), 0x02);
}

TEST(Board, HasDataLinesThatAreHeld) {
  BoardOnBus bus;
  bus.Write(kChipMaster, 1, 0x86, 0x0F);
  bus.board.SetDataLines({.low = 0x01, .high = 0x80});
  EXPECT_EQ(bus.Read(kChipMaster, 1, 0x86), 0x8E);
  bus.Write(kChipMaster, 1, 0x07, 0x33);
  bus.board.SetDataLines({});
  EXPECT_EQ(bus.Read(kChipMaster, 1, 0x86), 0xB2);
}

TEST(Board, WritesToAllChipsAtOnce) {
  BoardOnBus bus;
  bus.Write(kChipAll, 1, 0x30, 0x77);
  for (unsigned p = 0; p < 4; ++p) EXPECT_EQ(bus.Read(kChipByPosition[p], 1, 0x30), 0x77);
}

TEST(Board, LetsSelectedChipsAddressDifferentPages) {
  BoardOnBus bus;
  bus.board.Store(BusWindow::Select, 0xF4);  // master page 0, slave1 page 1, others idle
  bus.board.Store(BusWindow::Address, 0x86);
  bus.board.Store(BusWindow::Data, 0x33);
  EXPECT_EQ(bus.board.Peek(0, 0, 0x86), 0x33);
  EXPECT_EQ(bus.board.Peek(1, 1, 0x86), 0x33);
  EXPECT_EQ(bus.board.Peek(0, 1, 0x86), 0);
  EXPECT_EQ(bus.board.Peek(2, 0, 0x86), 0);
}

TEST(Board, AdvancesTheAddressAfterEachByteStored) {
  BoardOnBus bus;
  bus.Write(kChipMaster, 1, 0x30, {1, 2, 3, 4});
  for (unsigned i = 0; i < 4; ++i) {
    EXPECT_EQ(bus.board.Peek(0, 1, static_cast<std::uint8_t>(0x30 + i)), i + 1);
  }
}

TEST(Board, AdvancesTheAddressAfterEachByteLoaded) {
  BoardOnBus bus;
  bus.Write(kChipMaster, 1, 0x30, {1, 2, 3, 4});
  bus.board.Store(BusWindow::Select, 0xFD);
  bus.board.Store(BusWindow::Address, 0x30);
  for (unsigned i = 1; i <= 4; ++i) EXPECT_EQ(bus.board.Load(BusWindow::Data), i);
}

TEST(Board, WrapsTheAddressAfterTheLastRegister) {
  BoardOnBus bus;
  bus.Write(kChipMaster, 0, 0xFF, {0x11, 0x22});
  EXPECT_EQ(bus.board.Peek(0, 0, 0xFF), 0x11);
  EXPECT_EQ(bus.board.Peek(0, 0, 0x00), 0x22);
}

TEST(Board, KeepsEachChipsAddressWhileItIsNotSelected) {
  BoardOnBus bus;
  bus.Write(kChipMaster, 1, 0x30, 0xAA);
  bus.Write(kChipSlave1, 1, 0x40, 0xBB);
  bus.board.Store(BusWindow::Select, SelectByte(kChipMaster, 1));
  bus.board.Store(BusWindow::Data, 0xCC);
  EXPECT_EQ(bus.board.Peek(0, 1, 0x31), 0xCC);
}

TEST(Board, LatchesNothingWhileNoChipIsSelected) {
  BoardOnBus bus;
  bus.Write(kChipMaster, 1, 0x30, 0xAA);
  bus.board.Store(BusWindow::Address, 0x50);
  bus.board.Store(BusWindow::Data, 0xEE);
  EXPECT_EQ(bus.board.Load(BusWindow::Data), 0xFF);
  EXPECT_EQ(bus.board.Peek(0, 1, 0x50), 0);
  bus.board.Store(BusWindow::Select, SelectByte(kChipMaster, 1));
  bus.board.Store(BusWindow::Data, 0xCC);
  EXPECT_EQ(bus.board.Peek(0, 1, 0x31), 0xCC) << "the idle bus moved an address";
  EXPECT_TRUE(bus.reports.All().empty());
}

TEST(Board, GivesAFloatingByteThroughTheOtherTwoWindows) {
  BoardOnBus bus;
  bus.board.Store(BusWindow::Select, SelectByte(kChipMaster, 1));
  bus.board.Store(BusWindow::Address, 0x30);
  EXPECT_EQ(bus.board.Load(BusWindow::Select), 0xFF);
  EXPECT_EQ(bus.board.Load(BusWindow::Address), 0xFF);
  EXPECT_EQ(bus.board.Load(BusWindow::Data), 0x00) << "the loads above selected something else";
}

TEST(Board, ReportsAReadWithSeveralChipsSelected) {
  BoardOnBus bus;
  bus.Write(kChipMaster, 1, 0x30, {0x3C, 0x01});
  bus.Write(kChipSlave2, 1, 0x30, {0x66, 0x03});
  EXPECT_EQ(bus.reports.Count(ReportKind::Contention), 0u);
  bus.board.Store(BusWindow::Select, SelectByte(kChipMaster | kChipSlave2, 1));
  bus.board.Store(BusWindow::Address, 0x30);
  EXPECT_EQ(bus.board.Load(BusWindow::Data), 0x3C & 0x66);
  EXPECT_EQ(bus.board.Load(BusWindow::Data), 0x01) << "both addresses advance";
  EXPECT_EQ(bus.reports.Count(ReportKind::Contention), 2u);
  EXPECT_EQ(bus.reports.All()[0],
            (Report{.kind = ReportKind::Contention, .select = 0xDD, .chips = 2, .reg = 0x30}));
}

TEST(Board, ReportsABroadcastReadEvenWhereOneChipIsFitted) {
  BoardOnBus bus(1);
  bus.Write(kChipMaster, 1, 0x30, 0x3C);
  EXPECT_EQ(bus.Read(kChipAll, 1, 0x30), 0x3C);
  EXPECT_EQ(bus.reports.Count(ReportKind::Contention), 1u);
}

TEST(Board, ReportsAccessesWiderThanAByteAndTakesTheLowByte) {
  BoardOnBus bus;
  bus.board.Store(BusWindow::Select, 0xFFFFFFFD, 4);
  bus.board.Store(BusWindow::Address, 0x1230, 2);
  bus.board.Store(BusWindow::Data, 0xABCD, 2);
  EXPECT_EQ(bus.board.Peek(0, 1, 0x30), 0xCD);
  bus.board.Store(BusWindow::Address, 0x30);
  EXPECT_EQ(bus.board.Load(BusWindow::Data, 4), 0xCD);
  ASSERT_EQ(bus.reports.All().size(), 4u);
  for (const Report& report : bus.reports.All()) EXPECT_EQ(report.kind, ReportKind::WideAccess);
  EXPECT_EQ(bus.reports.All()[0], (Report{.kind = ReportKind::WideAccess,
                                          .access = Report::Access::Write,
                                          .window = BusWindow::Select,
                                          .bytes = 4}));
  EXPECT_EQ(bus.reports.All()[3],
            (Report{.kind = ReportKind::WideAccess, .window = BusWindow::Data, .bytes = 4}));
}

TEST(Board, ReportsRegistersWithoutANameAndNoOthers) {
  for (std::uint8_t page = 0; page < 3; ++page) {
    for (unsigned r = 0; r < 256; ++r) {
      BoardOnBus bus;
      const auto reg = static_cast<std::uint8_t>(r);
      const unsigned expected = RegisterNameOf(page, reg) == nullptr ? 1 : 0;
      bus.Read(kChipSlave1, page, reg);
      ASSERT_EQ(bus.reports.Count(ReportKind::UnnamedRegister), expected) << int{page} << " " << r;
      bus.Write(kChipSlave1, page, reg, 0);
      ASSERT_EQ(bus.reports.Count(ReportKind::UnnamedRegister), 2 * expected)
          << int{page} << " " << r;
    }
  }
}

TEST(Board, TellsWhichUnnamedRegisterWasTouched) {
  BoardOnBus bus(2);
  bus.Write(kChipAll, 0, 0xF0, 1);  // the two empty positions have no registers to name
  bus.Read(kChipSlave1, 0, 0xF0);
  using Access = Report::Access;
  const auto touched = [](Access access, unsigned position) {
    return Report{.kind = ReportKind::UnnamedRegister,
                  .access = access,
                  .position = position,
                  .page = 0,
                  .reg = 0xF0};
  };
  EXPECT_EQ(bus.reports.All(),
            (std::vector<Report>{touched(Access::Write, 0), touched(Access::Write, 1),
                                 touched(Access::Read, 1)}));
}

TEST(Board, ReportsNothingOnTheBackSide) {
  BoardOnBus bus;
  bus.board.Poke(0, 0, 0xF0, 0x12);
  EXPECT_EQ(bus.board.Peek(0, 0, 0xF0), 0x12);
  EXPECT_TRUE(bus.reports.All().empty());
}

TEST(Board, PutsCamerasOnTheChipThatCarriesTheChannel) {
  BoardOnBus bus;
  bus.board.SetCamera(6, Camera::Pal);
  bus.board.SetCamera(15, Camera::Off);
  bus.board.SetWeak(8, true);
  bus.board.SetMotion(1, true);
  EXPECT_EQ(bus.Read(kChipSlave1, 0, 0x21), 0x00);
  EXPECT_EQ(bus.Read(kChipMaster, 0, 0x21), 0x01);
  EXPECT_EQ(bus.Read(kChipSlave3, 1, 0x78), 0x08);
  EXPECT_EQ(bus.Read(kChipSlave2, 1, 0x78), 0x10);
  EXPECT_EQ(bus.Read(kChipMaster, 1, 0x79), 0x02);
  EXPECT_TRUE(bus.board.Input(6).pal);
  EXPECT_FALSE(bus.board.Input(8).HasPicture());
}

TEST(Board, KeepsTheStandardOfACameraThatIsUnplugged) {
  BoardOnBus bus;
  bus.board.SetCamera(0, Camera::Pal);
  bus.board.SetCamera(0, Camera::Off);
  EXPECT_EQ(bus.Read(kChipMaster, 0, 0x01), 0x00);
  EXPECT_EQ(bus.Read(kChipMaster, 1, 0x78), 0x01);
  bus.board.SetCamera(0, Camera::Ntsc);
  EXPECT_EQ(bus.Read(kChipMaster, 0, 0x01), 0x01);
  EXPECT_EQ(bus.Read(kChipMaster, 1, 0x78), 0x00);
}

TEST(Board, RefusesChannelsAndPositionsThatDoNotExist) {
  BoardOnBus bus;
  EXPECT_THROW(bus.board.SetCamera(16, Camera::Off), std::out_of_range);
  EXPECT_THROW(bus.board.SetWeak(16, true), std::out_of_range);
  EXPECT_THROW(bus.board.SetMotion(16, true), std::out_of_range);
  EXPECT_THROW(bus.board.Input(16), std::out_of_range);
  EXPECT_THROW(bus.board.FrozenAt(16), std::out_of_range);
  EXPECT_THROW(bus.board.SetId(4, 0x28), std::out_of_range);
  EXPECT_THROW(bus.board.Poke(4, 0, 0, 0), std::out_of_range);
  EXPECT_THROW(bus.board.Poke(0, 3, 0, 0), std::out_of_range);
  EXPECT_THROW(bus.board.Peek(4, 0, 0), std::out_of_range);
  EXPECT_THROW(bus.board.Peek(0, 3, 0), std::out_of_range);
}

TEST(Board, SettlesOnEachChipApartAfterABroadcastHold) {
  BoardOnBus bus;
  bus.board.SetSettle(2);
  bus.Write(kChipAll, 1, 0x10, 0x90);
  for (const std::uint8_t chip : kChipByPosition) {
    EXPECT_EQ(bus.Read(chip, 1, 0x04), 0x0F);
    EXPECT_EQ(bus.Read(chip, 1, 0x04), 0x0F);
    EXPECT_EQ(bus.Read(chip, 1, 0x04), 0x00);
  }
}

TEST(Board, ClearsAHoldThatNeverSettlesWhenSettlingIsSetAgain) {
  BoardOnBus bus;
  bus.board.SetSettle(-1);
  bus.Write(kChipMaster, 1, 0x10, 0x90);
  for (int i = 0; i < 300; ++i) ASSERT_EQ(bus.Read(kChipMaster, 1, 0x04), 0x0F);
  bus.board.SetSettle(0);
  EXPECT_EQ(bus.Read(kChipMaster, 1, 0x04), 0x00);
}

TEST(Board, TogglesTheSyncBitEachPeriodOnTheMasterOnly) {
  BoardOnBus bus;
  struct Case {
    std::uint32_t period, now;
    std::uint8_t expected;
  };
  for (const Case c : {Case{20, 0, 0x00}, Case{20, 19, 0x00}, Case{20, 20, 0x10},
                       Case{20, 39, 0x10}, Case{20, 40, 0x00}, Case{1, 7, 0x10},
                       Case{500, 499, 0x00}, Case{500, 500, 0x10}, Case{0, 1000, 0x00}}) {
    bus.board.SetSyncPeriod(c.period);
    bus.board.SetTime(c.now);
    EXPECT_EQ(bus.Read(kChipMaster, 1, 0xAB), c.expected) << c.period << " " << c.now;
    for (const std::uint8_t chip : {kChipSlave1, kChipSlave2, kChipSlave3}) {
      EXPECT_EQ(bus.Read(chip, 1, 0xAB), 0x00) << c.period << " " << c.now;
    }
  }
}

TEST(Board, TogglesEvery20MillisecondsUnlessToldOtherwise) {
  BoardOnBus bus;
  bus.board.SetTime(20);
  EXPECT_TRUE(bus.board.Sync());
}

TEST(Board, HoldsTheSyncBitUntilAPeriodIsSet) {
  BoardOnBus bus;
  bus.board.HoldSync(true);
  EXPECT_EQ(bus.Read(kChipMaster, 1, 0xAB), 0x10);
  bus.board.HoldSync(false);
  bus.board.SetTime(20);
  EXPECT_EQ(bus.Read(kChipMaster, 1, 0xAB), 0x00);
  bus.board.SetSyncPeriod(20);
  EXPECT_EQ(bus.Read(kChipMaster, 1, 0xAB), 0x10);
}

TEST(Board, StampsAFreezeWithTheTimeOfTheWriteOrPoke) {
  BoardOnBus bus;
  bus.board.SetTime(1234);
  bus.Write(kChipSlave2, 1, 0x21, 0x40);
  bus.board.SetTime(2000);
  bus.board.Poke(0, 1, 0x11, 0x40);
  EXPECT_EQ(bus.board.FrozenAt(10), 1234u);
  EXPECT_EQ(bus.board.FrozenAt(0), 2000u);
}

}  // namespace
}  // namespace sim
