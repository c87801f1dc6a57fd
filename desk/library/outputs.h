// The files of a run: the library's texts and the trace. They grow with it, so that all is there
// when the program crashes.
#pragma once

#include <memory>
#include <string>

#include "files/output.h"
#include "sim/trace.h"
#include "sim/trace_json.h"

namespace desk {

// The library's texts, a line feed at the end of a line.
class TextsOutput : public sim::TraceListener {
 public:
  // "-" is standard error. Throws FileError.
  TextsOutput(const std::string& path, const std::string& other);
  void OnEvent(const sim::Event& event, const sim::EventDetail* detail) override;
  void Commit();

 private:
  std::unique_ptr<files::OutputFile> file_;  // none: standard error
};

// The trace as JSON lines.
class TraceOutput : public sim::TraceListener {
 public:
  TraceOutput(const std::string& path, const std::string& other);
  void OnEvent(const sim::Event& event, const sim::EventDetail* detail) override;
  void Commit() { file_.Commit(); }

 private:
  files::OutputFile file_;
  sim::TraceWriter writer_;
};

}  // namespace desk
