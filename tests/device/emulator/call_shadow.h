// Beside the run of a processor a record of its calls: what each caller had in its registers when
// it called, so that an unwinding can be judged.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "device/emulator/unwind.h"

namespace emulator {

class CallShadow {
 public:
  // Every so many instructions one is unwound, and each instruction where it runs first.
  CallShadow(Process& process, unsigned every);

  // What was unwound and agreed: instructions that were looked at, calls on the way to the host's
  // own, different instructions, functions of the table.
  std::uint64_t Samples() const { return samples_; }
  std::uint64_t Calls() const { return calls_; }
  std::size_t Places() const { return places_.size(); }
  std::size_t Functions() const { return functions_.size(); }
  // What did not, the first time at each address:
  // "image+0x1234: r4 of caller 1 is 0x00000001 and not 0x00000002".
  const std::map<std::uint32_t, std::string>& Differences() const { return differences_; }

 private:
  // r4 to r11, sp and pc of a caller when its call comes back.
  using Kept = std::array<std::uint32_t, 10>;
  struct Run {
    std::vector<Kept> callers;
    std::uint32_t before = 0;  // address of the last instruction
  };

  static Kept KeptOf(const std::array<std::uint32_t, 16>& registers, std::uint32_t pc);
  void Look(const Cpu& cpu);
  void Follow(const Cpu& cpu, Run& run, const std::array<std::uint32_t, 16>& registers);
  void Compare(const Cpu& cpu, const Run& run);

  Process& process_;
  unsigned every_;
  std::uint64_t looked_ = 0;
  std::map<unsigned, Run> runs_;  // by processor
  std::set<std::uint32_t> places_;
  std::set<std::uint32_t> functions_;
  std::uint64_t samples_ = 0;
  std::uint64_t calls_ = 0;
  std::map<std::uint32_t, std::string> differences_;
};

}  // namespace emulator
