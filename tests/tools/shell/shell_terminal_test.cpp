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
  // A run goes a minute at a time, and one is not the whole of it.
  EXPECT_THAT(AwaitPrompt(), Not(HasSubstr("= ")));
  EXPECT_THAT(Run("loss 0"), HasSubstr("      = 0\r\n"));
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
