#include "tools/vexosim/shell/terminal_input.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <cerrno>

#include "tools/vexosim/terminal.h"

namespace vexosim {
namespace {

// Signals as bytes: any thread may get one, and none is lost between a look and a wait.
int g_signals[2] = {-1, -1};

void PassOn(int signal) {
  const int error = errno;
  const auto byte = static_cast<char>(signal);
  // A full pipe has told enough.
  [[maybe_unused]] const ssize_t written = write(g_signals[1], &byte, 1);
  errno = error;
}

struct sigaction Handle(int signal) {
  struct sigaction action {};
  struct sigaction before {};
  action.sa_handler = PassOn;
  action.sa_flags = SA_RESTART;
  sigaction(signal, &action, &before);
  return before;
}

// Interrupts come here, not to what runs a line.
class TakeInterrupts {
 public:
  TakeInterrupts() : before_(Handle(SIGINT)) {}
  ~TakeInterrupts() { sigaction(SIGINT, &before_, nullptr); }
  TakeInterrupts(const TakeInterrupts&) = delete;
  TakeInterrupts& operator=(const TakeInterrupts&) = delete;

 private:
  const struct sigaction before_;
};

}  // namespace

TerminalInput::TerminalInput() {
  if (pipe2(g_signals, O_CLOEXEC | O_NONBLOCK) != 0) g_signals[0] = g_signals[1] = -1;
  resized_before_ = Handle(SIGWINCH);
  resumed_before_ = Handle(SIGCONT);
}

TerminalInput::~TerminalInput() {
  sigaction(SIGWINCH, &resized_before_, nullptr);
  sigaction(SIGCONT, &resumed_before_, nullptr);
  for (int& end : g_signals) {
    close(end);
    end = -1;
  }
}

TerminalInput::Input TerminalInput::Next() {
  const TakeInterrupts take;
  if (Interrupted()) {  // between two keys
    ForgetInterrupt();
    return {Kind::Interrupt};
  }
  for (;;) {
    pollfd sources[] = {{g_signals[0], POLLIN, 0}, {STDIN_FILENO, POLLIN, 0}};
    if (poll(sources, 2, -1) < 0 && errno != EINTR) return {Kind::End};
    Input input{Kind::Byte};
    if (read(g_signals[0], &input.byte, 1) == 1) {
      if (input.byte == SIGINT) return {Kind::Interrupt};
      return {input.byte == SIGWINCH ? Kind::Resized : Kind::Resumed};
    }
    if (sources[1].revents == 0) continue;
    const ssize_t length = read(STDIN_FILENO, &input.byte, 1);
    if (length == 1) return input;
    // Else another process took the byte, or the terminal is another process's for now.
    if (length == 0 || (errno != EINTR && errno != EAGAIN)) return {Kind::End};
  }
}

}  // namespace vexosim
