// One processor of the emulated device: an engine with a stack of its own.
//
// Threads of the simulator each run on their own processor, all over the same image and heap.
// Code runs until it calls what is outside of the image; that is then done outside of the engine,
// so that a thread may pause there or be ended there.
#pragma once

#include <unicorn/unicorn.h>

#include <array>
#include <cstdint>
#include <exception>
#include <memory>
#include <optional>
#include <span>
#include <string>

#include "device/emulator/memory.h"

namespace emulator {

class Process;
struct MappedSection;

class Cpu {
 public:
  // Which stack and caller's area it has.
  Cpu(Process& process, unsigned number);
  Cpu(const Cpu&) = delete;
  Cpu& operator=(const Cpu&) = delete;

  // Calls a function as the system does, and returns its result. Throws ImageFault for anything
  // that must not happen, and whatever the platform throws. What answers a call of the system may
  // call back: that runs on the caller's stack, below it.
  std::uint32_t Call(std::uint32_t address, std::span<const std::uint32_t> arguments);

  // ---- What the caller lends for the next call ----------------------------------------------

  // Copies into memory where only these bytes are in bounds. `misalign` is the address's remainder
  // by 8. Returns the address.
  std::uint32_t Lend(const void* data, std::uint32_t bytes, bool writable, unsigned misalign);
  // What stands there now.
  void TakeBack(std::uint32_t address, void* data, std::uint32_t bytes) const;
  void ForgetLoans();

  // ---- For what a call outside is answered with ---------------------------------------------

  // An argument of the call, in a register or on the stack.
  std::uint32_t Argument(unsigned index);
  // The address of an argument's slot on the stack; the first four have none.
  std::uint32_t StackSlot(unsigned index) const;

  // Memory that code here may use. Throw ImageFault for an address that it may not.
  const std::uint8_t* Read(std::uint32_t address, std::uint32_t bytes) const;
  std::uint8_t* Write(std::uint32_t address, std::uint32_t bytes) const;
  std::uint32_t ReadWord(std::uint32_t address) const;
  void WriteWord(std::uint32_t address, std::uint32_t value) const;
  // Up to the terminator, or `most` units.
  std::string Text(std::uint32_t address, std::size_t most = ~std::size_t{0}) const;
  std::u16string WideText(std::uint32_t address, std::size_t most = ~std::size_t{0}) const;

  [[noreturn]] void Fault(const std::string& what) const;
  Process& Owner() const { return process_; }
  unsigned Number() const { return number_; }

  // An image comes into the process's memory, or goes out of it.
  void Map(const MappedSection& section);
  void Unmap(const MappedSection& section);
  void MapStackOf(const Cpu& other);
  const Extent& Stack() const { return stack_; }

  // ---- What it did so far -------------------------------------------------------------------

  std::uint64_t Instructions() const { return instructions_; }
  // r0 to r15.
  std::array<std::uint32_t, 16> Registers() const;
  std::uint32_t DeepestStack() const;  // bytes

 private:
  static void OnBlock(uc_engine*, std::uint64_t address, std::uint32_t bytes, void* self);
  static void OnInstruction(uc_engine*, std::uint64_t address, std::uint32_t bytes, void* self);
  static void OnInterrupt(uc_engine*, std::uint32_t number, void* self);
  static void OnAccess(uc_engine*, uc_mem_type type, std::uint64_t address, int bytes,
                       std::int64_t value, void* self);
  static bool OnBadAccess(uc_engine*, uc_mem_type type, std::uint64_t address, int bytes,
                          std::int64_t value, void* self);
  static std::uint64_t OnBusLoad(uc_engine*, std::uint64_t offset, unsigned bytes, void* port);
  static void OnBusStore(uc_engine*, std::uint64_t offset, unsigned bytes, std::uint64_t value,
                         void* port);

  struct CloseEngine {
    void operator()(uc_engine* engine) const { uc_close(engine); }
  };
  // A page of byte-wide device memory.
  struct Port {
    Cpu* cpu = nullptr;
    unsigned page = 0;
  };

  void MapPort(std::uint32_t address, Port& port);
  bool PortRefuses(std::uint64_t offset, unsigned bytes, const char* what);
  void CheckAccess(bool write, std::uint32_t address, std::uint32_t bytes);
  // An access in the stack, where what lies below sp is not the thread's: an interrupt may write
  // there at any time. A push stores first and moves sp then.
  void CheckAgainstSp(bool write, std::uint32_t address);
  bool BlockPushes(std::uint32_t bytes) const;
  void EndPush(std::uint32_t sp);
  const Extent* Find(std::uint32_t address) const;
  void CheckLent(std::uint32_t address, const Extent* extent) const;  // to the system
  void Note(const std::string& fault);  // the first one counts; stops the engine
  std::string Place() const;
  std::uint32_t Register(int id) const;
  void SetRegister(int id, std::uint32_t value);
  std::uint32_t Run(std::uint32_t address, std::span<const std::uint32_t> arguments,
                    std::uint32_t stack_top);
  void RunUntilTrap(std::uint32_t address);
  void MayGoOn();  // asked now and then while code runs; stops the engine when it may not

  Process& process_;
  unsigned number_;
  std::unique_ptr<uc_engine, CloseEngine> engine_holder_;
  uc_engine* engine_ = nullptr;
  GuestPages stack_pages_;
  GuestPages caller_pages_;
  GuestPages user_data_pages_;
  Extent stack_;          // what a call may use, with its arguments on the stack
  Extent callers_stack_;  // above it
  Extent identifiers_;    // of thread and process
  std::uint32_t caller_address_;
  std::array<Extent, 4> loans_{};
  unsigned loan_count_ = 0;
  std::uint32_t caller_used_ = 0;
  std::array<Port, 4> ports_{};

  unsigned depth_ = 0;                // of calls that are under way
  std::optional<unsigned> trap_;      // where the engine stopped
  std::optional<std::string> fault_;  // why it was stopped
  std::exception_ptr thrown_;         // by the platform, inside of the engine
  std::uint32_t block_ = 0;           // address of the block that runs
  std::uint32_t block_bytes_ = 0;
  // Words that were stored below sp, by what must then be a push.
  struct Push {
    std::uint32_t sp = 0;    // before it
    std::uint32_t next = 0;  // address of its next word
    std::uint32_t end = 0;   // sp behind it
  };
  std::optional<Push> push_;
  std::uint64_t instructions_ = 0;
  std::uint64_t began_ = 0;     // how many they were when it last came from outside
  std::uint64_t next_look_;     // how many they are when MayGoOn is asked next
  std::uint32_t lowest_stack_;  // address
};

}  // namespace emulator
