// The text entry: which family gets a line, what is refused before any gets it.
#include "VexoCtrlSDK.h"
#include "chip/video_state.h"
#include "harness/host.h"
#include "report/library_state.h"
#include "tests/api/trace_lines.h"
#include "tests/support/library_test.h"
#include "text/tokenizer.h"

namespace {

using Texts = std::vector<std::string>;

const Texts kNoHeader = {"[VexoCtrlSDK]: ", ">> Command Not Found Header!\r\n"};
const Texts kNotVexo = {"[VexoCtrlSDK]: ", ">> Parse VEXO TEXT Not Found Header!\r\n"};

class TextFrontEnd : public test::LibraryTest {
 protected:
  int Text(const std::string& line) {
    Mark();
    return harness::TextCommandProc(line);
  }
};

// Holds: VEXOAPI_TextCommandProc "VEXO_ERROR_FAILED for a rejected or longer line"
// Holds: Text commands "-6: the library is not initialized"
TEST_F(TextFrontEnd, BeforeAttachEveryLineIsRefusedWithoutAWord) {
  for (const std::string& line :
       {std::string("vexo init 0 "), std::string("vexo uninit "), std::string("vpb init "),
        std::string("nonsense"), std::string(""), std::string(300, 'x')}) {
    EXPECT_EQ(Text(line), -6) << line;
    EXPECT_EQ(Debug(), Texts{}) << line;
  }
  EXPECT_EQ(VEXOAPI_TextCommandProc(nullptr), -6);
}

TEST_F(TextFrontEnd, AfterDetachTheLinesAreRefusedAgain) {
  AttachAndBind();
  EXPECT_EQ(Text("vexo uninit "), 0);
  harness::Entry(0);
  EXPECT_EQ(Text("vexo uninit "), -6);
}

TEST_F(TextFrontEnd, NeedsNoWindow) {
  harness::Entry(1);
  EXPECT_EQ(Text("vexo uninit "), 0);
}

// Holds: Result codes "VEXO_ERROR_NO_HEADER: text line without a known header word"
// Holds: VEXOAPI_TextCommandProc "VEXO_ERROR_FAILED for a rejected or longer line"
// Holds: Text commands "-4: neither `vexo` nor `vpb` in the line"
TEST_F(TextFrontEnd, ALineWithoutAKnownHeaderIsToldAndRefused) {
  harness::Entry(1);
  for (const char* line : {"", " ", "nonsense 1 2 3 ", "VEXO init ", "Vexo init ", "vex o init ",
                           "vep init ", "VPB init ", "v pb ", "vexvp ", "\n"}) {
    EXPECT_EQ(Text(line), -4) << line;
    EXPECT_EQ(Debug(), kNoHeader) << line;
  }
}

// Holds: VEXOAPI_TextCommandProc "VEXO_ERROR_FAILED for a rejected or longer line"
TEST_F(TextFrontEnd, ANullLineHasNoHeader) {
  harness::Entry(1);
  Mark();
  EXPECT_EQ(VEXOAPI_TextCommandProc(nullptr), -4);
  EXPECT_EQ(Debug(), kNoHeader);
}

TEST_F(TextFrontEnd, AnEmptyLineEndsAtItsFirstCharacterWhateverFollowsInMemory) {
  harness::Entry(1);
  std::string memory(300, 'x');
  memory[0] = '\0';
  Mark();
  EXPECT_EQ(VEXOAPI_TextCommandProc(memory.data()), -4);
  EXPECT_EQ(Debug(), kNoHeader);
}

TEST_F(TextFrontEnd, TheRefusalGoesByTheOutputMessageSwitch) {
  harness::Entry(1);
  harness::SetEnableOutputMsg(0);
  EXPECT_EQ(Text("nonsense"), -4);
  EXPECT_EQ(Debug(), Texts{});
}

// Holds: VEXOAPI_TextCommandProc "Takes no lock"
TEST_F(TextFrontEnd, TakesNoLock) {
  harness::Entry(1);
  for (const char* line : {"nonsense", "vexo uninit ", "vexo nonsense ", "vpb nonsense "}) {
    const std::size_t from = world().trace.Mark();
    harness::TextCommandProc(line);
    const Texts events = test::Texts(world().trace, from);
    ASSERT_GE(events.size(), 2u);
    EXPECT_EQ(events.front(), "call VEXOAPI_TextCommandProc");
    for (const std::string& event : events) EXPECT_EQ(event.find("lock"), std::string::npos);
  }
}

// Holds: VEXOAPI_TextCommandProc "Takes no lock"
TEST_F(TextFrontEnd, RunsWhileAnotherThreadHoldsTheLock) {
  PretendBoard(4);
  world().kernel.StartHostThread([this] {
    world().kernel.Wait(g_library.g_cs4_lock, kPlatForever);
    world().kernel.Idle(1000);
    world().kernel.ReleaseMutex(g_library.g_cs4_lock);
  });
  world().kernel.Pump(10);
  ASSERT_TRUE(world().kernel.MutexHeld(u"CS4_GlobalLock"));
  EXPECT_EQ(Text("vexo loss 1 "), 0);
  EXPECT_EQ(Elapsed(), 0u);
  EXPECT_EQ(Register(0, 1, 0x11), 0x04);
  EXPECT_TRUE(world().kernel.MutexHeld(u"CS4_GlobalLock"));
  world().kernel.Pump(2000);
}

// Holds: VEXOAPI_TextCommandProc "VEXO_ERROR_FAILED for a rejected or longer line"
TEST_F(TextFrontEnd, AnswersZeroForAnAcceptedLineAndMinusOneForARejectedOne) {
  AttachAndBind();
  EXPECT_EQ(Text("vexo uninit "), 0);
  EXPECT_EQ(Text("vexo nonsense "), -1);
  EXPECT_EQ(Debug(), Texts{});
  EXPECT_EQ(Text("vexo stream "), -1);
  EXPECT_EQ(Debug(), Texts{});
  EXPECT_EQ(Text("vexo stream maybe "), 0);
  EXPECT_EQ(Text("vpb nonsense "), -1);
}

TEST_F(TextFrontEnd, VexoWithinALongerFirstWordGoesToTheChipParserWhichRefusesIt) {
  AttachAndBind();
  for (const char* line :
       {"vexoinit ", "myvexo init ", "a vexo init ", "xvexox ", "vexo2 init ", "vexovexo init "}) {
    EXPECT_EQ(Text(line), -1) << line;
    EXPECT_EQ(Debug(), kNotVexo) << line;
  }
}

TEST_F(TextFrontEnd, ALineWithBothHeadersGoesToTheChipParser) {
  AttachAndBind();
  for (const char* line : {"vpb init vexo ", "vpbvexo ", "vpb vexo "}) {
    EXPECT_EQ(Text(line), -1) << line;
    EXPECT_EQ(Debug(), kNotVexo) << line;
  }
  EXPECT_EQ(Text("vexo uninit vpb "), 0);
  EXPECT_EQ(Debug(), Texts{});
}

TEST_F(TextFrontEnd, ALineWithVpbAloneGoesToTheBackEndParser) {
  AttachAndBind();
  // A line of the chip family would be told so.
  EXPECT_EQ(Text("xvpb init "), -1);
  EXPECT_NE(Debug(), kNotVexo);
  EXPECT_NE(Debug(), kNoHeader);
  EXPECT_FALSE(Debug().empty());
}

TEST_F(TextFrontEnd, VexoInitWithoutASeparatorBehindItHasNoSecondToken) {
  AttachAndBind();
  for (const char* line : {"vexo init", "vexo  init ", "vexo\n\ninit ", "vexo ", "vexo,"}) {
    EXPECT_EQ(Text(line), -1) << line;
    EXPECT_EQ(Debug(), Texts{}) << line;
    EXPECT_EQ(Cycles(), 0u) << line;
  }
  EXPECT_EQ(Text("vexo"), -1);  // no first one either
  EXPECT_EQ(Debug(), kNotVexo);
}

// Holds: Text commands "`VEXOAPI_TextCommandProc` runs one line"
TEST_F(TextFrontEnd, CarriageReturnsAndTabsDoNotSeparate) {
  AttachAndBind();
  EXPECT_EQ(Text("vexo uninit\r\n"), -1);
  EXPECT_EQ(Text("vexo uninit \r\n"), 0);
  EXPECT_EQ(Text("vexo\tuninit "), -1);
  EXPECT_EQ(Debug(), kNotVexo);
  EXPECT_EQ(Text("vexo uninit\t"), -1);
}

// Holds: VEXOAPI_TextCommandProc "Runs one line of text"
TEST_F(TextFrontEnd, CommasAndLineFeedsSeparate) {
  AttachAndBind();
  EXPECT_EQ(Text("vexo,uninit,"), 0);
  EXPECT_EQ(Text("vexo\nuninit\n"), 0);
  EXPECT_EQ(Text("vexo,uninit\n"), 0);
}

// Holds: VEXOAPI_TextCommandProc "Runs one line of text"
// Holds: Text commands "A line holds at most 255 characters."
TEST_F(TextFrontEnd, ALineOf255CharactersIsTaken) {
  PretendBoard(4);
  const std::string start = "vexo mshow 0000";
  const std::string line = start + std::string(254 - start.size(), '0') + " ";
  ASSERT_EQ(line.size(), 255u);
  EXPECT_EQ(Text(line), 0);
  EXPECT_EQ(Debug(), Texts{});
  // The last number is read to its last character.
  std::string loss = "vexo loss ";
  loss += std::string(253 - loss.size(), '0') + "5 ";
  ASSERT_EQ(loss.size(), 255u);
  EXPECT_EQ(Text(loss), 0);
  EXPECT_EQ(Register(0, 1, 0x11), 0x04);
  EXPECT_EQ(Register(0, 1, 0x19), 0x00);
  EXPECT_EQ(Register(0, 1, 0x21), 0x04);
}

// Holds: VEXOAPI_TextCommandProc "VEXO_ERROR_FAILED for a rejected or longer line"
// Holds: Text commands "A line holds at most 255 characters."
// Holds: Text commands "-1: rejected: the first word is not the header"
TEST_F(TextFrontEnd, ALineOf256CharactersIsToldAndRefusedBeforeAByteOfItIsKept) {
  PretendBoard(4);
  for (const std::size_t length : {std::size_t{256}, std::size_t{257}, std::size_t{5000}}) {
    for (const char* start : {"vexo loss 1 ", "vpb init ", "vexo psplit ", ""}) {
      EXPECT_EQ(Text("vexo rver x y "), 0);
      const std::string kept(g_tokenizer.line, sizeof g_tokenizer.line);
      const std::uint32_t position = g_tokenizer.position;
      std::string line = start;
      line += std::string(length - line.size(), ' ');
      EXPECT_EQ(Text(line), -1);
      const Texts texts = Debug();
      ASSERT_EQ(texts.size(), 2u);
      EXPECT_EQ(texts[0], "[VexoCtrlSDK]: ");
      EXPECT_EQ(texts[1], ">> Command Line Too Long!\r\n");
      EXPECT_EQ(Cycles(), 0u);
      EXPECT_TRUE(Messages().empty());
      EXPECT_EQ(std::string(g_tokenizer.line, sizeof g_tokenizer.line), kept);
      EXPECT_EQ(g_tokenizer.position, position);
    }
  }
}

TEST_F(TextFrontEnd, ALineThatWasLeftEarlyDoesNotReachIntoTheNext) {
  PretendBoard(4);
  EXPECT_EQ(Text("vexo stream maybe 7 7 7 7 7 7 "), 0);
  EXPECT_EQ(Text("vexo frz 1 "), 0);  // the mask is missing, so it is 0
  EXPECT_EQ(Register(0, 1, 0x11), 0x40);
}

}  // namespace
