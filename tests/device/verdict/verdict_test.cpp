// What a log of the check program is judged to say.
#include "device/verdict/verdict.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

namespace {

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

// Two chips. Registers 0x10 to 0x1F of each hold 0x80 to 0x8F, but for the lowest bit, which is
// that of the register's number.
std::string ThePlan() {
  std::string plan =
      "vexoplan 1\n"
      "board \"board chips 2\"\n"
      "script \"live.vexo\"\n"
      "step 3 \"attach\"\n"
      "load\n"  // 5
      "result 1\n"
      "step 4 \"window\"\n"
      "initialize\n"  // 8
      "result 0\n"
      "step 5 \"command init\"\n"
      "command 0xF001 00\n"  // 11
      "result 0\n"
      "record 0000000000000000000000000200000000000000282800 "
      "FFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFF8F8\n"
      "message 0x2402 0x0 0x0 020000000000000028280000 FFFFFFFFFFFFFFFFF8F8\n"
      "cycles 2000 440\n"
      "step 6 \"command live-split mode 1\"\n"
      "command 0xF005 0000000001\n"  // 17
      "result 0\n"
      "cycles 1000 0\n";
  for (const char* chip : {"master", "slave1"}) {
    for (unsigned i = 0; i < 16; ++i) {  // 20 to 51
      char line[80];
      std::snprintf(line, sizeof line, "register %s 1 0x%X 0x%X\n", chip, 0x10 + i, 0x80 + i);
      plan += line;
    }
  }
  return plan +
         "step 7 \"run 100\"\n"
         "wait 100\n"  // 53
         "message 0x2403 0x0 0x0 0000000000000000000000000000000000000000\n"
         "end\n";
}

std::string Values(std::uint8_t (*value)(unsigned line, std::uint8_t expected)) {
  std::string log;
  for (unsigned line = 20; line < 52; ++line) {
    const auto expected = static_cast<std::uint8_t>(0x80 + (line - 20) % 16);
    log += std::to_string(line) + " 700 value " + std::to_string(value(line, expected)) + '\n';
  }
  return log;
}

std::uint8_t AsExpected(unsigned, std::uint8_t expected) { return expected; }

std::string Beginning() {
  return "0 0 begin \"1.0.1.6\"\n"
         "0 1 clock 1000000\n"
         "0 2 file \"\\\\DLL\\\\VexoCtrlSDK.DLL\" 61440 0x1C0 0x10000000\n"
         "0 3 imports 43 0\n"
         "0 4 loading \"VexoCtrlSDK.DLL\"\n";
}

std::string Loaded() {
  return "0 5 loaded 0x10000000\n"
         "0 5 path \"\\\\DLL\\\\VexoCtrlSDK.DLL\"\n"
         "0 5 version \"1.0.1.6\"\n"
         "0 5 export \"VEXOAPI_Initialize\" 0x10001000\n"
         "0 6 again 0x10000000\n"
         "0 7 process \"ended\" 31\n"
         "0 8 window 0x1234\n"
         "0 8 nvram \"stored\" 4D44565200100000\n";
}

std::string Calls() {
  return "5 10 called\n5 11 returned 1\n"
         "8 12 called\n8 13 returned 0\n"
         "11 20 called\n"
         "11 500 message 0x2402 0x0 0x0 020000000000000028280000\n"
         "11 500 returned 0\n"
         "11 500 took 440400\n"
         "11 500 record 000000000000000000000000020000000000000028280000\n"
         "17 501 called\n17 501 returned 0\n17 501 took 200\n"
         "17 501 record 0000000001\n" +
         Values(AsExpected) +
         "53 800 called\n"
         "53 850 message 0x2404 0x1 0x0\n"
         "53 850 message 0x2403 0x0 0x0 0000000000000000000000000000000000000000\n"
         "53 900 returned\n"
         "0 950 nvram \"kept\"\n"
         "0 950 summary \"All is as expected.\"\n"
         "0 951 end 38 0\n";
}

std::string GoodLog() { return Beginning() + Loaded() + Calls(); }

struct Result {
  bool well = false;
  std::string text;
};

Result Judged(const std::string& log) {
  std::ostringstream out;
  Result result;
  result.well = verdict::Judge(plan::ParsePlan(ThePlan(), "p"), plan::ParseLog(log, "l"), out);
  result.text = out.str();
  return result;
}

// The log in which the first of the texts that it has is another one.
std::string Replaced(std::string log, const std::string& from, const std::string& to) {
  const std::size_t at = log.find(from);
  EXPECT_NE(at, std::string::npos) << from;
  if (at != std::string::npos) log.replace(at, from.size(), to);
  return log;
}

std::string WithValues(std::uint8_t (*value)(unsigned line, std::uint8_t expected)) {
  return Replaced(GoodLog(), Values(AsExpected), Values(value));
}

// ---- A good board -------------------------------------------------------------------------------

TEST(VerdictTest, SaysThatAGoodBoardIsWell) {
  const Result result = Judged(GoodLog());
  EXPECT_TRUE(result.well) << result.text;
  EXPECT_EQ(result.text,
            "The device and its board are as they should be.\n"
            "\n"
            "Library:  \\DLL\\VexoCtrlSDK.DLL, 61440 bytes, for processor 0x1C0, version 1.0.1.6\n"
            "Loaded:   where it would like to be, at 0x10000000\n"
            "Ended:    after 951 ms\n"
            "Plan:     5 calls; as expected: 39, otherwise: 0\n"
            "Bus:      a cycle takes 200 ns, by 1 call of 1000 cycles together; in simulation: "
            "--cycle-ns 200\n");
}

TEST(VerdictTest, TakesALibraryThatWasMovedForWell) {
  const Result result = Judged(Replaced(GoodLog(), "0x10001000", "0x1E41000"));
  EXPECT_TRUE(result.well) << result.text;
  EXPECT_THAT(result.text,
              HasSubstr("Loaded:   not at 0x10000000, where it would like to be, which is well: "
                        "VEXOAPI_Initialize is at 0x01E41000\n"));
}

TEST(VerdictTest, TellsNoCycleTimeThatTheClockCannotTell) {
  const Result result = Judged(Replaced(GoodLog(), "clock 1000000", "clock 0"));
  EXPECT_TRUE(result.well) << result.text;
  EXPECT_THAT(result.text, HasSubstr("no call took long enough"));
}

// ---- Causes -------------------------------------------------------------------------------------

struct Case {
  const char* name;
  std::string log;
  const char* cause;  // the first one, and what it says
  const char* says;
};

void PrintTo(const Case& one, std::ostream* out) { *out << one.name; }

class CauseTest : public testing::TestWithParam<Case> {};

TEST_P(CauseTest, IsNamed) {
  const Result result = Judged(GetParam().log);
  EXPECT_FALSE(result.well);
  EXPECT_THAT(result.text, StartsWith("Not all is as it should be.\n\nCause [" +
                                      std::string(GetParam().cause) + "]: "));
  EXPECT_THAT(result.text, HasSubstr(GetParam().says));
  EXPECT_THAT(result.text, HasSubstr("\n  Try: "));
}

std::vector<Case> Cases() {
  const std::string good = GoodLog();
  const std::string end = "0 9 end 0 0\n";
  return {
      {"PlanDamaged", Beginning() + Loaded() + "7 9 wrong \"expected a step\"\n" + end,
       "plan-damaged", "line 7: expected a step. Nothing was sent to the board."},
      {"PlanAbsent", "0 0 begin \"1.0.1.6\"\n0 1 absent \"\\\\VexoCheck.plan\" 2\n" + end,
       "plan-absent", "\\VexoCheck.plan is not there (error 2)."},
      {"LibraryAbsent",
       "0 0 begin \"1.0.1.6\"\n0 1 absent \"VexoCtrlSDK.DLL\" 126\n0 2 refused 126\n" + end,
       "library-absent", "Copy VexoCtrlSDK.DLL into the folder of VexoCheck.exe"},
      {"ComponentAbsent", Beginning() + "0 5 absent \"CEDDK.dll\" 126\n0 6 refused 126\n" + end,
       "component-absent", "CEDDK.dll is not there (error 126)."},
      {"ImportMissing",
       Beginning() +
           "0 5 missing \"COREDLL.dll\" \"strstr\"\n0 5 missing \"CEDDK.dll\" \"#8\"\n"
           "0 6 refused 127\n" +
           end,
       "import-missing", "lacks what the library imports: strstr of COREDLL.dll, #8 of CEDDK.dll."},
      {"Machine", Beginning() + "0 5 refused 193\n" + end, "machine-number",
       "of the folder whose processor is 0x1C2"},
      {"OtherMachine", Replaced(Beginning(), "0x1C0", "0x1C2") + "0 5 refused 193\n" + end,
       "machine-number", "of the folder whose processor is 0x1C0"},
      {"NotForArm", Replaced(Beginning(), "0x1C0", "0x8664") + "0 5 refused 193\n" + end,
       "not-for-arm", "the file is for processor 0x8664"},
      {"Ended", good.substr(0, good.find("53 850 message 0x2404")), "log-cut",
       "The log ends in a pause, in which no call was made: live.vexo:7: run 100"},
      {"NotFoundAfterAll", Beginning() + "0 5 refused 126\n" + end, "module-not-found",
       "The loader refuses the library with error 126"},
      {"Unresolved", Beginning() + "0 5 refused 127\n" + end, "import-unresolved", "error 127"},
      {"RefusedOtherwise", Beginning() + "0 5 refused 8\n" + end, "refused", "error 8."},
      {"ExportMissing",
       Replaced(good, "\"VEXOAPI_Initialize\" 0x10001000", "\"VEXOAPI_Initialize\" 0x0"),
       "export-missing", "from \\DLL\\VexoCtrlSDK.DLL does not export VEXOAPI_Initialize."},
      {"OtherVersion", Replaced(good, "version \"1.0.1.6\"", "version \"1.0.1.5\""),
       "other-version", "version is \"1.0.1.5\", the check program's \"1.0.1.6\""},
      {"SecondLoad", Replaced(good, "again 0x10000000", "again 0x0"), "second-load", "gave 0x00"},
      {"TwoUsers", Replaced(good, "\"ended\" 31", "\"ended\" 27"), "two-users",
       "let into the library beside the first one"},
      {"NotShared", Replaced(good, "\"ended\" 31", "\"ended\" 15"), "not-shared",
       "a copy of its own of the section"},
      {"SecondProcessWithout", Replaced(good, "\"ended\" 31", "\"ended\" 0"),
       "process-without-library", "could not load the library"},
      {"SecondProcessOtherwise", Replaced(good, "\"ended\" 31", "\"ended\" 7"), "second-process",
       "exit code 7, expected 31"},
      {"SecondProcessRefused", Replaced(good, "\"ended\" 31", "\"refused\" 8"), "process-refused",
       "(error 8)"},
      {"SecondProcessHung", Replaced(good, "\"ended\" 31", "\"hung\" 5000"), "process-hung",
       "within 5000 ms"},
      {"NoWindow", Replaced(good, "window 0x1234", "window 0x0"), "no-window", "make a window"},
      {"Hang", good.substr(0, good.find("17 501 returned")), "hang",
       "live.vexo:6: command live-split mode 1 (line 17 of the plan)."},
      {"HangInLoad", Beginning(), "hang-in-load", "while the library was loaded"},
      {"Cut", good.substr(0, good.find("17 501 called")) + "17 50", "log-cut",
       "The log has no end"},
      {"NvramLost", Replaced(good, "\"kept\"", "\"lost\""), "nvram-lost", "could not be put back"},
      {"NvramUnwritable",
       Replaced(good, "4D44565200100000\n", "4D44565200100000\n0 8 nvram \"unwritable\"\n"),
       "nvram-unwritable", "does not take what is written: the check wrote back"},
      {"NvramUnknown", Replaced(good, "nvram \"stored\" 4D44565200100000", "nvram \"unknown\""),
       "nvram-unreadable", "cannot be read"},

      {"Taken", Replaced(good, "8 13 returned 0", "8 13 returned -6"), "taken",
       "another process has it"},
      {"NoChip",
       Replaced(Replaced(good, "11 500 returned 0", "11 500 returned -1"),
                "record 000000000000000000000000020000000000000028280000", "record 00"),
       "no-chip", "Initialization finds no chip."},
      {"DeadChip",
       Replaced(good, "record 000000000000000000000000020000000000000028280000",
                "record 000000000000000000000000010000000000000028000000"),
       "chip-id", "slave1 reads 0x00 as identification, expected 0x28."},
      {"NoStandard",
       Replaced(good, "record 000000000000000000000000020000000000000028280000",
                "record 000000000000000000000000020000000200000028280000"),
       "nvram-unread", "the stored settings cannot be read"},
      {"Pal",
       Replaced(good, "record 000000000000000000000000020000000000000028280000",
                "record 000000000000000000000000020000000100000028280000"),
       "other-standard", "are PAL, the plan is for NTSC."},
      {"Driver", Replaced(good, "0 8 window", "0 8 absent \"CAM1:\" 55\n0 8 window"),
       "driver-absent", "The driver CAM1: cannot be opened (error 55)."},
      {"BackEnd",
       Replaced(good, "53 850 message 0x2404",
                "53 850 message 0x2401 0x2001 0x0\n53 850 message 0x2404"),
       "driver-absent", "VBE1: cannot be opened"},
      {"NoMonitor",
       Replaced(good, "53 850 message 0x2403 0x0 0x0 0000000000000000000000000000000000000000\n",
                ""),
       "no-monitor", "no message of video loss came"},
      {"Cameras",
       Replaced(good, "message 0x2403 0x0 0x0 0000000000000000000000000000000000000000",
                "message 0x2403 0x0 0x0 2100000000000000000000000000000000000000"),
       "cameras", "no video on channel 0, 5, PAL on none."},
      {"Settling", Replaced(good, "took 440400", "took 1435400"), "settle",
       "1 command took about a second longer than they should, the first in live.vexo:5: command "
       "init"},
      {"SlowBus", Replaced(Replaced(good, "took 200", "took 20000"), "took 440400", "took 480000"),
       "slow-bus", "a cycle takes 20000 ns"},

      {"StuckLine", WithValues([](unsigned, std::uint8_t expected) {
         return static_cast<std::uint8_t>(expected & ~0x02);
       }),
       "stuck-line", "In every register of all chips data line 1 is always 0."},
      {"StuckLineOfAChip", WithValues([](unsigned line, std::uint8_t expected) {
         return static_cast<std::uint8_t>(line < 36 ? expected : expected | 0x44);
       }),
       "stuck-line", "In every register of slave1 data line 2 is always 1"},
      {"SilentChip", WithValues([](unsigned line, std::uint8_t expected) {
         return line < 36 ? expected : std::uint8_t{0xFF};
       }),
       "stuck-line", "of slave1"},
      {"AllChipsAlike", WithValues([](unsigned, std::uint8_t expected) {
         // The lowest two bits of the number, and so of what the table has there.
         return static_cast<std::uint8_t>((expected & 0xFC) | (expected & 1) << 1 |
                                          (expected >> 1 & 1));
       }),
       "data-lines", "8 registers read otherwise than they should, the same ones of every chip"},
      {"Scattered", WithValues([](unsigned line, std::uint8_t expected) {
         return line == 22 ? std::uint8_t{0xE2} : expected;
       }),
       "registers", "1 of 16 of master."},
      {"Unknown", Replaced(good, "17 501 returned 0", "17 501 returned -5"), "unknown",
       "result: expected 0, found -5"},
  };
}

INSTANTIATE_TEST_SUITE_P(Causes, CauseTest, testing::ValuesIn(Cases()),
                         [](const auto& one) { return std::string(one.param.name); });

TEST(VerdictTest, NamesADeafWindow) {
  std::string log;
  std::istringstream in(GoodLog());
  for (std::string line; std::getline(in, line);) {
    if (line.find("message") == std::string::npos) log += line + '\n';
  }
  const Result result = Judged(log);
  EXPECT_THAT(result.text, HasSubstr("Cause [no-messages]: No message came"));
}

// ---- Differences --------------------------------------------------------------------------------

TEST(VerdictTest, NamesARegisterThatDiffersWithItsFieldsAndItsLine) {
  const Result result = Judged(WithValues([](unsigned line, std::uint8_t expected) {
    return line == 20 ? std::uint8_t{0x81} : expected;
  }));
  EXPECT_THAT(result.text,
              HasSubstr("What differs:\n"
                        "live.vexo:6: command live-split mode 1 (line 17 of the plan)\n"
                        "  register master page 1 0x10 "));
  EXPECT_THAT(result.text, HasSubstr(": expected 0x80, found 0x81 ("));
}

TEST(VerdictTest, NamesARegisterThatCannotBeRead) {
  const Result result = Judged(Replaced(GoodLog(), "20 700 value 128", "20 700 unread -8"));
  EXPECT_THAT(result.text, HasSubstr(": cannot be read: result -8"));
}

TEST(VerdictTest, NamesAMessageThatNobodyExpects) {
  const Result result = Judged(Replaced(GoodLog(), "17 501 returned 0",
                                        "17 501 message 0x2401 0x1003 0x0\n17 501 returned 0"));
  EXPECT_THAT(result.text, HasSubstr("  message: expected none, found 0x2401 "));
}

TEST(VerdictTest, CountsCallsThatWereNeverBegun) {
  const std::string log = GoodLog();
  const Result result = Judged(log.substr(0, log.find("53 800 called")) + "0 900 end 37 0\n");
  EXPECT_FALSE(result.well);
  EXPECT_THAT(result.text, HasSubstr("never begun: 1 call\n"));
}

TEST(VerdictTest, DoesNotMindWhatMovesBeforeTheCameras) {
  EXPECT_THAT(Judged(GoodLog()).text, Not(HasSubstr("0x2404")));
}

TEST(VerdictTest, RefusesTheLogOfAnotherPlan) {
  std::ostringstream out;
  const plan::Log log =
      plan::ParseLog(Replaced(GoodLog(), "0 8 window", "0 8 plan 55 0x1\n0 8 window"), "l");
  try {
    verdict::Judge(plan::ParsePlan(ThePlan(), "p"), log, out);
    FAIL() << out.str();
  } catch (const plan::FormatError& error) {
    EXPECT_THAT(error.what(), StartsWith("the log is of another plan: of one with checksum "
                                         "0x00000001, and this one's is 0x"));
  }
}

}  // namespace
