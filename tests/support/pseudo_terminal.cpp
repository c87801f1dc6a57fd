#include "tests/support/pseudo_terminal.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <utility>

namespace test {
namespace {

constexpr int kPatienceMs = 60'000;
constexpr int kLookAgainMs = 1;  // what has no event of its own

int Execute(const std::vector<std::string>& command) {
  std::vector<char*> arguments;
  arguments.reserve(command.size() + 1);
  for (const std::string& word : command) arguments.push_back(const_cast<char*>(word.c_str()));
  arguments.push_back(nullptr);
  execv(arguments.front(), arguments.data());
  return 127;
}

void SetEnvironment(const std::vector<std::string>& variables) {
  setenv("TERM", "xterm", 1);
  setenv("HOME", "/nonexistent", 1);
  unsetenv("NO_COLOR");
  unsetenv("XDG_STATE_HOME");
  for (const std::string& variable : variables) {
    const std::size_t equals = std::min(variable.size(), variable.find('='));
    const std::string value = equals < variable.size() ? variable.substr(equals + 1) : "";
    setenv(variable.substr(0, equals).c_str(), value.c_str(), 1);
  }
}

class Deadline {
 public:
  bool Over() const { return Clock::now() >= end_; }

 private:
  using Clock = std::chrono::steady_clock;
  Clock::time_point end_ = Clock::now() + std::chrono::milliseconds(kPatienceMs);
};

}  // namespace

PseudoTerminal::PseudoTerminal(const std::vector<std::string>& command, const Options& options) {
  Start([&] { return Execute(command); }, options);
}

PseudoTerminal::PseudoTerminal(const std::function<int()>& child, const Options& options) {
  Start(child, options);
}

void PseudoTerminal::Start(const std::function<int()>& child, const Options& options) {
  winsize size{};
  size.ws_col = options.columns;
  size.ws_row = options.rows;
  std::fflush(nullptr);  // what the test has printed is not the child's to print
  process_ = forkpty(&terminal_, nullptr, nullptr, &size);
  if (process_ == 0) {
    SetEnvironment(options.environment);
    const int status = child();
    std::fflush(nullptr);
    _exit(status);
  }
  if (process_ < 0) return Fail("no terminal");
  // A child that does not read must not hold the test; another child must not keep this terminal.
  fcntl(terminal_, F_SETFL, O_NONBLOCK);
  fcntl(terminal_, F_SETFD, FD_CLOEXEC);
}

PseudoTerminal::~PseudoTerminal() {
  HangUp();
  if (process_ <= 0 || status_ >= 0) return;
  const Deadline deadline;
  while (waitpid(process_, nullptr, WNOHANG) == 0) {
    if (failed_ || deadline.Over()) kill(process_, SIGKILL);
    poll(nullptr, 0, kLookAgainMs);
  }
}

void PseudoTerminal::Fail(const std::string& what) {
  if (!failed_) ADD_FAILURE() << what << "; on the screen: " << shown_;
  failed_ = true;
}

bool PseudoTerminal::Receive(int patience_ms) {
  if (failed_ || terminal_ < 0) return false;
  pollfd ready = {terminal_, POLLIN, 0};
  if (poll(&ready, 1, patience_ms) <= 0) return true;
  char bytes[4096];
  const ssize_t length = read(terminal_, bytes, sizeof bytes);
  if (length <= 0) return false;
  shown_.append(bytes, static_cast<std::size_t>(length));
  return true;
}

void PseudoTerminal::Type(std::string_view keys) {
  const Deadline deadline;
  while (!keys.empty() && !failed_) {
    const ssize_t length = write(terminal_, keys.data(), keys.size());
    if (length > 0) {
      keys.remove_prefix(static_cast<std::size_t>(length));
    } else if (!Receive(kLookAgainMs) || deadline.Over()) {
      Fail("nobody reads the keys");
    }
  }
}

std::string PseudoTerminal::WaitFor(std::string_view text) {
  const Deadline deadline;
  std::size_t found = 0;
  while ((found = shown_.find(text)) == std::string::npos) {
    if (!Receive(kPatienceMs) || deadline.Over()) {
      Fail("no \"" + std::string(text) + '"');
      return {};
    }
  }
  std::string before = shown_.substr(0, found + text.size());
  shown_.erase(0, before.size());
  return before;
}

void PseudoTerminal::WaitForEditor() {
  const Deadline deadline;
  while (!failed_ && (Settings().c_lflag & ICANON) != 0) {
    if (!Receive(kLookAgainMs) || deadline.Over()) Fail("no editor on the terminal");
  }
}

void PseudoTerminal::WaitForStop() {
  const Deadline deadline;
  int status = 0;
  while (!failed_ && waitpid(process_, &status, WNOHANG | WUNTRACED) == 0) {
    Receive(kLookAgainMs);
    if (deadline.Over()) Fail("the program goes on");
  }
  if (!failed_ && !WIFSTOPPED(status)) Fail("the program has ended");
}

std::string PseudoTerminal::WaitForRest() {
  const Deadline deadline;
  while (Receive(kPatienceMs)) {
    if (deadline.Over()) Fail("the program goes on");
  }
  return std::exchange(shown_, {});
}

int PseudoTerminal::WaitForEnd() {
  const Deadline deadline;
  int status = 0;
  while (!failed_ && status_ < 0) {
    Receive(kLookAgainMs);
    if (waitpid(process_, &status, WNOHANG) == process_) {
      status_ = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    } else if (deadline.Over()) {
      Fail("the program goes on");
    }
  }
  return status_;
}

void PseudoTerminal::Resize(unsigned short columns, unsigned short rows) {
  winsize size{};
  size.ws_col = columns;
  size.ws_row = rows;
  ioctl(terminal_, TIOCSWINSZ, &size);
}

void PseudoTerminal::Signal(int signal) { kill(process_, signal); }

void PseudoTerminal::HangUp() {
  if (terminal_ >= 0) close(terminal_);
  terminal_ = -1;
}

termios PseudoTerminal::Settings() const {
  termios settings{};
  tcgetattr(terminal_, &settings);
  return settings;
}

}  // namespace test
