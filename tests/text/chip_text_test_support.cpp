#include "chip/video_state.h"
#include "display/display_state.h"
#include "display/play_layout.h"
#include "display/window_tables.h"
#include "harness/host.h"
#include "motion/motion_state.h"
#include "tests/api/trace_lines.h"
#include "tests/text/chip_text_test.h"
#include "text/color_settings.h"

namespace test {
namespace {

template <typename T>
void AddBytes(std::vector<std::uint8_t>& bytes, const T& value) {
  static_assert(std::has_unique_object_representations_v<T>);
  const auto* data = reinterpret_cast<const std::uint8_t*>(&value);
  bytes.insert(bytes.end(), data, data + sizeof value);
}

bool IsOfTheExport(const std::string& text) {
  return text.rfind("call ", 0) == 0 || text.rfind("return ", 0) == 0;
}

}  // namespace

void ChipTextTest::Fresh(const BoardKind& board) {
  harness::Restart();
  PretendBoard(board.channels, board.standard);
  for (unsigned p = 0; p < static_cast<unsigned>(board.channels) / 4; ++p) {
    for (unsigned i = 0; i < 4; ++i) {
      const auto attribute = static_cast<std::uint8_t>((p + i) % 2 == 0 ? 0xFF : 0xA0 + i);
      world().board.Poke(p, 1, static_cast<std::uint8_t>(0x11 + 8 * i), attribute);
      world().board.Poke(p, 1, static_cast<std::uint8_t>(0x10 + 8 * i), 0xB0);
    }
    world().board.Poke(p, 1, 0x06, static_cast<std::uint8_t>(0x3B + p));
  }
  for (auto& mask : g_motion.mask) {
    for (std::uint8_t& byte : mask) byte = 0x5A;
  }
  for (std::uint8_t& level : g_motion.level) level = 2;
  g_motion.timing = 0x33;
  g_display.live_split = 6;
  for (WindowRect& rect : g_layout.live) rect.x_start = static_cast<std::uint8_t>(rect.x_start + 1);
  for (WindowRect& rect : g_layout.play) rect.x_end = static_cast<std::uint8_t>(rect.x_end - 1);
  Mark();
  from_ = world().trace.Mark();
}

void ChipTextTest::FreshNotReady(const BoardKind& board) {
  Fresh(board);
  g_video.g_chip_ready = 0;
}

int ChipTextTest::Text(const std::string& line) {
  Mark();
  from_ = world().trace.Mark();
  return harness::TextCommandProc(line);
}

std::vector<std::string> ChipTextTest::Events() {
  std::vector<std::string> events;
  for (const std::string& text : Texts(world().trace, from_)) {
    if (!IsOfTheExport(text)) events.push_back(text);
  }
  return events;
}

std::vector<std::uint8_t> ChipTextTest::State() {
  std::vector<std::uint8_t> bytes = world().nvram.Content();
  AddBytes(bytes, g_layout);
  AddBytes(bytes, g_color);
  AddBytes(bytes, g_motion);
  AddBytes(bytes, g_playback);
  AddBytes(bytes, g_display.view);
  AddBytes(bytes, g_display.live_split);
  AddBytes(bytes, g_display.play_split);
  AddBytes(bytes, g_display.blank_mask);
  AddBytes(bytes, g_display.bit0_mask);
  AddBytes(bytes, g_display.live_mask);
  AddBytes(bytes, g_display.split_option);
  AddBytes(bytes, g_display.selected_channel);
  AddBytes(bytes, g_display.bit6_mask);
  AddBytes(bytes, g_video.g_chip_ready);
  AddBytes(bytes, g_video.video_standard);
  AddBytes(bytes, g_video.max_channel);
  return bytes;
}

Outcome ChipTextTest::OutcomeOf(const BoardKind& board, const std::string& line) {
  Fresh(board);
  Outcome outcome;
  outcome.result = Text(line);
  outcome.events = Events();
  outcome.state = State();
  return outcome;
}

Outcome ChipTextTest::OutcomeOf(const BoardKind& board, const std::function<void()>& operations) {
  Fresh(board);
  operations();
  Outcome outcome;
  outcome.events = Events();
  outcome.state = State();
  return outcome;
}

void ChipTextTest::ExpectDoes(const BoardKind& board, const LineCase& line) {
  SCOPED_TRACE(std::string(line.line) + "on " + std::to_string(board.channels) +
               " channels, standard " + std::to_string(board.standard));
  const Outcome nothing = OutcomeOf(board, [] {});
  const Outcome wanted = OutcomeOf(board, line.operations);
  const Outcome found = OutcomeOf(board, std::string(line.line));
  EXPECT_FALSE(wanted == nothing) << "a case that shows nothing";
  EXPECT_EQ(found.result, 0);
  EXPECT_EQ(found.events, wanted.events);
  EXPECT_EQ(found.state, wanted.state);
}

void ChipTextTest::ExpectDoesOnEveryBoard(const LineCase& line) {
  for (const BoardKind& board : kBoardKinds) ExpectDoes(board, line);
}

void ChipTextTest::ExpectDoesNothing(const BoardKind& board, const std::string& line) {
  SCOPED_TRACE(line);
  Fresh(board);
  const std::vector<std::uint8_t> before = State();
  EXPECT_EQ(Text(line), 0);
  EXPECT_EQ(Events(), std::vector<std::string>{});
  EXPECT_EQ(State(), before);
}

void ChipTextTest::ExpectRefused(const BoardKind& board, const std::string& line) {
  SCOPED_TRACE(line);
  Fresh(board);
  const std::vector<std::uint8_t> before = State();
  EXPECT_EQ(Text(line), -1);
  EXPECT_EQ(Events(), std::vector<std::string>{});
  EXPECT_EQ(State(), before);
}

}  // namespace test
