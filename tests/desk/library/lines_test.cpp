// Lines of the script language.
#include <thread>

#include "tests/desk/library/program.h"

namespace desk {
namespace {

using testing::Contains;
using testing::Field;
using testing::HasSubstr;
using testing::StartsWith;

class DeskLines : public ProgramTest {
 protected:
  DeskLines() { Open(); }
};

// Holds: VexoDesk_Line "Runs one line of the script language"
TEST_F(DeskLines, ChangeTheBoardAndLookAtIt) {
  Start();
  Line("poke slave1 1 0x30 0x5A");
  VexoRegRecord record = {VEXO_CHIP_SLAVE1, 1, 0x30, 0};
  EXPECT_EQ(VEXOAPI_CommandProc(VEXO_CMD_READ_REG, &record), VEXO_OK);
  EXPECT_EQ(record.value, 0x5A);
  Line("expect register slave1 1 0x30 0x5A");
}

// Holds: Results "VEXODESK_ERROR_UNMET: an expectation was not met"
// Holds: VexoDesk_Line "Returns VEXODESK_OK; VEXODESK_ERROR_LINE"
TEST_F(DeskLines, SayWhatWasFoundWhereAnExpectationIsUnmet) {
  const std::string answer = Answer("expect register master 0 0xFE 0x00", VEXODESK_ERROR_UNMET);
  EXPECT_THAT(answer, HasSubstr("0x28"));
  EXPECT_EQ(VexoDesk_Error(), answer);
}

// Holds: Results "VEXODESK_ERROR_LINE: no line of the language"
// Holds: VexoDesk_Line "Lines that are a script's or console's own (undo"
// Holds: VexoDesk_Line "Returns VEXODESK_OK; VEXODESK_ERROR_LINE"
TEST_F(DeskLines, ThatAreNoneSayWhatWasExpected) {
  EXPECT_THAT(Answer("camera 77 off", VEXODESK_ERROR_LINE), StartsWith("expected "));
  EXPECT_THAT(Answer("undo", VEXODESK_ERROR_LINE), testing::Not(testing::IsEmpty()));
  EXPECT_EQ(VexoDesk_Line("camera 5 maybe", nullptr, 0), VEXODESK_ERROR_LINE);
  EXPECT_THAT(VexoDesk_Error(), StartsWith("expected "));
  EXPECT_EQ(VexoDesk_Line(nullptr, nullptr, 0), VEXODESK_ERROR_ARGUMENT);
  EXPECT_EQ(VexoDesk_Line("camera 5 off", nullptr, 10), VEXODESK_ERROR_ARGUMENT);
}

// Holds: VexoDesk_Line "Lines that call the library run it on the calling thread."
TEST_F(DeskLines, MayCallTheLibraryAndLetTimePass) {
  Start();
  const std::uint64_t begin = VexoDesk_Now();
  messages.clear();
  Line("camera 5 off");
  Line("run 1000");
  EXPECT_EQ(VexoDesk_Now(), begin + 1000);
  EXPECT_THAT(messages, Contains(Field(&Message::value, 1u << 5)));
  Line("command read-reg chip master page 0 reg 0xFE");
  Line("expect return 0");
  EXPECT_EQ(messages.back().code, VEXO_MSG_REG_VALUE);
}

// Holds: VexoDesk_Line "Its answer, UTF-8 lines with a line feed between them"
TEST_F(DeskLines, AnswerAsMuchAsFits) {
  const std::string whole = Answer("expect register master 0 0xFE 0x00", VEXODESK_ERROR_UNMET);
  ASSERT_GT(whole.size(), 10u);
  char few[8] = "xxxxxxx";
  VexoDesk_Line("expect register master 0 0xFE 0x00", few, 5);
  EXPECT_EQ(few, whole.substr(0, 4));
  EXPECT_EQ(few[5], 'x');
  VexoDesk_Line("expect register master 0 0xFE 0x00", few, 0);
  EXPECT_EQ(few, whole.substr(0, 4));
  // No half of a character.
  for (std::size_t capacity = 1; capacity <= 60; ++capacity) {
    char answer[60];
    VexoDesk_Line("frobnicate \"\xC3\xA9\xC3\xA9\xC3\xA9\"", answer, capacity);
    const std::string cut = answer;
    EXPECT_TRUE(cut.empty() || (cut.back() & 0xFF) != 0xC3) << cut;
  }
}

TEST_F(DeskLines, MayStandInAProcedureThatAnotherLineCalled) {
  Start();
  VexoDesk_Pump(100);
  messages.clear();
  on_message = [&](const Message& message) {
    if (message.value == 1u << 5) Line("camera 5 ntsc");
  };
  Line("camera 5 off");
  Line("run 200");
  ASSERT_GE(messages.size(), 2u);
  EXPECT_EQ(messages[0].value, 1u << 5);
  EXPECT_EQ(messages[1].value, 0u);
}

// Holds: VexoDesk.h "Any thread may call the exports of VexoCtrlSDK.h"
// Holds: VexoDesk_Line "Any thread."
TEST_F(DeskLines, AreForAnyThread) {
  Start();
  std::thread([] {
    EXPECT_EQ(VexoDesk_Line("camera 5 off", nullptr, 0), VEXODESK_OK);
    EXPECT_EQ(VexoDesk_Line("run 10", nullptr, 0), VEXODESK_OK);
  }).join();
  VexoDesk_Pump(100);
  EXPECT_THAT(messages, Contains(Field(&Message::value, 1u << 5)));
}

}  // namespace
}  // namespace desk
