// Events read from a file, one after the other: a trace, or a capture of a real bus.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "files/file_error.h"
#include "files/printable.h"
#include "sim/trace.h"
#include "tools/vexosim/traces/capture_columns.h"

namespace vexosim {

// A file that cannot be read, or what is wrong in it: "FILE:LINE: expected ..., found ...".
using BadFile = files::FileError;

struct ReadEvent {
  sim::Event event;
  std::optional<sim::EventDetail> detail;  // none for a bus cycle

  const sim::EventDetail* Detail() const { return detail ? &*detail : nullptr; }
  template <typename T>
  const T* As() const {
    return detail ? std::get_if<T>(&*detail) : nullptr;
  }
};

class EventSource {
 public:
  virtual ~EventSource() = default;
  // The next event, none at the end. Throws BadFile.
  virtual std::optional<ReadEvent> Next() = 0;
  // The place in the file that was read last: "FILE:LINE".
  virtual std::string Where() const = 0;
  // Bus cycles alone, nobody knows by whom; the time is that of the capture.
  virtual bool IsCapture() const = 0;
};

// Opens a trace (JSON lines) or a capture (VCD, CSV): what a file is, its name or its first
// character tells. Throws BadFile.
std::unique_ptr<EventSource> OpenEvents(const std::string& path, const CaptureColumns& columns);

// All events of a source, each as it is read. Throws BadFile.
void ReadAll(EventSource& source, sim::TraceListener& listener);

// A piece of a file as a message may show it.
inline std::string Shown(std::string_view text) { return files::Printable(text, 40); }

}  // namespace vexosim
