// The chip commands about the system: initialization, camera stream, version, registers, standard.
#include "chip/register_commands.h"
#include "chip/video_state.h"
#include "harness/host.h"
#include "setup/camera_driver.h"
#include "setup/initialization.h"
#include "setup/stored_settings.h"
#include "tests/text/chip_text_test.h"

namespace test {
namespace {

using Texts = std::vector<std::string>;

constexpr BoardKind kFour = {4, VEXO_VIDEO_NTSC};

constexpr std::array kSystemLines = {
    LineCase{"vexo init ", [] { VexoProc_Initialize(0xFFFF, 2); }},
    LineCase{"vexo init 5 ", [] { VexoProc_Initialize(5, 2); }},
    LineCase{"vexo init 65543 ", [] { VexoProc_Initialize(7, 2); }},
    LineCase{"vexo init -2 ", [] { VexoProc_Initialize(65534, 2); }},
    LineCase{"vexo stream on ", [] { VexoProc_CameraControl(1); }},
    LineCase{"vexo stream off ", [] { VexoProc_CameraControl(0); }},
    LineCase{"vexo rr 3 1 ab ", [] { VexoProc_ReadRegister(3, 1, 0xAB); }},
    LineCase{"vexo rr C 0 FE ", [] { VexoProc_ReadRegister(0x0C, 0, 0xFE); }},
    LineCase{"vexo rr 03 02 0086 ", [] { VexoProc_ReadRegister(3, 2, 0x86); }},
    LineCase{"vexo rr 103 101 1a0 ", [] { VexoProc_ReadRegister(3, 1, 0xA0); }},
    LineCase{"vexo rr 3 3 10 ", [] { VexoProc_ReadRegister(3, 3, 0x10); }},
    LineCase{"vexo wr 3 1 10 c1 ", [] { VexoProc_WriteRegister(3, 1, 0x10, 0xC1); }},
    LineCase{"vexo wr ff 2 5B 99 ", [] { VexoProc_WriteRegister(0xFF, 2, 0x5B, 0x99); }},
    LineCase{"vexo wr 10C 0100 180 1FE ", [] { VexoProc_WriteRegister(0x0C, 0, 0x80, 0xFE); }},
    LineCase{"vexo wr 3 3 10 20 ", [] { VexoProc_WriteRegister(3, 3, 0x10, 0x20); }},
    // Malformed numbers are 0.
    LineCase{"vexo wr 3 1 0x12 -1 ", [] { VexoProc_WriteRegister(3, 1, 0x00, 0x00); }},
    LineCase{"vexo wr 3 1 g 1h ", [] { VexoProc_WriteRegister(3, 1, 0x00, 0x00); }},
    LineCase{"vexo change_vdo ntsc ", [] { TW_StoreVideoStandard(0); }},
    LineCase{"vexo change_vdo pal ", [] { TW_StoreVideoStandard(1); }},
    LineCase{"vexo change_vdo auto ", [] { TW_StoreVideoStandard(255); }},
};

class ChipTextSystem : public ChipTextTest {};

TEST_F(ChipTextSystem, EachLineDoesWhatItsOperationsDoWithTheCutNumbersOnEveryBoard) {
  for (const LineCase& line : kSystemLines) ExpectDoesOnEveryBoard(line);
}

// ---- Initialization ---------------------------------------------------------------------------

// Holds: vexo init "The number is printed and otherwise ignored."
// Holds: Chips: vexo "`NUMBER`: any; 65535 when missing"
TEST_F(ChipTextSystem, InitWithoutANumberTells65535And2) {
  for (const auto& [line, text] :
       {std::pair{"vexo init ", ">>VEXO INIT INFO 65535 2  \r\n"},
        {"vexo init 12", ">>VEXO INIT INFO 65535 2  \r\n"},  // dropped: no separator behind it
        {"vexo init  12 ", ">>VEXO INIT INFO 65535 2  \r\n"},
        {"vexo init 0 ", ">>VEXO INIT INFO 0 2  \r\n"},
        {"vexo init 65536 ", ">>VEXO INIT INFO 0 2  \r\n"},
        {"vexo init x ", ">>VEXO INIT INFO 0 2  \r\n"}}) {
    FreshNotReady(kFour);
    EXPECT_EQ(Text(line), 0);
    ASSERT_GE(Debug().size(), 2u);
    EXPECT_EQ(Debug()[1], text) << line;
  }
}

// Holds: VEXOAPI_TextCommandProc ""vexo init" takes 1240 ms"
TEST_F(ChipTextSystem, InitBringsTheChipsUpWithoutAWindowBound) {
  harness::Restart();
  world().board.FitChips(2);
  harness::Entry(1);
  EXPECT_EQ(Text("vexo init "), 0);
  EXPECT_EQ(g_video.g_chip_ready, 1);
  EXPECT_EQ(g_video.max_channel, 8);
  EXPECT_EQ(Elapsed(), 1240u);
}

// Holds: Host window messages "VEXO_MSG_STATUS: wParam: VEXO_STATUS_..."
// Holds: VEXOAPI_TextCommandProc "Returns VEXO_OK for a line that is a command"
// Holds: Text commands "0: done; or accepted without effect"
TEST_F(ChipTextSystem, InitWithoutChipsIsAcceptedAndTellsTheHost) {
  harness::Restart();
  world().board.FitChips(0);
  AttachAndBind();
  EXPECT_EQ(Text("vexo init "), 0);
  EXPECT_EQ(g_video.g_chip_ready, 0);
  EXPECT_EQ(Messages(), std::vector<std::uint32_t>{VEXO_MSG_STATUS});
  ASSERT_EQ(MessageEvents().size(), 1u);
  EXPECT_EQ(MessageEvents()[0].wparam, VEXO_STATUS_DETECT_ERROR);
}

// Holds: vexo uninit "Does nothing."
TEST_F(ChipTextSystem, UninitIsAcceptedAndDoesNothing) {
  ExpectDoesNothing(kFour, "vexo uninit ");
  EXPECT_EQ(g_video.g_chip_ready, 1);
}

// ---- Camera stream ------------------------------------------------------------------------------

// Holds: vexo stream on "Resumes the camera stream."
// Holds: vexo stream off "Halts the camera stream."
TEST_F(ChipTextSystem, StreamResumesAndHaltsTheCameraDriverAlsoBeforeInitialization) {
  for (const bool ready : {true, false}) {
    Fresh(kFour);
    if (!ready) FreshNotReady(kFour);
    EXPECT_EQ(Text("vexo stream on "), 0);
    EXPECT_EQ(Events(), (Texts{"open CAM1:", "ioctl 220860", "close CAM1:"}));
    EXPECT_EQ(Text("vexo stream off "), 0);
    EXPECT_EQ(Events(), (Texts{"open CAM1:", "ioctl 220864", "close CAM1:"}));
  }
}

// Holds: vexo stream on "A driver that fails is not told."
// Holds: vexo stream off "A driver that fails is not told."
TEST_F(ChipTextSystem, StreamIsAcceptedWhateverBecomesOfTheDriver) {
  struct Case {
    sim::Drivers::State state;
    const char* line;
    Texts events;  // no word to the host, and none on the output
  };
  using enum sim::Drivers::State;
  for (const Case& c : {
           Case{Absent,
                "vexo stream on ",
                {"open CAM1: failed", "ioctl 220860 failed", "close CAM1: failed"}},
           Case{Absent,
                "vexo stream off ",
                {"open CAM1: failed", "ioctl 220864 failed", "close CAM1: failed"}},
           Case{Null, "vexo stream on ", {"open CAM1: failed"}},
           Case{Null, "vexo stream off ", {"open CAM1: failed"}},
       }) {
    Fresh(kFour);
    world().drivers.Set("CAM1:", c.state);
    EXPECT_EQ(Text(c.line), 0);
    EXPECT_EQ(Events(), c.events) << c.line;
  }
}

// ---- Version ----------------------------------------------------------------------------------

// Holds: Host window messages "VEXO_MSG_CHIP_VERSION: wParam: byte p"
// Holds: vexo rver "Sends the host which chips were found"
TEST_F(ChipTextSystem, RverSendsThePresentChipsAndPrintsItsFormatAsItStands) {
  for (const auto& [channels, value] :
       {std::pair{4, "1"}, {8, "257"}, {12, "65793"}, {16, "16843009"}}) {
    Fresh({channels, VEXO_VIDEO_NTSC});
    EXPECT_EQ(Text("vexo rver "), 0);
    EXPECT_EQ(Events(), (Texts{std::string("send 2405 ") + value,
                               "debug [VexoCtrlSDK]: ", "debug >> VEXO CHIP VER : 0x08X\\r\\n"}));
  }
}

// Holds: Host window messages "VEXO_MSG_CHIP_VERSION: wParam: byte p"
// Holds: Chips: vexo "Before the chips are initialized these commands are accepted"
// Holds: vexo rver "Sends the host which chips were found"
TEST_F(ChipTextSystem, RverReportsZeroBeforeInitialization) {
  FreshNotReady({16, VEXO_VIDEO_NTSC});
  EXPECT_EQ(Text("vexo rver "), 0);
  EXPECT_EQ(Events(), (Texts{"send 2405 0",
                             "debug [VexoCtrlSDK]: ", "debug >> VEXO CHIP VER : 0x08X\\r\\n"}));
}

// ---- The placeholder ----------------------------------------------------------------------------

// Holds: vexo set_emif "Reads its ten numbers and does nothing."
// Holds: Chips: vexo "`A`: any; likewise B to J"
TEST_F(ChipTextSystem, SetEmifReadsTenNumbersAndDoesNothing) {
  ExpectDoesNothing(kFour, "vexo set_emif 1 2 3 4 5 6 7 8 9 10 ");
  ExpectDoesNothing(kFour, "vexo set_emif a b c d e f g h i j ");
  ExpectDoesNothing(kFour, "vexo set_emif 1 2 3 4 5 6 7 8 9 10 11 ");
  ExpectRefused(kFour, "vexo set_emif 1 2 3 4 5 6 7 8 9 ");
  ExpectRefused(kFour, "vexo set_emif 1 2 3 4 5 6 7 8 9 10");
}

// ---- Registers ----------------------------------------------------------------------------------

// Holds: vexo rr "Reads a register"
// Holds: Chips: vexo "`CHIP`: hexadecimal: 3 master"
// Holds: Chips: vexo "`PAGE`: hexadecimal: 0 to 2"
// Holds: Chips: vexo "`REGISTER`: hexadecimal: 0 to ff"
TEST_F(ChipTextSystem, RrReadsARegisterOfTheMaster) {
  Fresh(kFour);
  world().board.Poke(0, 1, 0xAC, 0x5C);
  EXPECT_EQ(Text("vexo rr 3 1 ac "), 0);
  EXPECT_EQ(Accesses(), (std::vector<Access>{R(0x03, 1, 0xAC, 0x5C)}));
  EXPECT_EQ(Debug(), (Texts{"[VexoCtrlSDK]: ", ">> VEXO READ REG 0x03 0x01 0xAC 0x5C \r\n"}));
  ASSERT_EQ(MessageEvents().size(), 1u);
  EXPECT_EQ(MessageEvents()[0].message, VEXO_MSG_REG_VALUE);
  EXPECT_FALSE(MessageEvents()[0].post);
  EXPECT_EQ(MessageEvents()[0].record, (sim::Bytes{0x03, 0x01, 0xAC, 0x5C}));
}

TEST_F(ChipTextSystem, Rr31AbReadsRegisterAbOfPage1OfTheMaster) {
  Fresh(kFour);
  world().board.HoldSync(true);
  EXPECT_EQ(Text("vexo rr 3 1 ab "), 0);
  EXPECT_EQ(Accesses(), (std::vector<Access>{R(0x03, 1, 0xAB, 0x10)}));
}

// Holds: vexo wr "Writes a register and prints it."
// Holds: Chips: vexo "`VALUE`: 0 to 255"
TEST_F(ChipTextSystem, WrWritesARegisterAndTellsItAfterwards) {
  Fresh(kFour);
  EXPECT_EQ(Text("vexo wr 3 1 30 7F "), 0);
  EXPECT_EQ(Accesses(), (std::vector<Access>{W(0x03, 1, 0x30, 0x7F)}));
  EXPECT_EQ(Debug(), (Texts{"[VexoCtrlSDK]: ", ">> VEXO WRITE REG 0x03 0x01 0x30 0x7F \r\n"}));
  EXPECT_TRUE(MessageEvents().empty());
}

// Holds: Chips: vexo "Even so `psplit` announces itself"
TEST_F(ChipTextSystem, AHexadecimalNumberOfNineDigitsIsToldOnTheLevelledOutputAndIsZero) {
  for (const bool ready : {true, false}) {
    Fresh(kFour);
    if (!ready) FreshNotReady(kFour);
    EXPECT_EQ(Text("vexo rr 3 1 0000000ab "), 0);
    Texts wanted = {"[VEXOSDK]: ", ">> string_to_hex invalid parameter ( 9 )\r\n"};
    if (ready) {
      wanted.insert(wanted.end(), {"[VexoCtrlSDK]: ", ">> VEXO READ REG 0x03 0x01 0x00 0x00 \r\n"});
    }
    EXPECT_EQ(Debug(), wanted);
  }
}

TEST_F(ChipTextSystem, AHexadecimalNumberIsToldEvenWhenALaterOneIsMissing) {
  Fresh(kFour);
  EXPECT_EQ(Text("vexo wr 000000003 1 "), -1);
  EXPECT_EQ(Debug(), (Texts{"[VEXOSDK]: ", ">> string_to_hex invalid parameter ( 9 )\r\n"}));
  EXPECT_EQ(Cycles(), 0u);
}

// Holds: Chips: vexo "`REGISTER`: hexadecimal: 0 to ff"
TEST_F(ChipTextSystem, EightDigitsAreCutToTheLowByteAndMalformedOnesAreSilentlyZero) {
  Fresh(kFour);
  EXPECT_EQ(Text("vexo wr 00000003 00000001 12345630 abcdefAB "), 0);
  EXPECT_EQ(Accesses(), (std::vector<Access>{W(0x03, 1, 0x30, 0xAB)}));
  EXPECT_EQ(Text("vexo wr 3 1 30 0xAB "), 0);
  EXPECT_EQ(Accesses(), (std::vector<Access>{W(0x03, 1, 0x30, 0x00)}));
  EXPECT_EQ(DebugText(), "[VexoCtrlSDK]: >> VEXO WRITE REG 0x03 0x01 0x30 0x00 \r\n");
}

// ---- The stored standard ------------------------------------------------------------------------

// Holds: vexo change_vdo ntsc "Stores NTSC for the next initialization."
// Holds: vexo change_vdo pal "Stores PAL for the next initialization."
// Holds: vexo change_vdo auto "Stores 255, which is no standard"
TEST_F(ChipTextSystem, ChangeVdoStoresTheStandardAndNothingElse) {
  for (const auto& [word, value] : {std::pair{"ntsc", 0}, {"pal", 1}, {"auto", 255}}) {
    Fresh(kFour);
    world().nvram.SetRecord("MDVR", 7, 4);
    EXPECT_EQ(Text(std::string("vexo change_vdo ") + word + " "), 0);
    EXPECT_EQ(world().nvram.Content(),
              (sim::Bytes{'M', 'D', 'V', 'R', static_cast<std::uint8_t>(value), 4}));
    EXPECT_EQ(Events(), (Texts{"nvram read", "nvram write"}));
    EXPECT_EQ(g_video.video_standard, VEXO_VIDEO_NTSC);  // until the next initialization
  }
}

// Holds: VEXOAPI_TextCommandProc "Returns VEXO_OK for a line that is a command"
// Holds: vexo change_vdo pal "A failure is printed."
TEST_F(ChipTextSystem, ChangeVdoIsAcceptedWhenTheMemoryFails) {
  Fresh(kFour);
  world().nvram.SetRecord("MDVR", 0, 4);
  world().nvram.SetFailure(sim::Nvram::Failure::Read);
  EXPECT_EQ(Text("vexo change_vdo pal "), 0);
  EXPECT_EQ(DebugText(), "[VexoCtrlSDK]:  ERROR READ NVRAM DATA!!!\r\n\r\n");
  world().nvram.SetFailure(sim::Nvram::Failure::Write);
  EXPECT_EQ(Text("vexo change_vdo pal "), 0);
  EXPECT_EQ(DebugText(), "[VexoCtrlSDK]:  ERROR WRITE NVRAM DATA!!!\r\n\r\n");
  EXPECT_EQ(world().nvram.Hits(), 2u);
  EXPECT_EQ(world().nvram.Content()[4], 0);
}

}  // namespace
}  // namespace test
