#include "tools/vexosim/traces/events.h"

#include "tools/vexosim/traces/csv_capture.h"
#include "tools/vexosim/traces/file_lines.h"
#include "tools/vexosim/traces/json_events.h"
#include "tools/vexosim/traces/vcd_capture.h"

namespace vexosim {
std::unique_ptr<EventSource> OpenEvents(const std::string& path, const CaptureColumns& columns) {
  FileLines lines(path);
  const char first = lines.First();
  if (path.ends_with(".vcd") || first == '$' || first == '#') {
    return std::make_unique<VcdCapture>(std::move(lines), columns);
  }
  if (path.ends_with(".csv")) return std::make_unique<CsvCapture>(std::move(lines), columns);
  const bool json = path.ends_with(".jsonl") || path.ends_with(".json") || first == '{';
  if (json || first == '\0') return std::make_unique<JsonEvents>(std::move(lines));
  return std::make_unique<CsvCapture>(std::move(lines), columns);
}

void ReadAll(EventSource& source, sim::TraceListener& listener) {
  while (const auto next = source.Next()) listener.OnEvent(next->event, next->Detail());
}

}  // namespace vexosim
