// When each word of the display's state changes: before, among or behind the registers of the
// operation that changes it. A thread that looks in between finds it so.
#include <cstdint>
#include <functional>
#include <vector>

#include "VexoCtrlSDK.h"
#include "display/channel_masks.h"
#include "display/display_state.h"
#include "display/live_mode.h"
#include "display/live_split.h"
#include "display/live_split_direct.h"
#include "display/play_layout.h"
#include "display/play_mode.h"
#include "display/play_split.h"
#include "display/play_split_direct.h"
#include "tests/display/display_test.h"
#include "tests/support/at_events.h"

namespace test {
namespace {

constexpr int kCyclesOfAccess = 4;
constexpr int kBehind = -1;

class StateTimes : public DisplayTest {
 protected:
  using Word = std::function<std::uint32_t()>;

  // Number of the first access during which the word is what the operation makes of it; kBehind
  // when none finds it so.
  static int ChangesAt(const std::function<void()>& operation, const Word& word,
                       std::uint32_t after) {
    EXPECT_NE(word(), after);
    int cycles = 0;
    int at = kBehind;
    const AtEvents watch([&](const sim::Event&, const sim::EventDetail* detail) {
      if (detail != nullptr) return;
      if (at == kBehind && word() == after) at = cycles / kCyclesOfAccess;
      ++cycles;
    });
    operation();
    EXPECT_EQ(word(), after);
    EXPECT_GT(cycles, 0);
    return at;
  }
};

const Channels kList = Ascending();

// The board has four channels and PAL, where the field mode is the last register of a live split.
TEST_F(StateTimes, AreThoseOfEachOperation) {
  struct Row {
    const char* what;
    std::function<void()> before;
    std::function<void()> operation;
    Word word;
    std::uint32_t after;
    int at;
  };
  const auto nothing = [] {};
  const auto blank = [] { return g_display.blank_mask.playback; };
  const auto view = [] { return std::uint32_t{g_display.view}; };
  const auto live_split = [] { return std::uint32_t{g_display.live_split}; };
  const auto play_split = [] { return std::uint32_t{g_display.play_split}; };
  const auto full = [] { return std::uint32_t{g_playback.full_picture}; };
  const auto centred = [] { return std::uint32_t{g_playback.centred_picture}; };
  const auto single = [] { g_playback = {1, 1}; };
  constexpr int kHold = 4;
  constexpr int kPoll = 1;
  constexpr int kScales = 4 * 4;
  constexpr int kWindows = 4 * 4;
  const std::vector<Row> rows = {
      {"blank all", nothing, TW_BlankAllChannels, blank, 0xF, 0},
      {"unblank all", [] { g_display.blank_mask.playback = 5; }, TW_UnblankAllChannels, blank, 0,
       0},
      {"unblank a pair", [] { g_display.blank_mask.playback = 7; },
       [] { TW_UnblankChannelPair(1); }, blank, 1, kBehind},
      {"blank mask", nothing, [] { TW_SetChannelBlankMask(6); },
       [] { return g_display.blank_mask.live; }, 6, kBehind},
      {"freeze", nothing, [] { TW_SetBit6MaskByChip(0x1234); },
       [] { return std::uint32_t{g_display.bit6_mask}; }, 0x1234, 0},
      {"live mode", [] { g_display.view = kViewPlayback; },
       [] {
         const VexoLiveModeRecord record = {};
         TW_SetLiveModeInfo(&record);
       },
       view, kViewLive, 0},
      {"playback mode", nothing,
       [] {
         const VexoPlayModeRecord record = {};
         TW_SetPlaybackModeInfo(&record);
       },
       view, kViewPlayback, 0},
      {"live split", nothing, [] { TW_SetLiveSplit4Ch(1, kList.data()); }, live_split, 1, kBehind},
      {"direct live split", nothing, [] { TW_SetLiveSplitDirect(2, 1, 3); }, live_split, 2, 0},
      {"its option", nothing, [] { TW_SetLiveSplitDirect(2, 1, 3); },
       [] { return std::uint32_t{g_display.split_option}; }, 3, 0},
      {"its channel", nothing, [] { TW_SetLiveSplitDirect(0, 2, 0); },
       [] { return std::uint32_t{g_display.selected_channel}; }, 2,
       kHold + kPoll + kScales + kWindows},
      {"playback split", nothing, [] { TW_SetPlaySplit4Ch(1, 0, kList.data()); }, play_split, 1,
       kBehind},
      {"its full picture, behind the zoom", single, [] { TW_SetPlaySplit4Ch(1, 0, kList.data()); },
       full, 0, 1},
      {"its centred picture", single, [] { TW_SetPlaySplit4Ch(1, 0, kList.data()); }, centred, 0,
       1},
      {"direct playback split, behind the zoom", nothing, [] { TW_SetPlaySplitDirect(1, 0); },
       play_split, 1, 1},
      {"its centred picture", single, [] { TW_SetPlaySplitDirect(1, 0); }, centred, 0, 0},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.what);
    UseBoard(4, 1);
    row.before();
    EXPECT_EQ(ChangesAt(row.operation, row.word, row.after), row.at);
  }
}

// All channels are blank while the layout is tried; then the registers get the mask of before,
// which stands again by then.
TEST_F(StateTimes, OfARefusedPlaybackSplitEndWithTheBlankMaskOfBefore) {
  UseBoard(4);
  g_display.view = kViewPlayback;
  g_display.blank_mask.playback = 5;
  g_playback.full_picture = 1;  // its zoom ends while all is blank
  std::vector<std::uint32_t> masks;
  const AtEvents watch([&](const sim::Event&, const sim::EventDetail* detail) {
    const std::uint32_t mask = g_display.blank_mask.playback;
    if (detail == nullptr && (masks.empty() || masks.back() != mask)) masks.push_back(mask);
  });
  EXPECT_EQ(TW_SetPlaySplitMode(4, 0, kList.data()), VEXO_ERROR_FAILED);
  EXPECT_EQ(masks, (std::vector<std::uint32_t>{5, 0xFFFF, 5}));
  EXPECT_EQ(g_display.blank_mask.playback, 5u);
}

}  // namespace
}  // namespace test
