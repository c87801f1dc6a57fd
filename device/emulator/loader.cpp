#include "device/emulator/loader.h"

#include <algorithm>
#include <array>
#include <utility>

#include "device/emulator/device.h"
#include "device/emulator/system_exports.h"
#include "sim/text.h"

namespace emulator {
namespace {

constexpr std::uint32_t kDetach = 0;
constexpr std::uint32_t kAttach = 1;

bool IsUnplayed(const ImageImport& import) {
  const SystemLibrary* const library = FindSystemLibrary(import.dll);
  return library != nullptr && library->ExportsUnplayed(import.name);
}

bool SameName(const std::string& a, const std::string& b) {
  return sim::ToLower(NameOf(a)) == sim::ToLower(NameOf(b));
}

}  // namespace

// The folder of the program, the system's, the root; a path is what it says.
std::string Loader::PathOf(const std::string& name) const {
  std::string file = name;
  if (NameOf(file).find('.') == std::string::npos) file += ".dll";
  if (file.find('\\') != std::string::npos) {
    if (!device_.Files().Find(file)) {
      throw LoaderRefusal(kErrorModuleNotFound, file + " is not there");
    }
    return file;
  }
  const std::string own = FolderOf(modules_.front()->path);
  for (const std::string& folder : {own, std::string("\\Windows\\"), std::string("\\")}) {
    if (const auto found = device_.Files().Find(folder + file)) {
      return device_.Files().PathOf(*found);
    }
  }
  throw LoaderRefusal(kErrorModuleNotFound,
                      file + " is neither in " + own + " nor in \\Windows\\ nor in \\");
}

Module* Loader::Loaded(const std::string& name) {
  std::string file = name;
  if (NameOf(file).find('.') == std::string::npos) file += ".dll";
  const auto found = std::find_if(modules_.begin(), modules_.end(), [&file](const auto& module) {
    return SameName(module->path, file);
  });
  return found == modules_.end() ? nullptr : found->get();
}

Module* Loader::Find(std::uint32_t handle) {
  if (handle == 0) return modules_.front().get();
  const auto found = std::find_if(modules_.begin(), modules_.end(), [handle](const auto& module) {
    return module->handle == handle;
  });
  return found == modules_.end() ? nullptr : found->get();
}

Module& Loader::LoadFile(const std::string& path, ImageKind kind) {
  const auto file = device_.Files().Find(path);
  if (!file) throw LoaderRefusal(kErrorFileNotFound, path + " is not there");
  std::unique_ptr<LoadedImage> image;
  try {
    PeImage content = device_.Read(*file, kind);
    const std::uint32_t base = device_.BaseFor(path, content, kind);
    SharedPages shared = [&](std::size_t section) {
      return device_.Shared(path, content, section);
    };
    image = std::make_unique<LoadedImage>(content, base, NameOf(path), shared);
  } catch (const BadImage& error) {
    throw LoaderRefusal(kErrorBadImage, NameOf(path) + ": " + error.what());
  }
  image->Fill();
  if (const auto fault = image->FunctionTableFault()) throw LoaderRefusal(kErrorBadImage, *fault);
  auto module = std::make_unique<Module>();
  module->path = path;
  module->handle = device_.NewModuleHandle();
  module->references = 1;
  module->image = &process_.Map(std::move(image));
  Module& loaded = *module;
  modules_.push_back(std::move(module));
  try {
    Bind(loaded);
  } catch (const LoaderRefusal&) {
    Release(nullptr, loaded);
    throw;
  }
  return loaded;
}

void Loader::Bind(Module& module) {
  for (const ImageImport& import : module.image->File().Imports()) {
    const bool needed =
        std::any_of(module.needs.begin(), module.needs.end(),
                    [&import](const Module* need) { return SameName(need->path, import.dll); });
    if (!needed) {
      try {
        module.needs.push_back(&Load(import.dll));
      } catch (const LoaderRefusal& refusal) {
        throw LoaderRefusal(
            refusal.error == kErrorFileNotFound ? kErrorModuleNotFound : refusal.error,
            NameOf(module.path) + " needs " + import.dll + ": " + refusal.what());
      }
    }
    module.image->SetWord(import.slot_rva, AddressOf(module, import));
  }
  // Behind what it needs.
  const auto place = std::find_if(modules_.begin(), modules_.end(),
                                  [&module](const auto& other) { return other.get() == &module; });
  if (place != modules_.begin()) std::rotate(place, place + 1, modules_.end());
}

std::uint32_t Loader::AddressOf(const Module& from, const ImageImport& import) {
  const auto need =
      std::find_if(from.needs.begin(), from.needs.end(),
                   [&import](const Module* module) { return SameName(module->path, import.dll); });
  const auto address =
      import.name.empty() ? Export(**need, import.ordinal) : Export(**need, import.name);
  if (address) return *address;
  throw LoaderRefusal(kErrorProcedureNotFound,
                      NameOf(from.path) + " imports " + import.InWords() +
                          (IsUnplayed(import) && !device_.Lacks(import.name)
                               ? ", which is not played here: the system has it"
                               : ", which is not exported"));
}

Module& Loader::LoadProgram(const std::string& path) { return LoadFile(path, ImageKind::Program); }

Module& Loader::Load(const std::string& name) {
  if (Module* const loaded = Loaded(name)) {
    ++loaded->references;
    return *loaded;
  }
  if (FindSystemLibrary(NameOf(name)) == nullptr) return LoadFile(PathOf(name), ImageKind::Library);
  auto module = std::make_unique<Module>();
  module->path = sim::ToLower(NameOf(name));
  module->handle = device_.NewModuleHandle();
  module->references = 1;
  module->attached = true;
  modules_.push_back(std::move(module));
  return *modules_.back();
}

// ---- Entries ----------------------------------------------------------------------------------

// `lasting`: with the process, for which the entry's last argument is not null.
std::uint32_t Loader::CallEntry(Cpu& cpu, const Module& module, std::uint32_t reason,
                                bool lasting) {
  const std::uint32_t entry = module.image->Base() + module.image->File().EntryRva();
  const std::array<std::uint32_t, 3> arguments = {module.handle, reason, lasting ? 1u : 0u};
  return cpu.Call(entry, arguments);
}

bool Loader::Attach(Cpu& cpu, bool at_start) {
  for (std::size_t i = 1; i < modules_.size(); ++i) {
    Module& module = *modules_[i];
    if (module.attached) continue;
    module.attached = true;
    if (CallEntry(cpu, module, kAttach, at_start) == 0) {
      device_.Tell(NameOf(module.path) + ": its entry refuses to be attached");
      return false;
    }
  }
  return true;
}

void Loader::Free(Cpu& cpu, Module& module) { Release(&cpu, module); }

// Without a processor its entry was never called.
void Loader::Release(Cpu* cpu, Module& module) {
  if (--module.references != 0) return;
  if (module.attached && module.image != nullptr && cpu != nullptr) {
    CallEntry(*cpu, module, kDetach, false);
  }
  const std::vector<Module*> needs = std::move(module.needs);
  if (module.image != nullptr) process_.Unmap(*module.image);
  std::erase_if(modules_, [&module](const auto& other) { return other.get() == &module; });
  for (Module* const need : needs) Release(cpu, *need);
}

void Loader::DetachAll(Cpu& cpu) {
  for (std::size_t i = modules_.size(); i-- > 1;) {
    Module& module = *modules_[i];
    if (!std::exchange(module.attached, false) || module.image == nullptr) continue;
    CallEntry(cpu, module, kDetach, true);
  }
}

void Loader::TellThread(Cpu& cpu, std::uint32_t reason) {
  for (std::size_t i = 1; i < modules_.size(); ++i) {
    const Module& module = *modules_[i];
    if (module.image == nullptr || !module.attached || !module.thread_calls) continue;
    CallEntry(cpu, module, reason, false);
  }
}

// ---- Exports ----------------------------------------------------------------------------------

std::optional<std::uint32_t> Loader::Export(const Module& module, const std::string& name) {
  if (module.image == nullptr) {
    if (device_.Lacks(name)) return std::nullopt;
    ImageImport import;
    import.dll = module.path;
    import.name = name;
    if (FindImport(import) == nullptr) return std::nullopt;
    return process_.TrapFor(import);
  }
  const auto& exports = module.image->File().Exports();
  const auto found = exports.find(name);
  if (found == exports.end()) return std::nullopt;
  return module.image->Base() + found->second;
}

std::optional<std::uint32_t> Loader::Export(const Module& module, std::uint32_t ordinal) {
  if (module.image == nullptr) {
    ImageImport import;
    import.dll = module.path;
    import.ordinal = ordinal;
    if (device_.Lacks('#' + std::to_string(ordinal)) || FindImport(import) == nullptr) {
      return std::nullopt;
    }
    return process_.TrapFor(import);
  }
  const auto& ordinals = module.image->File().ExportOrdinals();
  const auto found = ordinals.find(ordinal);
  if (found == ordinals.end()) return std::nullopt;
  return module.image->Base() + found->second;
}

}  // namespace emulator
