// Actions, expectations, output and exit statuses, on a library whose doings are known.
#include "script/run.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>

#include "sim/text.h"
#include "sim/world.h"
#include "tests/script/script_run.h"
#include "tests/support/temp_path.h"

namespace script {
namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

class ScriptRun : public ScriptRunTest {};

TEST_F(ScriptRun, CallsTheExportThatEachActionNames) {
  const std::string mask =
      "00 01 02 03 04 05 06 07 08 09 0a 0b 0c 0d 0e 0f 10 11 12 13 14 15 16 17";
  EXPECT_EQ(Run("attach\nwindow\nwindow invalid\ncommand 0xF00E 01 aa\ncommand 0xF00E null\n"
                "command 0x1F00E\nmotioninfo 17 3 " +
                mask +
                "\ntext \"vexo x\\n\"\nversion\nversion null\ndebug 2\noutput 3\nunbind\n"
                "lowmem\nentry 9\ndetach"),
            kExitDone);
  EXPECT_THAT(
      harness::TheFake().calls,
      ElementsAre("dll_entry 1", "initialize window", "initialize invalid",
                  "command_proc 0xF00E 01aa0000", "command_proc 0xF00E null",
                  "command_proc 0x1F00E 00000000",
                  "set_motion_info 17 3 000102030405060708090a0b0c0d0e0f1011121314151617",
                  "text_command_proc vexo x\n", "get_version", "get_version null", "debug 2",
                  "output 3", "uninitialize", "dll_entry 6", "dll_entry 9", "dll_entry 0"));
}

TEST_F(ScriptRun, StartsOnAFreshLibraryAndAFreshWorld) {
  const unsigned resets = harness::TheFake().resets;
  EXPECT_EQ(RunBound("run 100"), kExitDone);
  EXPECT_EQ(sim::TheWorld().kernel.Now(), 100U);
  EXPECT_EQ(Run("attach"), kExitDone);
  EXPECT_EQ(sim::TheWorld().kernel.Now(), 0U);
  EXPECT_EQ(harness::TheFake().resets, resets + 2);
}

TEST_F(ScriptRun, MotionInfoOfAllGoesToEveryChannel) {
  std::string line = "motioninfo all 3";
  for (int i = 0; i < 24; ++i) line += " ff";
  EXPECT_EQ(Run(line), kExitDone);
  EXPECT_EQ(harness::TheFake().calls.size(), 16U);
}

TEST_F(ScriptRun, TextIsAnActionLikeAnyOther) {
  EXPECT_EQ(RunBound("text \"vexo init 0 0 \"\nexpect return -4"), kExitDone);
}

// ---- Expectations -------------------------------------------------------------------------------

TEST_F(ScriptRun, ExpectReturnComparesTheResult) {
  EXPECT_EQ(RunBound("command 1\nexpect return -1"), kExitDone);
  EXPECT_EQ(Out().substr(Out().find("1 expectation")), "1 expectation met\n");
  EXPECT_EQ(RunBound("command 1\nexpect return 0"), kExitUnmet);
  EXPECT_EQ(Err(), "s.vexo:4: expect return 0: returned -1\n");
  EXPECT_EQ(Run("version\nexpect return 10"), kExitDone);
}

TEST_F(ScriptRun, ExpectReturnFailsWhereNothingIsReturned) {
  EXPECT_EQ(RunBound("debug 1\nexpect return 0"), kExitUnmet);
  EXPECT_EQ(Err(), "s.vexo:4: expect return 0: 'debug 1' returns nothing\n");
  EXPECT_EQ(RunBound("command 0xF005\nrun 1\nexpect return 0"), kExitUnmet);
}

TEST_F(ScriptRun, ExpectRegisterLooksAtTheBoard) {
  EXPECT_EQ(RunBound("command 0xF004\nexpect register master 1 0x30 0x5A"), kExitDone);
  EXPECT_EQ(RunBound("command 0xF004\nexpect register slave1 1 0x30 0x5A"), kExitUnmet);
  EXPECT_EQ(Err(), "s.vexo:4: expect register slave1 1 0x30 0x5A: slave1 has 0x00\n");
}

TEST_F(ScriptRun, ExpectRegisterOfAllMeansEveryFittedChip) {
  EXPECT_EQ(Run("board chips 2\nattach\nexpect register all 0 0xFE 0x28"), kExitDone);
  EXPECT_EQ(Run("board chips 3\nboard id slave1 0x29\nboard id slave2 0x2A\nattach\n"
                "expect register all 0 0xFE 0x28"),
            kExitUnmet);
  EXPECT_THAT(Err(), HasSubstr(": slave1 has 0x29, slave2 has 0x2A\n"));
  EXPECT_EQ(Run("board chips 0\nattach\nexpect register all 0 0 0"), kExitUnmet);
  EXPECT_THAT(Err(), HasSubstr(": no chip is fitted\n"));
  EXPECT_EQ(Run("board chips 1\nattach\nexpect register slave1 1 0 0"), kExitUnmet);
  EXPECT_THAT(Err(), HasSubstr(": slave1 (empty) has 0xFF\n"));
}

TEST_F(ScriptRun, ExpectRegistersLooksAtARunOfRegisters) {
  const std::string pokes = "poke slave1 1 0x38 0x85\npoke slave1 1 0x3A 0x02\n";
  EXPECT_EQ(RunBound(pokes + "expect registers slave1 1 0x38  85 00 02\n"), kExitDone) << Err();
  EXPECT_EQ(RunBound(pokes + "expect registers slave1 1 0x38 85 B0 02 1F\n"), kExitUnmet);
  EXPECT_EQ(Err(),
            "s.vexo:5: expect registers slave1 1 0x38 85 B0 02 1F: "
            "slave1 has 0x00 at 0x39 (window 2), 0x00 at 0x3B (window 2)\n");
  // To the end of the page.
  EXPECT_EQ(RunBound("expect registers master 0 0xFE 28 00"), kExitDone) << Err();
}

TEST_F(ScriptRun, ExpectRegistersLeavesOutWhatDashesStandFor) {
  const std::string pokes = "poke master 2 0x60 0x11\npoke master 2 0x61 0x22\n";
  EXPECT_EQ(RunBound(pokes + "expect registers master 2 0x60 11 --\n"), kExitDone) << Err();
  EXPECT_EQ(RunBound(pokes + "expect registers master 2 0x60 -- 22\n"), kExitDone) << Err();
  EXPECT_EQ(RunBound(pokes + "expect registers master 2 0x60 -- 11\n"), kExitUnmet);
  EXPECT_THAT(Err(), EndsWith(": master has 0x22 at 0x61 (box attribute 0)\n"));
}

TEST_F(ScriptRun, ExpectRegistersGoesThroughThePositionsOfAName) {
  const std::string pokes = "poke master 1 0x10 0xD4\npoke master 1 0x28 0x97\n";
  EXPECT_EQ(RunBound(pokes + "expect registers master \"channel display\" D4 00 -- 97"), kExitDone)
      << Err();
  EXPECT_EQ(RunBound(pokes + "expect registers master \"channel display 3\" 97"), kExitDone)
      << Err();
  EXPECT_EQ(RunBound(pokes + "expect registers master \"channel display\" D4 95 00 96"),
            kExitUnmet);
  EXPECT_THAT(Err(), EndsWith(": master has 0x00 at 0x18 (channel display 1), "
                              "0x97 at 0x28 (channel display 3)\n"));
}

TEST_F(ScriptRun, ExpectRegistersTakesAllBytesOfEachPosition) {
  const std::string pokes =
      "poke master 0 0x87 0x01\npoke master 0 0x96 0x02\npoke master 0 0xB9 3\n";
  EXPECT_EQ(RunBound(pokes + "expect registers master \"playback pattern\" "
                             "00 01 00 00 02 00 00 00 00 00 00 00 00 00 00 03"),
            kExitDone)
      << Err();
  EXPECT_EQ(RunBound(pokes + "expect registers master \"playback pattern 3\" 00 00 00 03"),
            kExitDone)
      << Err();
  EXPECT_EQ(RunBound(pokes + "expect registers master \"playback pattern 3\" 00 01 00 03"),
            kExitUnmet);
  EXPECT_THAT(Err(), EndsWith(": master has 0x00 at 0xB7 (playback pattern 3)\n"));
}

TEST_F(ScriptRun, ExpectRegistersNamesNoRegisterThatHasNone) {
  EXPECT_EQ(RunBound("expect registers master 0 0xFF 01"), kExitUnmet);
  EXPECT_THAT(Err(), EndsWith(": master has 0x00 at 0xFF\n"));
}

TEST_F(ScriptRun, ExpectRegistersLooksAtSeveralChips) {
  const std::string pokes = "poke all 1 0x06 0x04\npoke slave2 1 0x06 0x05\n";
  EXPECT_EQ(RunBound(pokes + "expect registers master,slave1,slave3 \"display mode\" 04"),
            kExitDone)
      << Err();
  EXPECT_EQ(RunBound(pokes + "expect registers slave1,slave2 \"display mode\" 05"), kExitUnmet);
  EXPECT_THAT(Err(), EndsWith(": slave1 has 0x04 at 0x06 (display mode)\n"));
  EXPECT_EQ(RunBound(pokes + "expect registers all \"display mode\" 06"), kExitUnmet);
  EXPECT_THAT(Err(), HasSubstr(": master has 0x04 at 0x06 (display mode), slave1 has 0x04 at"));
  EXPECT_EQ(Run("board chips 1\nattach\nexpect registers all \"chip identification\" 28\n"
                "expect registers slave1 0 0 00"),
            kExitUnmet);
  EXPECT_EQ(
      Err(),
      "s.vexo:4: expect registers slave1 0 0 00: slave1 (empty) has 0xFF at 0x00 (input 0)\n");
  EXPECT_EQ(Run("board chips 0\nattach\nexpect registers all 0 0 00"), kExitUnmet);
  EXPECT_THAT(Err(), HasSubstr(": no chip is fitted\n"));
}

TEST_F(ScriptRun, ExpectDebugLooksAcrossTheWritesOfTheLastAction) {
  EXPECT_EQ(RunBound("command 0xF005\nexpect debug \"[Fake]: >> hello\\r\\n\""), kExitDone);
  EXPECT_EQ(RunBound("command 0xF006\nexpect debug kernel"), kExitDone);
  EXPECT_EQ(RunBound("command 0xF005\nexpect debug \"goodbye\""), kExitUnmet);
  EXPECT_EQ(Err(),
            "s.vexo:4: expect debug \"goodbye\": the debug output was\n      | [Fake]: >> hello\n");
  EXPECT_EQ(RunBound("command 0xF005\ncommand 0xF00E\nexpect debug hello"), kExitUnmet);
  EXPECT_EQ(Err(), "s.vexo:5: expect debug hello: no debug output\n");
}

TEST_F(ScriptRun, ExpectDebugFindsTheTextsOfADump) {
  EXPECT_EQ(
      RunBound("command 0xFF0B\n"
               "expect debug \"[Fake]: ==>> READ SLAVE3 PAGE2 \\r\\n======\"\n"
               "expect debug \"=\\r\\n ==>> SLAVE3 PAGE2\\r\\n==>> [00]   00 01 02 03   04 \"\n"
               "expect debug \" 0E 0F \\r\\n==>> [10]   10 11 \"\n"
               "expect debug \" FE FF \\r\\n======\""),
      kExitDone)
      << Err();
  EXPECT_EQ(RunBound("command 0xFF0B\nexpect debug \"SLAVE2\""), kExitUnmet);
  EXPECT_THAT(Err(), HasSubstr("the debug output was\n      | [Fake]: ==>> READ SLAVE3 PAGE2 \n"));
  EXPECT_THAT(Err(), EndsWith("      | " + std::string(65, '=') + '\n'));
}

TEST_F(ScriptRun, ExpectMessageTakesSentAndPostedOnes) {
  EXPECT_EQ(RunBound("command 0xF007\nexpect message 0x2404\nexpect message 0x2404 4"), kExitDone);
  EXPECT_EQ(RunBound("command 0xF003\nexpect message 0x2406"), kExitDone);
  EXPECT_EQ(RunBound("command 0xF002\nexpect message 0x2401 0x1003"), kExitDone);
}

TEST_F(ScriptRun, ExpectMessageTakesAPostedOneAgainWhenItIsHandled) {
  EXPECT_EQ(RunBound("command 0xF002\nrun 1\nexpect message 0x2401 0x1003"), kExitDone);
  EXPECT_EQ(RunBound("command 0xF002\nrun 1\nrun 1\nexpect message 0x2401"), kExitUnmet);
  EXPECT_EQ(Err(), "s.vexo:6: expect message 0x2401: no message\n");
}

TEST_F(ScriptRun, ExpectMessageFailsForAnotherNumberOrWParam) {
  EXPECT_EQ(RunBound("command 0xF007\nexpect message 0x2403"), kExitUnmet);
  EXPECT_EQ(Err(),
            "s.vexo:4: expect message 0x2403: the messages were\n"
            "      > 0x2404 motion status: mask 0x0004: motion on channel 2\n");
  EXPECT_EQ(RunBound("command 0xF007\nexpect message 0x2404 5"), kExitUnmet);
  // An address matches no number.
  EXPECT_EQ(RunBound("command 0xF003\nexpect message 0x2406 0"), kExitUnmet);
  EXPECT_THAT(Err(), testing::HasSubstr(": its wParam is another, or an address; the messages "));
}

TEST_F(ScriptRun, ExpectMessageAsksForTheLparamWhereItIsGiven) {
  EXPECT_EQ(RunBound("command 0xF007\nexpect message 0x2404 4 lparam 0"), kExitDone);
  EXPECT_EQ(RunBound("command 0xF003\nexpect message 0x2406 lparam 0"), kExitDone);  // an address
  EXPECT_EQ(RunBound("command 0xF008\nexpect message 0x2401 lparam 7"), kExitDone);
  // Taken from the queue.
  EXPECT_EQ(RunBound("command 0xF008\nrun 1\nexpect message 0x2401 0x1004 lparam 7"), kExitDone);

  EXPECT_EQ(RunBound("command 0xF008\nexpect message 0x2401 0x1004 lparam 0"), kExitUnmet);
  EXPECT_THAT(Err(), testing::HasSubstr(": its lParam is another; the messages were"));
  EXPECT_EQ(RunBound("command 0xF008\nexpect message 0x2401 5 lparam 7"), kExitUnmet);
  EXPECT_THAT(Err(), testing::HasSubstr(": its wParam is another, or an address; the messages "));
  EXPECT_EQ(RunBound("command 0xF007\nexpect message 0x2401 lparam 0"), kExitUnmet);
  EXPECT_THAT(Err(), testing::HasSubstr("lparam 0: the messages were"));
}

TEST_F(ScriptRun, ExpectMessageDoesNotTakeOneThatFailed) {
  EXPECT_EQ(RunBound("fault send on\ncommand 0xF007\nexpect message 0x2404"), kExitUnmet);
  EXPECT_EQ(RunBound("fault post on\ncommand 0xF002\nexpect message 0x2401"), kExitUnmet);
}

TEST_F(ScriptRun, ExpectNoDebugHoldsWhenTheTextIsMissing) {
  EXPECT_EQ(RunBound("command 0xF005\nexpect no debug \"goodbye\""), kExitDone);
  EXPECT_EQ(RunBound("command 0xF005\nexpect no debug \"hello\""), kExitUnmet);
  EXPECT_EQ(Err(), "s.vexo:4: expect no debug \"hello\": it was printed\n");
}

TEST_F(ScriptRun, ExpectNoMessageHoldsWhenThereWasNone) {
  EXPECT_EQ(RunBound("command 0xF007\nexpect no message 0x2403"), kExitDone);
  EXPECT_EQ(RunBound("command 0xF007\nexpect no message 0x2404"), kExitUnmet);
  EXPECT_EQ(Err(), "s.vexo:4: expect no message 0x2404: there was one\n");
}

TEST_F(ScriptRun, ExpectRecordLooksAtTheCallersRecordAfterTheCall) {
  EXPECT_EQ(RunBound("command 1 12 34\nexpect record 0 12 34 00\nexpect record 63 99"), kExitDone);
  EXPECT_EQ(RunBound("command 1 12 34\nexpect record 1 35"), kExitUnmet);
  EXPECT_EQ(Err(), "s.vexo:4: expect record 1 35: the record has 34\n");
  EXPECT_EQ(RunBound("command 1 12 34\nexpect record 63 99 00"), kExitUnmet);
  EXPECT_EQ(Err(), "s.vexo:4: expect record 63 99 00: the record has 99\n");
  EXPECT_EQ(RunBound("command 1 null\nexpect record 0 00"), kExitUnmet);
  EXPECT_EQ(Err(), "s.vexo:4: expect record 0 00: 'command 1 null' has no record\n");
  EXPECT_EQ(RunBound("command 1 12\nrun 1\nexpect record 0 12"), kExitUnmet);
}

TEST_F(ScriptRun, ExpectCyclesCountsStoresAndLoads) {
  EXPECT_EQ(RunBound("command 0xF004\nexpect cycles 4"), kExitDone);
  EXPECT_EQ(RunBound("command 0xF004\ncommand 0xF005\nexpect cycles 0"), kExitDone);
  EXPECT_EQ(RunBound("command 0xF004\nexpect cycles 5"), kExitUnmet);
  EXPECT_EQ(Err(), "s.vexo:4: expect cycles 5: 4 bus cycles\n");
}

TEST_F(ScriptRun, ExpectFaultSaysHowOftenItHasFailed) {
  EXPECT_EQ(RunBound("command 0xF004\nexpect fault exit-code 0"), kExitDone);
  EXPECT_EQ(RunBound("command 0xF004\nexpect fault exit-code 1"), kExitUnmet);
  EXPECT_EQ(Err(), "s.vexo:4: expect fault exit-code 1: it has failed 0 times\n");
}

TEST_F(ScriptRun, BoardAndOutputLinesLeaveTheLastActionAlone) {
  EXPECT_EQ(RunBound("command 0xF004\ncamera 1 off\nregisters slave1 0\nexpect return 0\n"
                     "expect cycles 4\nexpect cycles 4"),
            kExitDone);
}

// ---- Exit statuses ----------------------------------------------------------------------------

TEST_F(ScriptRun, GoesOnAfterAFailedExpectation) {
  EXPECT_EQ(
      RunBound("command 1\nexpect return 0\nexpect return 7\ncommand 0xF004\nexpect cycles 4"),
      kExitUnmet);
  EXPECT_EQ(Err(),
            "s.vexo:4: expect return 0: returned -1\n"
            "s.vexo:5: expect return 7: returned -1\n");
  EXPECT_THAT(Out(), HasSubstr("2 of 3 expectations not met\n"));
}

TEST_F(ScriptRun, DoesNothingForAMalformedScript) {
  EXPECT_EQ(Run("attach\nexpect return 0\nfly"), kExitWrong);
  EXPECT_THAT(harness::TheFake().calls, IsEmpty());
  EXPECT_THAT(Err(), HasSubstr("s.vexo:3: unknown: 'fly'"));
  EXPECT_EQ(Out(), "");
}

TEST_F(ScriptRun, StopsAtADeadlock) {
  EXPECT_EQ(RunBound("command 0xF001\ncommand 0xF005"), kExitUnmet);
  EXPECT_THAT(Err(), HasSubstr("s.vexo:3: command 0xF001: "));
  EXPECT_EQ(harness::TheFake().calls.back(), "command_proc 0xF001 00000000");
}

TEST_F(ScriptRun, StopsAtAPictureThatCannotBeWritten) {
  EXPECT_EQ(Run("picture /no/such/folder/x.png\nattach"), kExitWrong);
  EXPECT_THAT(Err(), HasSubstr("s.vexo:1: picture /no/such/folder/x.png: "));
  EXPECT_THAT(harness::TheFake().calls, IsEmpty());
}

TEST_F(ScriptRun, AcceptsAnEmptyScript) {
  EXPECT_EQ(Run(""), kExitDone);
  EXPECT_EQ(Out() + Err(), "");
}

// ---- Output -----------------------------------------------------------------------------------

TEST_F(ScriptRun, ShowsWhatEachActionDid) {
  EXPECT_EQ(RunBound("run 5\ncommand 0xF005\ncommand 0xF006\ncommand 0xF002\nrun 5"), kExitDone);
  EXPECT_EQ(Out(),
            "       0 ms  attach\n"
            "      = 1\n"
            "       0 ms  window\n"
            "      = 0\n"
            "       0 ms  run 5\n"
            "       5 ms  command 0xF005\n"
            "      | [Fake]: >> hello\n"
            "      = 0\n"
            "       5 ms  command 0xF006\n"
            "      ! kernel\n"
            "      = 0\n"
            "       5 ms  command 0xF002\n"
            "      > 0x2401 status: 0x1003 chip initialization found no chip (posted)\n"
            "      = 0\n"
            "       5 ms  run 5\n"
            "      > 0x2401 status: 0x1003 chip initialization found no chip (taken from the "
            "queue)\n");
}

TEST_F(ScriptRun, ShowsADumpAsSixteenLinesBetweenTwoRules) {
  EXPECT_EQ(RunBound("command 0xFF0B\ncommand 0xF005"), kExitDone);
  const std::string rule = "      | " + std::string(65, '=') + '\n';
  std::string dump = "      | [Fake]: ==>> READ SLAVE3 PAGE2 \n" + rule +
                     "      |  ==>> SLAVE3 PAGE2\n"
                     "      | ==>> [00]   00 01 02 03   04 05 06 07   08 09 0A 0B   0C 0D 0E 0F \n"
                     "      | ==>> [10]   10 11 12 13   14 15 16 17   18 19 1A 1B   1C 1D 1E 1F \n";
  EXPECT_THAT(Out(), HasSubstr("command 0xFF0B\n" + dump));
  // Nothing but the result between the closing rule and the next command, and no blank before its
  // text.
  EXPECT_THAT(
      Out(),
      EndsWith("      | ==>> [F0]   F0 F1 F2 F3   F4 F5 F6 F7   F8 F9 FA FB   FC FD FE FF \n" +
               rule +
               "      = 0\n"
               "       0 ms  command 0xF005\n"
               "      | [Fake]: >> hello\n"
               "      = 0\n"));
  const std::vector<std::string> lines = sim::TextLines(Out());
  EXPECT_EQ(std::count_if(lines.begin(), lines.end(),
                          [](const std::string& line) { return line.find("| ==>> [") == 6; }),
            16);
}

TEST_F(ScriptRun, TracesEveryWriteOfADump) {
  std::ostringstream trace;
  options_.trace = &trace;
  EXPECT_EQ(RunBound("command 0xFF0B"), kExitDone);
  std::string text;
  unsigned writes = 0;
  for (const std::string& line : sim::TextLines(trace.str())) {
    const nlohmann::json event = nlohmann::json::parse(line);
    if (event["ev"] != "debug") continue;
    text += event["text"].get<std::string>();
    ++writes;
  }
  EXPECT_EQ(writes, 2U + 2U + 15U + 64U + 256U + 1U);
  EXPECT_THAT(text, StartsWith("[Fake]: ==>> READ SLAVE3 PAGE2 \r\n="));
  EXPECT_THAT(text, EndsWith("=\r\n "));
}

TEST_F(ScriptRun, RegistersMarksWhatChangedSinceTheLastAttach) {
  options_.quiet = true;
  EXPECT_EQ(Run("poke master 1 0x30 0x77\nregisters master 1"), kExitDone);
  EXPECT_THAT(Out(), HasSubstr("  30  77 00 00 00"));
  EXPECT_THAT(Out(), Not(HasSubstr("attach")));
  EXPECT_EQ(Run("poke master 1 0x30 0x77\nattach\nregisters master 1"), kExitDone);
  EXPECT_THAT(Out(), HasSubstr("  30  77 00 00 00"));
  EXPECT_THAT(Out(), HasSubstr("  nothing changed since attach\n"));
  EXPECT_EQ(RunBound("command 0xF004\ndetach\nregisters master 1"), kExitDone);
  EXPECT_THAT(Out(), HasSubstr("  30  5a*00 00 00"));
  EXPECT_THAT(Out(), HasSubstr("    0x30  window 0                  00 00 00 00 -> 5a 00 00 00\n"));
  EXPECT_EQ(RunBound("command 0xF004\nentry 1\nregisters master 1"), kExitDone);
  EXPECT_THAT(Out(), HasSubstr("  nothing changed since attach\n"));
  EXPECT_EQ(RunBound("command 0xF004\nlowmem\nregisters master 1"), kExitDone);
  EXPECT_THAT(Out(), HasSubstr("  30  5a*00 00 00"));
}

TEST_F(ScriptRun, ShowsMarksInBoldWithColours) {
  style_.colour = true;
  options_.registers = true;
  EXPECT_EQ(RunBound("command 0xF004\nregisters master 1"), kExitDone);
  const std::string row = "  30  \033[1m5a*\033[0m00 00 00";
  const std::size_t first = Out().find(row);
  ASSERT_NE(first, std::string::npos);
  EXPECT_NE(Out().find(row, first + 1), std::string::npos) << "of the pages at the end";
}

TEST_F(ScriptRun, SaysWhenAMessageDidNotArrive) {
  EXPECT_EQ(RunBound("fault send on\nfault post on\ncommand 0xF007\ncommand 0xF002"), kExitDone);
  EXPECT_THAT(Out(), HasSubstr("motion on channel 2 (not answered)\n"));
  EXPECT_THAT(Out(), HasSubstr("found no chip (not posted)\n"));
}

TEST_F(ScriptRun, QuietShowsExpectationsAndWhatTheScriptPrints) {
  options_.quiet = true;
  EXPECT_EQ(RunBound("command 0xF005\nexpect return 0\nboard id slave1 0x11\nregisters slave1"),
            kExitDone);
  EXPECT_EQ(Out(), "slave1: not fitted, identification 0x11\n1 expectation met\n");
}

TEST_F(ScriptRun, WarnsOfWhatTheBoardNoticed) {
  EXPECT_EQ(RunBound("command 0xF00B\ncommand 0xF00B"), kExitDone);
  EXPECT_THAT(Err(), HasSubstr("warning: "));
  EXPECT_THAT(Err(), HasSubstr(" (2 times)\n"));
}

TEST_F(ScriptRun, PrintDrawsTheScreenWithoutColours) {
  style_.columns = 40;
  EXPECT_EQ(Run("print"), kExitDone);
  EXPECT_THAT(Out(), Not(HasSubstr("\033")));
  style_.colour = true;
  EXPECT_EQ(Run("print"), kExitDone);
  EXPECT_THAT(Out(), HasSubstr("\033["));
}

TEST_F(ScriptRun, WritesPicturesRegistersAndTheTrace) {
  const std::string line_path = test::TempPath("vexosim_line.png");
  const std::string end_path = test::TempPath("vexosim_end.png");
  std::ostringstream trace;
  options_.trace = &trace;
  options_.picture = end_path;
  options_.registers = true;
  EXPECT_EQ(RunBound("board chips 1\npicture " + line_path + "\ncommand 0xF004"), kExitDone);
  for (const std::string& path : {line_path, end_path}) {
    std::string signature(4, '\0');
    std::ifstream(path, std::ios::binary).read(signature.data(), 4);
    EXPECT_EQ(signature, "\x89PNG");
    std::remove(path.c_str());
  }
  EXPECT_THAT(Out(), HasSubstr("master page 1\n"));
  EXPECT_THAT(Out(), HasSubstr("  30  5a*00 00 00"));
  EXPECT_THAT(Out(), HasSubstr("slave3: not fitted"));
  EXPECT_THAT(trace.str(),
              HasSubstr(R"({"t":0,"by":"host","ev":"call","fn":"DllMain","args":[1]})"));
  EXPECT_THAT(trace.str(),
              HasSubstr(R"({"t":0,"by":"host","ev":"store","window":"data","value":90})"));
}

TEST_F(ScriptRun, WritesLinesThatChangeTheBoardOrLetTimePassIntoTheTrace) {
  std::ostringstream trace;
  options_.trace = &trace;
  EXPECT_EQ(Run("camera 5 off\nrun 30\nprint\n"), kExitDone);
  EXPECT_EQ(trace.str(),
            "{\"t\":0,\"by\":\"host\",\"ev\":\"line\",\"text\":\"camera 5 off\"}\n"
            "{\"t\":0,\"by\":\"host\",\"ev\":\"line\",\"text\":\"run 30\"}\n");
}

TEST_F(ScriptRun, WritesTheTraceOfTheActionThatHung) {
  std::ostringstream trace;
  options_.trace = &trace;
  EXPECT_EQ(RunBound("command 0xF001"), kExitUnmet);
  EXPECT_THAT(trace.str(), HasSubstr(R"("fn":"VEXOAPI_CommandProc","args":[61441],)"));
}

}  // namespace
}  // namespace script
