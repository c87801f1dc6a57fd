#include "tests/display/display_test.h"

#include <sstream>

#include "chip/video_state.h"
#include "display/display_state.h"
#include "display/play_layout.h"
#include "harness/host.h"
#include "motion/motion_state.h"
#include "platform/platform.h"

namespace test {
namespace {

std::string Difference(const std::vector<Access>& actual, const std::vector<Access>& expected) {
  std::ostringstream out;
  std::size_t i = 0;
  while (i < actual.size() && i < expected.size() && actual[i] == expected[i]) ++i;
  if (i == actual.size() && i == expected.size()) return {};
  out << "access " << i << " of " << actual.size() << " (expected " << expected.size() << "): ";
  if (i < actual.size()) {
    out << actual[i];
  } else {
    out << "missing";
  }
  out << ", expected ";
  if (i < expected.size()) {
    out << expected[i];
  } else {
    out << "none";
  }
  return out.str();
}

}  // namespace

void DisplayTest::UseBoard(int channels, int standard) {
  harness::Restart();  // a test may use one board after another
  PretendBoard(channels, standard);
  world().board.HoldSync(false);  // its bit would change while an operation waits
  g_display.wait_event = Plat_CreateEvent(nullptr, false, false);
  channels_ = channels;
  standard_ = standard;
  Scribble(1);
}

void DisplayTest::Scribble(unsigned seed) {
  unsigned state = seed * 2654435761u + 12345u;
  for (unsigned position = 0; position < 4; ++position) {
    for (std::uint8_t page = 0; page < 3; ++page) {
      for (unsigned reg = 0; reg < 256; ++reg) {
        state = state * 1664525u + 1013904223u;
        world().board.Poke(position, page, static_cast<std::uint8_t>(reg),
                           static_cast<std::uint8_t>(state >> 24));
      }
    }
  }
  Mark();
  from_ = world().trace.Mark();
}

ReferenceModel DisplayTest::Model() {
  ReferenceModel model(channels_, standard_, Image());
  model.view = g_display.view;
  model.view_word = g_display.g_view_mode;
  model.live_split = g_display.live_split;
  model.play_split = g_display.play_split;
  model.split_option = g_display.split_option;
  model.selected_channel = g_display.selected_channel;
  model.full_picture = g_playback.full_picture != 0;
  model.centred_picture = g_playback.centred_picture != 0;
  model.live_blank = g_display.blank_mask.live;
  model.play_blank = g_display.blank_mask.playback;
  model.masks = {g_display.live_mask, g_display.record_mask, g_display.play_mask};
  model.frozen = g_display.bit6_mask;
  model.motion_timing = g_motion.timing;
  return model;
}

Rect DisplayTest::RectOf(int channel) {
  Rect rect{};
  for (int i = 0; i < 4; ++i) {
    rect.at(static_cast<std::size_t>(i)) = Register(channel / 4, 1, 0x30 + 4 * (channel % 4) + i);
  }
  return rect;
}

void DisplayTest::ExpectLike(const ReferenceModel& model) {
  const std::string difference = Difference(Accesses(), model.accesses);
  EXPECT_TRUE(difference.empty()) << difference;
  const RegisterImage actual = Image();
  for (std::size_t position = 0; position < 4; ++position) {
    for (std::size_t page = 0; page < 3; ++page) {
      for (std::size_t reg = 0; reg < 256; ++reg) {
        // While the chips have not settled, the low nibble of the settle status is theirs.
        if (page == 1 && reg == 0x04) continue;
        ASSERT_EQ(+actual[position][page][reg], +model.image[position][page][reg])
            << "chip " << position << ", page " << page << ", register 0x" << std::hex << reg;
      }
    }
  }
}

void DisplayTest::ExpectUntouched() {
  EXPECT_EQ(Cycles(), 0u);
  EXPECT_EQ(DebugText(), "");
  EXPECT_TRUE(KernelDebug().empty());
}

void DisplayTest::ExpectPrinted(const std::string& text) {
  EXPECT_EQ(Debug(), (std::vector<std::string>{"[VexoCtrlSDK]: ", text}));
}

std::vector<std::uint32_t> DisplayTest::Waits() {
  std::vector<std::uint32_t> waits;
  const sim::Trace& trace = world().trace;
  for (std::size_t i = from_; i < trace.Events().size(); ++i) {
    const auto* sleep = trace.As<sim::SleepEvent>(trace.Events()[i]);
    if (sleep != nullptr && sleep->wait) waits.push_back(sleep->ms);
  }
  return waits;
}

std::vector<Rect> RectsOf(const WindowTable& table) {
  std::vector<Rect> rects;
  for (const WindowRect& r : table) rects.push_back({r.x_start, r.x_end, r.y_start, r.y_end});
  return rects;
}

Channels Ascending(std::size_t count) {
  Channels list;
  for (std::size_t k = 0; k < count; ++k) list.push_back(static_cast<std::uint8_t>(k));
  return list;
}

std::string NameOf(const ::testing::TestParamInfo<BoardCase>& info) {
  const int standard = info.param.standard;
  return std::to_string(info.param.channels) + "Channels" +
         (standard == 0   ? std::string("Ntsc")
          : standard == 1 ? std::string("Pal")
                          : "Standard" + std::to_string(standard));
}

}  // namespace test
