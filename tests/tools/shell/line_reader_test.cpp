// The line editor on a terminal of its own, and the history that outlives it.
#include "tools/vexosim/shell/line_reader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>

#include "files/file_error.h"
#include "tests/support/pseudo_terminal.h"
#include "tests/support/temp_path.h"

namespace vexosim {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

// ---- History ----------------------------------------------------------------------------------

class History : public testing::Test {
 protected:
  void TearDown() override { std::remove(path_.c_str()); }
  const std::string path_ = test::TempPath("history");
};

TEST_F(History, IsKeptFromOneSessionToTheNext) {
  {
    LineHistory first(path_);
    first.Add("loss 1");
    first.Add("loss 1");
    first.Add("");
    first.Add("loss 2");
  }
  LineHistory second(path_);
  EXPECT_THAT(second.Lines(), ElementsAre("loss 1", "loss 2"));
  second.Add("loss 3");
  EXPECT_THAT(LineHistory(path_).Lines(), ElementsAre("loss 1", "loss 2", "loss 3"));
}

TEST_F(History, KeepsTheLastThousandLines) {
  LineHistory history(path_);
  for (int i = 0; i < 1003; ++i) history.Add("line " + std::to_string(i));
  EXPECT_EQ(history.Lines().size(), 1000u);
  EXPECT_EQ(history.Lines().front(), "line 3");
  const LineHistory again(path_);
  EXPECT_EQ(again.Lines(), history.Lines());
  // The file is cut when it is read.
  std::ifstream file(path_);
  unsigned lines = 0;
  for (std::string line; std::getline(file, line);) ++lines;
  EXPECT_EQ(lines, 1000u);
}

TEST_F(History, DoesWithoutAFileThatItCannotUse) {
  for (const auto& path : {std::optional<std::string>(), {"/no/such/folder/h"}, {"/"}}) {
    LineHistory history(path);
    history.Add("loss 1");
    EXPECT_THAT(history.Lines(), ElementsAre("loss 1"));
  }
}

TEST(HistoryFile, StandsInTheFolderForStateOrAtHome) {
  const std::string folder = test::TempPath("state");
  const auto keep = [](const char* name) {
    const char* const value = std::getenv(name);
    return value == nullptr ? std::optional<std::string>() : std::optional<std::string>(value);
  };
  const auto set = [](const char* name, const std::optional<std::string>& value) {
    value ? setenv(name, value->c_str(), 1) : unsetenv(name);
  };
  const auto home = keep("HOME");
  const auto state = keep("XDG_STATE_HOME");
  set("HOME", "/home/engineer");
  set("XDG_STATE_HOME", folder);
  EXPECT_EQ(HistoryPath(), folder + "/vexosim_history");
  set("XDG_STATE_HOME", std::nullopt);
  EXPECT_EQ(HistoryPath(), "/home/engineer/.vexosim_history");
  set("HOME", std::nullopt);
  EXPECT_EQ(HistoryPath(), std::nullopt);
  set("HOME", home);
  set("XDG_STATE_HOME", state);
  rmdir(folder.c_str());
}

// ---- Plain lines --------------------------------------------------------------------------------

TEST(PlainReader, GivesLineAfterLineAndShowsThem) {
  std::istringstream in("loss 1\n\nloss 2");
  std::ostringstream out;
  const auto reader = MakePlainReader(in, out);
  EXPECT_EQ(reader->Next(), "loss 1");
  EXPECT_EQ(reader->Next(), "");
  EXPECT_EQ(reader->Next(), "loss 2");
  EXPECT_EQ(reader->Next(), std::nullopt);
  EXPECT_EQ(out.str(), "vexosim> loss 1\nvexosim> \nvexosim> loss 2\n");
}

TEST(PlainReader, PrintsControlBytesAsNumbersAndReadsNoLineWithoutAnEnd) {
  std::istringstream in("a\x1B[2Jb\n" + std::string(100000, 'x'));
  std::ostringstream out;
  const auto reader = MakePlainReader(in, out);
  EXPECT_EQ(reader->Next(), "a\x1B[2Jb");
  EXPECT_EQ(out.str(), "vexosim> a\\x1B[2Jb\n");
  EXPECT_THROW(reader->Next(), files::FileError);
}

// ---- The terminal -------------------------------------------------------------------------------

// Prints each line that it reads as "<line>", "<end>" at the end.
int PrintLines(const std::string& history_path) {
  LineHistory history(history_path);
  const auto reader = MakeTerminalReader(history);
  while (const auto line = reader->Next()) {
    std::printf("<%s>\n", line->c_str());
    std::fflush(stdout);
    history.Add(*line);
  }
  std::printf("<end>\n");
  std::fflush(stdout);
  return 0;
}

class ReaderOnATerminal : public testing::Test {
 protected:
  explicit ReaderOnATerminal(const test::PseudoTerminal::Options& options = {})
      : terminal_([this] { return PrintLines(path_); }, options) {}
  void SetUp() override { terminal_.WaitFor(kPrompt); }
  void TearDown() override { std::remove(path_.c_str()); }

  // The line that is printed next, without its brackets.
  std::string Printed() {
    terminal_.WaitFor("<");
    std::string line = terminal_.WaitFor(">\r\n");
    line.erase(std::min(line.size(), line.rfind(">\r\n")));
    return line;
  }
  void ExpectTheEnd() {
    EXPECT_EQ(Printed(), "end");
    EXPECT_EQ(terminal_.WaitForEnd(), 0);
  }

  const std::string path_ = test::TempPath("terminal_history");
  test::PseudoTerminal terminal_;
};

class TerminalReaderTest : public ReaderOnATerminal {
 protected:
  using ReaderOnATerminal::ReaderOnATerminal;

  void Type(const std::string& keys) {
    terminal_.WaitForEditor();
    terminal_.Type(keys);
  }
  // The line that the keys give.
  std::string Line(const std::string& keys) {
    Type(keys);
    std::string line = Printed();
    terminal_.WaitFor(kPrompt);
    return line;
  }
};

TEST_F(TerminalReaderTest, EditsALine) {
  EXPECT_EQ(Line("loss 12\b\x7f 3\r"), "loss  3");
  EXPECT_EQ(Line("oss 1\x01l\r"), "loss 1");  // Ctrl-A
}

TEST_F(TerminalReaderTest, CompletesWithTab) {
  EXPECT_EQ(Line("vexo zo\tpo\t1 2\r"), "vexo zoom pos 1 2");
}

TEST_F(TerminalReaderTest, ShowsWhatIsExpectedBelowTheLine) {
  Type("vexo zoom pos \t");
  terminal_.WaitFor("X: 0 to 180 display units");
  EXPECT_EQ(Line("7 8\r"), "vexo zoom pos 7 8");
}

TEST_F(TerminalReaderTest, BringsLinesBack) {
  EXPECT_EQ(Line("loss 1\r"), "loss 1");
  EXPECT_EQ(Line("loss 2\r"), "loss 2");
  EXPECT_EQ(Line("\x10\x10\r"), "loss 1");      // Ctrl-P twice
  EXPECT_EQ(Line("\x1b[A\r"), "loss 1");        // arrow up
  EXPECT_EQ(Line("\x12ss 2\x1b\r"), "loss 2");  // Ctrl-R
}

TEST_F(TerminalReaderTest, GivesUpALineOnCtrlC) {
  EXPECT_EQ(Line("loss 1\x03"), "");
  EXPECT_EQ(Line("loss 2\r"), "loss 2");
}

TEST_F(TerminalReaderTest, StaysOnCtrlCAtAnEmptyLine) {
  EXPECT_EQ(Line("\x03"), "");
  EXPECT_EQ(Line("\x03"), "");
  EXPECT_EQ(Line("loss 2\r"), "loss 2");
}

TEST_F(TerminalReaderTest, TakesAnInterruptFromElsewhereForCtrlC) {
  Type("loss 1");
  terminal_.WaitFor("loss 1");
  terminal_.Signal(SIGINT);
  EXPECT_EQ(Printed(), "");
  terminal_.WaitFor(kPrompt);
  EXPECT_EQ(Line("loss 2\r"), "loss 2");
}

TEST_F(TerminalReaderTest, EndsOnCtrlDAtAnEmptyLineOnly) {
  EXPECT_EQ(Line("loss 1\x01\x04\r"), "oss 1");  // deletes a character
  Type("\x04");
  ExpectTheEnd();
}

TEST_F(TerminalReaderTest, GoesOnWithTheLineAfterAStop) {
  Type("loss");
  terminal_.WaitFor("loss");
  terminal_.Signal(SIGSTOP);
  terminal_.WaitForStop();
  terminal_.Signal(SIGCONT);
  terminal_.WaitFor("vexosim> loss");
  EXPECT_EQ(Line(" 4\r"), "loss 4");
}

TEST_F(TerminalReaderTest, TakesLinesLongerThanTheTerminal) {
  const std::string line = "history " + std::string(300, 'x');
  EXPECT_EQ(Line(line + "\x7f\x7fz\r"), line.substr(0, line.size() - 2) + 'z');
}

TEST_F(TerminalReaderTest, WrapsTheLineWhereTheTerminalEndsNow) {
  Type("ab");
  terminal_.WaitFor("ab");
  terminal_.Resize(20, 24);
  Type("cdefghijklmno\x01");
  const std::string shown = terminal_.WaitFor("\x1b[A");  // Ctrl-A: up to the line's first row
  EXPECT_THAT(shown, HasSubstr("cdefghi"));
  EXPECT_EQ(Line("\r"), "abcdefghijklmno");
}

TEST_F(TerminalReaderTest, TakesAPasteOfManyLines) {
  constexpr int kLines = 300;
  std::string paste;
  for (int i = 0; i < kLines; ++i) paste += "loss " + std::to_string(i) + '\n';
  Type(paste);
  for (int i = 0; i < kLines; ++i) ASSERT_EQ(Printed(), "loss " + std::to_string(i));
}

TEST_F(TerminalReaderTest, TakesUtf8AndMarksBytesThatAreNone) {
  struct Case {
    const char* typed;
    const char* line;
  };
  for (const Case& c : {Case{"\u00e4\u20ac\U0001f600", "\u00e4\u20ac\U0001f600"},
                        Case{"a\xff"
                             "b",
                             "a\ufffd"
                             "b"},
                        Case{"a\xe2\x82"
                             "b",
                             "ab"},
                        Case{"\xc3\u00e4", "\u00e4"}, Case{"\x80", "\ufffd"}}) {
    EXPECT_EQ(Line(std::string(c.typed) + '\r'), c.line);
  }
}

TEST_F(TerminalReaderTest, EndsWhenTheTerminalHangsUp) {
  terminal_.WaitForEditor();
  terminal_.HangUp();
  EXPECT_EQ(terminal_.WaitForEnd(), 128 + SIGHUP);
}

TEST(TerminalReaderWithoutHangUps, EndsWithTheTerminal) {
  const std::string path = test::TempPath("hung_up_history");
  test::PseudoTerminal terminal(
      [&path] {
        std::signal(SIGHUP, SIG_IGN);  // as nohup does
        return PrintLines(path);
      },
      {});
  terminal.WaitFor(kPrompt);
  terminal.WaitForEditor();
  terminal.HangUp();
  EXPECT_EQ(terminal.WaitForEnd(), 0);
}

TEST_F(TerminalReaderTest, GivesTheTerminalBackWhenItIsEnded) {
  terminal_.WaitForEditor();
  terminal_.Signal(SIGTERM);
  EXPECT_EQ(terminal_.WaitForEnd(), 128 + SIGTERM);
  EXPECT_NE(terminal_.Settings().c_lflag & ICANON, 0u);
  EXPECT_NE(terminal_.Settings().c_lflag & ECHO, 0u);
}

TEST(TerminalHistory, ComesFromTheFile) {
  const std::string path = test::TempPath("kept_history");
  std::ofstream(path) << "loss 7\nloss 8\n";
  test::PseudoTerminal terminal([&path] { return PrintLines(path); }, {});
  terminal.WaitFor(kPrompt);
  terminal.WaitForEditor();
  terminal.Type("\x10\x10\r");
  terminal.WaitFor("<loss 7>");
  terminal.WaitFor(kPrompt);
  terminal.WaitForEditor();
  terminal.Type("\x04");
  EXPECT_EQ(terminal.WaitForEnd(), 0);
  EXPECT_THAT(LineHistory(path).Lines(), ElementsAre("loss 7", "loss 8", "loss 7"));
  std::remove(path.c_str());
}

// ---- A terminal that can only print -------------------------------------------------------------

class DumbTerminal : public ReaderOnATerminal {
 protected:
  DumbTerminal() : ReaderOnATerminal({.environment = {"TERM=dumb"}}) {}
};

TEST_F(DumbTerminal, EditsTheLineItself) {
  terminal_.Type(
      "loss 12\x7f\x7f"
      "3\n");
  // Nothing that moves a cursor, but what the terminal itself does to wipe a character.
  EXPECT_EQ(terminal_.WaitFor("<"), "loss 12\b \b\b \b3\r\n<");
  terminal_.WaitFor("loss 3>\r\nvexosim> ");
}

TEST_F(DumbTerminal, GivesUpALineOnCtrlCAndEndsOnCtrlD) {
  terminal_.Type("loss 1");
  terminal_.WaitFor("loss 1");
  terminal_.Type("\x03");
  EXPECT_EQ(Printed(), "");
  terminal_.WaitFor(kPrompt);
  terminal_.Type("\x03");
  EXPECT_EQ(Printed(), "");
  terminal_.WaitFor(kPrompt);
  terminal_.Type("loss 2\n");
  EXPECT_EQ(Printed(), "loss 2");
  terminal_.WaitFor(kPrompt);
  terminal_.Type("\x04");
  ExpectTheEnd();
}

}  // namespace
}  // namespace vexosim
