#include "device/emulator/cpu.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <utility>

#include "device/emulator/process.h"
#include "sim/text.h"
#include "sim/world.h"

namespace emulator {
namespace {

// The caller aligns its stack to 4 bytes, and need not align it to 8.
constexpr std::uint32_t kEntryStack = kStackBytes - 0x24;
constexpr std::uint32_t kJunk = 0xBAD0C0DE;  // in registers that hold nothing
constexpr std::uint32_t kUserMode = 0x10;
constexpr std::uint32_t kNowhere = 0xFFFFFFF0;  // the engine stops at traps alone
constexpr std::uint32_t kSoftwareInterrupt = 2;
constexpr std::uint64_t kInstructionsToWatch = 100'000;  // a millisecond or less
constexpr unsigned kRegisterArguments = 4;
constexpr std::uint32_t kWord = 4;
constexpr std::array<int, 8> kSavedRegisters = {UC_ARM_REG_R4,  UC_ARM_REG_R5, UC_ARM_REG_R6,
                                                UC_ARM_REG_R7,  UC_ARM_REG_R8, UC_ARM_REG_R9,
                                                UC_ARM_REG_R10, UC_ARM_REG_R11};

// All that a call may change and its caller may need again.
constexpr std::array<int, 15> kContext = {
    UC_ARM_REG_R0,  UC_ARM_REG_R1,  UC_ARM_REG_R2,  UC_ARM_REG_R3, UC_ARM_REG_R4,
    UC_ARM_REG_R5,  UC_ARM_REG_R6,  UC_ARM_REG_R7,  UC_ARM_REG_R8, UC_ARM_REG_R9,
    UC_ARM_REG_R10, UC_ARM_REG_R11, UC_ARM_REG_R12, UC_ARM_REG_SP, UC_ARM_REG_LR};

void Check(uc_err error, const char* what) {
  if (error != UC_ERR_OK) {
    throw std::runtime_error(std::string("the ARM engine: ") + what + ": " + uc_strerror(error));
  }
}

std::uint32_t WholePages(std::uint32_t bytes) {
  return (bytes + kGuestPage - 1) / kGuestPage * kGuestPage;
}

const char* Verb(uc_mem_type type) {
  switch (type) {
    case UC_MEM_WRITE:
    case UC_MEM_WRITE_UNMAPPED:
    case UC_MEM_WRITE_PROT:
      return "a store to ";
    case UC_MEM_FETCH:
    case UC_MEM_FETCH_UNMAPPED:
    case UC_MEM_FETCH_PROT:
      return "a jump to ";
    default:
      return "a load from ";
  }
}

}  // namespace

Cpu::Cpu(Process& process, unsigned number)
    : process_(process),
      number_(number),
      stack_pages_(kStackBytes),
      caller_pages_(kCallerBytes),
      user_data_pages_(kGuestPage),
      stack_{kStackAddress + number * kAreaStep, kEntryStack, stack_pages_.Data(), true},
      callers_stack_{stack_.address + kEntryStack, kStackBytes - kEntryStack,
                     stack_.host + kEntryStack, false},
      identifiers_{kThreadIdAddress, 8,
                   user_data_pages_.Data() + kThreadIdAddress - kUserDataAddress, false},
      caller_address_(kCallerAddress + number * kAreaStep),
      next_look_(kInstructionsToWatch),
      lowest_stack_(stack_.address + kEntryStack) {
  Check(uc_open(UC_ARCH_ARM, UC_MODE_ARM, &engine_), "opening");
  engine_holder_.reset(engine_);
  // An ARMv4T processor: later instructions do not exist.
  Check(uc_ctl_set_cpu_model(engine_, UC_CPU_ARM_TI925T), "choosing the processor");
  const auto map = [this](std::uint32_t address, const GuestPages& pages, std::uint32_t rights) {
    Check(uc_mem_map_ptr(engine_, address, pages.Bytes(), rights, pages.Data()), "mapping memory");
  };
  map(stack_.address, stack_pages_, UC_PROT_READ | UC_PROT_WRITE);
  map(caller_address_, caller_pages_, UC_PROT_READ | UC_PROT_WRITE);
  map(kHeapAddress, process.Heap().Pages(), UC_PROT_READ | UC_PROT_WRITE);
  map(kUserDataAddress, user_data_pages_, UC_PROT_READ);
  map(kTrapAddress, process.Traps(), UC_PROT_READ | UC_PROT_EXEC);
  for (const MappedSection& section : process.Sections()) Map(section);
  for (unsigned page = 0; page < ports_.size(); ++page) {
    ports_[page] = {this, page};
    MapPort(Process::PortAddress(page), ports_[page]);
  }

  const auto hook = [this](int kind, auto function) {
    uc_hook handle = 0;
    Check(uc_hook_add(engine_, &handle, kind, reinterpret_cast<void*>(function), this,
                      std::uint64_t{1}, std::uint64_t{0}),
          "adding a hook");
  };
  hook(UC_HOOK_BLOCK, OnBlock);
  if (process.Look()) hook(UC_HOOK_CODE, OnInstruction);
  hook(UC_HOOK_INTR, OnInterrupt);
  hook(UC_HOOK_MEM_READ | UC_HOOK_MEM_WRITE, OnAccess);
  hook(UC_HOOK_MEM_INVALID, OnBadAccess);
  SetRegister(UC_ARM_REG_CPSR, kUserMode);
}

void Cpu::Map(const MappedSection& section) {
  std::uint32_t rights = UC_PROT_READ;
  if (section.extent.writable) rights |= UC_PROT_WRITE;
  if (section.executable) rights |= UC_PROT_EXEC;
  Check(uc_mem_map_ptr(engine_, section.extent.address, WholePages(section.extent.bytes), rights,
                       section.extent.host),
        "mapping a section");
}

void Cpu::Unmap(const MappedSection& section) {
  const std::uint32_t bytes = WholePages(section.extent.bytes);
  // What it translated of the code stays otherwise, for another image at this address.
  Check(uc_ctl_remove_cache(engine_, section.extent.address, section.extent.address + bytes),
        "forgetting code");
  Check(uc_mem_unmap(engine_, section.extent.address, bytes), "unmapping a section");
}

void Cpu::MapStackOf(const Cpu& other) {
  Check(uc_mem_map_ptr(engine_, other.stack_.address, other.stack_pages_.Bytes(),
                       UC_PROT_READ | UC_PROT_WRITE, other.stack_pages_.Data()),
        "mapping a stack");
}

void Cpu::MapPort(std::uint32_t address, Port& port) {
  Check(uc_mmio_map(engine_, address, kGuestPage, OnBusLoad, &port, OnBusStore, &port),
        "mapping a bus window");
}

// ---- Calls ------------------------------------------------------------------------------------

std::uint32_t Cpu::Call(std::uint32_t address, std::span<const std::uint32_t> arguments) {
  if (depth_ == 0) {
    fault_.reset();
    thrown_ = nullptr;
    const std::array<std::uint32_t, 2> identifiers = {Plat_CurrentThreadId(), process_.Id()};
    std::memcpy(identifiers_.host, identifiers.data(), sizeof(identifiers));
  }
  // What the call leaves is the caller's, whose own call of the system is not over.
  std::array<std::uint32_t, kContext.size()> context{};
  for (std::size_t i = 0; i < kContext.size(); ++i) context[i] = Register(kContext[i]);
  const std::uint32_t top = depth_ == 0 ? stack_.address + kEntryStack : Register(UC_ARM_REG_SP);
  struct Level {
    explicit Level(unsigned& level_depth) : depth(level_depth) { ++depth; }
    ~Level() { --depth; }
    Level(const Level&) = delete;
    Level& operator=(const Level&) = delete;
    unsigned& depth;
  };
  const Level level(depth_);
  const std::uint32_t result = Run(address, arguments, top);
  for (std::size_t i = 0; i < kContext.size(); ++i) SetRegister(kContext[i], context[i]);
  return result;
}

std::uint32_t Cpu::Run(std::uint32_t address, std::span<const std::uint32_t> arguments,
                       std::uint32_t stack_top) {
  const auto on_stack = static_cast<std::uint32_t>(
      arguments.size() > kRegisterArguments ? arguments.size() - kRegisterArguments : 0);
  const std::uint32_t stack = stack_top - 4 * on_stack;
  SetRegister(UC_ARM_REG_SP, stack);
  for (unsigned i = 0; i < on_stack; ++i) {
    WriteWord(stack + 4 * i, arguments[kRegisterArguments + i]);
  }
  for (unsigned i = 0; i < kRegisterArguments; ++i) {
    SetRegister(UC_ARM_REG_R0 + static_cast<int>(i), i < arguments.size() ? arguments[i] : kJunk);
  }
  for (unsigned i = 0; i < kSavedRegisters.size(); ++i) SetRegister(kSavedRegisters[i], kJunk + i);
  SetRegister(UC_ARM_REG_R12, kJunk);
  SetRegister(UC_ARM_REG_LR, Process::TrapAddress(kReturnTrap));

  for (RunUntilTrap(address); *trap_ != kReturnTrap;) {
    const unsigned trap = *trap_;
    const std::uint32_t result = process_.Answer(trap, *this);
    // A call may leave anything in these.
    for (const int id : {UC_ARM_REG_R1, UC_ARM_REG_R2, UC_ARM_REG_R3, UC_ARM_REG_R12}) {
      SetRegister(id, kJunk);
    }
    SetRegister(UC_ARM_REG_R0, result);
    RunUntilTrap(Process::TrapAddress(trap) + 4);
  }
  for (unsigned i = 0; i < kSavedRegisters.size(); ++i) {
    if (Register(kSavedRegisters[i]) != kJunk + i) {
      Fault("the function did not keep r" + std::to_string(4 + i));
    }
  }
  if (Register(UC_ARM_REG_SP) != stack) Fault("the function did not keep the stack pointer");
  return Register(UC_ARM_REG_R0);
}

void Cpu::RunUntilTrap(std::uint32_t address) {
  trap_.reset();
  push_.reset();
  began_ = instructions_;
  next_look_ = std::min(next_look_, began_ + process_.InstructionLimit());
  const uc_err error = uc_emu_start(engine_, address, kNowhere, 0, 0);
  if (thrown_) std::rethrow_exception(std::exchange(thrown_, nullptr));
  if (fault_) Fault(*fault_);
  if (error != UC_ERR_OK) Fault(std::string("the processor stopped: ") + uc_strerror(error));
  if (!trap_) Fault("the processor stopped");
}

std::uint32_t Cpu::Lend(const void* data, std::uint32_t bytes, bool writable, unsigned misalign) {
  constexpr std::uint32_t kGap = 64;  // on both sides, in bounds of nothing
  const std::uint32_t offset = (caller_used_ + kGap + 7) / 8 * 8 + misalign;
  if (loan_count_ == loans_.size() || bytes > kCallerBytes - kGap ||
      offset > kCallerBytes - kGap - bytes) {
    throw std::runtime_error("the caller lends more than there is room for");
  }
  caller_used_ = offset + bytes;
  std::uint8_t* host = caller_pages_.Data() + offset;
  std::memcpy(host, data, bytes);
  loans_[loan_count_++] = {caller_address_ + offset, bytes, host, writable};
  return caller_address_ + offset;
}

void Cpu::TakeBack(std::uint32_t address, void* data, std::uint32_t bytes) const {
  std::memcpy(data, Read(address, bytes), bytes);
}

void Cpu::ForgetLoans() {
  loan_count_ = 0;
  caller_used_ = 0;
}

// ---- Arguments and memory -----------------------------------------------------------------------

std::uint32_t Cpu::StackSlot(unsigned index) const {
  return Register(UC_ARM_REG_SP) + 4 * (index - kRegisterArguments);
}

std::uint32_t Cpu::Argument(unsigned index) {
  if (index < kRegisterArguments) return Register(UC_ARM_REG_R0 + static_cast<int>(index));
  return ReadWord(StackSlot(index));
}

const Extent* Cpu::Find(std::uint32_t address) const {
  if (stack_.Holds(address, 1)) return &stack_;
  for (const MappedSection& section : process_.Sections()) {
    if (section.extent.Holds(address, 1)) return &section.extent;
  }
  for (unsigned i = 0; i < loan_count_; ++i) {
    if (loans_[i].Holds(address, 1)) return &loans_[i];
  }
  if (identifiers_.Holds(address, 1)) return &identifiers_;
  if (const Extent* const block = process_.Heap().Find(address)) return block;
  return process_.FindStack(address);
}

void Cpu::CheckLent(std::uint32_t address, const Extent* extent) const {
  if (extent == &stack_ && address < Register(UC_ARM_REG_SP)) {
    Fault("the system is told to use " + sim::Hex(address, 8) + ", below the stack pointer");
  }
}

const std::uint8_t* Cpu::Read(std::uint32_t address, std::uint32_t bytes) const {
  const Extent* extent = Find(address);
  CheckLent(address, extent);
  if (extent == nullptr || !extent->Holds(address, bytes)) {
    Fault("the system is told to read " + std::to_string(bytes) + " bytes at " +
          sim::Hex(address, 8) + ", which are out of bounds");
  }
  return extent->host + (address - extent->address);
}

std::uint8_t* Cpu::Write(std::uint32_t address, std::uint32_t bytes) const {
  const Extent* extent = Find(address);
  CheckLent(address, extent);
  if (extent == nullptr || !extent->writable || !extent->Holds(address, bytes)) {
    Fault("the system is told to write " + std::to_string(bytes) + " bytes at " +
          sim::Hex(address, 8) + ", which are out of bounds or read-only");
  }
  return extent->host + (address - extent->address);
}

std::uint32_t Cpu::ReadWord(std::uint32_t address) const {
  if (address % 4 != 0) Fault("the system is told to read a word at " + sim::Hex(address, 8));
  std::uint32_t value = 0;
  std::memcpy(&value, Read(address, sizeof(value)), sizeof(value));
  return value;
}

void Cpu::WriteWord(std::uint32_t address, std::uint32_t value) const {
  if (address % 4 != 0) Fault("the system is told to write a word at " + sim::Hex(address, 8));
  std::memcpy(Write(address, sizeof(value)), &value, sizeof(value));
}

std::string Cpu::Text(std::uint32_t address, std::size_t most) const {
  std::string text;
  while (text.size() < most) {
    const char c = static_cast<char>(*Read(address++, 1));
    if (c == '\0') break;
    text.push_back(c);
  }
  return text;
}

std::u16string Cpu::WideText(std::uint32_t address, std::size_t most) const {
  if (address % 2 != 0) Fault("a wide text at " + sim::Hex(address, 8));
  std::u16string text;
  for (; text.size() < most; address += 2) {
    char16_t unit = 0;
    std::memcpy(&unit, Read(address, sizeof(unit)), sizeof(unit));
    if (unit == 0) break;
    text.push_back(unit);
  }
  return text;
}

// ---- Inside of the engine ---------------------------------------------------------------------
// Nothing here may throw: the engine's frames cannot be unwound.

void Cpu::OnBlock(uc_engine*, std::uint64_t address, std::uint32_t bytes, void* self) {
  Cpu& cpu = *static_cast<Cpu*>(self);
  if (cpu.push_) cpu.EndPush(cpu.Register(UC_ARM_REG_SP));
  cpu.block_ = static_cast<std::uint32_t>(address);
  cpu.block_bytes_ = bytes;
  if (address >= kTrapAddress) return;
  cpu.instructions_ += bytes / 4;
  if (cpu.instructions_ >= cpu.next_look_) cpu.MayGoOn();
}

void Cpu::OnInstruction(uc_engine* engine, std::uint64_t, std::uint32_t, void* self) {
  Cpu& cpu = *static_cast<Cpu*>(self);
  if (cpu.fault_ || cpu.thrown_) return;
  try {
    cpu.process_.Look()(cpu);
  } catch (...) {
    cpu.thrown_ = std::current_exception();
    uc_emu_stop(engine);
  }
}

void Cpu::MayGoOn() {
  next_look_ = instructions_ + kInstructionsToWatch;
  if (fault_ || thrown_) return;
  const std::uint64_t ran = instructions_ - began_;
  if (ran >= process_.InstructionLimit()) {
    Note("ran " + std::to_string(ran) + " instructions without an end, and called no system");
    return;
  }
  try {
    sim::TheWorld().kernel.Watch();
  } catch (...) {
    thrown_ = std::current_exception();
    uc_emu_stop(engine_);
  }
}

void Cpu::OnInterrupt(uc_engine* engine, std::uint32_t number, void* self) {
  Cpu& cpu = *static_cast<Cpu*>(self);
  const std::uint32_t offset = cpu.Register(UC_ARM_REG_PC) - kTrapAddress;
  if (number == kSoftwareInterrupt && offset < cpu.process_.Traps().Bytes()) {
    cpu.trap_ = offset / kTrapBytes;
    uc_emu_stop(engine);
  } else {
    cpu.Note("exception " + std::to_string(number) + " of the processor");
  }
}

void Cpu::OnAccess(uc_engine*, uc_mem_type type, std::uint64_t address, int bytes, std::int64_t,
                   void* self) {
  static_cast<Cpu*>(self)->CheckAccess(type == UC_MEM_WRITE, static_cast<std::uint32_t>(address),
                                       static_cast<std::uint32_t>(bytes));
}

void Cpu::CheckAccess(bool write, std::uint32_t address, std::uint32_t bytes) {
  if ((address & (bytes - 1)) != 0) {
    Note("an unaligned access of " + std::to_string(bytes) + " bytes at " + sim::Hex(address, 8));
    return;
  }
  if (stack_.Holds(address, bytes)) {
    if (address < lowest_stack_) {
      lowest_stack_ = address;
      if (DeepestStack() > process_.StackLimit()) {
        Note("the stack is " + std::to_string(DeepestStack()) + " bytes deep, of " +
             std::to_string(process_.StackLimit()));
      }
    }
    CheckAgainstSp(write, address);
    return;
  }
  if (callers_stack_.Holds(address, bytes)) {
    Note(std::string(write ? "a store to" : "a load from") + " the caller's stack");
    return;
  }
  if (Process::PortAt(address)) return;  // has its own checks
  const Extent* extent = Find(address);
  if (extent == nullptr || !extent->Holds(address, bytes)) {
    Note(std::string(write ? "a store to " : "a load from ") + sim::Hex(address, 8) +
         ", which is out of bounds");
  } else if (write && !extent->writable) {
    Note("a store to " + sim::Hex(address, 8) + ", which is read-only");
  } else if (!write) {
    process_.NoteLoad(address);
  }
}

void Cpu::CheckAgainstSp(bool write, std::uint32_t address) {
  const std::uint32_t sp = Register(UC_ARM_REG_SP);
  if (push_ && write && sp == push_->sp && address == push_->next) {
    push_->next += kWord;
    return;
  }
  if (push_) EndPush(sp);
  if (address >= sp) return;
  if (write && BlockPushes(sp - address)) {
    push_ = {sp, address + kWord, address};
    return;
  }
  Note(std::string(write ? "a store to " : "a load from ") + sim::Hex(address, 8) +
       ", below the stack pointer");
}

// The engine tells the block that runs, and not the instruction.
bool Cpu::BlockPushes(std::uint32_t bytes) const {
  constexpr std::uint32_t kOpMask = 0x0FFF0000;   // whatever the condition
  constexpr std::uint32_t kPush = 0x092D0000;     // stmdb sp!, {...}
  constexpr std::uint32_t kPushOne = 0x052D0000;  // str rn, [sp, #-n]!
  constexpr std::uint32_t kOffsetMask = 0x0FFF;
  const Extent* const code = Find(block_);
  if (code == nullptr || !code->Holds(block_, block_bytes_)) return false;
  for (std::uint32_t at = 0; at < block_bytes_; at += kWord) {
    std::uint32_t instruction = 0;
    std::memcpy(&instruction, code->host + (block_ - code->address) + at, kWord);
    const auto listed = static_cast<std::uint32_t>(std::popcount(instruction & 0xFFFF));
    if ((instruction & kOpMask) == kPush && kWord * listed == bytes) return true;
    if ((instruction & kOpMask) == kPushOne && (instruction & kOffsetMask) == bytes) return true;
  }
  return false;
}

// By now sp has moved over what was stored, or farther.
void Cpu::EndPush(std::uint32_t sp) {
  if (sp > push_->end) {
    Note("a store to " + sim::Hex(push_->end, 8) + ", below the stack pointer");
  }
  push_.reset();
}

bool Cpu::OnBadAccess(uc_engine*, uc_mem_type type, std::uint64_t address, int, std::int64_t,
                      void* self) {
  Cpu& cpu = *static_cast<Cpu*>(self);
  const bool rights =
      type == UC_MEM_WRITE_PROT || type == UC_MEM_READ_PROT || type == UC_MEM_FETCH_PROT;
  cpu.Note(Verb(type) + sim::Hex(address, 8) +
           (rights ? ", where memory does not allow it" : ", where no memory is"));
  return false;
}

bool Cpu::PortRefuses(std::uint64_t offset, unsigned bytes, const char* what) {
  // After a stop the engine may go on to the end of its block.
  if (thrown_ || fault_) return true;
  if (bytes == 1 && offset == 0) return false;
  Note(std::string(what) + std::to_string(bytes) + " bytes at offset " + std::to_string(offset) +
       " of a bus window");
  return true;
}

std::uint64_t Cpu::OnBusLoad(uc_engine* engine, std::uint64_t offset, unsigned bytes, void* port) {
  const Port& at = *static_cast<Port*>(port);
  if (at.cpu->PortRefuses(offset, bytes, "a load of ")) return 0xFF;
  try {
    return at.cpu->process_.LoadByte(at.page);
  } catch (...) {
    at.cpu->thrown_ = std::current_exception();
    uc_emu_stop(engine);
    return 0xFF;
  }
}

void Cpu::OnBusStore(uc_engine* engine, std::uint64_t offset, unsigned bytes, std::uint64_t value,
                     void* port) {
  const Port& at = *static_cast<Port*>(port);
  if (at.cpu->PortRefuses(offset, bytes, "a store of ")) return;
  try {
    at.cpu->process_.StoreByte(at.page, static_cast<std::uint8_t>(value));
  } catch (...) {
    at.cpu->thrown_ = std::current_exception();
    uc_emu_stop(engine);
  }
}

void Cpu::Note(const std::string& fault) {
  if (!fault_ && !thrown_) fault_ = fault;
  uc_emu_stop(engine_);
}

// ---- Faults -----------------------------------------------------------------------------------

std::string Cpu::Place() const {
  return " (in the block at " + process_.Place(block_) + ", called from " +
         process_.Place(Register(UC_ARM_REG_LR)) + ')';
}

void Cpu::Fault(const std::string& what) const {
  const std::string text = what + Place();
  process_.Remember(text);
  throw harness::ImageFault(text);
}

std::uint32_t Cpu::DeepestStack() const { return stack_.address + kEntryStack - lowest_stack_; }

std::array<std::uint32_t, 16> Cpu::Registers() const {
  constexpr std::array<int, 16> kIds = {
      UC_ARM_REG_R0,  UC_ARM_REG_R1, UC_ARM_REG_R2, UC_ARM_REG_R3, UC_ARM_REG_R4,  UC_ARM_REG_R5,
      UC_ARM_REG_R6,  UC_ARM_REG_R7, UC_ARM_REG_R8, UC_ARM_REG_R9, UC_ARM_REG_R10, UC_ARM_REG_R11,
      UC_ARM_REG_R12, UC_ARM_REG_SP, UC_ARM_REG_LR, UC_ARM_REG_PC};
  std::array<std::uint32_t, 16> values{};
  std::transform(kIds.begin(), kIds.end(), values.begin(), [this](int id) { return Register(id); });
  return values;
}

std::uint32_t Cpu::Register(int id) const {
  std::uint32_t value = 0;
  uc_reg_read(engine_, id, &value);
  return value;
}

void Cpu::SetRegister(int id, std::uint32_t value) { uc_reg_write(engine_, id, &value); }

}  // namespace emulator
