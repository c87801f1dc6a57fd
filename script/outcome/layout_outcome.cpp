#include "script/outcome/layout_outcome.h"

#include <algorithm>

#include "VexoCtrlSDK.h"
#include "display/window_tables.h"
#include "sim/text.h"

namespace script {
namespace {

// Boards of 12 channels have no layouts and masks of their own: the library goes by 8.
constexpr unsigned kTwelve = 12;
constexpr unsigned kReachOfTwelve = 8;

bool HasLargeWindow(unsigned mode) {
  return mode == VEXO_SPLIT_6 || mode == VEXO_SPLIT_8 || mode == VEXO_SPLIT_13;
}

std::string Range(unsigned first, unsigned end) {
  return first + 1 == end ? std::to_string(first)
                          : std::to_string(first) + " to " + std::to_string(end - 1);
}

std::string Windows(unsigned first, unsigned end) {
  return (first + 1 == end ? "window " : "windows ") + Range(first, end);
}

// True, and said, when no layout comes of it.
bool NoLayout(TextAction& a, std::size_t mode, bool full_screen_counts) {
  if (a.Byte(mode) >= kSplitModes) {
    a.Say(a.Named(mode) + " is no split: nothing was laid out, the blank mask alone was written");
    return true;
  }
  if (a.Channels() == 0 && (a.Byte(mode) != VEXO_SPLIT_FULL || full_screen_counts)) {
    a.Say("the library knows of no channels: nothing was laid out");
    return true;
  }
  return false;
}

void SayOfEmptyWindows(TextAction& a, unsigned shown, unsigned windows) {
  if (shown < windows) {
    a.Say(Windows(shown, windows) + (windows - shown == 1 ? " stays" : " stay") +
          " empty: the board has " + std::to_string(a.Channels()) + " channels");
  }
}

// Channels are counted round the board, and each has one window.
void SayOfWrappedChannels(TextAction& a, unsigned windows) {
  if (windows > a.Channels()) {
    a.Say("the board's " + std::to_string(a.Channels()) + " channels do not fill " +
          std::to_string(windows) + " windows: counted round, each is in the last one it got");
  }
}

// The board has channels; one that has none gets no layout.
void SayCountsAs(TextAction& a, std::size_t channel) {
  if (a.Channels() == 0) return;
  a.Say(NotOfTheBoard(a, channel) + ": it counts as " +
        std::to_string(a.Byte(channel) % a.Channels()));
}

// A first channel that the board lacks.
void SayOfFirstLive(TextAction& a, unsigned mode, std::size_t channel) {
  const unsigned number = a.Byte(channel);
  if (number < a.Channels()) return;
  if (mode != VEXO_SPLIT_FULL && !HasLargeWindow(mode)) return SayCountsAs(a, channel);
  const unsigned written = WrittenChannel(number);
  const std::string place = mode == VEXO_SPLIT_FULL ? "in front" : "in the large window";
  const bool is_one = written < a.Channels() && !(mode == VEXO_SPLIT_FULL && a.Channels() == 4);
  a.Say(NotOfTheBoard(a, channel) + ": " +
        (is_one ? "channel " + std::to_string(written) + " was written " + place
                : "no channel is " + place));
}

void SayOfFirstPlay(TextAction& a, unsigned mode, std::size_t channel) {
  if (mode == VEXO_SPLIT_16) {
    if (a.Byte(channel) != 0) {
      a.Say(a.Named(channel) + " is not used: each channel is in the window of its own number");
    }
  } else if (a.Byte(channel) >= a.Channels()) {
    if (mode == VEXO_SPLIT_FULL) {
      a.Say(NotOfTheBoard(a, channel) + ": no picture is shown");
    } else {
      SayCountsAs(a, channel);
    }
  }
}

// Bits of a mask that stand for no channel of the board. All ones is how one writes "all".
void SayOfMask(TextAction& a, std::size_t place) {
  constexpr unsigned kAll = 0xFFFF;
  const auto mask = static_cast<unsigned>(a.Number(place));
  const unsigned beyond = mask >> a.Channels() << a.Channels();
  if (beyond != 0 && mask != kAll) {
    a.Say("the board has no channel " + sim::BitList(beyond, kChannelsMax) + ": those bits of " +
          std::string(a.Line().numbers[place].name) + " count for nothing");
  }
}

}  // namespace

void SayOfLiveSplit(TextAction& a) {
  const std::size_t mode_place = a.PlaceOf("MODE");
  if (NoLayout(a, mode_place, false)) return;
  const unsigned mode = a.Byte(mode_place);
  const unsigned windows = kWindowsOfMode[mode];
  if (mode == VEXO_SPLIT_9 && a.Channels() == 4) {
    return a.Say("4 channels do not fill a 3 x 3: nothing is shown");
  }
  if (HasLargeWindow(mode)) {
    SayOfWrappedChannels(a, windows);
  } else {
    SayOfEmptyWindows(a, std::min(windows, a.Channels()), windows);
  }
  SayOfFirstLive(a, mode, a.PlaceOf("CHANNEL"));
}

void SayOfPlaySplit(TextAction& a) {
  const std::size_t mode_place = a.PlaceOf("MODE");
  if (NoLayout(a, mode_place, true)) return;
  const unsigned mode = a.Byte(mode_place);
  const unsigned windows = kWindowsOfMode[mode];
  if (mode == VEXO_SPLIT_16 && a.Channels() == kTwelve) {
    a.Say("of 12 channels 0 to 7 alone are shown");
  } else if (HasLargeWindow(mode)) {
    SayOfWrappedChannels(a, windows);
  } else {
    SayOfEmptyWindows(a, std::min(windows, a.Channels()), windows);
  }
  SayOfFirstPlay(a, mode, a.PlaceOf("CHANNEL"));
}

void SayOfMasks(TextAction& a) {
  bool reaches = true;
  for (std::size_t i = 0; i < a.Line().numbers.size(); ++i) {
    const TypedNumber& number = a.Line().numbers[i];
    if (!number.name.ends_with("_MASK")) continue;
    SayOfMask(a, i);
    // A mask that is the command's point, or that would have shown something beyond.
    const bool beyond = (number.value >> kReachOfTwelve) != 0 || number.name == "FREEZE_MASK" ||
                        a.Line().numbers.size() == 1;
    if (a.Channels() == kTwelve && !number.typed.empty() && beyond) reaches = false;
  }
  if (!reaches) a.Say("of 12 channels the masks reach 0 to 7 alone");
}

}  // namespace script
