// What the tests of the chip commands stand on: a line is held against the operations behind it,
// called directly on a board that is just like the line's.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "VexoCtrlSDK.h"
#include "tests/support/library_test.h"

namespace test {

struct BoardKind {
  int channels;
  int standard;
};

// Every size, both standards and none.
inline constexpr std::array<BoardKind, 6> kBoardKinds = {{{4, VEXO_VIDEO_NTSC},
                                                          {4, VEXO_VIDEO_PAL},
                                                          {8, VEXO_VIDEO_PAL},
                                                          {12, VEXO_VIDEO_NTSC},
                                                          {16, VEXO_VIDEO_NTSC},
                                                          {16, VEXO_VIDEO_NONE}}};

// A line and the calls that it stands for.
struct LineCase {
  const char* line;
  void (*operations)();
};

// What came of a line, or of calls.
struct Outcome {
  int result = 0;
  std::vector<std::string> events;  // all of the trace, as short lines
  std::vector<std::uint8_t> state;  // what the library keeps and the NVRAM
  bool operator==(const Outcome& other) const {
    return events == other.events && state == other.state;
  }
};

class ChipTextTest : public LibraryTest {
 protected:
  // A fresh PC whose chips are ready and whose registers and tables hold bits to be kept or lost.
  void Fresh(const BoardKind& board);
  // The same before initialization: the chips are there, and not ready.
  void FreshNotReady(const BoardKind& board);

  // Sends a line: its result.
  int Text(const std::string& line);
  // Whatever happened since the last Text or Mark, but for the export's own call and return.
  std::vector<std::string> Events();
  std::vector<std::uint8_t> State();

  Outcome OutcomeOf(const BoardKind& board, const std::string& line);
  Outcome OutcomeOf(const BoardKind& board, const std::function<void()>& operations);
  // The line is accepted and does exactly what the operations do, which is something.
  void ExpectDoes(const BoardKind& board, const LineCase& line);
  void ExpectDoesOnEveryBoard(const LineCase& line);
  // The line is accepted and nothing happens.
  void ExpectDoesNothing(const BoardKind& board, const std::string& line);
  // The line is refused and nothing happens.
  void ExpectRefused(const BoardKind& board, const std::string& line);

 private:
  std::size_t from_ = 0;  // in the trace: where Events begins
};

}  // namespace test
