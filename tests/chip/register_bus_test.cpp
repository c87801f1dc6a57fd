// The exact bus cycles of every register access.
#include "chip/register_bus.h"

#include <array>
#include <numeric>

#include "api/worker.h"
#include "harness/host.h"
#include "tests/api/trace_lines.h"
#include "tests/support/library_test.h"

namespace {

using Lines = std::vector<std::string>;

struct Selection {
  std::uint8_t chip;
  std::uint8_t page;
  const char* select;  // byte on the select window
};

constexpr Selection kSelections[] = {
    {0x03, 0, "FC"}, {0x03, 1, "FD"}, {0x03, 2, "FE"}, {0x0C, 0, "F3"}, {0x0C, 1, "F7"},
    {0x0C, 2, "FB"}, {0x30, 0, "CF"}, {0x30, 1, "DF"}, {0x30, 2, "EF"}, {0xC0, 0, "3F"},
    {0xC0, 1, "7F"}, {0xC0, 2, "BF"}, {0xFF, 0, "00"}, {0xFF, 1, "55"}, {0xFF, 2, "AA"},
};

// One register of each page that has a name and keeps what is written.
constexpr std::array<std::uint8_t, 3> kPlainRegister = {0x87, 0x0D, 0x67};
constexpr std::array<const char*, 3> kPlainRegisterText = {"87", "0D", "67"};

constexpr std::uint8_t kChips[] = {0x03, 0x0C, 0x30, 0xC0, 0xFF};
constexpr std::uint8_t kInvalidChips[] = {0x00, 0x01, 0x05, 0x0F, 0x33, 0x3C, 0xC3, 0xFC, 0xFE};

class RegisterBus : public test::LibraryTest {
 protected:
  RegisterBus() {
    world().board.FitChips(4);
    AttachAndBind();
    Restart();
  }
  void Restart() {
    Mark();
    from_ = world().trace.Mark();
  }
  Lines Events() { return test::Texts(world().trace, from_); }

 private:
  std::size_t from_ = 0;
};

// ---- Channels --------------------------------------------------------------------------------

TEST(RegisterBusChannels, GetChipSelectMapsChannelsToTheirChips) {
  struct Case {
    std::uint8_t channel;
    std::uint8_t chip;
  };
  for (const Case& c :
       {Case{0, 0x03}, Case{3, 0x03}, Case{4, 0x0C}, Case{7, 0x0C}, Case{8, 0x30}, Case{11, 0x30},
        Case{12, 0xC0}, Case{15, 0xC0}, Case{16, 0xC0}, Case{200, 0xC0}, Case{255, 0xC0}}) {
    EXPECT_EQ(TW_GetChipSelect(c.channel), c.chip) << +c.channel;
  }
}

TEST(RegisterBusChannels, GetChipSelectTakesTheLowEightBits) {
  EXPECT_EQ(TW_GetChipSelect(static_cast<std::uint8_t>(0x104)), 0x0C);
}

TEST(RegisterBusChannels, PositionsRepeatWithTheirStride) {
  EXPECT_EQ(ChannelPosition(0), 0);
  EXPECT_EQ(ChannelPosition(7), 3);
  EXPECT_EQ(ChannelPosition(14), 2);
  EXPECT_EQ(kScalerControl.At(3).number, 0xB0);
  EXPECT_EQ(kChannelAttribute.At(2).number, 0x21);
  EXPECT_EQ(kMotionMask.At(1, 0).number, 0xA6);
  EXPECT_EQ(kMotionMask.At(3, 23).number, 0xFD);
}

// ---- Select and release ----------------------------------------------------------------------

TEST_F(RegisterBus, SelectPutsTheByteOfChipAndPageOnTheSelectWindow) {
  using Select = void (*)(std::uint8_t);
  constexpr std::array<Select, 3> kSelect = {TW_SelectPage0, TW_SelectPage1, TW_SelectPage2};
  for (const Selection& s : kSelections) {
    Restart();
    kSelect[s.page](s.chip);
    EXPECT_EQ(Events(), Lines{std::string("select<-") + s.select});
  }
}

TEST_F(RegisterBus, ReleasePutsTheSelectByteToIdle) {
  for (const std::uint8_t chip : kChips) {
    Restart();
    TW_ReleaseChip(chip);
    EXPECT_EQ(Events(), Lines{"select<-FF"});
  }
}

TEST_F(RegisterBus, AnInvalidChipSelectNeitherSelectsNorReleases) {
  for (const std::uint8_t chip : kInvalidChips) {
    TW_SelectPage0(chip);
    TW_SelectPage1(chip);
    TW_SelectPage2(chip);
    TW_ReleaseChip(chip);
  }
  EXPECT_EQ(Events(), Lines{});
}

// ---- Write, read, table ----------------------------------------------------------------------

TEST_F(RegisterBus, AWriteIsSelectAddressDataRelease) {
  for (const Selection& s : kSelections) {
    Restart();
    TW_WriteRegister(s.chip, s.page, kPlainRegister[s.page], 0x5A);
    EXPECT_EQ(Events(), (Lines{std::string("select<-") + s.select,
                               std::string("address<-") + kPlainRegisterText[s.page], "data<-5A",
                               "select<-FF"}));
    EXPECT_EQ(Cycles(), 4u);
  }
}

// Holds: Shared values "Chip select codes"
// Holds: Chips: vexo "`CHIP`: hexadecimal: 3 master"
TEST_F(RegisterBus, AWriteReachesItsChipAlone) {
  for (unsigned position = 0; position < 4; ++position) {
    TW_WriteRegister(kChipByPosition[position], 1, 0x0D,
                     static_cast<std::uint8_t>(0x10 + position));
  }
  for (int position = 0; position < 4; ++position) {
    EXPECT_EQ(Register(position, 1, 0x0D), 0x10 + position);
    EXPECT_EQ(Register(position, 2, 0x0D), 0);
  }
}

// Holds: Shared values "Chip select codes"
// Holds: Chips: vexo "`CHIP`: hexadecimal: 3 master"
TEST_F(RegisterBus, ABroadcastWriteReachesAllChips) {
  TW_WriteRegister(0xFF, 1, 0x0D, 0x77);
  EXPECT_EQ(Events(), (Lines{"select<-55", "address<-0D", "data<-77", "select<-FF"}));
  for (int position = 0; position < 4; ++position) EXPECT_EQ(Register(position, 1, 0x0D), 0x77);
}

TEST_F(RegisterBus, AReadIsSelectAddressDataRelease) {
  for (const Selection& s : kSelections) {
    if (s.chip == kChipAll) continue;
    const auto position = static_cast<unsigned>(TW_GetChipSelect(0) == s.chip   ? 0
                                                : TW_GetChipSelect(4) == s.chip ? 1
                                                : TW_GetChipSelect(8) == s.chip ? 2
                                                                                : 3);
    world().board.Poke(position, s.page, kPlainRegister[s.page], 0xC3);
    Restart();
    EXPECT_EQ(TW_ReadRegister(s.chip, s.page, kPlainRegister[s.page]), 0xC3);
    EXPECT_EQ(Events(), (Lines{std::string("select<-") + s.select,
                               std::string("address<-") + kPlainRegisterText[s.page], "data->C3",
                               "select<-FF"}));
    EXPECT_EQ(Cycles(), 4u);
  }
}

TEST_F(RegisterBus, AReadOfSlave1Page2SelectsItBeforeTheAddress) {
  TW_ReadRegister(0x0C, 2, 0x67);
  EXPECT_EQ(Events().at(0), "select<-FB");
  EXPECT_EQ(Events().at(1), "address<-67");
}

// Nobody in the library does it, but a host can: the value passes unchecked and the board suffers.
// Holds: Shared values "Reading with ALL is not supported."
TEST_F(RegisterBus, ABroadcastReadGoesOutAsItIs) {
  world().board.Poke(0, 1, 0x0D, 0xF0);
  world().board.Poke(1, 1, 0x0D, 0x3C);
  world().board.Poke(2, 1, 0x0D, 0xFF);
  world().board.Poke(3, 1, 0x0D, 0xFF);
  EXPECT_EQ(TW_ReadRegister(0xFF, 1, 0x0D), 0x30);
  EXPECT_EQ(Events(), (Lines{"select<-55", "address<-0D", "data->30", "select<-FF"}));
  EXPECT_EQ(world().reports.Count(sim::ReportKind::Contention), 1u);
  ExpectReports();
}

TEST_F(RegisterBus, ATableIsOneAddressAndThenItsBytes) {
  constexpr std::uint8_t kTable[] = {0x11, 0x22, 0x33};
  for (const Selection& s : kSelections) {
    Restart();
    TW_WriteReg_Table(s.chip, s.page, 0x10, kTable, 3);
    EXPECT_EQ(Events(), (Lines{std::string("select<-") + s.select, "address<-10", "data<-11",
                               "data<-22", "data<-33", "select<-FF"}));
    EXPECT_EQ(Cycles(), 3u + 3u);
  }
}

TEST_F(RegisterBus, TheChipAdvancesTheAddressOfATable) {
  constexpr std::uint8_t kTable[] = {0x11, 0x22, 0x33, 0x44};
  TW_WriteReg_Table(0x30, 1, 0x30, kTable, 4);
  for (int i = 0; i < 4; ++i) EXPECT_EQ(Register(2, 1, 0x30 + i), kTable[i]);
  EXPECT_EQ(Register(2, 1, 0x34), 0);
}

TEST_F(RegisterBus, ATableOfNothingSelectsAddressesAndReleases) {
  constexpr std::uint8_t kTable[] = {0xEE};
  TW_WriteReg_Table(0x03, 0, 0x10, kTable, 0);
  EXPECT_EQ(Events(), (Lines{"select<-FC", "address<-10", "select<-FF"}));
  TW_WriteReg_Table(0x03, 0, 0x10, nullptr, 0);
  EXPECT_EQ(Cycles(), 6u);
}

TEST_F(RegisterBus, ATableOf255BytesGoesOutWhole) {
  std::array<std::uint8_t, 255> table;
  std::iota(table.begin(), table.end(), std::uint8_t{1});
  TW_WriteReg_Table(0xC0, 1, 0x00, table.data(), 255);
  EXPECT_EQ(Cycles(), 255u + 3u);
  const Lines events = Events();
  EXPECT_EQ(events[2], "data<-01");
  EXPECT_EQ(events[256], "data<-FF");
  EXPECT_EQ(events[257], "select<-FF");
  EXPECT_EQ(Register(3, 1, 0x10), 0x11);
  ExpectReports();  // runs over registers without a name
}

// ---- Refusals --------------------------------------------------------------------------------

// Holds: Chips: vexo "`PAGE`: hexadecimal: 0 to 2"
TEST_F(RegisterBus, AnInvalidPageIsPrintedAndTouchesNoWindow) {
  constexpr std::uint8_t kTable[] = {1, 2};
  const auto text = [](const char* operation, int page) {
    return "[VexoCtrlSDK]: >> " + std::string(operation) + " INVALID PAGE (" +
           std::to_string(page) + ")!\r\n";
  };
  for (const int page : {3, 4, 128, 255}) {
    const auto p = static_cast<std::uint8_t>(page);
    Restart();
    EXPECT_EQ(TW_ReadRegister(0x03, p, 0x10), 0);
    EXPECT_EQ(DebugText(), text("TW_ReadRegister", page));
    EXPECT_EQ(Debug().size(), 2u);
    Restart();
    TW_WriteRegister(0x03, p, 0x10, 0x20);
    EXPECT_EQ(DebugText(), text("TW_WriteRegister", page));
    Restart();
    TW_WriteReg_Table(0x03, p, 0x10, kTable, 2);
    EXPECT_EQ(DebugText(), text("TW_WriteReg_Table", page));
  }
  EXPECT_EQ(world().trace.Cycles(), 0u);
}

TEST_F(RegisterBus, TheInvalidPageGoesByTheOutputMessageSwitch) {
  harness::SetEnableDebug(0);
  Restart();
  TW_ReadRegister(0x03, 3, 0x10);
  EXPECT_EQ(Debug().size(), 2u);
  harness::SetEnableOutputMsg(0);
  harness::SetEnableDebug(1);
  Restart();
  TW_ReadRegister(0x03, 3, 0x10);
  EXPECT_EQ(Debug(), Lines{});
}

// The address and data cycles go out on whatever was selected before, normally nothing.
TEST_F(RegisterBus, AnInvalidChipSelectStillCyclesAddressAndData) {
  constexpr std::uint8_t kTable[] = {0x01, 0x02};
  for (const std::uint8_t chip : kInvalidChips) {
    Restart();
    TW_WriteRegister(chip, 0, 0x87, 0x5A);
    EXPECT_EQ(Events(), (Lines{"address<-87", "data<-5A"})) << +chip;
    Restart();
    EXPECT_EQ(TW_ReadRegister(chip, 1, 0x0D), 0xFF);  // the bus floats
    EXPECT_EQ(Events(), (Lines{"address<-0D", "data->FF"})) << +chip;
    Restart();
    TW_WriteReg_Table(chip, 2, 0x60, kTable, 2);
    EXPECT_EQ(Events(), (Lines{"address<-60", "data<-01", "data<-02"})) << +chip;
    EXPECT_EQ(Debug(), Lines{});
  }
  EXPECT_EQ(Register(0, 0, 0x87), 0);
}

TEST_F(RegisterBus, AnInvalidChipSelectReadsFromTheChipSelectedBefore) {
  world().board.Poke(1, 2, 0x67, 0x42);
  TW_SelectPage2(kChipSlave1);
  EXPECT_EQ(TW_ReadRegister(0x05, 0, 0x67), 0x42);
  TW_ReleaseChip(kChipSlave1);
}

// ---- Windows that are not mapped -------------------------------------------------------------

TEST_F(RegisterBus, WithoutWindowsNoCycleIsMadeAndAReadGivesAllOnes) {
  constexpr std::uint8_t kTable[] = {1, 2};
  g_bus = {};
  EXPECT_EQ(TW_ReadRegister(0x03, 0, 0xFE), 0xFF);
  EXPECT_EQ(world().reports.Count(sim::ReportKind::UnmappedAccess), 4u);
  TW_WriteRegister(0x03, 0, 0x87, 1);
  EXPECT_EQ(world().reports.Count(sim::ReportKind::UnmappedAccess), 8u);
  TW_WriteReg_Table(0x03, 0, 0x87, kTable, 2);
  EXPECT_EQ(world().reports.Count(sim::ReportKind::UnmappedAccess), 13u);
  EXPECT_EQ(Cycles(), 0u);
  ExpectReports();
}

TEST_F(RegisterBus, WithoutTheDataWindowTheOtherCyclesGoOut) {
  g_bus.data = nullptr;
  EXPECT_EQ(TW_ReadRegister(0x03, 0, 0xFE), 0xFF);
  TW_WriteRegister(0x03, 0, 0x87, 1);
  EXPECT_EQ(Events(), (Lines{"select<-FC", "address<-FE", "select<-FF", "select<-FC", "address<-87",
                             "select<-FF"}));
  EXPECT_EQ(world().reports.Count(sim::ReportKind::UnmappedAccess), 2u);
  ExpectReports();
}

TEST_F(RegisterBus, WindowsThatDetachUnmappedAreNotTouched) {
  harness::Entry(0);
  Restart();
  EXPECT_EQ(TW_ReadRegister(0x03, 0, 0xFE), 0xFF);
  EXPECT_EQ(Cycles(), 0u);
  ExpectReports();
}

// ---- Who -------------------------------------------------------------------------------------

TEST_F(RegisterBus, TheWorkersReadsAreTheSameFourCycles) {
  world().board.HoldSync(true);
  VexoSDK_StartWorker();
  const auto lines = test::LinesBy(sim::By::Worker, world().trace);
  const std::vector<test::Line> expected = {
      {0, sim::By::Worker, "select<-FD"}, {0, sim::By::Worker, "address<-A4"},
      {0, sim::By::Worker, "data->00"},   {0, sim::By::Worker, "select<-FF"},
      {0, sim::By::Worker, "select<-FD"}, {0, sim::By::Worker, "address<-AB"},
      {0, sim::By::Worker, "data->10"},   {0, sim::By::Worker, "select<-FF"},
  };
  ASSERT_GE(lines.size(), expected.size());
  EXPECT_EQ(std::vector<test::Line>(lines.begin(), lines.begin() + 8), expected);
}

TEST_F(RegisterBus, NoAccessTakesALockOrTime) {
  TW_WriteRegister(0x03, 1, 0x0D, 1);
  TW_ReadRegister(0x03, 1, 0x0D);
  EXPECT_EQ(Elapsed(), 0u);
  EXPECT_EQ(test::Texts(world().trace, 0, "lock"), Lines{});
}

}  // namespace
