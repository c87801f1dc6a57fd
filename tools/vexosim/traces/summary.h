// What a trace costs: bus cycles of each kind of call.
#pragma once

#include <cstdint>
#include <map>
#include <ostream>
#include <string>
#include <vector>

#include "sim/register_decoder.h"
#include "sim/trace.h"

namespace vexosim {

class TraceSummary : public sim::TraceListener {
 public:
  void OnEvent(const sim::Event& event, const sim::EventDetail* detail) override;
  // A row for each export, command and text command, for the worker, and for all.
  void Print(std::ostream& out) const;

 private:
  struct Row {
    std::string name;
    std::uint64_t calls = 0;
    std::uint64_t stores = 0;
    std::uint64_t loads = 0;
    std::uint64_t reads = 0;   // of registers
    std::uint64_t writes = 0;  // of registers
  };

  Row& RowOf(const std::string& name);

  sim::RegisterDecoder decoder_;
  std::vector<Row> rows_;  // as they came up
  std::map<std::string, std::size_t> places_;
  std::string call_;  // in progress, empty for none
};

}  // namespace vexosim
