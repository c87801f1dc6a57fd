// Which lines take time.
#include <algorithm>
#include <array>
#include <sstream>
#include <string>

#include "harness/host.h"
#include "tests/support/library_test.h"
#include "text/back_end_text.h"
#include "text/chip_text.h"

namespace test {
namespace {

class TextTimes : public LibraryTest {
 protected:
  // With chips that do not settle for long and a window that does not answer.
  std::uint32_t Of(const std::string& line) {
    harness::Restart();
    StartBoard(4);
    world().board.SetSettle(1000);
    world().windows.deaf = true;
    Mark();
    EXPECT_EQ(harness::TextCommandProc(line), 0) << line;
    return Elapsed();
  }
};

// A line as its pattern wants it: a 2 for each number.
std::string LineOf(const TextGrammar& grammar, std::uint8_t index) {
  std::istringstream words(grammar.pattern(index));
  std::string line = std::string(grammar.header) + " ";
  for (std::string word; words >> word;) {
    const bool stands_for_itself = word.front() >= 'a' && word.front() <= 'z';
    line += (stands_for_itself ? word : "2") + " ";
  }
  return line;
}

// As the public header has it.
constexpr std::array kThatTakeTime = {
    "vexo init 2 ",       "vexo lsplit 2 2 2 ", "vexo mpip stop 2 2 2 ",
    "vexo bluescr init ", "vexo rver ",         "vexo rr 2 2 2 "};

// Holds: VEXOAPI_TextCommandProc "Any other does not wait."
TEST_F(TextTimes, AreNoneForEveryOtherLine) {
  unsigned others = 0;
  for (const TextGrammar* grammar : {&kChipGrammar, &kBackEndGrammar}) {
    for (std::uint8_t i = 0; i < grammar->count; ++i) {
      const std::string line = LineOf(*grammar, i);
      const bool takes = std::ranges::count(kThatTakeTime, line) != 0;
      others += takes ? 0 : 1;
      EXPECT_EQ(Of(line) != 0, takes) << line;
    }
  }
  EXPECT_EQ(others + kThatTakeTime.size(), kChipGrammar.count + kBackEndGrammar.count + 0u);
}

}  // namespace
}  // namespace test
