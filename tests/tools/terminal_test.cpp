// What the terminal can show, and Ctrl-C while something runs.
#include "tools/vexosim/terminal.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <termios.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <ostream>
#include <string>

#include "sim/screen/screen.h"
#include "tests/support/pseudo_terminal.h"
#include "tools/vexosim/listing/picture_text.h"

namespace vexosim {
namespace {

using test::PseudoTerminal;
using testing::HasSubstr;

// ---- Colour and size ---------------------------------------------------------------------------

TEST(StandardOutput, HasColourOnATerminalThatHasIt) {
  struct Case {
    std::vector<std::string> environment;
    ColourChoice choice;
    bool colour;
  };
  for (const Case& c :
       {Case{{}, ColourChoice::Auto, true}, Case{{"TERM=dumb"}, ColourChoice::Auto, false},
        Case{{"TERM="}, ColourChoice::Auto, false}, Case{{"NO_COLOR=1"}, ColourChoice::Auto, false},
        Case{{"NO_COLOR="}, ColourChoice::Auto, true},
        Case{{"NO_COLOR=1"}, ColourChoice::Always, true},
        Case{{"TERM=dumb"}, ColourChoice::Always, true}, Case{{}, ColourChoice::Never, false}}) {
    PseudoTerminal terminal([&c] { return StandardOutputStyle(c.choice).colour ? 1 : 0; },
                            {.environment = c.environment});
    EXPECT_EQ(terminal.WaitForEnd(), c.colour ? 1 : 0)
        << testing::PrintToString(c.environment) << static_cast<int>(c.choice);
  }
}

TEST(StandardOutput, IsPlainWhereItIsNoTerminal) {
  PseudoTerminal terminal(
      [] {
        if (std::freopen("/dev/null", "w", stdout) == nullptr) return 9;
        const PictureStyle style = StandardOutputStyle(ColourChoice::Auto);
        return style.colour || style.on_terminal || style.columns != 80 ? 1 : 0;
      },
      {});
  EXPECT_EQ(terminal.WaitForEnd(), 0);
}

// The rows of a picture, and the columns of its first one.
struct Drawn {
  int rows = 0;
  int columns = 0;
  bool operator==(const Drawn&) const = default;
};
std::ostream& operator<<(std::ostream& out, const Drawn& drawn) {
  return out << drawn.columns << 'x' << drawn.rows;
}
Drawn Measure(const std::string& text, const std::string& cell) {
  Drawn drawn;
  const std::string first = text.substr(0, text.find('\n'));
  for (std::size_t at = 0; (at = first.find(cell, at)) != std::string::npos; at += cell.size()) {
    ++drawn.columns;
  }
  for (const char c : text) drawn.rows += c == '\n' ? 1 : 0;
  return drawn;
}

TEST(Pictures, FitTheTerminalBothWays) {
  struct Case {
    unsigned short columns, rows;
    Drawn drawn;
  };
  // 720 x 480: three columns for each row, but for what is rounded.
  for (const Case& c : {Case{80, 24, {23, 69}}, Case{120, 40, {39, 117}}, Case{40, 12, {11, 33}},
                        Case{40, 60, {13, 40}}, Case{200, 100, {40, 120}}, Case{3, 2, {1, 3}}}) {
    PseudoTerminal terminal(
        [] {
          const auto white =
              sim::FilledImage(sim::kScreenWidth, sim::kScreenHeightNtsc, {255, 255, 255});
          for (const auto choice : {ColourChoice::Never, ColourChoice::Always}) {
            std::printf("%s|", DrawPicture(white, StandardOutputStyle(choice)).c_str());
          }
          return 0;
        },
        {.columns = c.columns, .rows = c.rows});
    EXPECT_EQ(Measure(terminal.WaitFor("|"), "@"), c.drawn) << c.columns << 'x' << c.rows;
    EXPECT_EQ(Measure(terminal.WaitFor("|"), "\u2580"), c.drawn) << c.columns << 'x' << c.rows;
  }
}

TEST(Pictures, FollowTheTerminalsSize) {
  PseudoTerminal terminal(
      [] {
        const auto white = sim::FilledImage(720, 480, {255, 255, 255});
        const PictureStyle style = StandardOutputStyle(ColourChoice::Never);
        do {
          std::printf("%s|\n", DrawPicture(white, style).c_str());
          std::fflush(stdout);
        } while (std::getchar() == '\n');
        return 0;
      },
      {.columns = 80, .rows = 24});
  EXPECT_EQ(Measure(terminal.WaitFor("|\r\n"), "@"), (Drawn{24, 69}));
  terminal.Resize(30, 50);
  terminal.Type("\n");
  terminal.WaitFor("\r\n");
  EXPECT_EQ(Measure(terminal.WaitFor("|\r\n"), "@"), (Drawn{11, 30}));
}

TEST(ProgressLine, StaysOnOneLine) {
  PseudoTerminal terminal(
      [] {
        Progress progress(Progress::OnTerminal());
        const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(1100);
        while (std::chrono::steady_clock::now() < end) progress.Update("a long line's progress");
        return 0;
      },
      {.columns = 12});
  EXPECT_EQ(terminal.WaitForRest(), "\r\x1b[Ka long line\r\x1b[K");
}

TEST(ProgressLine, NeedsATerminalThatCanTakeItBack) {
  PseudoTerminal terminal([] { return Progress::OnTerminal() ? 1 : 0; }, {});
  EXPECT_EQ(terminal.WaitForEnd(), 1);
  PseudoTerminal dumb([] { return Progress::OnTerminal() ? 1 : 0; },
                      {.environment = {"TERM=dumb"}});
  EXPECT_EQ(dumb.WaitForEnd(), 0);
}

// ---- Ctrl-C ------------------------------------------------------------------------------------

TEST(CtrlC, IsNotedAndForgotten) {
  EXPECT_FALSE(Interrupted());
  {
    const InterruptWatch watch;
    std::raise(SIGINT);
    EXPECT_TRUE(Interrupted());
    EXPECT_TRUE(Interrupted());
    ForgetInterrupt();
    EXPECT_FALSE(Interrupted());
    std::raise(SIGINT);
  }
  EXPECT_FALSE(Interrupted());
}

// Runs until somebody ends it.
int DeafChild(std::chrono::milliseconds patience) {
  const InterruptWatch watch(patience);
  termios raw{};
  tcgetattr(STDIN_FILENO, &raw);
  raw.c_lflag &= ~static_cast<tcflag_t>(ECHO | ICANON);
  tcsetattr(STDIN_FILENO, TCSANOW, &raw);
  // Keys would come faster than signals, which do not queue.
  std::raise(SIGINT);
  std::raise(SIGINT);
  std::puts("twice");
  std::fflush(stdout);
  for (;;) pause();
}

TEST(CtrlC, EndsAProcessThatDoesNotAskForItTheThirdTime) {
  PseudoTerminal terminal([] { return DeafChild(std::chrono::milliseconds(0)); }, {});
  terminal.WaitFor("twice");
  terminal.Type("\x03");
  EXPECT_EQ(terminal.WaitForEnd(), 130);
  EXPECT_NE(terminal.Settings().c_lflag & ICANON, 0u);
  EXPECT_NE(terminal.Settings().c_lflag & ECHO, 0u);
}

TEST(CtrlC, HasPatience) {
  const InterruptWatch watch(std::chrono::hours(1));
  for (int i = 0; i < 10; ++i) std::raise(SIGINT);
  EXPECT_TRUE(Interrupted());
}

TEST(CtrlC, IsAnsweredByWhoeverAsks) {
  const InterruptWatch watch(std::chrono::milliseconds(0));
  for (int i = 0; i < 10; ++i) {
    std::raise(SIGINT);
    EXPECT_TRUE(Interrupted());
  }
}

}  // namespace
}  // namespace vexosim
