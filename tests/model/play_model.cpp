#include "tests/model/play_model.h"

#include "chip/video_state.h"
#include "display/display_state.h"
#include "display/play_layout.h"
#include "display/play_split.h"

namespace test {

DecodedWindow DecodedWindowOf(int mode, int window) {
  const bool large = window == 0;
  switch (mode) {
    case 0:
      return {{0xFF, 0xFF, 0xFF, 0xFF}, 0x00};
    case 1:
      return {{0xFE, 0xFF, 0xFF, 0xFF}, 0x00};
    case 2:
      if (large) return {{0xAA, 0xAA, 0xAA, 0xAA}, 0x00};
      return {{0x55, 0x55, 0x55, 0x55}, 0x05};
    case 3:
      if (large) return {{0xFF, 0xFF, 0xFF, 0xFF}, 0x00};
      return {{0x7F, 0xFF, 0x7F, 0xFF}, 0x09};
    case 4:
      return {{0xAA, 0xAA, 0xAA, 0xAA}, 0x05};
    case 5:
      if (large) return {{0xFF, 0xFF, 0xFF, 0xFF}, 0x08};
      return {{0x7F, 0xFF, 0x7F, 0xFF}, 0x09};
    default:
      return {{0x7F, 0xFF, 0x7F, 0xFF}, 0x09};
  }
}

int HighestPlayMode(int channels) {
  return channels == 4 ? 1 : channels == 8 ? 4 : channels == 16 ? 6 : -1;
}

// ---- Steps --------------------------------------------------------------------------------------

void PlayModel::All1Each(int reg, int value, int step) {
  for (int p = 0; p < 4; ++p) All1(reg + 8 * p, value + step * p);
}

void PlayModel::Paths(bool open) {
  for (int p = 0; p < 4; ++p) {
    Write(kChips.at(static_cast<std::size_t>(p)), 1, 0x16, (open ? 0x90 : 0x10) + 4 * p);
  }
}

void PlayModel::PatternToAll(const std::array<int, 4>& pattern) {
  for (int p = 0; p < 4; ++p) {
    for (int i = 0; i < 4; ++i) {
      Write(kAll, 0, 0x86 + 0x10 * p + i, pattern.at(static_cast<std::size_t>(i)));
    }
  }
}

void PlayModel::Pattern(int channel, const std::array<int, 4>& pattern) {
  for (int i = 0; i < 4; ++i) {
    Write(ChipOf(channel), 0, 0x86 + 0x10 * (channel % 4) + i,
          pattern.at(static_cast<std::size_t>(i)));
  }
}

void PlayModel::KindsAndCodes(int chip, int code) {
  for (int p = 0; p < 4; ++p) {
    Write(chip, 0, 0x85 + 0x10 * p, 0x00);
    Write(chip, 0, 0x80 + 0x10 * p, 0x40 * p + code);
  }
}

void PlayModel::Front(int channel) {
  if (channel >= channels) return;
  Write(ChipOf(channel), 1, 0x10 + 8 * (channel % 4), 0xD4 + channel % 4);
}

void PlayModel::Blank(std::uint32_t mask) {
  AttributeMask(mask, 0x04);
  (view == kLive ? live_blank : play_blank) = mask;
}

Rect PlayModel::FullRect() const { return {0x00, 0xB4, 0x00, standard == 0 ? 0x78 : 0x90}; }

Rect PlayModel::CentredRect() const { return {0x2C, 0x82, 0x1E, standard == 0 ? 0x58 : 0x64}; }

// ---- Layouts ------------------------------------------------------------------------------------

int PlayModel::Variant(int mode, int option, const Channels& list) {
  if (full_picture) All1(0x0C, 0x00);
  full_picture = mode == 0 && option != 0;
  centred_picture = mode == 0 && option == 0;
  const int normalised = centred_picture ? 1 : mode;
  if (normalised > HighestPlayMode(channels)) return -5;
  if (normalised == 0) Full(list);
  if (normalised == 1) TwoByTwo(list);
  if (normalised == 2 || normalised == 3 || normalised == 5) LargeAndSmall(normalised, list);
  if (normalised == 4) Nine(list);
  if (normalised == 6) Sixteen(list);
  split = normalised;
  return 0;
}

void PlayModel::Full(const Channels& list) {
  All1(0x06, 0x00);
  Paths(false);
  All1Each(0x10, 0x94, 1);
  PatternToAll({0xFF, 0xFF, 0xFF, 0xFF});
  for (int p = 0; p < 4; ++p) Window(kAll, p, FullRect());
  Front(list.at(0));
  All1(0x0D, 0x00);
  All1(0x0E, 0x00);
  All1(0x0C, 0xC0);
  if (channels != 8) KindsAndCodes(kAll, 0);
  Tail(0x00);
}

void PlayModel::TwoByTwo(const Channels& list) {
  All1(0x06, 0x04);
  Paths(false);
  All1Each(0x10, 0x94, 1);
  PatternToAll({0xFE, 0xFF, 0xFF, 0xFF});

  const int windows_given = centred_picture ? channels : 4;
  int j = 0;
  for (int c = 0; c < channels; ++c) {
    if (j < windows_given && c == list.at(static_cast<std::size_t>(j))) {
      Rectangle(c, centred_picture ? CentredRect() : windows[1].at(static_cast<std::size_t>(j)));
      ++j;
    } else {
      Rectangle(c, {0, 0, 0, 0});
    }
  }

  const std::size_t in_front = centred_picture ? 1 : 4;
  for (std::size_t k = 0; k < in_front; ++k) Front(list.at(k));

  int chip = kAll;
  if (channels > 4) {
    chip = ChipOf(channels - 1);
    for (std::size_t k = 0; k < in_front; ++k) {
      if (list.at(k) < channels) chip = ChipOf(list.at(k));  // the last one stays
    }
  }
  KindsAndCodes(chip, 1);
  Tail(0x20);
}

void PlayModel::LargeAndSmall(int mode, const Channels& list) {
  const auto m = static_cast<std::size_t>(mode);
  All1Each(0x12, mode == 2 ? 0x00 : 0x20);
  All1Each(0x10, 0x94, 1);
  if (list.at(0) < channels) {
    Pattern(list[0], DecodedWindowOf(mode, 0).pattern);
    Rectangle(list[0], windows.at(m).at(0));
    Kind(list[0], DecodedWindowOf(mode, 0).kind);
  }
  const auto count = static_cast<std::size_t>(kWindows.at(m));
  for (std::size_t k = 1; k < count; ++k) {
    if (list.at(k) < channels) Pattern(list[k], DecodedWindowOf(mode, 1).pattern);
  }
  for (std::size_t k = 1; k < count; ++k) {
    if (list[k] < channels) Rectangle(list[k], windows.at(m).at(k));
  }
  for (std::size_t k = 1; k < count; ++k) {
    if (list[k] < channels) Kind(list[k], DecodedWindowOf(mode, 1).kind);
  }
}

void PlayModel::Nine(const Channels& list) {
  All1(0x06, 0x04);
  Paths(false);
  All1Each(0x10, 0x94, 1);
  PatternToAll({0xAA, 0xAA, 0xAA, 0xAA});

  const bool second_page = channels == 16 && list.at(0) == 9;
  std::size_t j = 0;
  for (int c = 0; c < channels; ++c) {
    if (j < 9 && c == list.at(j)) {
      Rectangle(c, windows[4].at(j));
      ++j;
    } else if (second_page && c == 0 && list.at(7) == 0) {
      Rectangle(0, windows[4].at(7));
    } else if (second_page && c == 1 && list.at(8) == 0) {  // 0, though the channel is 1
      Rectangle(1, windows[4].at(8));
    } else {
      Rectangle(c, {0, 0, 0, 0});
    }
  }

  for (std::size_t k = 0; k < 9; ++k) {
    if (list.at(k) < channels) Kind(list[k], 0x05);
  }
  Tail(0x20);
}

void PlayModel::Sixteen(const Channels& list) {
  All1(0x06, 0x04);
  Paths(false);
  All1Each(0x10, 0x94, 1);
  Write(kAll, 0, 0x85, 0x00);
  PatternToAll({0x7F, 0xFF, 0x7F, 0xFF});
  for (std::size_t k = 0; k < 16; ++k) {
    if (list.at(k) < 16) Rectangle(list[k], windows[6].at(k));
  }
  for (int p = 0; p < 4; ++p) Write(kAll, 0, 0x85 + 0x10 * p, 0x09);
  Tail(0x20);
}

void PlayModel::Tail(int overlay) {
  Sleep(50);
  All1Each(0x12, overlay);
  Paths(true);
}

void PlayModel::ResetOverlay() {
  if (full_picture) {
    All1Each(0x12, 0x00);
    All1(0x0D, 0x00);
    All1(0x0E, 0x00);
    All1(0x22, 0x00);
    All1(0x2A, 0x00);
    All1(0x06, 0x00);
  } else {
    All1(0x22, 0x60);
    All1(0x2A, 0x60);
    All1(0x06, 0x04);
  }
}

// ---- Entries ------------------------------------------------------------------------------------

int PlayModel::Split(int mode, int option, const Channels* list) {
  const std::string error = ">> ERROR TW_SetPlaySplitMode ";
  if (view != kPlayback) {
    printed.push_back(error + "CURREENT LIVE MODE!!");
    return -1;
  }
  if (mode >= 7 || list == nullptr) {
    printed.push_back(error + "INVALID PARAM!!");
    return -5;
  }
  if (mode == 2 || mode == 3 || mode == 5) {
    printed.push_back(error + "NOT SUPPORT SPLIT MODE(" + std::to_string(mode) + ")!!");
    return -5;
  }
  if (HighestPlayMode(channels) < 0) return -1;
  const std::uint32_t remembered = play_blank;
  Blank(0xFFFF);
  const bool shown = Variant(mode, option, *list) == 0;
  Blank(shown ? ~play_mask : remembered);
  return shown ? 0 : -1;
}

int PlayModel::SwitchToPlayback(int mode, const Channels& list) {
  if (view == kPlayback) printed.push_back(">> TW_SetPlaybackModeInfo ALREADY PLAYBACK MODE\r\n");
  view = kPlayback;
  All1(0x0C, 0x00);
  if (HighestPlayMode(channels) < 0) return -8;
  SwitchVariant(mode, list);
  Sleep(50);
  return 0;
}

int PlayModel::SwitchVariant(int mode, const Channels& list) {
  for (int p = 0; p < chips; ++p) {
    for (int i = 1; i < 4; ++i) {
      Write(kChips.at(static_cast<std::size_t>(p)), 1, 0x16 + 8 * i, 0x10 + 4 * p + i);
    }
  }
  All1(0x01, 0x02);
  const int result = Variant(mode, 0, list);
  if (channels != 16) ResetOverlay();
  if (result == 0) Blank((1u << channels) - 1);
  return result;
}

// ---- The fixture --------------------------------------------------------------------------------

void PlayTest::UsePlayback(int channels, int standard) {
  UseBoard(channels, standard);
  g_playback = {};
  g_display.view = kPlayback;
  g_display.play_split = 7;
  g_display.blank_mask.live = 0x5A5A5A5A;
  g_display.blank_mask.playback = 0xA5A5C3C3;
}

void PlayTest::UsePlaybackAfter(int channels, int full_picture, int centred_picture) {
  UsePlayback(channels);
  g_playback.full_picture = static_cast<std::uint8_t>(full_picture);
  g_playback.centred_picture = static_cast<std::uint8_t>(centred_picture);
}

std::int32_t PlayTest::CallPlaySplit(int channels, int mode, int option, const Channels& list) {
  const auto m = static_cast<std::uint8_t>(mode);
  const auto o = static_cast<std::uint8_t>(option);
  if (channels == 4) return TW_SetPlaySplit4Ch(m, o, list.data());
  if (channels == 8) return TW_SetPlaySplit8Ch(m, o, list.data());
  return TW_SetPlaySplit16Ch(m, o, list.data());
}

Rect PlayTest::RectOf(int channel) {
  Rect rect{};
  for (int i = 0; i < 4; ++i) {
    rect.at(static_cast<std::size_t>(i)) = Register(channel / 4, 1, 0x30 + 4 * (channel % 4) + i);
  }
  return rect;
}

PlayModel PlayTest::Begin() {
  Scribble(++seed_);
  return Next();
}

PlayModel PlayTest::Next() {
  Mark();
  from_ = world().trace.Mark();
  PlayModel model(Model());
  model.view = g_display.view;
  model.full_picture = g_playback.full_picture != 0;
  model.centred_picture = g_playback.centred_picture != 0;
  model.split = g_display.play_split;
  model.live_blank = g_display.blank_mask.live;
  model.play_blank = g_display.blank_mask.playback;
  model.play_mask = g_display.play_mask;
  return model;
}

void PlayTest::ExpectPlayed(const PlayModel& model) {
  ExpectLike(model);
  EXPECT_EQ(Pauses(), model.pauses);
  std::uint32_t paused = 0;
  for (const Pause& pause : model.pauses) paused += pause.ms;
  EXPECT_EQ(Elapsed(), paused);
  std::vector<std::string> writes;  // a prefix goes before each print
  for (const std::string& text : model.printed) {
    writes.push_back("[VexoCtrlSDK]: ");
    writes.push_back(text);
  }
  EXPECT_EQ(Debug(), writes);
  EXPECT_EQ(g_display.view, model.view);
  EXPECT_EQ(g_playback.full_picture, model.full_picture ? 1 : 0);
  EXPECT_EQ(g_playback.centred_picture, model.centred_picture ? 1 : 0);
  EXPECT_EQ(g_display.play_split, model.split);
  EXPECT_EQ(g_display.blank_mask.live, model.live_blank);
  EXPECT_EQ(g_display.blank_mask.playback, model.play_blank);
  EXPECT_EQ(g_display.play_mask, model.play_mask);
}

std::vector<Pause> PlayTest::Pauses() {
  std::vector<Pause> pauses;
  const sim::Trace& trace = world().trace;
  std::size_t accesses = 0;  // one data cycle each
  for (std::size_t i = from_; i < trace.Events().size(); ++i) {
    const sim::Event& event = trace.Events()[i];
    if (event.kind != sim::Event::Kind::Other) {
      if (event.window == sim::BusWindow::Data) ++accesses;
    } else if (const auto* sleep = trace.As<sim::SleepEvent>(event); sleep != nullptr) {
      if (!sleep->wait) pauses.push_back({accesses, sleep->ms});
    }
  }
  return pauses;
}

}  // namespace test
