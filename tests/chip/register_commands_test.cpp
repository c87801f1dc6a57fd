// Single registers for the host: read with a message, write with a print.
#include "chip/register_commands.h"

#include "chip/registers.h"
#include "chip/video_state.h"
#include "tests/api/trace_lines.h"
#include "tests/support/library_test.h"

namespace {

using Lines = std::vector<std::string>;

class RegisterCommands : public test::LibraryTest {
 protected:
  RegisterCommands() {
    PretendBoard(8);
    from_ = world().trace.Mark();
  }
  Lines Events() { return test::Texts(world().trace, from_); }

 private:
  std::size_t from_ = 0;
};

TEST_F(RegisterCommands, AReadIsPrintedAndThenSentToTheHost) {
  world().board.Poke(1, 2, 0x67, 0x5A);
  EXPECT_EQ(VexoProc_ReadRegister(kChipSlave1, 2, 0x67), 0x5A);
  EXPECT_EQ(Events(),
            (Lines{"select<-FB", "address<-67", "data->5A", "select<-FF", "debug [VexoCtrlSDK]: ",
                   "debug >> VEXO READ REG 0x0C 0x02 0x67 0x5A \\r\\n", "send 2406 [0C02675A]"}));
}

TEST_F(RegisterCommands, AWriteIsPrinted) {
  VexoProc_WriteRegister(kChipAll, 2, 0x67, 0xA5);
  EXPECT_EQ(Events(),
            (Lines{"select<-AA", "address<-67", "data<-A5", "select<-FF",
                   "debug [VexoCtrlSDK]: ", "debug >> VEXO WRITE REG 0xFF 0x02 0x67 0xA5 \\r\\n"}));
  EXPECT_EQ(Register(0, 2, 0x67), 0xA5);
  EXPECT_EQ(Register(1, 2, 0x67), 0xA5);
}

TEST_F(RegisterCommands, NothingHappensWhileTheChipsAreNotReady) {
  g_video.g_chip_ready = 0;
  EXPECT_EQ(VexoProc_ReadRegister(kChipMaster, 0, kChipId.first), 0);
  VexoProc_WriteRegister(kChipMaster, 2, 0x67, 0xA5);
  EXPECT_EQ(Events(), Lines{});
}

// The read asks for "not 0" and the write for "1".
TEST_F(RegisterCommands, AReadyFlagOfTwoReadsButDoesNotWrite) {
  g_video.g_chip_ready = 2;
  EXPECT_EQ(VexoProc_ReadRegister(kChipMaster, 0, kChipId.first), 0x28);
  Mark();
  VexoProc_WriteRegister(kChipMaster, 2, 0x67, 0xA5);
  EXPECT_EQ(Cycles(), 0u);
  EXPECT_EQ(Debug(), Lines{});
}

// Holds: VexoRegRecord "page: 1 register page"
TEST_F(RegisterCommands, AReadOfAnInvalidPageIsToldTwiceAndSentAsZero) {
  EXPECT_EQ(VexoProc_ReadRegister(kChipMaster, 3, 0x10), 0);
  EXPECT_EQ(Events(),
            (Lines{"debug [VexoCtrlSDK]: ", "debug >> TW_ReadRegister INVALID PAGE (3)!\\r\\n",
                   "debug [VexoCtrlSDK]: ", "debug >> VEXO READ REG 0x03 0x03 0x10 0x00 \\r\\n",
                   "send 2406 [03031000]"}));
}

// The record that a message points to is the window's to write to.
TEST_F(RegisterCommands, AWindowThatWritesToTheRecordChangesNoResult) {
  world().windows.procedure = [](PlatWindow, std::uint32_t, std::uintptr_t wparam, std::intptr_t) {
    reinterpret_cast<VexoRegRecord*>(wparam)->value = 0x99;
  };
  EXPECT_EQ(VexoProc_ReadRegister(kChipMaster, 0, kChipId.first), 0x28);
  EXPECT_EQ(Command(VEXO_CMD_READ_REG, {kChipMaster, 0, kChipId.first}), 0);
  EXPECT_EQ(last_record[3], 0x28);
  EXPECT_EQ(Messages(), (std::vector<std::uint32_t>{VEXO_MSG_REG_VALUE, VEXO_MSG_REG_VALUE}));
}

TEST_F(RegisterCommands, AFailedSendLosesNoValue) {
  world().faults.Set(sim::Fault::Send, true);
  EXPECT_EQ(VexoProc_ReadRegister(kChipMaster, 0, kChipId.first), 0x28);
  EXPECT_EQ(world().faults.Hits(sim::Fault::Send), 1u);
  EXPECT_EQ(DebugText(),
            "[VexoCtrlSDK]: >> VEXO READ REG 0x03 0x00 0xFE 0x28 \r\n"
            "[VexoCtrlSDK]: >> SendMessage Error occure 0x00002406 0x00000578 \r\n");
}

}  // namespace
