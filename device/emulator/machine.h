// The emulated device: the image loaded into memory, and the system that it calls played by the
// simulated platform.
#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <vector>

#include "device/emulator/cpu.h"
#include "device/emulator/memory.h"
#include "device/emulator/pe_image.h"
#include "harness/image_run.h"
#include "platform/platform.h"

namespace emulator {

struct MachineOptions {
  std::optional<std::uint32_t> base = {};  // none: the image's own
  std::uint32_t stack_limit = 8 * 1024;    // bytes that a call may use
  // From one call of the system to the next; the library needs some thousands.
  std::uint64_t instruction_limit = 100'000'000;
};

struct MappedSection {
  Extent extent;
  bool executable = false;
};

// Answers a call of the system; the result goes into r0.
using ImportHandler = std::uint32_t (*)(Cpu& cpu);
// The one for an import, null when there is none.
ImportHandler FindImport(const ImageImport& import);

// Traps are where a call leaves the image: the first is the return of the call into it, the others
// are its imports.
inline constexpr unsigned kReturnTrap = 0;
inline constexpr std::uint32_t kTrapBytes = 8;

class Machine : public harness::ImageRun {
 public:
  // Throws BadImage for an image that does not fit or imports what the system does not have.
  explicit Machine(PeImage image, const MachineOptions& options = {});
  ~Machine() override;
  Machine(const Machine&) = delete;
  Machine& operator=(const Machine&) = delete;

  const PeImage& Image() const { return image_; }
  std::uint32_t Base() const { return base_; }
  // Address of an exported function, or of the entry point for an empty name. Throws BadImage.
  std::uint32_t AddressOf(const std::string& name) const;

  // A fresh load. No thread may be in the image. `without` leaves a relocation out.
  void Reload(std::optional<std::size_t> without = {});

  // A processor that nobody uses, for as long as the lease lives.
  class Lease {
   public:
    explicit Lease(Machine& machine);
    ~Lease();
    Lease(const Lease&) = delete;
    Lease& operator=(const Lease&) = delete;
    Cpu* operator->() const { return &cpu_; }
    Cpu& operator*() const { return cpu_; }

   private:
    Machine& machine_;
    Cpu& cpu_;
  };

  // Calls a function without lent memory.
  std::uint32_t Call(std::uint32_t address, std::span<const std::uint32_t> arguments);

  // ---- What its runs did ----------------------------------------------------------------------

  std::uint64_t Instructions() const override;
  // Of the processor that the first call took; 0 before it.
  std::uint64_t FirstProcessorInstructions() const {
    return cpus_.empty() ? 0 : cpus_.front()->Instructions();
  }
  std::uint32_t DeepestStack() const override;
  // The first fault since the last reload, none when all was well.
  const std::optional<std::string>& FirstFault() const override { return first_fault_; }
  void Remember(const std::string& fault);
  // "image+0x1234", or the address when it is not in the image.
  std::string Place(std::uint32_t address) const;

  // Whether code loaded the word of the image at this offset since ForgetLoads.
  bool Loaded(std::uint32_t rva) const { return loaded_[rva / 4]; }
  void ForgetLoads() { loaded_.assign(loaded_.size(), false); }

  // ---- For its processors ---------------------------------------------------------------------

  void NoteLoad(std::uint32_t address) {
    const std::uint32_t word = (address - base_) / 4;
    if (word < loaded_.size()) loaded_[word] = true;
  }
  static std::uint32_t TrapAddress(unsigned trap) { return kTrapAddress + trap * kTrapBytes; }
  const GuestPages& Traps() const { return traps_; }
  std::uint32_t Answer(unsigned trap, Cpu& cpu) { return handlers_[trap](cpu); }
  const std::vector<MappedSection>& Sections() const { return sections_; }
  GuestHeap& Heap() { return heap_; }
  std::uint32_t StackLimit() const { return options_.stack_limit; }
  std::uint64_t InstructionLimit() const { return options_.instruction_limit; }

  // Pages of byte-wide devices: the three bus windows, and the page at 0, where accesses through a
  // window that was never mapped go.
  static constexpr unsigned kNullPort = 3;
  static std::uint32_t PortAddress(unsigned page) {
    return page == kNullPort ? 0 : kBusAddress + page * kGuestPage;
  }
  static std::optional<unsigned> PortAt(std::uint32_t address);
  static void StoreByte(unsigned page, std::uint8_t value);
  static std::uint8_t LoadByte(unsigned page);
  static PlatBusWindow WindowAt(std::uint32_t address);  // of the simulated bus

  // ---- For its imports ------------------------------------------------------------------------

  // Memory of the guest that stands for memory of the platform, until it is freed.
  struct Loan {
    void* memory = nullptr;
    bool system_text = false;
  };
  std::map<std::uint32_t, Loan> loans;  // by guest address
  std::set<PlatHandle> drivers;         // handles that were driver handles
  // What started threads begin with; they stay for as long as the machine.
  struct ThreadStart {
    Machine* machine = nullptr;
    std::uint32_t proc = 0;
    std::uint32_t argument = 0;
  };
  std::deque<ThreadStart> thread_starts;

 private:
  // The system finds a function by halving, so the table must be in order and all of it code.
  void CheckFunctionTable();

  PeImage image_;
  MachineOptions options_;
  std::uint32_t base_;
  GuestPages image_pages_;
  GuestPages traps_;
  GuestHeap heap_;
  std::vector<MappedSection> sections_;
  std::vector<ImportHandler> handlers_;  // by trap
  std::vector<std::unique_ptr<Cpu>> cpus_;
  std::set<unsigned> idle_;   // the lowest number is taken first
  std::vector<bool> loaded_;  // by word of the image
  std::optional<std::string> first_fault_;
};

}  // namespace emulator
