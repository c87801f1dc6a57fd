#include "script/parse.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

#include "sim/text.h"

namespace script {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

std::string MistakeOf(const std::string& script) {
  std::istringstream in(script);
  try {
    ParseScript(in, "s.vexo");
  } catch (const ScriptError& error) {
    return error.what();
  }
  return "none";
}

const char* const kMask = "00 01 02 03 04 05 06 07 08 09 0a 0b 0c 0d 0e 0f 10 11 12 13 14 15 16 17";

TEST(ScriptParsing, AcceptsEveryLineOfTheLanguage) {
  const std::vector<std::string> lines = {
      "board chips 4",
      "board chips 0",
      "board id slave1 0x2F",
      "board id all 0x28",
      "camera 15 ntsc",
      "camera all pal",
      "camera 0 off",
      "weak 3 on",
      "weak all off",
      "motion 3 on",
      "motion all off",
      "poke slave3 2 0xFF 0x80",
      "poke all 1 16 128",
      "poke all \"window 0\" 1 2 3 0x04",
      "poke all \"channel display\" position 3",
      "settle 0",
      "settle 300",
      "settle never",
      "sync period 20",
      "sync hold 0",
      "sync hold 1",
      "bus exchange 0 7",
      "bus hold 3 0",
      "bus hold 7 1",
      "bus good",
      "nvram record MDVR 0 16",
      "nvram record \"M D\" 255 0",
      "nvram blank",
      "nvram fail none",
      "nvram fail read",
      "nvram fail write",
      "file \\Windows\\Main.exe 5.0.65535.1",
      "file \"\\\\NAND FLASH\\\\MDVR\\\\VexoCtrlSDK.DLL\" absent",
      "file x unreadable",
      "file x noroot",
      "driver CAM1: present",
      "driver VBE1: absent",
      "driver CAM1: null",
      "fault mutex on",
      "fault wait nth 3",
      "fault load from 0x10",
      "fault event-exists on",
      "fault map-select on",
      "fault map-address on",
      "fault map-data on",
      "fault thread on",
      "fault send on",
      "fault post off",
      "window deaf",
      "window hearing",
      "attach",
      "detach",
      "lowmem",
      "entry 2",
      "window",
      "window invalid",
      "unbind",
      "command 0xF001",
      "command 0xF001 null",
      "command init",
      "command live-split mode 16 channels 0-15",
      "command 0xF005 channels 3 mode full",
      "command live-split null",
      "command 0x1F005 00 00 00 00 06 00 00 01 02",
      "motioninfo 3 2 " + std::string(kMask),
      "motioninfo all 2 " + std::string(kMask),
      "motioninfo 16 2 " + std::string(kMask),
      "text \"vexo init 0 0 \\n\"",
      "text vpb",
      "version",
      "version null",
      "debug 0",
      "output 0xFFFFFFFF",
      "run 0",
      "run 4294967295",
      "wait 100",
      "expect return 0",
      "expect return -8",
      "expect register all 1 0x10 0xC0",
      "expect register master 2 255 255",
      "expect registers master 1 0x30 04 b0 01 77",
      "expect registers slave1,slave3 2 255 FF",
      "expect registers all \"window 3\" 00 -- -- 01",
      "expect field all \"channel display 1\" hold 0",
      "expect debug \">> FINISH NTSC CAMERA!!\\r\\n\"",
      "expect message 0x2403",
      "expect message video-info",
      "expect record chip-count 4 chip-id 28 28",
      "expect message 0x2404 0x0004",
      "expect message 0x2404 4 lparam 0",
      "expect message init-result lparam 0",
      "expect cycles 0",
      "expect fault load 2",
      "expect no debug \"text\"",
      "expect no message 0x2403",
      "expect no message video-info",
      "expect record 12 04 00 00 00",
      "peek master \"window 0\"",
      "peek slave1 page 1 0x30-0x3f",
      "peek all 1 0x10,0x18",
      "fields master \"channel display 0\"",
      "fields master page 1 0x10",
      "diff",
      "diff attach",
      "diff attach start",
      "diff master slave1",
      "registers",
      "registers slave1",
      "registers all 2",
      "picture screen.png",
      "print",
      "board",
      "accesses 1 200",
      "seed 5",
      "break write \"window 0\"",
      "break write slave1 \"window\"",
      "break read all page 1 0x04",
      "break text \"Complete\"",
      "break message 0x2403",
      "break cycle 17",
      "break",
      "break off",
      "break off 1",
      "where",
      "continue",
      "step",
      "step call",
      "writes on",
      "quiet on",
      "pump off",
      "undo",
      "mark here",
      "back here",
      "source more.vexo",
      "save session.vexo",
      "save trace session.jsonl",
      "save waveform session.vcd",
      "complete \"camera 5 \"",
      "history",
      "help",
      "help camera",
      "? camera",
      "quit",
      "exit",
      "lsplit 6 0",
      "vexo lsplit 6 0",
      "vexo",
  };
  for (const std::string& line : lines) EXPECT_EQ(MistakeOf("attach\n" + line), "none") << line;
}

TEST(ScriptParsing, CoversTheWholeTableOfLines) {
  // A new kind of line needs its place in the table above.
  EXPECT_EQ(BoardLines().size(), 20U);
  EXPECT_EQ(ActionLines().size(), 16U);
  EXPECT_EQ(ExpectLines().size(), 11U);
  EXPECT_EQ(RegisterLines().size(), 4U);
  EXPECT_EQ(OutputLines().size(), 5U);
  EXPECT_EQ(StopLines().size(), 11U);
  EXPECT_EQ(SessionLines().size(), 16U);
}

struct Wrong {
  const char* line;
  std::string mistake;
};

TEST(ScriptParsing, SaysWhatWasExpectedInAMalformedLine) {
  const std::vector<Wrong> cases = {
      {"sync", "expected sync period MS | sync hold 0|1, found the end of the line"},
      {"sync colour", "expected sync period MS | sync hold 0|1, found 'colour'"},
      {"board colour",
       "expected the end of the line, found 'colour' (board chips N | board id CHIP BYTE | board)"},
      {"board chips",
       "expected a chip count 0 to 4, found the end of the line"
       " (board chips N)"},
      {"board chips 5",
       "expected a chip count 0 to 4, found '5'"
       " (board chips N)"},
      {"board id master 256",
       "expected an identification 0 to 255, found '256'"
       " (board id CHIP BYTE)"},
      {"camera 16 off", "expected a channel 0 to 15 or all, found '16' (camera CH ntsc|pal|off)"},
      {"camera 1 secam", "expected ntsc, pal or off, found 'secam' (camera CH ntsc|pal|off)"},
      {"camera 1",
       "expected ntsc, pal or off, found the end of the line"
       " (camera CH ntsc|pal|off)"},
      {"break message video-inf",
       "expected a message's number or name (help messages), found 'video-inf'; did you mean "
       "video-info? (break message CODE|NAME)"},
      {"camera 1 off now", "expected the end of the line, found 'now' (camera CH ntsc|pal|off)"},
      {"weak 1 yes", "expected off or on, found 'yes' (weak CH on|off)"},
      {"motion x on", "expected a channel 0 to 15 or all, found 'x' (motion CH on|off)"},
      {"poke chip 0 0 0",
       "expected master, slave1, slave2, slave3 or all, found 'chip'"
       " (poke CHIP PAGE REG VALUE | CHIP \"NAME\" VALUE... | CHIP \"NAME\" FIELD VALUE)"},
      {"poke master 3 0 0",
       "expected a page 0 to 2, found '3' (poke CHIP PAGE REG VALUE | CHIP \"NAME\" VALUE... | "
       "CHIP \"NAME\" FIELD VALUE)"},
      {"poke master 0 0x100 0",
       "expected a register 0 to 255, found '0x100' (poke CHIP PAGE REG VALUE | CHIP \"NAME\" "
       "VALUE... | CHIP \"NAME\" FIELD VALUE)"},
      {"poke master 0 0",
       "expected a value 0 to 255, found the end of the line (poke CHIP PAGE REG VALUE | CHIP "
       "\"NAME\" VALUE... | CHIP \"NAME\" FIELD VALUE)"},
      {"settle soon", "expected a number of reads or never, found 'soon' (settle N|never)"},
      {"sync period 0",
       "expected a period of 1 ms or more, found '0'"
       " (sync period MS)"},
      {"bus exchange 3 3", "expected another data line 0 to 7, found '3' (bus exchange A B)"},
      {"bus exchange 3 8", "expected a data line 0 to 7, found '8' (bus exchange A B)"},
      {"bus hold 3 2", "expected 0 or 1, found '2' (bus hold A 0|1)"},
      {"sync hold 2", "expected 0 or 1, found '2' (sync hold 0|1)"},
      {"nvram fail both",
       "expected none, read or write, found 'both' (nvram fail none|read|write)"},
      {"file x 1.2.3",
       "expected a version (1.0.1.6), absent, unreadable or noroot, found '1.2.3'"
       " (file PATH VERSION|absent|unreadable|noroot)"},
      {"file x 1.2.3.65536",
       "expected a version (1.0.1.6), absent, unreadable or noroot, found '1.2.3.65536'"
       " (file PATH VERSION|absent|unreadable|noroot)"},
      {"file x",
       "expected a version (1.0.1.6), absent, unreadable or noroot, found the end of the "
       "line (file PATH VERSION|absent|unreadable|noroot)"},
      {"driver COM1: null",
       "expected CAM1: or VBE1:, found 'COM1:' (driver DRIVER present|absent|null)"},
      {"driver CAM1: off",
       "expected present, absent or null, found 'off' (driver DRIVER present|absent|null)"},
      {"fault power on", "expected " + sim::OneOf(FaultWords()) +
                             ", found 'power' (fault FAULT on|off|nth|from [N])"},
      {"fault wait nth 0",
       "expected a number of a call, from 1, found '0' (fault FAULT on|off|nth|from [N])"},
      {"fault wait from",
       "expected a number of a call, from 1, found the end of the line"
       " (fault FAULT on|off|nth|from [N])"},
      {"window blind",
       "expected the end of the line, found 'blind' (window deaf | window hearing | "
       "window | window invalid)"},
      {"attach now", "expected the end of the line, found 'now' (attach)"},
      {"entry", "expected a reason code, found the end of the line (entry N)"},
      {"command",
       "expected a command code or its name (help commands), found the end of the line"
       " (command COMMAND [FIELD VALUE... | BYTE... | null])"},
      {"command iint",
       "expected a command code or its name (help commands), found 'iint'; did you mean init? "
       "(command COMMAND [FIELD VALUE... | BYTE... | null])"},
      {"command 0xF005 0",
       "expected a byte of two hexadecimal digits, found '0'"
       " (command COMMAND [FIELD VALUE... | BYTE... | null])"},
      {"command 0xF005 null 00",
       "expected the end of the line, found '00'"
       " (command COMMAND [FIELD VALUE... | BYTE... | null])"},
      {"motioninfo 1 2 00",
       "expected a byte of two hexadecimal digits, found the end of the line"
       " (motioninfo CH LEVEL BYTE x 24)"},
      {"text", "expected a line of text, found the end of the line (text \"LINE\")"},
      {"text vexo init", "expected the end of the line, found 'init' (text \"LINE\")"},
      {"version 1", "expected the end of the line, found '1' (version | version null)"},
      {"run", "expected a number of milliseconds, found the end of the line (run MS)"},
      {"run -1", "expected a number of milliseconds, found '-1' (run MS)"},
      {"registers slave1 3", "expected a page 0 to 2, found '3' (registers [CHIP [PAGE]])"},
      {"picture",
       "expected a file name that ends in .png, found the end of the line (picture FILE.png)"},
      {"print it", "expected the end of the line, found 'it' (print)"},
      {"text \"vexo", "expected a closing quote, found the end of the line"},
  };
  for (const Wrong& wrong : cases) {
    EXPECT_EQ(MistakeOf(wrong.line), "s.vexo:1: " + wrong.mistake) << wrong.line;
  }
}

TEST(ScriptParsing, SaysWhichWordsAreNearAnUnknownOne) {
  EXPECT_EQ(MistakeOf("\n\ncamra 2 off"), "s.vexo:3: unknown: 'camra'; did you mean camera?");
  EXPECT_EQ(MistakeOf("zzzzzz"), "s.vexo:1: unknown: 'zzzzzz'; help lists what there is");
}

TEST(ScriptParsing, WantsAnActionBeforeTheFirstExpectation) {
  EXPECT_EQ(MistakeOf("board chips 1\nprint\nexpect return 0\nattach"),
            "s.vexo:3: expected an action before the first expectation, found 'expect'");
  EXPECT_EQ(MistakeOf("attach\nboard chips 1\nexpect return 0"), "none");
}

TEST(ScriptParsing, RefusesMalformedExpectations) {
  EXPECT_THAT(MistakeOf("attach\nexpect return"),
              HasSubstr("s.vexo:2: expected a number, found the end of the line"));
  EXPECT_THAT(MistakeOf("attach\nexpect return ok"), HasSubstr("expected a number, found 'ok'"));
  EXPECT_THAT(MistakeOf("attach\nexpect register master 0 1"),
              HasSubstr("expected a value 0 to 255, found the end of the line"));
  EXPECT_THAT(MistakeOf("attach\nexpect debug"), HasSubstr("expected a text, found the end"));
  EXPECT_THAT(MistakeOf("attach\nexpect message motion"),
              HasSubstr("expected a message number, or status, init-result, "));
  EXPECT_THAT(MistakeOf("attach\nexpect message 0x2404 yes"),
              HasSubstr("expected a wParam, found 'yes'"));
  EXPECT_THAT(MistakeOf("attach\nexpect cycles many"),
              HasSubstr("expected a number of bus cycles, found 'many'"));
  EXPECT_THAT(MistakeOf("attach\nexpect luck"),
              HasSubstr("s.vexo:2: expected expect return N | expect register"));
}

TEST(ScriptParsing, RefusesRegistersThatDoNotFitTheirBytes) {
  const std::vector<Wrong> cases = {
      {"", "expected master, slave1, slave2, slave3 or all, found the end of the line"},
      {"master,slave4 1 0 00", "expected master, slave1, slave2 or slave3, found 'slave4'"},
      {"master,all 1 0 00", "expected master, slave1, slave2 or slave3, found 'all'"},
      {"master, 1 0 00", "expected master, slave1, slave2 or slave3, found ''"},
      {"master 3 0 00", "expected a page 0 to 2 or a name of registers, found '3'"},
      {"master \"windows\" 00",
       "expected a page 0 to 2 or a name of registers, found 'windows'; did you mean window, "
       "window 0, window 1 or window 2?"},
      {"master \"window 4\" 00",
       "expected a page 0 to 2 or a name of registers, found 'window 4'; did you mean window "
       "0, window 1, window 2 or window 3?"},
      {"master \"display mode 0\" 00",
       "expected a page 0 to 2 or a name of registers, found 'display mode 0'; did you mean "
       "display mode?"},
      {"master", "expected a page 0 to 2 or a name of registers, found the end of the line"},
      {"master 1 256 00", "expected a register 0 to 255, found '256'"},
      {"master 1 0x30", "expected a byte other than --, found the end of the line"},
      {"master 1 0x30 -- --", "expected a byte other than --, found the end of the line"},
      {"master 1 0x30 0x00", "expected a byte of two hexadecimal digits, found '0x00'"},
      {"master 1 0xFE 00 00 01", "expected 2 bytes at most, to the end of the page, found '01'"},
      {"master \"window 1\" 00 01 02", "expected 4 bytes for this name, found the end of the line"},
      {"master \"window 1\" 00 01 02 03 04", "expected 4 bytes for this name, found '04'"},
      {"master \"window\" 00 01 02 03",
       "expected 16 bytes for this name, found the end of the line"},
      {"master \"display mode\" --", "expected a byte other than --, found the end of the line"},
  };
  for (const Wrong& wrong : cases) {
    const std::string line = std::string("expect registers ") + wrong.line;
    EXPECT_THAT(MistakeOf("attach\n" + line), StartsWith(std::string("s.vexo:2: ") + wrong.mistake +
                                                         " (expect registers CHIP PAGE"))
        << line;
  }
}

TEST(ScriptParsing, TakesRecordsOfUpTo64Bytes) {
  std::string line = "command 0xF005";
  for (int i = 0; i < 64; ++i) line += " 00";
  EXPECT_EQ(MistakeOf(line), "none");
  EXPECT_EQ(MistakeOf(line + " 01"),
            "s.vexo:1: expected 64 record bytes at most, found '01' (command COMMAND [FIELD "
            "VALUE... | BYTE... | null])");
}

TEST(ScriptParsing, KeepsLineNumbersAndTexts) {
  std::istringstream in("# a script\n\n  attach  \r\nboard chips 1 # one\n");
  const std::vector<Script> scripts = ParseScript(in, "s.vexo");
  ASSERT_EQ(scripts.size(), 1U);
  EXPECT_EQ(scripts[0].variant, "");
  EXPECT_EQ(scripts[0].name, "s.vexo");
  const std::vector<Statement>& statements = scripts[0].statements;
  ASSERT_EQ(statements.size(), 2U);
  EXPECT_EQ(statements[0].line, 3U);
  EXPECT_EQ(statements[0].text, "attach");
  EXPECT_EQ(statements[0].group, LineGroup::Action);
  EXPECT_EQ(statements[1].line, 4U);
  EXPECT_EQ(statements[1].text, "board chips 1 # one");
  EXPECT_EQ(statements[1].group, LineGroup::Board);
}

// Its words with single blanks between them.
std::string Unwrapped(const std::string& text) {
  std::istringstream in(text);
  std::string words;
  for (std::string word; in >> word;) words += ' ' + word;
  return words;
}

TEST(ScriptHelp, ShowsEveryKindOfLine) {
  const std::string help = Unwrapped(LanguageHelp());
  for (const LineKind* kind : AllLines()) {
    EXPECT_THAT(help, HasSubstr(Unwrapped(kind->Usage() + ' ' + std::string(kind->help))));
  }
}

TEST(ScriptHelp, FitsTheTerminal) {
  std::istringstream help(LanguageHelp());
  for (std::string line; std::getline(help, line);) EXPECT_LE(line.size(), 100U) << line;
}

}  // namespace
}  // namespace script
