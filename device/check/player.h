// Plays a plan, and writes what comes of it into the log.
#pragma once

#include <cstdint>

#include "device/check/plan_line.h"
#include "device/check/system.h"

namespace check {

// FNV-1a, 32 bits.
std::uint32_t Checksum(const char* text, unsigned bytes);

class Player {
 public:
  explicit Player(System& system) : system_(system) {}

  // Reads it all before it does anything: false when it is no plan, which the log then says.
  bool Play(const char* text, unsigned bytes);
  // The program's window got a message, in a call or while time passes.
  void OnMessage(const Message& message);
  // The last lines of the log. What is wrong besides the plan is told by `trouble`, null: nothing.
  void Finish(const char* trouble);
  bool AsExpected() const { return different_ == 0; }

 private:
  struct Received {
    std::uint32_t number, wparam, lparam;
    unsigned record_bytes;
    std::uint8_t record[20];
  };

  bool Check(const char* text, unsigned bytes);
  void Do(const PlanLine& line);
  bool CanDo(const PlanLine& line);
  void Call(const PlanLine& line);
  void Tell(const PlanLine& line, std::uint32_t took_us, std::uint32_t error);
  std::int32_t CallWithResult(const PlanLine& line);
  void EndAction();
  void Expect(const PlanLine& line);
  void ExpectMessage(const PlanLine& line);
  void ReadRegister(const PlanLine& line);
  bool ReadOnce(const PlanLine& line);
  bool Matches(const PlanLine& line, const std::uint8_t* found, unsigned bytes) const;
  void Judge(bool as_expected);

  System& system_;
  unsigned number_ = 0;  // of the line
  unsigned action_line_ = 0;
  std::uint64_t logging_us_ = 0;  // of the action's time

  bool loaded_ = false;
  bool output_ = true;       // whether the library prints, as its last switch says
  bool output_off_ = false;  // while registers are read
  bool reading_ = false;     // a register: its message is none of an action

  // Of the last action.
  bool called_ = false;
  bool has_result_ = false;
  std::int32_t result_ = 0;
  std::uint8_t record_[kRecordBytes] = {};
  char answer_[kMostText + 1] = {};
  bool any_messages_ = true;
  unsigned matched_ = 0;
  unsigned received_count_ = 0;
  bool lost_ = false;  // a message, since there was no room
  static constexpr unsigned kMostReceived = 64;
  Received received_[kMostReceived] = {};

  unsigned as_expected_ = 0;
  unsigned different_ = 0;
  unsigned first_different_ = 0;  // line of the plan
};

}  // namespace check
