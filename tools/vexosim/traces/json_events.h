// A trace read back, a line at a time.
#pragma once

#include <nlohmann/json.hpp>

#include "tools/vexosim/traces/events.h"
#include "tools/vexosim/traces/file_lines.h"

namespace vexosim {

// What is wrong with an object that should be an event.
struct BadEvent : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// An object of docs/trace-format.md, none for a kind of event that is not known. Throws BadEvent.
std::optional<ReadEvent> EventFromJson(const nlohmann::json& json);

class JsonEvents : public EventSource {
 public:
  explicit JsonEvents(FileLines lines) : lines_(std::move(lines)) {}
  std::optional<ReadEvent> Next() override;
  std::string Where() const override { return lines_.Where(); }
  bool IsCapture() const override { return false; }

 private:
  FileLines lines_;
  std::string line_;
};

}  // namespace vexosim
