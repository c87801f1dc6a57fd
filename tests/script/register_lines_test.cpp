// Registers by name and by field.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "script/register_diff.h"
#include "script/register_names.h"
#include "sim/text.h"
#include "tests/script/script_run.h"

namespace script {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

class RegisterLines : public ScriptRunTest {
 protected:
  // What the last line printed, of a script that begins with an attach on one chip.
  std::vector<std::string> Last(const std::string& lines) {
    EXPECT_EQ(Run("board chips 1\nattach\n" + lines), kExitDone) << Err();
    std::vector<std::string> printed = sim::TextLines(Out());
    const auto echo = std::find_if(printed.rbegin(), printed.rend(), [](const std::string& line) {
      return line.find(" ms  ") != std::string::npos;
    });
    printed.erase(printed.begin(), echo.base());
    return printed;
  }
  // Why a line is no line.
  std::string Wrong(const std::string& line) {
    EXPECT_EQ(Run("attach\n" + line), kExitWrong) << line;
    const std::string error = Err().substr(0, Err().find(" ("));
    return error.substr(error.find(": ") + 2);
  }
};

// ---- peek ---------------------------------------------------------------------------------------

TEST_F(RegisterLines, PeekPrintsTheBytesOfANameByPosition) {
  const std::string pokes = "poke master 1 0x38 4\npoke master 1 0x3B 0x77\n";
  EXPECT_THAT(Last(pokes + "peek master \"window 2\""),
              ElementsAre("      master page 1  0x38-0x3B  window 2 = 04 00 00 77"));
  EXPECT_THAT(Last(pokes + "peek master window"),
              ElementsAre("      master page 1  0x30-0x33  window 0 = 00 00 00 00",
                          "      master page 1  0x34-0x37  window 1 = 00 00 00 00",
                          "      master page 1  0x38-0x3B  window 2 = 04 00 00 77",
                          "      master page 1  0x3C-0x3F  window 3 = 00 00 00 00"));
}

TEST_F(RegisterLines, PeekPrintsNumberedRegistersByNameToo) {
  EXPECT_THAT(Last("poke master 1 0x10 0x92\npeek master page 1 0x0F-0x10,0x40"),
              ElementsAre("      master page 1  0x0F  cascade adjust = 0x00 (step 0)",
                          "      master page 1  0x10  channel display 0 = 0x92 (enable, hold, "
                          "position 2)",
                          "      master page 1  0x40  (no name) = 0x00"));
  EXPECT_EQ(Last("peek master page 1 0x40"), Last("peek master 1 64"));
}

TEST_F(RegisterLines, PeekCutsLongRuns) {
  EXPECT_THAT(
      Last("peek master \"motion mask 1\""),
      ElementsAre(HasSubstr("0xA6-0xB5  motion mask 1 = "),
                  "      master page 2  0xB6-0xBD  motion mask 1 = 00 00 00 00 00 00 00 00"));
}

TEST_F(RegisterLines, PeekTakesNoBusCycle) {
  EXPECT_EQ(RunBound("peek all window\nfields all window\ndiff\nexpect cycles 0"), kExitDone)
      << Err();
}

TEST_F(RegisterLines, PeekAllIsEveryFittedChip) {
  EXPECT_THAT(Last("board chips 2\npeek all 0 0xFE"),
              ElementsAre(HasSubstr("master page 0  0xFE  chip identification = 0x28"),
                          HasSubstr("slave1 page 0  0xFE  chip identification = 0x28")));
  EXPECT_THAT(Last("peek slave2 0 0xFE"), ElementsAre("      slave2: not fitted"));
}

TEST_F(RegisterLines, PeekSaysWhatItExpects) {
  EXPECT_EQ(Wrong("peek master windw"),
            "expected a name of registers or page, found 'windw'; did you mean window?");
  EXPECT_EQ(Wrong("peek master \"window 4\""),
            "expected a name of registers or page, found 'window 4'; did you mean window 0, window "
            "1, window 2 or window 3?");
  EXPECT_EQ(Wrong("peek master"),
            "expected a name of registers or page, found the end of the line");
  EXPECT_EQ(Wrong("peek master page 3 0"), "expected a page 0 to 2, found '3'");
  for (const std::string regs : {"0x3F-0x30", "0x100", "3-", "-3", "1,,2", "0x30-0x31-0x32", "x"}) {
    EXPECT_EQ(Wrong("peek master page 1 " + regs),
              "expected registers 0 to 255, as 0x30-0x3F, found '" + regs + "'");
  }
}

// ---- fields -------------------------------------------------------------------------------------

TEST_F(RegisterLines, FieldsPrintsBitsValuesAndMeanings) {
  EXPECT_THAT(Last("poke master 1 0x20 0x92\nfields master \"channel display 2\""),
              ElementsAre("      master page 1  0x20  channel display 2 = 0x92",
                          "        7    enable    1  shown",
                          "        6    front     0  above channels without it",
                          "        4    hold      1  held while the layout changes",
                          "        2    decoded   0  the decoded picture of its path",
                          "        1-0  position  2  whose scaler"));
  EXPECT_THAT(Last("poke master 1 0x0C 0x3D\nfields master page 1 0x0C"),
              ElementsAre("      master page 1  0x0C  zoom control = 0x3D",
                          "        7     on       0   the picture is zoomed",
                          "        6     decoded  0   with on: a decoded picture in full size",
                          "        0x3D  area     61  set up before zooming"));
  EXPECT_THAT(Last("fields master \"chip identification\""),
              ElementsAre("      master page 0  0xFE  chip identification = 0x28",
                          "        7-3  family    5 (0x28)  0x28: a TW2835",
                          "        2-0  revision  0         of the chip"));
}

TEST_F(RegisterLines, FieldsSaysWhereThereAreNone) {
  EXPECT_THAT(Last("fields master page 1 0x30"),
              ElementsAre("      master page 1  0x30  window 0 = 0x00, no fields"));
}

// ---- poke ---------------------------------------------------------------------------------------

TEST_F(RegisterLines, PokeByNameSetsOneByteEachOrOneForAll) {
  EXPECT_THAT(Last("poke master \"window 1\" 1 2 0x30 255\npeek master \"window 1\""),
              ElementsAre("      master page 1  0x34-0x37  window 1 = 01 02 30 ff"));
  EXPECT_THAT(Last("poke master \"window 1\" 7\npeek master \"window 1\""),
              ElementsAre("      master page 1  0x34-0x37  window 1 = 07 07 07 07"));
}

TEST_F(RegisterLines, PokeByFieldLeavesTheOtherBits) {
  const std::string script =
      "board chips 2\npoke all \"channel display\" 0xC1\n"
      "poke all \"channel display 2\" position 3\npoke slave1 \"channel display\" front 0\n"
      "expect registers master \"channel display\" C1 C1 C3 C1\n"
      "expect registers slave1 \"channel display\" 81 81 83 81\n"
      "poke master \"scaler control 1\" \"filter y\" 3\n"
      "expect register master 0 0x90 0x0C\n";
  EXPECT_EQ(Run("attach\n" + script), kExitDone) << Err();
}

TEST_F(RegisterLines, PokeSaysWhatItExpects) {
  EXPECT_EQ(Wrong("poke master \"channel display 0\" hol 1"),
            "expected enable, front, hold, decoded or position, found 'hol'; did you mean hold?");
  EXPECT_EQ(Wrong("poke master \"channel display 0\" position 4"),
            "expected position 0 to 3, found '4'");
  EXPECT_EQ(Wrong("poke master \"channel display 0\" 1 2"),
            "expected the end of the line, found '2'");
  EXPECT_EQ(Wrong("poke master \"window 0\" 1 2"),
            "expected one value, or 4, found the end of the line");
  EXPECT_EQ(Wrong("poke master \"window 0\" on 1"), "expected a value 0 to 255, found 'on'");
  EXPECT_EQ(Wrong("poke master \"window 0\" 256"), "expected a value 0 to 255, found '256'");
  EXPECT_EQ(Wrong("poke master widow 1"),
            "expected a name of registers, found 'widow'; did you mean window?");
}

// ---- expect field -------------------------------------------------------------------------------

TEST_F(RegisterLines, ExpectFieldLooksAtEachRegisterOfTheName) {
  const std::string pokes = "board chips 2\npoke all \"channel display\" hold 1\n";
  EXPECT_EQ(RunBound(pokes + "expect field all \"channel display\" hold 1"), kExitDone) << Err();
  EXPECT_EQ(RunBound(pokes + "poke slave1 \"channel display 2\" 0x82\n"
                             "expect field all \"channel display\" hold 1"),
            kExitUnmet);
  EXPECT_EQ(Err(),
            "s.vexo:6: expect field all \"channel display\" hold 1: slave1 has hold 0 at 0x20 "
            "(channel display 2) = 0x82\n");
  EXPECT_EQ(RunBound("expect field master \"channel display 1\" position 1"), kExitUnmet);
}

TEST_F(RegisterLines, ExpectFieldSaysWhatItExpects) {
  EXPECT_EQ(Wrong("expect field master \"window 0\" hold 1"),
            "expected a name of registers with fields, not 'window 0', found 'hold'");
  EXPECT_EQ(Wrong("expect field master \"settle status\" busy 16"),
            "expected busy 0 to 15, found '16'");
}

// ---- diff ---------------------------------------------------------------------------------------

TEST_F(RegisterLines, DiffTellsWhatTheLastActionChanged) {
  // Command 0xF004 of the fake library writes 0x5A to page 1 register 0x30 of the master.
  EXPECT_THAT(Last("window\npoke master 1 0x31 1\ncommand 0xF004\ndiff"),
              ElementsAre("      master page 1  0x30  window 0                  "
                          "00 01 00 00 -> 5a 01 00 00"));
  EXPECT_THAT(Last("window\ncommand 0xF004\nrun 0\ndiff"),
              ElementsAre("      no register differs"));
  EXPECT_THAT(Last("window\ncommand 0xF004\nrun 0\ndiff attach"),
              ElementsAre(HasSubstr("00 00 00 00 -> 5a 00 00 00")));
  EXPECT_THAT(Last("window\ncommand 0xF004\ndiff now start"),
              ElementsAre(HasSubstr("5a 00 00 00 -> 00 00 00 00")));
}

TEST_F(RegisterLines, DiffNamesTheFieldsThatChanged) {
  EXPECT_THAT(Last("poke master \"channel display 1\" 0xC1\nrun 0\n"
                   "poke master \"channel display 1\" 0x92\ndiff"),
              ElementsAre("      master page 1  0x18  channel display 1         c1 -> 92 "
                          "(front cleared, hold set, position 1 -> 2)"));
}

TEST_F(RegisterLines, DiffOfTwoChips) {
  EXPECT_THAT(Last("board chips 2\npoke slave1 \"display mode\" 4\ndiff master slave1"),
              ElementsAre("      master -> slave1 page 1  0x06  display mode              00 -> 04 "
                          "(zoom set)"));
  EXPECT_THAT(Last("diff slave3 master"), ElementsAre("      slave3: not fitted"));
}

TEST_F(RegisterLines, DiffKnowsItsMoments) {
  EXPECT_EQ(Run("attach\ndiff stat"), kExitWrong);
  EXPECT_EQ(Err(),
            "s.vexo:2: diff stat: expected a moment, now, attach or start, found 'stat'; did you "
            "mean start?\n");
  EXPECT_EQ(Wrong("diff start now now"), "expected the end of the line, found 'now'");
  EXPECT_EQ(Wrong("diff master"),
            "expected master, slave1, slave2 or slave3, found the end of the line");
}

TEST(RegisterDiff, FoldsChipsThatChangeAlike) {
  sim::Reports reports;
  sim::Board board(reports);
  board.FitChips(3);
  const sim::RegisterSnapshot before = sim::TakeSnapshot(board);
  for (unsigned position = 0; position < 3; ++position) {
    board.Poke(position, kPage1, 0x06, 4);
    board.Poke(position, kPage1, 0x0D, position == 1 ? 2 : 1);
  }
  EXPECT_THAT(DifferencesInWords(before, sim::TakeSnapshot(board)),
              ElementsAre("all    page 1  0x06  display mode              00 -> 04 (zoom set)",
                          "master,slave2 page 1  0x0D  zoom x                    00 -> 01",
                          "slave1 page 1  0x0D  zoom x                    00 -> 02"));
  EXPECT_THAT(DifferencesInWords(before, before), IsEmpty());
}

TEST(RegisterDiff, TellsAChipThatCameOrWent) {
  sim::Reports reports;
  sim::Board board(reports);
  board.FitChips(1);
  const sim::RegisterSnapshot one = sim::TakeSnapshot(board);
  board.FitChips(2);
  const sim::RegisterSnapshot two = sim::TakeSnapshot(board);
  EXPECT_THAT(DifferencesInWords(one, two), ElementsAre("slave1: not fitted -> fitted"));
  EXPECT_THAT(DifferencesInWords(two, one), ElementsAre("slave1: fitted -> not fitted"));
}

TEST(RegisterNames, AreEachOnceAndFindTheirRegisters) {
  std::vector<std::string_view> names(RegisterNames().begin(), RegisterNames().end());
  for (const std::string_view name : names) EXPECT_THAT(RegistersOf(name), Not(IsEmpty())) << name;
  std::sort(names.begin(), names.end());
  EXPECT_EQ(std::adjacent_find(names.begin(), names.end()), names.end());
  EXPECT_EQ(RegistersOf("window").size(), 16u);
  EXPECT_EQ(RegistersOf("window 3").front().page, kWindow.page);
  EXPECT_EQ(RegistersOf("window 3").front().number, kWindow.At(3, 0).number);
  EXPECT_THAT(RegistersOf("window 4"), IsEmpty());
}

}  // namespace
}  // namespace script
