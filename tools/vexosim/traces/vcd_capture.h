// A capture as value change dump, the format of waveform viewers and logic analysers.
#pragma once

#include <deque>
#include <map>
#include <string>
#include <vector>

#include "tools/vexosim/traces/bus_capture.h"
#include "tools/vexosim/traces/file_lines.h"

namespace vexosim {

class VcdCapture : public EventSource {
 public:
  // Reads the header. Throws BadFile for a file without one, or without the signals.
  VcdCapture(FileLines lines, const CaptureColumns& columns);
  std::optional<ReadEvent> Next() override;
  std::string Where() const override { return lines_.Where(); }
  bool IsCapture() const override { return true; }

 private:
  // Where a signal's value goes: a whole line of the bus, or one bit of it.
  struct Target {
    std::size_t line = 0;
    int bit = -1;
  };
  struct Signal {
    std::string id;
    unsigned width = 0;
  };

  // The next word of the file, empty at its end.
  std::string_view Word();
  void SkipToEnd();
  void ReadHeader();
  void ReadVariable(const std::string& scope);
  void ReadTimescale();
  void FindLines();
  // One word of the changes; what follows it is taken too. False at the end.
  bool ReadChange();
  void Change(std::string_view value, std::string_view id);
  void EndOfMoment();

  CaptureColumns columns_;
  FileLines lines_;
  std::string line_;
  std::size_t at_ = 0;                                       // in the line
  std::map<std::string, Signal, std::less<>> signals_;       // by name
  std::multimap<std::string, Target, std::less<>> targets_;  // by id
  std::array<bool, kBusLines> has_{};
  BusSample now_{};
  std::array<unsigned, kWideBusLines> held_bits_{};
  std::array<unsigned, kWideBusLines> unknown_bits_{};
  std::uint64_t time_ = 0;  // in units of the file
  double ms_a_unit_ = 1e-6;
  std::optional<CycleFinder> finder_;
  std::deque<ReadEvent> cycles_;
};

}  // namespace vexosim
