#include "tests/display/play_test.h"

#include "display/display_state.h"
#include "display/play_layout.h"
#include "display/play_split.h"

namespace test {

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

ReferenceModel PlayTest::Begin() {
  Scribble(++seed_);
  return Next();
}

ReferenceModel PlayTest::Next() {
  Mark();
  from_ = world().trace.Mark();
  return Model();
}

void PlayTest::ExpectPlayed(const ReferenceModel& model) {
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
  EXPECT_EQ(g_display.play_split, model.play_split);
  EXPECT_EQ(g_display.blank_mask.live, model.live_blank);
  EXPECT_EQ(g_display.blank_mask.playback, model.play_blank);
  EXPECT_EQ(g_display.play_mask, model.masks.play);
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
