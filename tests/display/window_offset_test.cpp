// Moving single windows of the live and of the playback table.
#include <cstdint>
#include <ostream>
#include <string>

#include "chip/video_state.h"
#include "display/display_state.h"
#include "display/live_split_direct.h"
#include "display/play_split_direct.h"
#include "display/window_tables.h"
#include "tests/display/display_test.h"

namespace test {
namespace {

// One of the two tables, what sets a window of it, and the table that must stay as it is.
struct TableCase {
  const char* name;
  WindowTable LayoutState::*table;
  WindowTable LayoutState::*other;
  void (*set)(std::uint8_t mode, std::uint8_t window, std::int8_t dx_start, std::int8_t dy_start,
              std::int8_t dx_end, std::int8_t dy_end);
};
void PrintTo(const TableCase& table, std::ostream* out) { *out << table.name; }

class WindowOffset : public DisplayTest, public ::testing::WithParamInterface<TableCase> {
 protected:
  static std::vector<Rect> Table() { return RectsOf(g_layout.*GetParam().table); }
  static std::vector<Rect> OtherTable() { return RectsOf(g_layout.*GetParam().other); }
  static Rect Window(int mode, int window) {
    std::size_t at = static_cast<std::size_t>(window);
    for (int m = 0; m < mode; ++m) {
      at += static_cast<std::size_t>(kWindows.at(static_cast<std::size_t>(m)));
    }
    return Table().at(at);
  }
  static void Set(int mode, int window, int dx_start, int dy_start, int dx_end, int dy_end) {
    GetParam().set(static_cast<std::uint8_t>(mode), static_cast<std::uint8_t>(window),
                   static_cast<std::int8_t>(dx_start), static_cast<std::int8_t>(dy_start),
                   static_cast<std::int8_t>(dx_end), static_cast<std::int8_t>(dy_end));
  }
  static void BuildDefaults() {
    TW_BuildLiveLayout();
    TW_BuildPlayLayout();
  }
};

INSTANTIATE_TEST_SUITE_P(Tables, WindowOffset,
                         ::testing::Values(TableCase{"Live", &LayoutState::live, &LayoutState::play,
                                                     VexoProc_SetLiveSplitOffset},
                                           TableCase{"Playback", &LayoutState::play,
                                                     &LayoutState::live, TW_SetPlaySplitOffset}),
                         [](const auto& table) { return std::string(table.param.name); });

// Holds: Chips: vexo "`DX_START`: left edge"
TEST_P(WindowOffset, MovesExactlyOneWindowOfEveryModeByItsFourOffsets) {
  for (const int standard : {0, 1, 2}) {
    UseBoard(16, standard);
    std::size_t at = 0;
    for (int mode = 0; mode < 7; ++mode) {
      const std::vector<Rect> defaults = DefaultRects(mode, standard == 0);
      for (int window = 0; window < kWindows.at(static_cast<std::size_t>(mode)); ++window, ++at) {
        SCOPED_TRACE("standard " + std::to_string(standard) + ", mode " + std::to_string(mode) +
                     ", window " + std::to_string(window));
        BuildDefaults();
        std::vector<Rect> expected = Table();
        const std::vector<Rect> other = OtherTable();
        const Rect base = defaults.at(static_cast<std::size_t>(window));
        // The arguments come as x, y, x, y; the rectangle is x, x, y, y.
        expected.at(at) = {base[0] + 1, base[1] + 3, (base[2] - 2) & 0xFF, base[3] - 4};
        Set(mode, window, 1, -2, 3, -4);
        EXPECT_EQ(Table(), expected);
        EXPECT_EQ(OtherTable(), other);
      }
    }
    EXPECT_EQ(at, 57u);
    ExpectUntouched();
  }
}

// Holds: vexo lsplit_pos "A mode or window that there is not changes nothing."
// Holds: Chips: vexo "`WINDOW`: window of the split"
// Holds: vexo psplit_pos "Otherwise as lsplit_pos."
TEST_P(WindowOffset, OfAWindowOrModeThatDoesNotExistChangesNothing) {
  UseBoard(16);
  const std::vector<Rect> before = Table();
  const std::vector<Rect> other = OtherTable();
  for (int mode = 0; mode < 256; ++mode) {
    const int windows = mode < 7 ? kWindows.at(static_cast<std::size_t>(mode)) : 0;
    for (int window = windows; window < 256; ++window) Set(mode, window, 1, 1, 1, 1);
  }
  EXPECT_EQ(Table(), before);
  EXPECT_EQ(OtherTable(), other);
  ExpectUntouched();
}

// Holds: vexo lsplit_pos "An edge that leaves 0 to 255 comes in again on the other"
// Holds: vexo psplit_pos "Otherwise as lsplit_pos."
TEST_P(WindowOffset, WrapsEachByteAt8Bits) {
  UseBoard(16);
  Set(0, 0, -128, -128, 127, 127);
  EXPECT_EQ(Window(0, 0), (Rect{0x84, 0x2F, 0x81, 0xF6}));
  Set(0, 0, -5, -2, -128, -128);
  EXPECT_EQ(Window(0, 0), (Rect{0xFF, 0x30, 0xFF, 0xF7}));
}

TEST_P(WindowOffset, CalledTwiceWith2MovesBy2) {
  UseBoard(16);
  Set(1, 3, 2, 2, 2, 2);
  Set(1, 3, 2, 2, 2, 2);
  EXPECT_EQ(Window(1, 3), (Rect{0x5C, 0xB2, 0x3E, 0x79}));
  Set(1, 3, 0, 0, 0, 0);
  EXPECT_EQ(Window(1, 3), (Rect{0x5A, 0xB0, 0x3C, 0x77}));
}

TEST_P(WindowOffset, StartsFromTheDefaultOfTheStandardOfTheMoment) {
  UseBoard(16, 0);
  g_video.video_standard = 1;
  Set(0, 0, 0, 0, 0, 1);
  EXPECT_EQ(Window(0, 0), (Rect{0x04, 0xB0, 0x01, 0x8F}));
  g_video.video_standard = 2;
  Set(1, 0, 0, 0, 0, 0);
  EXPECT_EQ(Window(1, 0), (Rect{0x04, 0x5A, 0x02, 0x48}));
  g_video.video_standard = 0;
  Set(1, 0, 0, 0, 0, 0);
  EXPECT_EQ(Window(1, 0), (Rect{0x04, 0x5A, 0x01, 0x3C}));
}

TEST_P(WindowOffset, IsTheSameOnEveryBoardAndInBothViews) {
  for (const int channels : {0, 4, 8, 12, 16}) {
    for (const std::uint8_t view : {kViewLive, kViewPlayback}) {
      UseBoard(channels);
      g_display.view = view;
      Set(0, 0, 1, 2, 3, 4);
      Set(1, 2, 1, 2, 3, 4);
      Set(6, 15, 1, 2, 3, 4);
      EXPECT_EQ(Window(0, 0), (Rect{0x05, 0xB3, 0x03, 0x7B}));
      EXPECT_EQ(Window(1, 2), (Rect{0x05, 0x5D, 0x3E, 0x7B}));
      EXPECT_EQ(Window(6, 15), (Rect{0x86, 0xB3, 0x5B, 0x7A}));
    }
  }
}

}  // namespace
}  // namespace test
