// A process of the emulated device: its memory, the images in it and the processors of its threads.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "device/emulator/cpu.h"
#include "device/emulator/loaded_image.h"
#include "device/emulator/memory.h"
#include "platform/platform.h"

namespace emulator {

class Program;

struct ProcessLimits {
  std::uint32_t stack = 8 * 1024;  // bytes that a call may use
  // From one call of the system to the next; the library needs some thousands.
  std::uint64_t instructions = 100'000'000;
};

// Answers a call of the system; the result goes into r0.
using ImportHandler = std::uint32_t (*)(Cpu& cpu);
// The one for an import, null when there is none.
ImportHandler FindImport(const ImageImport& import);

// A call of the system, and what answers it.
struct SystemCall {
  ImageImport import;
  ImportHandler handler = nullptr;
};
// Stands between the images and the system: sees each call with its arguments, and gives the
// result, the handler's or another.
using SystemCallObserver = std::function<std::uint32_t(const SystemCall& call, Cpu& cpu)>;

// Traps are where a call leaves the images: the first is the return of the call into them, the
// others are the system's functions.
inline constexpr unsigned kReturnTrap = 0;
inline constexpr std::uint32_t kTrapBytes = 8;

class Process {
 public:
  explicit Process(const ProcessLimits& limits);
  virtual ~Process();
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;

  // The program whose process it is, null for a library alone.
  virtual Program* AsProgram() { return nullptr; }

  // A processor that nobody uses, for as long as the lease lives.
  class Lease {
   public:
    explicit Lease(Process& process);
    ~Lease();
    Lease(const Lease&) = delete;
    Lease& operator=(const Lease&) = delete;
    Cpu* operator->() const { return &cpu_; }
    Cpu& operator*() const { return cpu_; }

   private:
    Process& process_;
    Cpu& cpu_;
  };

  // Calls a function without lent memory.
  std::uint32_t Call(std::uint32_t address, std::span<const std::uint32_t> arguments);

  // Where an import leads: a trap, the same one for the same function. Throws BadImage for what the
  // system does not have.
  std::uint32_t TrapFor(const ImageImport& import);

  // What the processors see from now on, and see no more. No thread may run in it any more.
  LoadedImage& Map(std::unique_ptr<LoadedImage> image);
  void Unmap(const LoadedImage& image);

  // From now on; none: nobody stands between. It is called in the thread that calls the system.
  void Observe(SystemCallObserver observer) { observer_ = std::move(observer); }
  // Is shown each processor before each of its instructions. To be given before the first call.
  using InstructionLook = std::function<void(const Cpu& cpu)>;
  void LookAtInstructions(InstructionLook look) { look_ = std::move(look); }

  // ---- What its runs did ----------------------------------------------------------------------

  std::uint64_t InstructionSum() const;
  // Of the processor that the first call took; 0 before it.
  std::uint64_t FirstProcessorInstructions() const {
    return cpus_.empty() ? 0 : cpus_.front()->Instructions();
  }
  std::uint32_t DeepestStackOfAll() const;
  // The first fault, none when all was well.
  const std::optional<std::string>& Fault() const { return first_fault_; }
  void Remember(const std::string& fault);
  // The image that an address lies in, null when it lies in none.
  const LoadedImage* ImageAt(std::uint32_t address) const;
  // "image+0x1234", or the address when it is in no image.
  std::string Place(std::uint32_t address) const;

  // ---- For its processors ---------------------------------------------------------------------

  const InstructionLook& Look() const { return look_; }
  void NoteLoad(std::uint32_t address) {
    const std::uint32_t word = (address - noted_base_) / 4;
    if (word < noted_.size()) noted_[word] = true;
  }
  static std::uint32_t TrapAddress(unsigned trap) { return kTrapAddress + trap * kTrapBytes; }
  const GuestPages& Traps() const { return traps_; }
  std::uint32_t Answer(unsigned trap, Cpu& cpu) {
    const SystemCall& call = calls_[trap];
    return observer_ ? observer_(call, cpu) : call.handler(cpu);
  }
  const std::vector<MappedSection>& Sections() const { return sections_; }
  GuestHeap& Heap() { return heap_; }
  std::uint32_t StackLimit() const { return limits_.stack; }
  std::uint64_t InstructionLimit() const { return limits_.instructions; }
  // Of a program's process; 0 of a library alone.
  std::uint32_t Id() const { return id_; }

  // Pages of byte-wide devices: the three bus windows, and the page at 0, where accesses through a
  // window that was never mapped go.
  static constexpr unsigned kNullPort = 3;
  static std::uint32_t PortAddress(unsigned page) {
    return page == kNullPort ? 0 : kBusAddress + page * kGuestPage;
  }
  static std::optional<unsigned> PortAt(std::uint32_t address);
  void StoreByte(unsigned page, std::uint8_t value);
  std::uint8_t LoadByte(unsigned page);
  static PlatBusWindow WindowAt(std::uint32_t address);  // of the simulated bus

  // ---- For its imports ------------------------------------------------------------------------

  // Memory of the guest that stands for memory of the platform, until it is freed.
  struct Loan {
    void* memory = nullptr;
    bool system_text = false;
  };
  std::map<std::uint32_t, Loan> loans;  // by guest address
  std::set<PlatHandle> drivers;         // handles that were driver handles
  std::set<PlatHandle> objects;         // open handles of kernel objects
  std::set<std::uint32_t> threads;      // identifiers of threads that were started
  // What started threads begin with; they stay for as long as the process.
  struct ThreadStart {
    Process* process = nullptr;
    std::uint32_t proc = 0;
    std::uint32_t argument = 0;
  };
  std::deque<ThreadStart> thread_starts;
  // The stack of a program's thread that an address lies in: a thread sees those of all. Null in a
  // library alone, whose threads have no reason to look at another's.
  const Extent* FindStack(std::uint32_t address);
  // Where the guest has a piece of this process's memory; 0 for what is none of it.
  std::uint32_t GuestAddress(const void* host) const;

 protected:
  virtual void ThreadLeft(const Cpu&) {}  // the thread that ran on this processor
  void FreeLoans();
  void SetStackLimit(std::uint32_t bytes) { limits_.stack = bytes; }

  std::uint32_t id_ = 0;
  GuestHeap heap_;
  std::optional<std::string> first_fault_;
  // The words of an image that code loaded, when somebody asks for them.
  std::uint32_t noted_base_ = 0;
  std::vector<bool> noted_;

 private:
  ProcessLimits limits_;
  InstructionLook look_;
  GuestPages traps_;
  std::vector<std::unique_ptr<LoadedImage>> images_;
  std::vector<MappedSection> sections_;  // of all images
  std::deque<SystemCall> calls_;         // by trap; those that run stay where they are
  SystemCallObserver observer_;
  std::map<std::string, std::uint32_t> trap_of_;  // address by import, in words
  std::vector<std::unique_ptr<Cpu>> cpus_;
  std::set<unsigned> idle_;  // the lowest number is taken first
};

}  // namespace emulator
