// The line editor on a terminal of its own, and the history that outlives it.
#include "tools/vexosim/shell/line_reader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <thread>

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

// ---- The terminal -------------------------------------------------------------------------------

// A process on a terminal of its own that prints each line that it reads as "<line>", "<end>" at
// the end.
class Terminal {
 public:
  explicit Terminal(const std::string& history_path) {
    process_ = forkpty(&terminal_, nullptr, nullptr, nullptr);
    if (process_ == 0) {
      setenv("TERM", "vt100", 1);
      setenv("HOME", "/nonexistent", 1);
      LineHistory history(history_path);
      const auto reader = MakeTerminalReader(history);
      while (const auto line = reader->Next()) {
        std::printf("<%s>\n", line->c_str());
        std::fflush(stdout);
        history.Add(*line);
      }
      std::printf("<end>\n");
      std::fflush(stdout);
      _exit(0);
    }
  }
  ~Terminal() {
    close(terminal_);
    waitpid(process_, nullptr, 0);
  }

  bool Started() const { return process_ > 0; }
  void Type(const std::string& keys) {
    AwaitEditor();
    ASSERT_EQ(write(terminal_, keys.data(), keys.size()), static_cast<ssize_t>(keys.size()));
  }
  // Everything that is shown up to this text; it fails when the text does not come.
  std::string Until(const std::string& text) {
    constexpr int kPatienceMs = 60'000;
    while (shown_.find(text) == std::string::npos) {
      pollfd ready = {terminal_, POLLIN, 0};
      char bytes[512];
      ssize_t length = 0;
      if (poll(&ready, 1, kPatienceMs) > 0) length = read(terminal_, bytes, sizeof bytes);
      if (length <= 0) {
        ADD_FAILURE() << "no \"" << text << "\" in: " << shown_;
        break;
      }
      shown_.append(bytes, static_cast<std::size_t>(length));
    }
    const std::size_t end = std::min(shown_.size(), shown_.find(text) + text.size());
    std::string before = shown_.substr(0, end);
    shown_.erase(0, end);
    return before;
  }

 private:
  // The editor takes the keys over only after it has shown its prompt.
  void AwaitEditor() const {
    using Clock = std::chrono::steady_clock;
    const auto end = Clock::now() + std::chrono::minutes(1);
    termios settings{};
    while (Clock::now() < end && tcgetattr(terminal_, &settings) == 0) {
      if ((settings.c_lflag & ICANON) == 0) return;
      std::this_thread::yield();
    }
    ADD_FAILURE() << "no editor on the terminal";
  }

  pid_t process_ = -1;
  int terminal_ = -1;
  std::string shown_;
};

class TerminalReaderTest : public testing::Test {
 protected:
  TerminalReaderTest() : terminal_(path_) {}
  void SetUp() override {
    ASSERT_TRUE(terminal_.Started());
    terminal_.Until(kPrompt);
  }
  void TearDown() override { std::remove(path_.c_str()); }

  // The line that the keys give, without its brackets.
  std::string Line(const std::string& keys) {
    terminal_.Type(keys);
    terminal_.Until("<");
    std::string line = terminal_.Until(">\r\n");
    line.erase(std::min(line.size(), line.rfind(">\r\n")));
    terminal_.Until(kPrompt);
    return line;
  }

  const std::string path_ = test::TempPath("terminal_history");
  Terminal terminal_;
};

TEST_F(TerminalReaderTest, EditsALine) {
  EXPECT_EQ(Line("loss 12\b\x7f 3\r"), "loss  3");
  EXPECT_EQ(Line("oss 1\x01l\r"), "loss 1");  // Ctrl-A
}

TEST_F(TerminalReaderTest, CompletesWithTab) {
  EXPECT_EQ(Line("vexo zo\tpo\t1 2\r"), "vexo zoom pos 1 2");
}

TEST_F(TerminalReaderTest, ShowsWhatIsExpectedBelowTheLine) {
  terminal_.Type("vexo zoom pos \t");
  terminal_.Until("X: 0 to 180 display units");
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

TEST_F(TerminalReaderTest, EndsOnCtrlD) {
  terminal_.Type("\x04");
  terminal_.Until("<end>");
}

TEST(TerminalHistory, ComesFromTheFile) {
  const std::string path = test::TempPath("kept_history");
  std::ofstream(path) << "loss 7\nloss 8\n";
  {
    Terminal terminal(path);
    ASSERT_TRUE(terminal.Started());
    terminal.Until(kPrompt);
    terminal.Type("\x10\x10\r");
    terminal.Until("<loss 7>");
    terminal.Until(kPrompt);
    terminal.Type("\x04");
    terminal.Until("<end>");
  }
  EXPECT_THAT(LineHistory(path).Lines(), ElementsAre("loss 7", "loss 8", "loss 7"));
  std::remove(path.c_str());
}

}  // namespace
}  // namespace vexosim
