// What every test of the library stands on: a fresh simulated PC, and eyes for what happened there.
#pragma once

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

#include "sim/world.h"
#include "tests/model/access.h"

namespace test {

class LibraryTest : public ::testing::Test {
 protected:
  LibraryTest();  // a fresh world and a library as at load
  // No report of the board may be left over, unless ExpectReports() ran, and no message may have
  // had an lParam, unless ExpectLparams() did.
  ~LibraryTest() override;

  sim::World& world() { return sim::TheWorld(); }

  // Attaches the library and binds a new host window.
  void AttachAndBind();
  // Fits a board (4, 8, 12 or 16 channels), all cameras of one standard (VEXO_VIDEO_...; none: all
  // off), NVRAM agreeing with it; attaches, binds and runs VEXO_CMD_INIT, stops the worker, and
  // marks.
  void StartBoard(int channels, int standard = 0);
  // The same without the chips: sets the video state as initialization would leave it, with
  // attached windows, and marks. No register is written.
  void PretendBoard(int channels, int standard = 0);

  int Command(std::uint32_t code, std::vector<std::uint8_t> record);
  int CommandNull(std::uint32_t code);
  std::vector<std::uint8_t> last_record;  // as the last command left it (64 bytes)

  // From here on the functions below look.
  void Mark();
  std::vector<Access> Accesses();    // reads and writes, in order
  std::vector<Access> Writes();      // writes alone
  std::uint64_t Cycles();            // bus cycles
  std::vector<std::string> Debug();  // one text a write, prefixes included
  std::string DebugText();           // all of them joined
  std::vector<std::string> KernelDebug();
  std::vector<std::uint32_t> Messages();  // sent and posted with success, codes
  std::vector<sim::MessageEvent> MessageEvents();
  std::uint32_t Elapsed();  // virtual ms

  std::uint8_t Register(int position, int page, int reg);
  RegisterImage Image();

  void ExpectReports() { reports_expected_ = true; }
  void ExpectLparams() { lparams_expected_ = true; }

 private:
  void ExpectLparams0();

  std::size_t mark_ = 0;
  std::uint64_t cycle_mark_ = 0;
  std::uint32_t time_mark_ = 0;
  bool reports_expected_ = false;
  bool lparams_expected_ = false;
};

}  // namespace test
