// vexosim shell as its user meets it: the program on a terminal.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <string>

#include "tests/support/pseudo_terminal.h"

namespace vexosim {
namespace {

using testing::HasSubstr;
using testing::Not;

class ShellOnATerminal : public testing::Test {
 protected:
  void SetUp() override { AwaitPrompt(); }

  // What the screen got up to the prompt, and its editor.
  std::string AwaitPrompt() {
    std::string shown = terminal_.WaitFor("vexosim> ");
    terminal_.WaitForEditor();
    return shown;
  }
  std::string Run(const std::string& line) {
    terminal_.Type(line + '\r');
    return AwaitPrompt();
  }

  test::PseudoTerminal terminal_{{VEXOSIM, "shell", "--chips", "1"}};
};

TEST_F(ShellOnATerminal, RunsLinesAndEndsOnCtrlD) {
  EXPECT_THAT(Run("loss 0"), HasSubstr("      = 0\r\n"));
  terminal_.Type("\x04");
  EXPECT_EQ(terminal_.WaitForEnd(), 0);
}

TEST_F(ShellOnATerminal, StaysOnCtrlC) {
  terminal_.Type("\x03");
  AwaitPrompt();
  terminal_.Type("loss\x03");
  EXPECT_THAT(AwaitPrompt(), Not(HasSubstr("=")));
  EXPECT_THAT(Run("loss 0"), HasSubstr("      = 0\r\n"));
}

TEST_F(ShellOnATerminal, EndsALongLineOnCtrlC) {
  terminal_.Type("run 4000000000\r");
  terminal_.WaitFor("run: ");  // how far it is
  terminal_.Type("\x03");
  EXPECT_THAT(AwaitPrompt(), Not(HasSubstr("= ")));
  EXPECT_THAT(Run("loss 0"), HasSubstr("      = 0\r\n"));
  terminal_.Type("quit\r");
  EXPECT_EQ(terminal_.WaitForEnd(), 0);
}

TEST_F(ShellOnATerminal, TakesALineBackThatCtrlCEndsInTheLibrary) {
  Run("settle 2000000000");
  terminal_.Type("lsplit 1 0\r");
  terminal_.WaitFor("(not answered)");  // the worker's messages, while the host waits
  terminal_.Type("\x03");
  EXPECT_THAT(AwaitPrompt(), HasSubstr("      interrupted\r\n      the line is taken back"));
  Run("settle 0");
  EXPECT_THAT(Run("lsplit 1 0"), HasSubstr("      = 0\r\n"));
}

TEST_F(ShellOnATerminal, TakesALineBackThatWaitsForWhatNeverComes) {
  Run("settle never");
  EXPECT_THAT(Run("lsplit 1 0"), HasSubstr("waits for chip master to settle, which never happens"));
  EXPECT_THAT(Run("loss 0"), HasSubstr("      = 0\r\n"));
}

TEST_F(ShellOnATerminal, StopsGoesOnAndCanBeLeftAtAStop) {
  Run("break write \"window 0\"");
  EXPECT_THAT(Run("lsplit 1 0"), HasSubstr("stopped: break 1: w master page 1 0x30 window 0 = "));
  EXPECT_THAT(Run("peek master \"window 0\""), HasSubstr("0x30-0x33  window 0 = "));
  terminal_.Type("\x03");
  AwaitPrompt();
  EXPECT_THAT(Run("step"), HasSubstr("stopped: store to select: 0xFF"));
  terminal_.Type("quit\r");
  EXPECT_EQ(terminal_.WaitForEnd(), 0);
}

TEST_F(ShellOnATerminal, DrawsTheScreenAsLargeAsTheTerminalIsNow) {
  const auto rows = [this] {
    const std::string shown = Run("print");
    unsigned count = 0;
    for (std::size_t at = 0; (at = shown.find("\x1b[0m\r\n", at)) != std::string::npos; ++at) {
      ++count;
    }
    return count;
  };
  EXPECT_EQ(rows(), 23u);
  terminal_.Resize(120, 16);
  EXPECT_EQ(rows(), 15u);
}

TEST_F(ShellOnATerminal, EndsWithItsTerminal) {
  terminal_.HangUp();
  EXPECT_EQ(terminal_.WaitForEnd(), 128 + SIGHUP);
}

TEST(ShellAsAJob, StopsOnCtrlZAndGoesOnInTheForeground) {
  test::PseudoTerminal terminal({"/bin/bash", "--norc", "--noprofile", "-i"},
                                {.environment = {"PS1=job> ", "HISTFILE="}});
  terminal.WaitFor("job> ");
  terminal.Type(VEXOSIM " shell --chips 1\r");
  terminal.WaitFor("vexosim> ");
  terminal.WaitForEditor();
  terminal.Type("loss");
  terminal.WaitFor("loss");
  terminal.Type("\x1a");
  terminal.WaitFor("Stopped");
  terminal.WaitFor("job> ");
  terminal.Type("fg\r");
  terminal.WaitFor("vexosim> loss");
  terminal.Type(" 0\r");
  terminal.WaitFor("      = 0\r\nvexosim> ");
  terminal.WaitForEditor();
  terminal.Type("\x04");
  terminal.WaitFor("job> ");
  terminal.Type("exit $?\r");
  EXPECT_EQ(terminal.WaitForEnd(), 0);
}

TEST(ShellOnADumbTerminal, SendsNothingButText) {
  test::PseudoTerminal terminal({VEXOSIM, "shell", "--chips", "1"}, {.environment = {"TERM=dumb"}});
  terminal.WaitFor("vexosim> ");
  terminal.Type("print\n");
  const std::string shown = terminal.WaitFor("vexosim> ");
  EXPECT_THAT(shown, HasSubstr("@@"));
  EXPECT_THAT(shown, Not(HasSubstr("\x1b")));
}

}  // namespace
}  // namespace vexosim
