#include "tests/setup/setup_test.h"

#include <algorithm>
#include <cstdio>

#include "report/library_state.h"

namespace test {
namespace {

std::string Hex(const char* format, unsigned a, unsigned b = 0, unsigned c = 0, unsigned d = 0) {
  std::array<char, 48> text{};
  std::snprintf(text.data(), text.size(), format, a, b, c, d);
  return text.data();
}

// One event that is no bus cycle; empty for those that no test of the setup looks at.
struct Line {
  std::string operator()(const sim::DebugEvent& e) const {
    return e.kernel ? "kernel " + e.text : "print " + e.text;
  }
  std::string operator()(const sim::MessageEvent& e) const {
    return Hex(e.post ? "post %04X" : "send %04X", e.message);
  }
  std::string operator()(const sim::LockEvent& e) const { return e.unlock ? "unlock" : "lock"; }
  std::string operator()(const sim::SleepEvent& e) const {
    return (e.wait ? "wait " : "sleep ") + std::to_string(e.ms);
  }
  std::string operator()(const sim::OpenEvent& e) const { return "open " + e.name; }
  std::string operator()(const sim::IoctlEvent& e) const {
    return Hex("control %06X", e.code) + (e.ok ? " ok" : " failed");
  }
  std::string operator()(const sim::CloseEvent& e) const { return e.ok ? "close" : "close failed"; }
  std::string operator()(const sim::NvramEvent& e) const { return "nvram " + e.op; }
  std::string operator()(const sim::ThreadEvent& e) const { return "thread " + e.what; }
  template <typename T>
  std::string operator()(const T&) const {
    return {};
  }
};

}  // namespace

void SetupTest::Fit(int chips, int cameras) {
  world().board.FitChips(static_cast<unsigned>(chips));
  for (unsigned n = 0; n < 16; ++n) {
    world().board.SetCamera(n, cameras == 0   ? sim::Camera::Ntsc
                               : cameras == 1 ? sim::Camera::Pal
                                              : sim::Camera::Off);
  }
}

void SetupTest::AttachOnce() {
  if (g_library.g_initialized == 0) AttachAndBind();
}

void SetupTest::Mark() {
  LibraryTest::Mark();
  flow_mark_ = world().trace.Mark();
}

std::vector<std::string> SetupTest::Prints() {
  std::vector<std::string> prints;
  const std::vector<std::string> writes = Debug();
  for (std::size_t i = 0; i < writes.size(); i += 2) {
    const bool prefix = writes[i] == Plain("") || writes[i] == Levelled("");
    EXPECT_TRUE(prefix) << "a text without its prefix: " << writes[i];
    prints.push_back(writes[i] +
                     (i + 1 < writes.size() ? writes[i + 1] : std::string("(nothing)")));
  }
  return prints;
}

std::vector<std::string> SetupTest::Flow() {
  std::vector<std::string> flow;
  const sim::Trace& trace = world().trace;
  sim::RegisterAccess access;
  for (std::size_t i = flow_mark_; i < trace.Events().size(); ++i) {
    const sim::Event& event = trace.Events()[i];
    if (event.by != sim::By::Host) continue;
    if (event.kind == sim::Event::Kind::Other) {
      std::string line = std::visit(Line{}, trace.Detail(event));
      if (!line.empty()) flow.push_back(std::move(line));
    } else if (event.window == sim::BusWindow::Select) {
      access.select = event.value;
    } else if (event.window == sim::BusWindow::Address) {
      access.reg = event.value;
    } else {
      flow.push_back(
          (event.kind == sim::Event::Kind::Load ? "r " : "w ") +
          Hex("%02X %u %02X %02X", access.Chip(), access.Page(), access.reg, event.value));
      ++access.reg;
    }
  }
  return flow;
}

std::size_t SetupTest::PlaceOf(const std::vector<std::string>& flow, const std::string& line) {
  EXPECT_EQ(std::count(flow.begin(), flow.end(), line), 1) << line;
  return static_cast<std::size_t>(std::find(flow.begin(), flow.end(), line) - flow.begin());
}

}  // namespace test
