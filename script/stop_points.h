// Places where a run stops: a register access, a text, a message, a bus cycle.
#pragma once

#include <array>
#include <bitset>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "chip/registers.h"
#include "script/words.h"
#include "sim/register_decoder.h"
#include "sim/trace.h"

namespace script {

// Registers, as a set.
using RegisterSet = std::array<std::bitset<kRegistersPerPage>, kPageCount>;

struct StopPoint {
  enum class Kind : std::uint8_t { Write, Read, Text, Message, Cycle };
  Kind kind;
  std::string words;  // as the user has it: write "window 0"

  ChipChoice chips{true, 0};  // Write, Read: accesses to any of these
  RegisterSet registers;      // Write, Read
  std::string text;           // Text: occurs in one write
  std::uint32_t number = 0;   // Message
  std::uint64_t cycle = 0;    // Cycle: the number of the bus cycle since the run began, from 1
};

// Listens to the trace while there is something to stop at.
class StopPoints : public sim::TraceListener {
 public:
  // stop: called where the run stops, with what happened there, in words.
  explicit StopPoints(std::function<void(const std::string& what)> stop) : stop_(std::move(stop)) {}
  ~StopPoints() override { Detach(); }
  StopPoints(const StopPoints&) = delete;
  StopPoints& operator=(const StopPoints&) = delete;

  // The number by which it is removed, from 1.
  unsigned Add(StopPoint point);
  // False when there is none of that number.
  bool Remove(unsigned number);
  void Clear();
  // A line each.
  std::vector<std::string> InWords() const;

  void StopAtNextCycle();
  // At the end of the export that is running now, or of the next one.
  void StopAtReturn();

  // sim::TraceListener
  void OnEvent(const sim::Event& event, const sim::EventDetail* detail) override;

 private:
  struct Numbered {
    unsigned number;
    StopPoint point;
  };
  void Listen();
  void Detach();
  void OnCycle(const sim::Event& event);
  void Stop(const std::string& what);

  std::function<void(const std::string&)> stop_;
  bool listening_ = false;
  unsigned next_number_ = 1;
  std::vector<Numbered> points_;
  bool at_next_cycle_ = false;
  bool at_return_ = false;
  sim::RegisterDecoder decoder_;
};

}  // namespace script
