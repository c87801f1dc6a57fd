// Any bytes as a file that the trace tools are given: a trace, or a capture of a bus. They refuse
// it with its place, or show it; the events of a trace are the same when they are written and read
// again, and a script that is made of them can be read.
#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <sstream>
#include <string>
#include <string_view>

#include "fuzz/require.h"
#include "script/parse.h"
#include "sim/trace_json.h"
#include "tools/vexosim/traces/events.h"
#include "tools/vexosim/traces/json_events.h"
#include "tools/vexosim/traces/replay.h"
#include "tools/vexosim/traces/show_trace.h"
#include "tools/vexosim/traces/summary.h"

namespace {

using fuzz::Require;

// A file in memory, which has a path.
class MemoryFile {
 public:
  explicit MemoryFile(std::string_view content) : descriptor_(memfd_create("fuzz", 0)) {
    Require(descriptor_ >= 0);
    const auto written = write(descriptor_, content.data(), content.size());
    Require(written == static_cast<ssize_t>(content.size()));
  }
  ~MemoryFile() { close(descriptor_); }
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;

  std::string Path() const { return "/proc/self/fd/" + std::to_string(descriptor_); }

 private:
  int descriptor_;
};

void CheckJson(const sim::Event& event, const sim::EventDetail* detail) {
  const std::string text = sim::EventToJson(event, detail).dump();
  const auto again = vexosim::EventFromJson(nlohmann::json::parse(text));
  Require(again.has_value());
  Require(sim::EventToJson(again->event, again->Detail()).dump() == text);
}

void CheckReplay(const std::string& path) {
  std::stringstream script;
  try {
    vexosim::ReplayWriter writer(script);
    vexosim::ReadAll(*vexosim::OpenEvents(path, {}), writer);
    writer.Finish();
  } catch (const vexosim::NotReplayable& why) {
    Require(!std::string_view(why.what()).empty());
    return;
  }
  script::ParseScript(script, "s.vexo");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const MemoryFile file({reinterpret_cast<const char*>(data), size});
  try {
    std::ostringstream out;
    vexosim::TracePrinter printer(out, {}, true);
    vexosim::TraceSummary summary;
    const auto source = vexosim::OpenEvents(file.Path(), {});
    const bool capture = source->IsCapture();
    while (const auto next = source->Next()) {
      printer.OnEvent(next->event, next->Detail());
      summary.OnEvent(next->event, next->Detail());
      if (!capture) CheckJson(next->event, next->Detail());
    }
    printer.Finish();
    summary.Print(out);
    if (!capture) CheckReplay(file.Path());
  } catch (const vexosim::BadFile& error) {
    Require(std::string_view(error.what()).starts_with(file.Path()));
  }
  return 0;
}
