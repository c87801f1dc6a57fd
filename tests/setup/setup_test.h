// What the tests of the chips' setup look at beside registers: texts with the print that wrote
// them, and everything that happened in one ordered list.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "tests/support/library_test.h"

namespace test {

// A text as the plain print writes it, and as the levelled print does.
inline std::string Plain(const std::string& text) { return "[VexoCtrlSDK]: " + text; }
inline std::string Levelled(const std::string& text) { return "[VEXOSDK]: " + text; }

class SetupTest : public LibraryTest {
 protected:
  // Fits a board with all cameras alike (0 NTSC, 1 PAL, 2 off); nothing is attached.
  void Fit(int chips, int cameras);

  // Attaches the library and binds a window, unless that was done before.
  void AttachOnce();

  // Prefix and text of each print since the mark. A text that lacks its prefix is a failure.
  std::vector<std::string> Prints();

  // All that happened since the mark, one line each: "w 03 1 AC 45" and "r ..." for registers
  // (chip, page, register, value), "print ...", "open CAM1:", "control 220864 ok|failed", "close",
  // "sleep 240", "wait 5", "lock", "unlock", "thread start|end|terminate", "nvram read", "post
  // 2402", "send 2403". What the worker does is left out.
  std::vector<std::string> Flow();
  void Mark();

  // Place of a line in a flow; a failure and the end when it is not there exactly once.
  static std::size_t PlaceOf(const std::vector<std::string>& flow, const std::string& line);

  template <typename T>
  std::vector<T> Events() {
    std::vector<T> found;
    const sim::Trace& trace = world().trace;
    for (std::size_t i = flow_mark_; i < trace.Events().size(); ++i) {
      if (const T* event = trace.As<T>(trace.Events()[i])) found.push_back(*event);
    }
    return found;
  }

 private:
  std::size_t flow_mark_ = 0;
};

}  // namespace test
