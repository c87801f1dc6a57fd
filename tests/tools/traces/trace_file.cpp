#include "tests/tools/traces/trace_file.h"

#include "sim/text.h"
#include "tools/vexosim/traces/event_words.h"

namespace vexosim {

std::vector<std::string> CyclesOf(const std::string& path, const CaptureColumns& columns) {
  std::vector<std::string> cycles;
  const auto source = OpenEvents(path, columns);
  while (const auto read = source->Next()) {
    const bool load = read->event.kind == sim::Event::Kind::Load;
    cycles.push_back((load ? "load " : "store ") + std::string(WindowName(read->event.window)) +
                     ' ' + sim::Hex(read->event.value));
  }
  return cycles;
}

std::string WrongWith(const std::string& name, const std::string& text,
                      const CaptureColumns& columns) {
  const TempFile file(name, text);
  try {
    const auto source = OpenEvents(file.Path(), columns);
    while (source->Next()) {
    }
    return {};
  } catch (const BadFile& error) {
    std::string what = error.what();
    const std::size_t at = what.find(file.Path());
    return at == std::string::npos ? what : what.erase(at, file.Path().size());
  }
}

}  // namespace vexosim
