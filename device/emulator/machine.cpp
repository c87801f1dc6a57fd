#include "device/emulator/machine.h"

#include <utility>

namespace emulator {

Machine::Machine(PeImage image, const MachineOptions& options)
    : Process({.instructions = options.instruction_limit}), lends_aligned_(options.lends_aligned) {
  const std::uint32_t base = options.base.value_or(image.PreferredBase());
  loaded_ = &Map(std::make_unique<LoadedImage>(std::move(image), base, "image"));
  noted_base_ = base;
  noted_.resize(Image().Bytes() / 4);
  for (const ImageImport& import : Image().Imports()) TrapFor(import);
  Reload();
}

std::uint32_t Machine::AddressOf(const std::string& name) const {
  if (name.empty()) return Base() + Image().EntryRva();
  const auto found = Image().Exports().find(name);
  if (found == Image().Exports().end()) throw BadImage("the image does not export " + name);
  return Base() + found->second;
}

void Machine::Reload(std::optional<std::size_t> without) {
  loaded_->Fill(without);
  for (const ImageImport& import : Image().Imports()) {
    loaded_->SetWord(import.slot_rva, TrapFor(import));
  }
  // What the last run did not free; the platform that counted it is gone.
  FreeLoans();
  heap_.Clear();
  drivers.clear();
  objects.clear();
  threads.clear();
  thread_starts.clear();
  first_fault_.reset();
  // The check reads the table as the system would.
  constexpr std::uint32_t kEntryBytes = 8;
  for (std::uint32_t i = 0; i < Image().FunctionCount(); ++i) {
    NoteLoad(Base() + Image().FunctionTableRva() + i * kEntryBytes);
  }
  if (const auto fault = loaded_->FunctionTableFault()) Remember(*fault);
}

}  // namespace emulator
