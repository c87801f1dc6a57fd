// vexosim serve as its user meets it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <regex>
#include <string>

#include "tests/desk/port/client.h"
#include "tests/support/command_output.h"
#include "tests/support/pseudo_terminal.h"
#include "tests/support/temp_path.h"

namespace vexosim {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;

// The number behind this text.
std::uint16_t NumberBehind(const std::string& text, const std::string& what) {
  std::smatch found;
  EXPECT_TRUE(std::regex_search(text, found, std::regex(what + "([0-9]+)"))) << text;
  return found.empty() ? std::uint16_t{0} : static_cast<std::uint16_t>(std::stoi(found[1]));
}

class Serve : public testing::Test {
 protected:
  // Where it says that it is.
  std::string Start(test::PseudoTerminal& terminal) {
    std::string said = terminal.WaitFor("Ctrl-C ends it.");
    page_ = NumberBehind(said, "http://127\\.0\\.0\\.1:");
    return said;
  }

  std::uint16_t page_ = 0;
};

TEST_F(Serve, SaysWhereToLookServesThePageAndEndsOnCtrlC) {
  test::PseudoTerminal terminal({VEXOSIM, "serve", "--port", "0", "--chips", "1"});
  EXPECT_THAT(Start(terminal), HasSubstr("A board of 4 channels with NTSC cameras, initialized"));
  desk::Client browser(page_);
  browser.Send("GET / HTTP/1.1\r\nHost: 127.0.0.1:" + std::to_string(page_) + "\r\n\r\n");
  EXPECT_THAT(browser.Line(), testing::Optional(StartsWith("HTTP/1.1 200")));
  terminal.Type("\x03");
  EXPECT_EQ(terminal.WaitForEnd(), 0);
}

TEST_F(Serve, TakesLinesAtItsControlPortAndEndsOnQuit) {
  test::PseudoTerminal terminal({VEXOSIM, "serve", "--port", "0", "--control-port", "0"});
  desk::Client client(NumberBehind(Start(terminal), "Control port "));
  client.Send("vexo 1 events\n");
  client.Json();
  // The camera's message may come before the wait begins.
  client.Send("lsplit 9 0\ncamera 5 off\nrun 1000\nexpect no message 0x2405\n");
  std::string answers;
  while (answers.find("\"answer\":4") == std::string::npos) {
    const auto line = client.Line();
    ASSERT_TRUE(line) << answers;
    answers += *line + '\n';
  }
  EXPECT_THAT(answers, AllOf(HasSubstr("\"message\":9219"), HasSubstr("\"text\":\"met\"")));
  client.Send("quit\n");
  EXPECT_EQ(terminal.WaitForEnd(), 0);
}

TEST_F(Serve, RunsAScriptInRealTimeAndWritesTheTrace) {
  const std::string script = test::TempPath("serve.vexo");
  const std::string trace = test::TempPath("serve.jsonl");
  std::ofstream(script) << "camera 2 off\nrun 1100\nexpect no message 0x2405\nlsplit 1 0\nquit\n";
  test::PseudoTerminal terminal(
      {VEXOSIM, "serve", script, "--port", "0", "--chips", "1", "--trace", trace});
  EXPECT_THAT(terminal.WaitForRest(), AllOf(HasSubstr("run 1100\r\n"), HasSubstr("      met\r\n"),
                                            HasSubstr("vexo lsplit 1 0\r\n      = 0\r\n")));
  EXPECT_EQ(terminal.WaitForEnd(), 0);
  const std::string replayed = test::CommandOutput(std::string(VEXOSIM) + " replay " + trace);
  EXPECT_THAT(replayed, HasSubstr("camera 2 off\n"));
  EXPECT_THAT(replayed, HasSubstr("run 1100\n"));
  std::filesystem::remove(script);
  std::filesystem::remove(trace);
}

TEST_F(Serve, SaysThatAPortIsTaken) {
  test::PseudoTerminal first({VEXOSIM, "serve", "--port", "0", "--chips", "1"});
  Start(first);
  const std::string said = test::CommandOutput(
      std::string(VEXOSIM) + " serve --port " + std::to_string(page_) + " 2>&1", 2);
  EXPECT_THAT(said,
              AllOf(StartsWith("vexosim: "), HasSubstr(std::to_string(page_)), HasSubstr("taken")));
  EXPECT_EQ(std::count(said.begin(), said.end(), '\n'), 1) << said;
}

TEST_F(Serve, RefusesAScriptThatIsNone) {
  const std::string script = test::TempPath("serve_wrong.vexo");
  std::ofstream(script) << "camera 2 off\nkamera\n";
  EXPECT_THAT(test::CommandOutput(std::string(VEXOSIM) + " serve " + script + " 2>&1", 2),
              HasSubstr(":2: unknown: 'kamera'"));
  std::filesystem::remove(script);
}

}  // namespace
}  // namespace vexosim
