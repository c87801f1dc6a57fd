#include "device/emulator/unwind.h"

#include <bit>

#include "device/emulator/process.h"
#include "sim/text.h"

namespace emulator {
namespace {

constexpr std::uint32_t kInstruction = 4;  // bytes

// With the condition "always": one that may not have run has no place in a prolog or epilog.
constexpr std::uint32_t kStackMask = 0xFFFF0000;
constexpr std::uint32_t kPush = 0xE92D0000;     // stmdb sp!, {...}
constexpr std::uint32_t kPop = 0xE8BD0000;      // ldmia sp!, {...}
constexpr std::uint32_t kPushOne = 0xE52D0000;  // str rn, [sp, #-n]!
constexpr std::uint32_t kPopOne = 0xE49D0000;   // ldr rn, [sp], #n
constexpr std::uint32_t kRoomMask = 0xFFFFF000;
constexpr std::uint32_t kMakeRoom = 0xE24DD000;      // sub sp, sp, #n
constexpr std::uint32_t kGiveRoom = 0xE28DD000;      // add sp, sp, #n
constexpr std::uint32_t kReturn = 0xE12FFF1E;        // bx lr
constexpr std::uint32_t kReturnWithin = 0xE1A0F00E;  // mov pc, lr

unsigned OneRegister(std::uint32_t instruction) { return instruction >> 12 & 0xF; }
std::uint32_t OneOffset(std::uint32_t instruction) { return instruction & 0xFFF; }

// Eight bits, turned to the right by an even number of places.
std::uint32_t RoomBytes(std::uint32_t instruction) {
  return std::rotr(instruction & 0xFF, static_cast<int>(instruction >> 8 & 0xF) * 2);
}

class Unwinding {
 public:
  Unwinding(const Cpu& cpu, const Frame& frame) : cpu_(cpu), registers_(frame.registers) {}

  // Undoes a prolog's instructions from the last to the first.
  void Undo(std::uint32_t begin, std::uint32_t end) {
    for (std::uint32_t at = end; at != begin; at -= kInstruction) UndoOne(at - kInstruction);
    registers_[kPc] = registers_[kLr];
  }

  // Does what is left of an epilog. False when something else comes before the return.
  bool DoEpilog(const FunctionRange& function) {
    for (std::uint32_t at = registers_[kPc]; at < function.end; at += kInstruction) {
      const std::uint32_t instruction = cpu_.ReadWord(at);
      if (instruction == kReturn || instruction == kReturnWithin) {
        registers_[kPc] = registers_[kLr];
        return true;
      }
      if ((instruction & kStackMask) == kPop) {
        LoadList(instruction);
        if ((instruction & 1u << kPc) != 0) return true;
      } else if ((instruction & kStackMask) == kPopOne) {
        LoadOne(instruction);
        if (OneRegister(instruction) == kPc) return true;
      } else if ((instruction & kRoomMask) == kGiveRoom) {
        registers_[kSp] += RoomBytes(instruction);
      } else {
        return false;
      }
    }
    return false;
  }

  Frame Caller() const { return {registers_, true}; }

 private:
  void UndoOne(std::uint32_t at) {
    constexpr std::uint32_t kCopySp = 0xE1A0C00D;  // mov ip, sp
    const std::uint32_t instruction = cpu_.ReadWord(at);
    if ((instruction & kStackMask) == kPush) {
      LoadList(instruction);
    } else if ((instruction & kStackMask) == kPushOne) {
      LoadOne(instruction);
    } else if ((instruction & kRoomMask) == kMakeRoom) {
      registers_[kSp] += RoomBytes(instruction);
    } else if (instruction != kCopySp) {
      cpu_.Fault("the prolog's instruction " + sim::Hex(instruction, 8) + " at " +
                 cpu_.Owner().Place(at) + " cannot be undone");
    }
  }

  void LoadList(std::uint32_t instruction) {
    std::uint32_t at = registers_[kSp];
    registers_[kSp] +=
        kInstruction * static_cast<std::uint32_t>(std::popcount(instruction & 0xFFFF));
    for (unsigned i = 0; i < registers_.size(); ++i) {
      if ((instruction & 1u << i) == 0) continue;
      registers_[i] = cpu_.ReadWord(at);
      at += kInstruction;
    }
  }
  void LoadOne(std::uint32_t instruction) {
    const std::uint32_t at = registers_[kSp];
    registers_[kSp] += OneOffset(instruction);
    registers_[OneRegister(instruction)] = cpu_.ReadWord(at);
  }

  const Cpu& cpu_;
  std::array<std::uint32_t, 16> registers_;
};

}  // namespace

std::optional<FunctionRange> FindFunction(const LoadedImage& image, std::uint32_t address) {
  constexpr std::uint32_t kEntryBytes = 8;
  constexpr std::uint32_t kPrologMask = (1u << 8) - 1;
  constexpr std::uint32_t kLengthMask = (1u << 22) - 1;
  constexpr std::uint32_t k32BitInstructions = 1u << 30;
  const auto word = [&image](std::uint32_t entry, std::uint32_t offset) {
    return image.Word(image.File().FunctionTableRva() + entry * kEntryBytes + offset);
  };
  std::uint32_t entry = 0;  // in the end the first one that begins behind the address
  for (std::uint32_t end = image.File().FunctionCount(); entry != end;) {
    const std::uint32_t middle = entry + (end - entry) / 2;
    if (word(middle, 0) <= address) {
      entry = middle + 1;
    } else {
      end = middle;
    }
  }
  if (entry-- == 0) return std::nullopt;
  const std::uint32_t begin = word(entry, 0);
  const std::uint32_t packed = word(entry, 4);
  if ((packed & k32BitInstructions) == 0) {
    throw BadImage("the function at " + sim::Hex(begin, 8) + " has 16-bit instructions");
  }
  const FunctionRange found{begin, begin + kInstruction * (packed & kPrologMask),
                            begin + kInstruction * (packed >> 8 & kLengthMask)};
  if (address >= found.end) return std::nullopt;
  return found;
}

Frame FrameOf(const Cpu& cpu) { return {cpu.Registers(), false}; }

Frame CallerOf(const Cpu& cpu, const Frame& frame) {
  const std::uint32_t pc = frame.registers[kPc];
  const std::uint32_t inside = frame.waits ? pc - kInstruction : pc;
  const LoadedImage* const image = cpu.Owner().ImageAt(inside);
  if (image == nullptr) cpu.Fault("no image has the code at " + sim::Hex(pc, 8));
  const std::optional<FunctionRange> function = FindFunction(*image, inside);
  Unwinding unwinding(cpu, frame);
  if (!function) {
    if (frame.waits) {
      cpu.Fault("the function of " + cpu.Owner().Place(inside) +
                " calls others, and is not in the function table");
    }
    unwinding.Undo(pc, pc);
    return unwinding.Caller();
  }
  if (!frame.waits && pc < function->body) {
    unwinding.Undo(function->begin, pc);
    return unwinding.Caller();
  }
  if (Unwinding epilog(cpu, frame); epilog.DoEpilog(*function)) return epilog.Caller();
  unwinding.Undo(function->begin, function->body);
  return unwinding.Caller();
}

}  // namespace emulator
