// Live splits: of the binary commands, and of the text path. Both hold the picture first.
#include "tests/model/reference_model.h"

namespace test {

// ---- Holding the picture ------------------------------------------------------------------------

void ReferenceModel::Poll(int most_polls) {
  for (int poll = 0; most_polls == 0 || poll < most_polls; ++poll) {
    const bool busy = chips != 0 && (busy_polls == kNever || poll < busy_polls);
    for (std::size_t p = 0; p < static_cast<std::size_t>(chips); ++p) {
      const int status = image.at(p)[1][0x04];
      accesses.push_back(R(kChips.at(p), 1, 0x04, busy ? status | 0x0F : status));
    }
    if (!busy) return;
  }
}

void ReferenceModel::ApplyAntiRolling() {
  for (int n = 0; n < 4; ++n) {
    const int old = Read(kMaster, 1, 0x10 + 8 * n);
    Write(kAll, 1, 0x10 + 8 * n, ((old & 0xFC) | 0x10) + n);
  }
  Poll(200);
}

void ReferenceModel::ReleaseAntiRolling() {
  for (int n = 0; n < 4 * chips; ++n) {
    const int old = Read(ChipOf(n), 1, 0x10 + 8 * (n % 4));
    Control(n, (old & 0x2C) | 0xC0);
  }
}

// ---- Of the binary commands ---------------------------------------------------------------------

int ReferenceModel::LiveSplitMode(int mode, const Channels& list) {
  if (view != kLive) {
    printed.push_back(">> ERROR TW_SetLiveSplitMode CURREENT PLAYBACK MODE!!");
    return -1;
  }
  if (mode > 6) {
    printed.push_back(">> ERROR TW_SetLiveSplitMode INVALID PARAM!!");
    return -5;
  }
  if (mode > HighestMode(channels)) return -1;
  LiveSplit(mode, list);
  Blank(~masks.live);
  return 0;
}

void ReferenceModel::LiveSplit(int mode, const Channels& list) {
  ApplyAntiRolling();
  if (channels == 4) {
    LiveSplit4(mode, list);
  } else {
    LiveSplitByScan(mode, list);
  }
  ReleaseAntiRolling();
  if (standard == 1) Write(kAll, 0, 0xC5, mode == 0 ? 0xFF : 0xF0);
  live_split = mode;
}

void ReferenceModel::LiveSplit4(int mode, const Channels& list) {
  for (int n = 0; n < 4; ++n) Scale(n, ScalingOf(mode, 0).scale);
  LayoutToAll(ScalingOf(mode, 0).code);
  if (mode == 0) {
    for (int n = 0; n < 4; ++n) Place(n, n == list.at(0) ? Tile(0, 0) : kHidden);
    for (int n = 0; n < 4; ++n) All1(0x10 + 8 * n, (n == list.at(0) ? 0xC0 : 0x80) + n);
    return;
  }
  for (int k = 0; k < 4; ++k) {
    const int c = list.at(static_cast<std::size_t>(k));
    if (c < 4) Place(c, Tile(1, k));
  }
}

void ReferenceModel::LiveSplitByScan(int mode, const Channels& list) {
  const int count = kWindows.at(static_cast<std::size_t>(mode));
  const auto entry = [&list](int k) -> int { return list.at(static_cast<std::size_t>(k)); };

  if (IsLargeAndSmall(mode)) {
    for (int k = 0; k < count; ++k) {
      if (entry(k) >= channels) continue;
      Scale(entry(k), ScalingOf(mode, k).scale);
      Layout(entry(k), ScalingOf(mode, k).code);
    }
  } else {
    for (int n = 0; n < channels; ++n) Scale(n, ScalingOf(mode, 0).scale);
  }
  if (mode <= 1) LayoutToAll(ScalingOf(mode, 0).code);

  const bool with_code = mode == 4 || mode == 6;
  int k = 0;
  for (int n = 0; n < channels && k < count; ++n) {
    if (n == entry(k)) {
      Place(n, Tile(mode, k));
      if (with_code) Layout(n, ScalingOf(mode, k).code);
      ++k;
    } else if (channels == 16 && mode == 4 && entry(0) == 9 && n < 2) {  // the second page
      Place(n, Tile(4, n + 7));
      Layout(n, ScalingOf(4, n + 7).code);
    } else {
      Place(n, kHidden);
    }
  }
}

// ---- Of the text path ---------------------------------------------------------------------------

void ReferenceModel::LiveSplitDirect(int mode, int first, int option) {
  live_split = mode;
  split_option = option;
  if (mode == 0) selected_channel = first;
  All1Each(0x10, 0x90, 1);
  Poll(0);
  if (channels != 0 || mode == 0) PlaceDirect(mode, first, option);  // the others count channels
  for (int n = 0; n < 4 * chips; ++n) {
    const int reg = 0x10 + 8 * (n % 4);
    const bool held = (Read(ChipOf(n), 1, reg) & 0x10) != 0;
    if (held) Write(ChipOf(n), 1, reg, mode == 1 ? n % 4 : 0);
  }
}

void ReferenceModel::PlaceDirect(int mode, int first, int option) {
  const bool sixteen = channels == 16;
  int start = first + 1;  // channel of window 1
  if (mode == 0) return FullScreenDirect(first);
  if (IsLargeAndSmall(mode)) {
    if (mode == 2 && channels == 8 && option != 0) start = first + 3 * option;
    if (mode == 2 && sixteen && option == 1) start = first + 6;
    if (mode == 2 && sixteen && option == 2) start = first + 11;
    if (mode == 3 && sixteen && option != 0) {
      first = (first + 8) % 16;
      start = first + 1;
    }
    if (mode == 5 && sixteen && option != 0) start = first + 4;
    return LargeAndSmallDirect(mode, first, start);
  }
  for (int n = 0; n < channels; ++n) Scale(n, ScalingOf(mode, 0).scale);
  if (mode == 1) {
    for (int k = 0; k < 4; ++k) Show(Nth(first, k), mode, k);
    return LayoutToAll(ScalingOf(mode, 0).code);
  }
  if (mode == 6) {
    for (int k = 0; k < channels; ++k) ShowWithCode(Nth(first, k), mode, k);  // each once
    return;
  }
  if (channels == 4) return;  // no 3 x 3
  for (int k = 0; k < (channels == 8 ? 8 : 9); ++k) {
    const bool second_page = sixteen && option != 0 && k >= 2;
    ShowWithCode(Nth(first, second_page ? k + 7 : k), mode, k);
  }
}

void ReferenceModel::FullScreenDirect(int first) {
  for (int n = 0; n < channels; ++n) Scale(n, ScalingOf(0, 0).scale);
  for (int n = 0; n < 4; ++n) Window(kAll, n, Tile(0, 0));
  if (channels == 4) {
    for (int n = 0; n < 4; ++n) All1(0x10 + 8 * n, (n == first ? 0xC0 : 0x80) + n);
  } else {
    All1Each(0x10, 0x80, 1);
    Control(first, 0xC0);
  }
  LayoutToAll(ScalingOf(0, 0).code);
}

void ReferenceModel::LargeAndSmallDirect(int mode, int large, int start) {
  for (int k = 0; k < kWindows.at(static_cast<std::size_t>(mode)); ++k) {
    const int c = k == 0 ? large : Nth(start, k - 1);
    Scale(c, ScalingOf(mode, k).scale);
    ShowWithCode(c, mode, k);
  }
}

void ReferenceModel::ShowWithCode(int channel, int mode, int window) {
  Layout(channel, ScalingOf(mode, window).code);
  Show(channel, mode, window);
}

void ReferenceModel::Show(int channel, int mode, int window) {
  Place(channel, Tile(mode, window));
  Control(channel, 0xC0);
}

}  // namespace test
