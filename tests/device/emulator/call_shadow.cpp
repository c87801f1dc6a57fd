#include "tests/device/emulator/call_shadow.h"

#include <algorithm>

#include "device/emulator/process.h"
#include "harness/image_run.h"
#include "sim/text.h"

namespace emulator {
namespace {

constexpr std::size_t kKeptSp = 8;
constexpr std::size_t kKeptPc = 9;

// A call leaves the address behind it in lr: bl, or bx behind mov lr, pc; on whatever condition.
bool IsCall(std::uint32_t instruction) {
  return (instruction & 0x0F000000) == 0x0B000000 || (instruction & 0x0FFFFFF0) == 0x012FFF10;
}

std::string Name(std::size_t kept) {
  if (kept == kKeptSp) return "sp";
  return kept == kKeptPc ? "pc" : 'r' + std::to_string(4 + kept);
}

}  // namespace

CallShadow::CallShadow(Process& process, unsigned every) : process_(process), every_(every) {
  process.LookAtInstructions([this](const Cpu& cpu) { Look(cpu); });
}

CallShadow::Kept CallShadow::KeptOf(const std::array<std::uint32_t, 16>& registers,
                                    std::uint32_t pc) {
  Kept kept{};
  std::copy_n(registers.begin() + 4, kKeptSp, kept.begin());
  kept[kKeptSp] = registers[kSp];
  kept[kKeptPc] = pc;
  return kept;
}

void CallShadow::Look(const Cpu& cpu) {
  const std::array<std::uint32_t, 16> registers = cpu.Registers();
  const std::uint32_t pc = registers[kPc];
  Run& run = runs_[cpu.Number()];
  if (process_.ImageAt(pc) == nullptr) {  // in the system
    run.before = pc;
    return;
  }
  Follow(cpu, run, registers);
  run.before = pc;
  if (places_.insert(pc).second || ++looked_ % every_ == 0) Compare(cpu, run);
}

void CallShadow::Follow(const Cpu& cpu, Run& run, const std::array<std::uint32_t, 16>& registers) {
  const std::uint32_t lr = registers[kLr];
  const bool from_image = process_.ImageAt(run.before) != nullptr;
  if (!from_image && lr == Process::TrapAddress(kReturnTrap)) {
    run.callers = {KeptOf(registers, lr)};  // the host calls
    return;
  }
  if (from_image && lr == run.before + 4 && registers[kPc] != lr &&
      IsCall(cpu.ReadWord(run.before))) {
    run.callers.push_back(KeptOf(registers, lr));
    return;
  }
  const auto is_back = [&registers](const Kept& caller) {
    return caller[kKeptPc] == registers[kPc] && caller[kKeptSp] == registers[kSp];
  };
  while (!run.callers.empty() && is_back(run.callers.back())) run.callers.pop_back();
}

void CallShadow::Compare(const Cpu& cpu, const Run& run) {
  ++samples_;
  Frame frame = FrameOf(cpu);
  const std::uint32_t pc = frame.registers[kPc];
  const auto note = [this, pc](const std::string& difference) {
    differences_.try_emplace(pc, process_.Place(pc) + ": " + difference);
  };
  if (const auto function = FindFunction(*process_.ImageAt(pc), pc)) {
    functions_.insert(function->begin);
  }
  try {
    for (auto caller = run.callers.rbegin(); caller != run.callers.rend(); ++caller) {
      frame = CallerOf(cpu, frame);
      const Kept found = KeptOf(frame.registers, frame.registers[kPc]);
      for (std::size_t i = 0; i < found.size(); ++i) {
        if (found[i] == (*caller)[i]) continue;
        note(Name(i) + " of caller " + std::to_string(caller - run.callers.rbegin() + 1) + " is " +
             sim::Hex(found[i], 8) + " and not " + sim::Hex((*caller)[i], 8));
        return;
      }
      ++calls_;
    }
  } catch (const harness::ImageFault& fault) {
    note(fault.what());
  }
}

}  // namespace emulator
