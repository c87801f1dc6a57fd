#include "device/emulator/process.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "sim/text.h"
#include "sim/world.h"

namespace emulator {
namespace {

constexpr std::uint32_t kMostTraps = 0x2000;  // more than the system has functions

void PutTrap(std::uint8_t* at) {
  constexpr std::uint32_t kCode[] = {0xEF000000,   // svc 0
                                     0xE12FFF1E};  // bx lr
  static_assert(sizeof(kCode) == kTrapBytes);
  std::memcpy(at, kCode, sizeof(kCode));
}

}  // namespace

Process::Process(const ProcessLimits& limits) : limits_(limits), traps_(kMostTraps * kTrapBytes) {
  calls_.emplace_back();
  PutTrap(traps_.Data());
}

Process::~Process() { FreeLoans(); }

void Process::FreeLoans() {
  for (const auto& [address, loan] : loans) std::free(loan.memory);
  loans.clear();
}

std::uint32_t Process::TrapFor(const ImageImport& import) {
  const auto known = trap_of_.find(import.InWords());
  if (known != trap_of_.end()) return known->second;
  const ImportHandler handler = FindImport(import);
  if (handler == nullptr) throw BadImage("the system has no " + import.InWords());
  const auto trap = static_cast<unsigned>(calls_.size());
  if (trap == kMostTraps) throw BadImage("too many imports");
  calls_.push_back({import, handler});
  PutTrap(traps_.Data() + trap * kTrapBytes);
  return trap_of_[import.InWords()] = TrapAddress(trap);
}

LoadedImage& Process::Map(std::unique_ptr<LoadedImage> image) {
  for (const MappedSection& section : image->Sections()) {
    sections_.push_back(section);
    for (const auto& cpu : cpus_) cpu->Map(section);
  }
  images_.push_back(std::move(image));
  return *images_.back();
}

void Process::Unmap(const LoadedImage& image) {
  for (const MappedSection& section : image.Sections()) {
    for (const auto& cpu : cpus_) cpu->Unmap(section);
    std::erase_if(sections_, [&section](const MappedSection& other) {
      return other.extent.address == section.extent.address;
    });
  }
  std::erase_if(images_, [&image](const auto& other) { return other.get() == &image; });
}

// ---- Processors -------------------------------------------------------------------------------

Process::Lease::Lease(Process& process)
    : process_(process), cpu_([&process]() -> Cpu& {
        if (process.idle_.empty()) {
          const auto number = static_cast<unsigned>(process.cpus_.size());
          auto made = std::make_unique<Cpu>(process, number);
          if (process.AsProgram() != nullptr) {
            for (const auto& other : process.cpus_) {
              made->MapStackOf(*other);
              other->MapStackOf(*made);
            }
          }
          process.cpus_.push_back(std::move(made));
          process.idle_.insert(number);
        }
        return *process.cpus_[process.idle_.extract(process.idle_.begin()).value()];
      }()) {}

Process::Lease::~Lease() {
  process_.ThreadLeft(cpu_);
  cpu_.ForgetLoans();
  process_.idle_.insert(cpu_.Number());
}

std::uint32_t Process::Call(std::uint32_t address, std::span<const std::uint32_t> arguments) {
  return Lease(*this)->Call(address, arguments);
}

std::uint64_t Process::InstructionSum() const {
  std::uint64_t sum = 0;
  for (const auto& cpu : cpus_) sum += cpu->Instructions();
  return sum;
}

std::uint32_t Process::DeepestStackOfAll() const {
  std::uint32_t deepest = 0;
  for (const auto& cpu : cpus_) deepest = std::max(deepest, cpu->DeepestStack());
  return deepest;
}

void Process::Remember(const std::string& fault) {
  if (!first_fault_) first_fault_ = fault;
}

const LoadedImage* Process::ImageAt(std::uint32_t address) const {
  const auto found = std::find_if(images_.begin(), images_.end(),
                                  [address](const auto& image) { return image->Holds(address); });
  return found == images_.end() ? nullptr : found->get();
}

std::string Process::Place(std::uint32_t address) const {
  const LoadedImage* const image = ImageAt(address);
  if (image == nullptr) return sim::Hex(address, 8);
  return image->Name() + '+' + sim::Hex(address - image->Base(), 4);
}

const Extent* Process::FindStack(std::uint32_t address) {
  if (AsProgram() == nullptr) return nullptr;
  const auto found = std::find_if(cpus_.begin(), cpus_.end(), [address](const auto& cpu) {
    return cpu->Stack().Holds(address, 1);
  });
  return found == cpus_.end() ? nullptr : &(*found)->Stack();
}

std::uint32_t Process::GuestAddress(const void* host) const {
  const auto* const at = static_cast<const std::uint8_t*>(host);
  const auto in = [at](const Extent& extent) {
    return at >= extent.host && at < extent.host + extent.bytes;
  };
  for (const MappedSection& section : sections_) {
    if (in(section.extent)) {
      return section.extent.address + static_cast<std::uint32_t>(at - section.extent.host);
    }
  }
  for (const auto& cpu : cpus_) {
    if (in(cpu->Stack())) {
      return cpu->Stack().address + static_cast<std::uint32_t>(at - cpu->Stack().host);
    }
  }
  const std::uint8_t* const heap = heap_.Pages().Data();
  if (at >= heap && at < heap + heap_.Pages().Bytes()) {
    return kHeapAddress + static_cast<std::uint32_t>(at - heap);
  }
  return 0;
}

// ---- Bus windows ------------------------------------------------------------------------------

std::optional<unsigned> Process::PortAt(std::uint32_t address) {
  if (address < kGuestPage) return kNullPort;
  const std::uint32_t page = (address - kBusAddress) / kGuestPage;
  if (page >= sim::BusWindows::kCount) return std::nullopt;
  return page;
}

PlatBusWindow Process::WindowAt(std::uint32_t address) {
  const auto page = PortAt(address);
  if (!page || *page == kNullPort || address != PortAddress(*page)) return nullptr;
  return sim::BusWindows::Address(static_cast<sim::BusWindow>(*page));
}

void Process::StoreByte(unsigned page, std::uint8_t value) {
  Plat_StoreByte(WindowAt(PortAddress(page)), value);
}

std::uint8_t Process::LoadByte(unsigned page) { return Plat_LoadByte(WindowAt(PortAddress(page))); }

}  // namespace emulator
