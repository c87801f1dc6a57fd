#include "tests/support/library_test.h"

#include "VexoCtrlSDK.h"
#include "api/worker.h"
#include "chip/register_bus.h"
#include "chip/video_state.h"
#include "display/window_tables.h"
#include "harness/host.h"
#include "report/library_state.h"
#include "script/report_words.h"

namespace test {

LibraryTest::LibraryTest() { harness::Restart(); }

LibraryTest::~LibraryTest() {
  if (!lparams_expected_) ExpectLparams0();
  if (!reports_expected_) {
    for (const std::string& warning : script::WarningsInWords(world().reports.All())) {
      ADD_FAILURE() << "the board reports: " << warning;
    }
  }
  harness::Restart();
}

// Hosts may use the second parameter of a message one day: it is 0 in all that the library sends.
void LibraryTest::ExpectLparams0() {
  const sim::Trace& trace = world().trace;
  for (const sim::Event& event : trace.Events()) {
    const auto* const message = trace.As<sim::MessageEvent>(event);
    if (message != nullptr && message->lparam != 0) {
      ADD_FAILURE() << "message " << message->message << " has the lParam " << message->lparam;
    }
  }
}

void LibraryTest::AttachAndBind() {
  harness::Entry(1);
  harness::Initialize(world().windows.Create());
}

void LibraryTest::StartBoard(int channels, int standard) {
  world().board.FitChips(static_cast<unsigned>(channels) / 4);
  for (unsigned n = 0; n < 16; ++n) {
    world().board.SetCamera(n, standard == VEXO_VIDEO_NTSC  ? sim::Camera::Ntsc
                               : standard == VEXO_VIDEO_PAL ? sim::Camera::Pal
                                                            : sim::Camera::Off);
  }
  world().nvram.SetRecord("MDVR", static_cast<std::uint8_t>(standard),
                          static_cast<std::uint8_t>(channels));
  AttachAndBind();
  ASSERT_EQ(Command(VEXO_CMD_INIT, std::vector<std::uint8_t>(24)), 0);
  ASSERT_EQ(CommandNull(VEXO_CMD_STOP_MONITOR), 0);
  Mark();
}

void LibraryTest::PretendBoard(int channels, int standard) {
  world().board.FitChips(static_cast<unsigned>(channels) / 4);
  AttachAndBind();
  g_video.chip_count = static_cast<std::uint8_t>(channels / 4);
  g_video.max_channel = static_cast<std::uint8_t>(channels);
  for (int p = 0; p < channels / 4; ++p) g_video.chip_present[p] = 1;
  g_video.video_standard = static_cast<std::uint8_t>(standard);
  g_video.broadcast_select = kChipAll;
  g_video.g_chip_ready = 1;
  TW_BuildLiveLayout();
  TW_BuildPlayLayout();
  Mark();
}

int LibraryTest::Command(std::uint32_t code, std::vector<std::uint8_t> record) {
  last_record = std::move(record);
  return harness::CommandProc(code, &last_record);
}

int LibraryTest::CommandNull(std::uint32_t code) { return harness::CommandProc(code, nullptr); }

void LibraryTest::Mark() {
  mark_ = world().trace.Mark();
  cycle_mark_ = world().trace.Cycles();
  time_mark_ = world().kernel.Now();
}

std::vector<Access> LibraryTest::Accesses() {
  std::vector<Access> result;
  for (const sim::RegisterAccess& a : sim::DecodeAccesses(world().trace, mark_)) {
    result.push_back({a.read ? 'r' : 'w', a.Chip(), a.Page(), a.reg, a.value});
  }
  return result;
}

std::vector<Access> LibraryTest::Writes() {
  std::vector<Access> result;
  for (const Access& access : Accesses()) {
    if (access.kind == 'w') result.push_back(access);
  }
  return result;
}

std::uint64_t LibraryTest::Cycles() { return world().trace.Cycles() - cycle_mark_; }

namespace {

std::vector<std::string> DebugTexts(const sim::Trace& trace, std::size_t from, bool kernel) {
  std::vector<std::string> texts;
  for (std::size_t i = from; i < trace.Events().size(); ++i) {
    const auto* debug = trace.As<sim::DebugEvent>(trace.Events()[i]);
    if (debug != nullptr && debug->kernel == kernel) texts.push_back(debug->text);
  }
  return texts;
}

}  // namespace

std::vector<std::string> LibraryTest::Debug() { return DebugTexts(world().trace, mark_, false); }

std::string LibraryTest::DebugText() {
  std::string joined;
  for (const std::string& text : Debug()) joined += text;
  return joined;
}

std::vector<std::string> LibraryTest::KernelDebug() {
  return DebugTexts(world().trace, mark_, true);
}

std::vector<sim::MessageEvent> LibraryTest::MessageEvents() {
  std::vector<sim::MessageEvent> result;
  const sim::Trace& trace = world().trace;
  for (std::size_t i = mark_; i < trace.Events().size(); ++i) {
    if (const auto* event = trace.As<sim::MessageEvent>(trace.Events()[i])) {
      result.push_back(*event);
    }
  }
  return result;
}

std::vector<std::uint32_t> LibraryTest::Messages() {
  std::vector<std::uint32_t> codes;
  for (const sim::MessageEvent& event : MessageEvents()) {
    if (event.ok) codes.push_back(event.message);
  }
  return codes;
}

std::uint32_t LibraryTest::Elapsed() { return world().kernel.Now() - time_mark_; }

std::uint8_t LibraryTest::Register(int position, int page, int reg) {
  return world().board.Peek(static_cast<unsigned>(position), static_cast<std::uint8_t>(page),
                            static_cast<std::uint8_t>(reg));
}

RegisterImage LibraryTest::Image() {
  RegisterImage image;
  for (unsigned position = 0; position < 4; ++position) {
    for (unsigned page = 0; page < 3; ++page) {
      for (unsigned reg = 0; reg < 256; ++reg) {
        image[position][page][reg] = world().board.Peek(position, static_cast<std::uint8_t>(page),
                                                        static_cast<std::uint8_t>(reg));
      }
    }
  }
  return image;
}

}  // namespace test
