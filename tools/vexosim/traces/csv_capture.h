// A capture as comma-separated values: a row of column names, then a sample a row.
#pragma once

#include <deque>
#include <vector>

#include "tools/vexosim/traces/bus_capture.h"
#include "tools/vexosim/traces/file_lines.h"

namespace vexosim {

class CsvCapture : public EventSource {
 public:
  // Throws BadFile for a file without the columns.
  CsvCapture(FileLines lines, const CaptureColumns& columns);
  std::optional<ReadEvent> Next() override;
  std::string Where() const override { return lines_.Where(); }
  bool IsCapture() const override { return true; }

 private:
  // The fields that a line of the bus is read from: one, or one a bit, bit 0 first; none when the
  // capture does not have it.
  using Places = std::vector<std::size_t>;

  bool NextRow();
  Places Find(const std::string& name, bool wide) const;
  int Value(const Places& places, std::size_t line) const;
  std::uint32_t Time() const;

  CaptureColumns columns_;
  FileLines lines_;
  std::string row_;
  std::vector<std::string_view> fields_;  // of the row
  char separator_ = ',';
  std::size_t count_ = 0;  // of columns
  std::vector<std::string> names_;
  std::array<Places, kBusLines> places_;
  std::optional<std::size_t> time_;  // column with seconds
  std::optional<CycleFinder> finder_;
  std::deque<ReadEvent> cycles_;
};

}  // namespace vexosim
