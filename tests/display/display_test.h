// A board whose registers hold bytes that no operation leaves there, so that a bit that is lost or
// brought in shows, and whose results are compared with the model's.
#pragma once

#include <cstddef>
#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

#include "display/window_tables.h"
#include "tests/model/reference_model.h"
#include "tests/support/library_test.h"

namespace test {

class DisplayTest : public LibraryTest {
 protected:
  // Attached, with the video state of an initialized board, and marked.
  void UseBoard(int channels, int standard = 0);
  // New bytes in all registers of all fitted chips, and a mark.
  void Scribble(unsigned seed);
  // A model of the board and of the display's state as they are now.
  ReferenceModel Model();
  // The rectangle that a channel's window registers hold.
  Rect RectOf(int channel);

  // The accesses since the mark and the registers are the model's.
  void ExpectLike(const ReferenceModel& model);
  // No access and no text since the mark.
  void ExpectUntouched();
  // Exactly this one plain print since the mark.
  void ExpectPrinted(const std::string& text);
  // Lengths of the timed waits since the mark.
  std::vector<std::uint32_t> Waits();

 private:
  int channels_ = 0;
  int standard_ = 0;
  std::size_t from_ = 0;
};

// All windows of one of the library's tables, in order.
std::vector<Rect> RectsOf(const WindowTable& table);

// A list of the first channels.
Channels Ascending(std::size_t count = 16);

// Parameter of tests that run on several boards.
struct BoardCase {
  int channels;
  int standard;
};
inline void PrintTo(const BoardCase& board, std::ostream* out) {
  *out << board.channels << " channels, standard " << board.standard;
}
std::string NameOf(const ::testing::TestParamInfo<BoardCase>& info);

}  // namespace test
