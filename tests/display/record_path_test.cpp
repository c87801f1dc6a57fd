#include "display/record_path.h"

#include <array>
#include <string>

#include "tests/model/display_model.h"

namespace test {
namespace {

class RecordPath : public DisplayTest, public ::testing::WithParamInterface<int> {
 protected:
  // Every write of a record setup, in order.
  static void Setup(DisplayModel& model, int record_mode, int switching) {
    const auto row = static_cast<std::size_t>(record_mode);
    constexpr std::array<int, 3> kMode = {0x00, 0x40, 0x00};
    constexpr std::array<int, 3> kLayout = {0x00, 0x10, 0x30};
    constexpr std::array<int, 3> kControl = {0x20, 0x10, 0x00};
    constexpr std::array<int, 3> kEnable = {0xFF, 0x00, 0x00};
    constexpr std::array<int, 3> kOrder = {0x00, 0xE4, 0xE4};

    model.Write(kAll, 1, 0x51, kMode.at(row));
    for (int n = 0; n < model.channels; ++n) {
      model.Write(ChipOf(n), 0, 0x8A + 0x10 * (n % 4), 0x40 * (n % 4) + kLayout.at(row));
    }
    if (record_mode == 0) Queues(model, switching == 4 ? 0x70 : 0x40);
    if (record_mode == 1) {
      for (const int chip : kChips) model.Write(chip, 1, 0x57, 0x80);
      for (const int reg : {0x62, 0x65, 0x68, 0x6B}) model.Write(kAll, 1, reg, 0x20);
    }
    for (int i = 0; i < 4; ++i) model.Write(kAll, 1, 0x60 + 3 * i, 0x80 | kControl.at(row) | i);
    model.Write(kAll, 1, 0x6C, kEnable.at(row));
    model.Write(kAll, 1, 0x6D, kOrder.at(row));
    model.Write(kAll, 1, 0x86, 0x20);
    for (int n = 0; n < model.channels; ++n) {
      model.Write(ChipOf(n), 1, 0x61 + 3 * (n % 4), 0x00);
    }
  }

 private:
  static void Queues(DisplayModel& model, int switching) {
    if (model.channels != 4 && model.channels != 8 && model.channels != 16) return;
    for (int p = 0; p < model.channels / 4; ++p) {
      const int chip = kChips.at(static_cast<std::size_t>(p));
      model.Write(chip, 1, 0x57, 0x00);
      model.Write(chip, 1, 0x58, 0x00);
      model.Write(chip, 1, 0x59, 0x00);
      model.Write(chip, 1, 0x5A, 0x80);
      model.Write(chip, 1, 0x56, switching);
    }
  }
};

TEST_P(RecordPath, IsProgrammedWriteByWriteInEveryRecordAndSwitchingMode) {
  UseBoard(GetParam());
  unsigned seed = 2;
  for (const int record_mode : {0, 1, 2}) {
    for (const int switching : {0, 4}) {
      SCOPED_TRACE("record mode " + std::to_string(record_mode) + ", switching mode " +
                   std::to_string(switching));
      Scribble(seed++);
      DisplayModel model = Model();
      Setup(model, record_mode, switching);
      TW_SetRecordSetup(static_cast<std::uint8_t>(record_mode),
                        static_cast<std::uint8_t>(switching));
      ExpectLike(model);
      EXPECT_EQ(DebugText(), "");
    }
  }
}

TEST_P(RecordPath, DefaultIsRecordMode1Exactly) {
  UseBoard(GetParam());
  for (const int switching : {0, 4}) {
    SCOPED_TRACE(switching);
    Scribble(9);
    DisplayModel model = Model();
    Setup(model, 1, switching);
    TW_SetRecordSetupDefault(static_cast<std::uint8_t>(switching));
    ExpectLike(model);
    EXPECT_EQ(DebugText(), "");
  }
}

TEST_P(RecordPath, RefusesOtherSwitchingModesAndWritesNothing) {
  UseBoard(GetParam());
  for (int switching = 1; switching < 256; ++switching) {
    if (switching == 4) continue;
    SCOPED_TRACE(switching);
    const std::string text =
        ">> ERROR TW_SetRecordSetup SWITCHING MODE(" + std::to_string(switching) + ")!!\r\n";
    for (const int record_mode : {0, 1, 2}) {
      Mark();
      TW_SetRecordSetup(static_cast<std::uint8_t>(record_mode),
                        static_cast<std::uint8_t>(switching));
      EXPECT_EQ(Cycles(), 0u);
      ExpectPrinted(text);
    }
    Mark();
    TW_SetRecordSetupDefault(static_cast<std::uint8_t>(switching));
    EXPECT_EQ(Cycles(), 0u);
    ExpectPrinted(text);
  }
}

INSTANTIATE_TEST_SUITE_P(Boards, RecordPath, ::testing::Values(0, 4, 8, 12, 16),
                         [](const auto& tested) {
                           return std::to_string(tested.param) + "Channels";
                         });

class RecordPathEdges : public DisplayTest {};

TEST_F(RecordPathEdges, Switching4InRecordMode0Writes70ToTheTwoChipsOfAnEightChannelBoardOnly) {
  UseBoard(8);
  TW_SetRecordSetup(0, 4);
  std::vector<Access> switching;
  for (const Access& write : Writes()) {
    if (write.page == 1 && write.reg == 0x56) switching.push_back(write);
  }
  EXPECT_EQ(switching, (std::vector<Access>{W(kMaster, 1, 0x56, 0x70), W(kSlave1, 1, 0x56, 0x70)}));
}

TEST_F(RecordPathEdges, RecordMode1WritesTheQueueOfAllFourChipCodesOnAFourChannelBoard) {
  UseBoard(4);
  TW_SetRecordSetup(1, 0);
  std::vector<Access> queues;
  for (const Access& write : Writes()) {
    if (write.page == 1 && write.reg == 0x57) queues.push_back(write);
  }
  EXPECT_EQ(queues, (std::vector<Access>{W(0x03, 1, 0x57, 0x80), W(0x0C, 1, 0x57, 0x80),
                                         W(0x30, 1, 0x57, 0x80), W(0xC0, 1, 0x57, 0x80)}));
}

TEST_F(RecordPathEdges, RecordMode1DoesNotUseTheSwitchingMode) {
  UseBoard(8);
  const std::uint8_t old = Register(0, 1, 0x56);
  TW_SetRecordSetup(1, 4);
  EXPECT_EQ(Register(0, 1, 0x56), old);
}

TEST_F(RecordPathEdges, RecordMode3IsRefusedAndChangesNothing) {
  UseBoard(16);
  for (const int mode : {3, 4, 255}) {
    Mark();
    TW_SetRecordSetup(static_cast<std::uint8_t>(mode), 0);
    EXPECT_EQ(Cycles(), 0u);
    ExpectPrinted(">> ERROR TW_SetRecordSetup RECORD MODE(" + std::to_string(mode) + ")!!\r\n");
  }
}

TEST_F(RecordPathEdges, ReportsTheSwitchingModeAloneWhenBothAreWrong) {
  UseBoard(16);
  TW_SetRecordSetup(3, 1);
  EXPECT_EQ(Cycles(), 0u);
  ExpectPrinted(">> ERROR TW_SetRecordSetup SWITCHING MODE(1)!!\r\n");
}

TEST_F(RecordPathEdges, RecordMode2LeavesItsControlEnableAndOrderBytes) {
  UseBoard(16);
  TW_SetRecordSetup(2, 0);
  for (int position = 0; position < 4; ++position) {
    EXPECT_EQ(Register(position, 1, 0x60), 0x80);
    EXPECT_EQ(Register(position, 1, 0x63), 0x81);
    EXPECT_EQ(Register(position, 1, 0x66), 0x82);
    EXPECT_EQ(Register(position, 1, 0x69), 0x83);
    EXPECT_EQ(Register(position, 1, 0x6C), 0x00);
    EXPECT_EQ(Register(position, 1, 0x6D), 0xE4);
  }
}

}  // namespace
}  // namespace test
