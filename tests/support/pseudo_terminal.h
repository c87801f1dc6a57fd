// A program, or a function of this one, on a terminal of its own: a test types and reads the
// screen.
//
//   test::PseudoTerminal terminal({VEXOSIM, "shell"});
//   terminal.WaitFor("vexosim> ");
//   terminal.WaitForEditor();
//   terminal.Type("loss 0\r");
//   EXPECT_THAT(terminal.WaitFor("vexosim> "), HasSubstr("= 0"));
//   terminal.WaitForEditor();
//   terminal.Type("\x04");
//   EXPECT_EQ(terminal.WaitForEnd(), 0);
//
// Whatever does not come within a minute fails the test, and so does everything after it.
#pragma once

#include <sys/types.h>
#include <termios.h>

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace test {

class PseudoTerminal {
 public:
  struct Options {
    unsigned short columns = 80;
    unsigned short rows = 24;
    // NAME=VALUE each, besides TERM=xterm, a HOME that is none, and neither NO_COLOR nor
    // XDG_STATE_HOME.
    std::vector<std::string> environment = {};
  };

  PseudoTerminal(const std::vector<std::string>& command, const Options& options);
  explicit PseudoTerminal(const std::vector<std::string>& command)
      : PseudoTerminal(command, Options()) {}
  // The child process ends with what the function returns.
  PseudoTerminal(const std::function<int()>& child, const Options& options);
  // Hangs up and waits for the child's end; kills one that survives that.
  ~PseudoTerminal();
  PseudoTerminal(const PseudoTerminal&) = delete;
  PseudoTerminal& operator=(const PseudoTerminal&) = delete;

  // Sends the keys: "\r" is Enter, "\x03" is Ctrl-C.
  void Type(std::string_view keys);
  // What the screen got up to the end of this text. The next call goes on from there.
  std::string WaitFor(std::string_view text);
  // Waits until the child takes key after key instead of lines: a prompt is on the screen before
  // that, and control keys would do what they do in lines.
  void WaitForEditor();
  // Waits until the child has stopped (Ctrl-Z).
  void WaitForStop();
  // What the screen got besides, to the end of the child, and its exit status: 128 and the number
  // of the signal that ended it.
  std::string WaitForRest();
  int WaitForEnd();

  void Resize(unsigned short columns, unsigned short rows);
  void Signal(int signal);
  void HangUp();
  // As the child has set the terminal, or left it.
  termios Settings() const;

 private:
  void Start(const std::function<int()>& child, const Options& options);
  // Takes what is on its way to the screen, waiting for it a while. False at the end.
  bool Receive(int patience_ms);
  void Fail(const std::string& what);

  pid_t process_ = -1;
  int terminal_ = -1;
  std::string shown_;  // not yet returned
  int status_ = -1;    // the child's, once it has ended
  bool failed_ = false;
};

}  // namespace test
