#include "device/emulator/machine.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "sim/text.h"
#include "sim/world.h"

namespace emulator {
namespace {

constexpr std::uint32_t kSoftwareInterrupt = 0xEF000000;  // svc 0
constexpr std::uint32_t kReturn = 0xE12FFF1E;             // bx lr

void PutWord(std::uint8_t* at, std::uint32_t value) { std::memcpy(at, &value, sizeof(value)); }

std::uint32_t GetWord(const std::uint8_t* at) {
  std::uint32_t value = 0;
  std::memcpy(&value, at, sizeof(value));
  return value;
}

}  // namespace

Machine::Machine(PeImage image, const MachineOptions& options)
    : image_(std::move(image)),
      options_(options),
      base_(options.base.value_or(image_.PreferredBase())),
      image_pages_(image_.Bytes()),
      traps_((image_.Imports().size() + 1) * kTrapBytes),
      loaded_(image_.Bytes() / 4) {
  constexpr std::uint32_t kGranule = 0x10000;
  if (base_ % kGranule != 0 || base_ < kLeastImageBase || base_ >= kImageLimit ||
      image_.Bytes() > kImageLimit - base_) {
    throw BadImage("the image cannot be loaded at " + sim::Hex(base_, 8));
  }
  handlers_.push_back(nullptr);
  for (const ImageImport& import : image_.Imports()) {
    const ImportHandler handler = FindImport(import);
    if (handler == nullptr) throw BadImage("the system has no " + import.InWords());
    handlers_.push_back(handler);
  }
  for (unsigned trap = 0; trap < handlers_.size(); ++trap) {
    std::uint8_t* at = traps_.Data() + trap * kTrapBytes;
    PutWord(at, kSoftwareInterrupt);
    PutWord(at + 4, kReturn);
  }
  for (const ImageSection& section : image_.Sections()) {
    sections_.push_back(
        {{base_ + section.rva, section.bytes, image_pages_.Data() + section.rva, section.writable},
         section.executable});
  }
  Reload();
}

Machine::~Machine() {
  for (const auto& [address, loan] : loans) std::free(loan.memory);
}

std::uint32_t Machine::AddressOf(const std::string& name) const {
  if (name.empty()) return base_ + image_.EntryRva();
  const auto found = image_.Exports().find(name);
  if (found == image_.Exports().end()) throw BadImage("the image does not export " + name);
  return base_ + found->second;
}

void Machine::Reload(std::optional<std::size_t> without) {
  const std::vector<std::uint8_t> memory = image_.At(base_, without);
  std::memcpy(image_pages_.Data(), memory.data(), memory.size());
  for (unsigned i = 0; i < image_.Imports().size(); ++i) {
    PutWord(image_pages_.Data() + image_.Imports()[i].slot_rva, TrapAddress(i + 1));
  }
  // What the last run did not free; the platform that counted it is gone.
  for (const auto& [address, loan] : loans) std::free(loan.memory);
  loans.clear();
  heap_.Clear();
  drivers.clear();
  thread_starts.clear();
  first_fault_.reset();
  CheckFunctionTable();
}

void Machine::CheckFunctionTable() {
  constexpr std::uint32_t kEntryBytes = 8;
  constexpr std::uint32_t kPrologBits = 8;
  constexpr std::uint32_t kLengthMask = (1u << 22) - 1;
  std::uint32_t end = 0;  // of the function before
  for (std::uint32_t i = 0; i < image_.FunctionCount(); ++i) {
    const std::uint32_t rva = image_.FunctionTableRva() + i * kEntryBytes;
    const std::uint32_t begin = GetWord(image_pages_.Data() + rva);
    const std::uint32_t packed = GetWord(image_pages_.Data() + rva + 4);
    const std::uint32_t bytes = 4 * (packed >> kPrologBits & kLengthMask);
    NoteLoad(base_ + rva);
    const bool code = std::any_of(sections_.begin(), sections_.end(), [=](const auto& section) {
      return section.executable && section.extent.Holds(begin, bytes);
    });
    if (!code || bytes == 0 || begin < end) {
      Remember("entry " + std::to_string(i) + " of the function table: " + std::to_string(bytes) +
               " bytes at " + Place(begin));
      return;
    }
    end = begin + bytes;
  }
}

// ---- Processors -------------------------------------------------------------------------------

Machine::Lease::Lease(Machine& machine)
    : machine_(machine), cpu_([&machine]() -> Cpu& {
        if (machine.idle_.empty()) {
          const auto number = static_cast<unsigned>(machine.cpus_.size());
          machine.cpus_.push_back(std::make_unique<Cpu>(machine, number));
          machine.idle_.insert(number);
        }
        return *machine.cpus_[machine.idle_.extract(machine.idle_.begin()).value()];
      }()) {}

Machine::Lease::~Lease() {
  cpu_.ForgetLoans();
  machine_.idle_.insert(cpu_.Number());
}

std::uint32_t Machine::Call(std::uint32_t address, std::span<const std::uint32_t> arguments) {
  return Lease(*this)->Call(address, arguments);
}

std::uint64_t Machine::Instructions() const {
  std::uint64_t sum = 0;
  for (const auto& cpu : cpus_) sum += cpu->Instructions();
  return sum;
}

std::uint32_t Machine::DeepestStack() const {
  std::uint32_t deepest = 0;
  for (const auto& cpu : cpus_) deepest = std::max(deepest, cpu->DeepestStack());
  return deepest;
}

void Machine::Remember(const std::string& fault) {
  if (!first_fault_) first_fault_ = fault;
}

std::string Machine::Place(std::uint32_t address) const {
  if (address < base_ || address - base_ >= image_.Bytes()) return sim::Hex(address, 8);
  return "image+" + sim::Hex(address - base_, 4);
}

// ---- Bus windows ------------------------------------------------------------------------------

std::optional<unsigned> Machine::PortAt(std::uint32_t address) {
  if (address < kGuestPage) return kNullPort;
  const std::uint32_t page = (address - kBusAddress) / kGuestPage;
  if (page >= sim::BusWindows::kCount) return std::nullopt;
  return page;
}

PlatBusWindow Machine::WindowAt(std::uint32_t address) {
  const auto page = PortAt(address);
  if (!page || *page == kNullPort || address != PortAddress(*page)) return nullptr;
  return sim::BusWindows::Address(static_cast<sim::BusWindow>(*page));
}

void Machine::StoreByte(unsigned page, std::uint8_t value) {
  Plat_StoreByte(WindowAt(PortAddress(page)), value);
}

std::uint8_t Machine::LoadByte(unsigned page) { return Plat_LoadByte(WindowAt(PortAddress(page))); }

}  // namespace emulator
